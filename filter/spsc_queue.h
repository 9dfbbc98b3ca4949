#pragma once

#include <boost/lockfree/spsc_queue.hpp>
#include <cstddef>

namespace Vorlin {

/** A lock-free ring buffer between two threads, of a size given at run time. [producer] is the one thread
 *  that pushes, [consumer] the one thread that pops.
 *
 *  One slot always stays empty, so a ring of n slots holds n - 1 elements. Each side has its own function for
 *  the number of elements, because the index of the other side may move at any moment. */
template <typename T>
class SpscQueue {
  public:
    /** @param slots at least 2. [any] not real-time safe: allocates */
    explicit SpscQueue(std::size_t slots) : mCapacity(slots - 1), mRing(mCapacity) {}

    /** @return false, with nothing stored, if the ring is full. [producer] real-time safe */
    bool push(const T& element) { return mRing.push(element); }
    /** @return false, with `element` untouched, if the ring is empty. [consumer] real-time safe */
    bool pop(T& element) { return mRing.pop(element); }

    /** @return how many elements wait; the consumer may lower it at any moment. [producer] real-time safe */
    std::size_t sizeForProducer() const { return mCapacity - mRing.write_available(); }
    /** @return how many elements wait; the producer may raise it at any moment. [consumer] real-time safe */
    std::size_t sizeForConsumer() const { return mRing.read_available(); }

  private:
    std::size_t mCapacity;  // elements
    boost::lockfree::spsc_queue<T> mRing;
};

}  // namespace Vorlin
