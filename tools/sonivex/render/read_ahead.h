#pragma once

#include <chrono>
#include <exception>
#include <functional>
#include <optional>
#include <thread>
#include <utility>

#include "bounded_queue.h"
#include "interrupt.h"
#include "thread_start.h"

namespace sonivex_tool {

/** Produces a sequence of items on a thread of its own, a few items ahead of the one who takes them.
 *
 *  One thread calls every member. */
template <typename Item>
class ReadAhead {
  public:
    /** Starts the thread.
     *  @param capacity number of items that it produces in advance
     *  @param produce called on the thread until it returns nothing; may throw
     *  @param stop called by the destructor if the thread still runs; makes `produce` return soon, once the
     *  system call in which it may wait has been interrupted */
    ReadAhead(std::size_t capacity, std::function<std::optional<Item>()> produce, std::function<void()> stop)
        : queue_(capacity),
          produce_(std::move(produce)),
          stop_(std::move(stop)),
          thread_(startThread([this] { run(); })) {}

    /** Stops the thread, even if it waits for a slow source. */
    ~ReadAhead() {
        queue_.abandon();
        if (!thread_.joinable()) return;
        stop_();
        while (!ended_.waitFor(kNudgePeriod)) nudge(thread_);
        thread_.join();
    }
    ReadAhead(const ReadAhead&) = delete;
    ReadAhead& operator=(const ReadAhead&) = delete;

    /** Takes the next item.
     *  @return nothing at the end
     *  @throw what `produce` threw; Failure with the exit code of a pending signal */
    std::optional<Item> next() {
        while (!queue_.waitFor(kNudgePeriod)) throwIfInterrupted();
        std::optional<Item> item = queue_.pop();
        if (!item && thread_.joinable()) {
            thread_.join();
            if (error_ != nullptr) std::rethrow_exception(error_);
        }
        return item;
    }

  private:
    static constexpr std::chrono::milliseconds kNudgePeriod{50};

    void run() {
        try {
            while (std::optional<Item> item = produce_()) {
                if (!queue_.push(std::move(*item))) break;
            }
        } catch (...) {
            error_ = std::current_exception();
        }
        queue_.close();
        ended_.close();
    }

    BoundedQueue<Item> queue_;
    BoundedQueue<bool> ended_{1};  // closed when the thread ends
    std::function<std::optional<Item>()> produce_;
    std::function<void()> stop_;
    std::exception_ptr error_;  // written by the thread, read after it has ended
    std::thread thread_;        // the last member: it uses all others
};

}  // namespace sonivex_tool
