// Arrays for libavutil's transforms: aligned for its widest vectors, zeroed, freed with their owner.
#pragma once

extern "C" {
#include <libavutil/mem.h>
}

#include <cstddef>
#include <memory>

namespace sonivex {

struct AvFree {
    void operator()(void* memory) const { av_free(memory); }
};

template <typename Element>
using AvArray = std::unique_ptr<Element[], AvFree>;

/** False, with the array null, when memory runs out. */
template <typename Element>
bool allocate(AvArray<Element>& array, int elements) {
    array.reset(static_cast<Element*>(av_mallocz(static_cast<std::size_t>(elements) * sizeof(Element))));
    return array != nullptr;
}

}  // namespace sonivex
