#pragma once

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <mutex>
#include <optional>
#include <utility>

namespace sonivex_tool {

/** Hands items from one thread to another in order. It holds few items, so that a fast producer waits for a
 *  slow consumer instead of filling the memory. Every function may be called from any thread. */
template <typename Item>
class BoundedQueue {
  public:
    /** @param capacity number of items that it holds at most; at least 1 */
    explicit BoundedQueue(std::size_t capacity) : capacity_(capacity) {}

    /** Appends an item. Waits while the queue is full.
     *  @return false if the queue is closed; the item is dropped then
     *  @throw std::bad_alloc */
    bool push(Item item) {
        std::unique_lock lock(mutex_);
        changed_.wait(lock, [this] { return is_closed_ || items_.size() < capacity_; });
        if (is_closed_) return false;
        items_.push_back(std::move(item));
        changed_.notify_all();
        return true;
    }

    /** Removes the oldest item. Waits while the queue is empty and open.
     *  @return nothing if the queue is empty and closed */
    std::optional<Item> pop() {
        std::unique_lock lock(mutex_);
        changed_.wait(lock, [this] { return is_closed_ || !items_.empty(); });
        return takeFirst();
    }

    /** Waits until there is an item or the queue is closed, or until `period` is over.
     *  @return false if `period` is over */
    template <typename Period>
    bool waitFor(Period period) {
        std::unique_lock lock(mutex_);
        return changed_.wait_for(lock, period, [this] { return is_closed_ || !items_.empty(); });
    }

    /** Ends the input; what the queue holds can still be taken. */
    void close() {
        const std::lock_guard lock(mutex_);
        is_closed_ = true;
        changed_.notify_all();
    }

    /** Ends the input and drops what the queue holds. Asks for no memory, so that destructors may call it. */
    void abandon() noexcept {
        const std::lock_guard lock(mutex_);
        is_closed_ = true;
        items_.clear();
        changed_.notify_all();
    }

  private:
    std::optional<Item> takeFirst() {
        if (items_.empty()) return std::nullopt;
        std::optional<Item> item(std::move(items_.front()));
        items_.pop_front();
        changed_.notify_all();
        return item;
    }

    std::size_t capacity_;
    std::mutex mutex_;
    std::condition_variable changed_;
    std::deque<Item> items_;
    bool is_closed_ = false;
};

}  // namespace sonivex_tool
