#pragma once

#include <exception>
#include <functional>
#include <thread>
#include <utility>

#include "bounded_queue.h"
#include "thread_start.h"

namespace sonivex_tool {

/** Runs a function for every item of a sequence on a thread of its own, one item after the other.
 *
 *  One thread calls every member. */
template <typename Item>
class WorkThread {
  public:
    /** Starts the thread.
     *  @param capacity number of items that may wait for the function
     *  @param work called on the thread for each item; may throw */
    WorkThread(std::size_t capacity, std::function<void(Item)> work)
        : queue_(capacity), work_(std::move(work)), thread_(startThread([this] { run(); })) {}

    /** Drops the items that still wait, and joins the thread. */
    ~WorkThread() {
        queue_.abandon();
        if (thread_.joinable()) thread_.join();
    }
    WorkThread(const WorkThread&) = delete;
    WorkThread& operator=(const WorkThread&) = delete;

    /** Appends an item. Waits while too many are waiting already. @throw what the function threw */
    void push(Item item) {
        if (!queue_.push(std::move(item))) finish();
    }

    /** Waits until the function has run for every item. @throw what the function threw */
    void finish() {
        queue_.close();
        if (thread_.joinable()) thread_.join();
        if (error_ != nullptr) std::rethrow_exception(error_);
    }

  private:
    void run() {
        try {
            while (std::optional<Item> item = queue_.pop()) work_(std::move(*item));
        } catch (...) {
            error_ = std::current_exception();
            queue_.abandon();
        }
    }

    BoundedQueue<Item> queue_;
    std::function<void(Item)> work_;
    std::exception_ptr error_;  // written by the thread, read after it has ended
    std::thread thread_;        // the last member: it uses all others
};

}  // namespace sonivex_tool
