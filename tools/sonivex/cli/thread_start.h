#pragma once

#include <system_error>
#include <thread>
#include <utility>

#include "failure.h"

namespace sonivex_tool {

/** Starts a thread that runs `body`.
 *  @throw Failure (Internal) if the system refuses another thread, std::bad_alloc */
template <typename Body>
std::thread startThread(Body&& body) {
    try {
        return std::thread(std::forward<Body>(body));
    } catch (const std::system_error& error) {
        throw Failure(ExitCode::Internal, "cannot start a thread: " + error.code().message());
    }
}

}  // namespace sonivex_tool
