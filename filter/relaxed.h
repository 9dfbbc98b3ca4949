#pragma once

#include <atomic>

namespace Vorlin {

/** A plain value that one thread stores and another reads, each whenever it likes: the instructions of a
 * plain load and store, without the data race. Nothing is ordered by it. */
template <typename T>
class Relaxed {
  public:
    Relaxed(T value) : mValue(value) {}  // NOLINT(google-explicit-constructor): stands for a T
    Relaxed& operator=(T value) {
        mValue.store(value, std::memory_order_relaxed);
        return *this;
    }
    operator T() const {  // NOLINT(google-explicit-constructor): stands for a T
        return mValue.load(std::memory_order_relaxed);
    }

  private:
    std::atomic<T> mValue;
    static_assert(std::atomic<T>::is_always_lock_free);
};

}  // namespace Vorlin
