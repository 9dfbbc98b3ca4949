#pragma once

#include <atomic>

namespace Vorlin {

/** A value that one thread stores and another loads at any time. It compiles to a plain load and store, but
 *  is no data race. It does not order other memory accesses. */
template <typename T>
class Relaxed {
  public:
    /** [any] real-time safe */
    Relaxed(T value) : mValue(value) {}  // NOLINT(google-explicit-constructor): stands for a T
    /** Stores `value`. [any, concurrent] real-time safe */
    Relaxed& operator=(T value) {
        mValue.store(value, std::memory_order_relaxed);
        return *this;
    }
    /** Loads the value. [any, concurrent] real-time safe */
    operator T() const {  // NOLINT(google-explicit-constructor): stands for a T
        return mValue.load(std::memory_order_relaxed);
    }

  private:
    std::atomic<T> mValue;
    static_assert(std::atomic<T>::is_always_lock_free);
};

}  // namespace Vorlin
