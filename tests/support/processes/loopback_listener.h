// A socket that listens on this computer, to notice who connects.
#pragma once

#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <string>
#include <system_error>

namespace test {

/** Listens on a free port of 127.0.0.1. */
class LoopbackListener {
  public:
    LoopbackListener() : socket_(socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0)) {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        auto* const name = reinterpret_cast<sockaddr*>(&address);
        socklen_t bytes = sizeof address;
        if (socket_ < 0 || bind(socket_, name, bytes) != 0 || listen(socket_, SOMAXCONN) != 0 ||
            getsockname(socket_, name, &bytes) != 0) {
            throw std::system_error(errno, std::generic_category(), "a listening socket");
        }
        port_ = ntohs(address.sin_port);
    }
    ~LoopbackListener() {
        if (socket_ >= 0) close(socket_);
    }
    LoopbackListener(const LoopbackListener&) = delete;
    LoopbackListener& operator=(const LoopbackListener&) = delete;

    /** Returns "127.0.0.1:" and the port. */
    std::string address() const { return "127.0.0.1:" + std::to_string(port_); }

    /** Returns true if a program has connected since the last call. Such a connection is closed. */
    bool wasConnected() const {
        const int connection = accept4(socket_, nullptr, nullptr, SOCK_CLOEXEC);
        if (connection < 0) return false;
        close(connection);
        return true;
    }

  private:
    int socket_;
    int port_ = 0;
};

}  // namespace test
