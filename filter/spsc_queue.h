#pragma once

#include <boost/lockfree/spsc_queue.hpp>
#include <cstddef>

namespace Vorlin {

/** Single-producer single-consumer ring of a size given at run time, without locks.
 *
 *  One slot always stays empty, so a ring of n slots holds n - 1 elements. The occupancy has two readings
 * because each side may only ask about the index that is its own: the other one may move at any moment. */
template <typename T>
class SpscQueue {
  public:
    /** @param slots at least 2. Allocates; nothing else here does. */
    explicit SpscQueue(std::size_t slots) : mCapacity(slots - 1), mRing(mCapacity) {}

    /** [producer] @return false with nothing stored when the ring is full. */
    bool push(const T& element) { return mRing.push(element); }
    /** [consumer] @return false with `element` untouched when the ring is empty. */
    bool pop(T& element) { return mRing.pop(element); }

    /** [producer] Elements waiting; the consumer may make it fewer meanwhile. */
    std::size_t sizeForProducer() const { return mCapacity - mRing.write_available(); }
    /** [consumer] Elements waiting; the producer may make it more meanwhile. */
    std::size_t sizeForConsumer() const { return mRing.read_available(); }

  private:
    std::size_t mCapacity;  // elements
    boost::lockfree::spsc_queue<T> mRing;
};

}  // namespace Vorlin
