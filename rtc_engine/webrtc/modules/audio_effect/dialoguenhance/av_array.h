// Arrays for libavutil's transforms: aligned for its widest vectors, zeroed, and freed with their owner.
#pragma once

extern "C" {
#include <libavutil/mem.h>
}

#include <cstddef>
#include <memory>

namespace sonivex {

/** Deleter of an AvArray. */
struct AvFree {
    /** Frees memory of libavutil's allocator; null is allowed.
     *  [any] not real-time safe (frees memory) */
    void operator()(void* memory) const { av_free(memory); }
};

/** An array that owns its memory. */
template <typename Element>
using AvArray = std::unique_ptr<Element[], AvFree>;

/** Allocates `elements` zeroed elements and frees the previous array.
 *  @return false, with the array null, when memory runs out.
 *  [any] not real-time safe (allocates) */
template <typename Element>
bool allocate(AvArray<Element>& array, int elements) {
    array.reset(static_cast<Element*>(av_mallocz(static_cast<std::size_t>(elements) * sizeof(Element))));
    return array != nullptr;
}

}  // namespace sonivex
