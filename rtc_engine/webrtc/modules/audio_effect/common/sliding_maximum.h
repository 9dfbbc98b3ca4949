// Maximum of the last `leaves` values, kept in a tournament tree.
//
//   levels, leaves first:  leaves, leaves/2, .., 2 nodes; level d (depth at the leaves .. 1) starts at
//                          entry 2 * leaves - (2 << d)
//   insert at leaf k:      on every level: node k = value; value = max(value, sibling of k); k = k / 2
//
// Every node holds the maximum of the leaves below it, so an insertion takes one path of `depth` steps. The
// caller moves k round the leaves. A tree of zeros is an empty window, because all values are magnitudes.
#pragma once

#include <cstdint>

namespace sonivex {

/** Inserts `value` at `leaf`, where it replaces the oldest value.
 *  @param tree   [2 * leaves]
 *  @param leaf   0..leaves - 1.
 *  @param leaves 1 << depth.
 *  @return the maximum of all leaves.
 *  [any] real-time safe */
inline float insertIntoMaximumTree(float* tree, std::int32_t leaf, float value, std::int32_t depth,
                                   std::int32_t leaves) {
    std::int32_t node = leaf;
    for (std::int32_t level = depth; level >= 1; --level) {
        float* const nodes = tree + (2 * leaves - (2 << level));
        nodes[node] = value;
        const float sibling = nodes[node ^ 1];
        value = value > sibling ? value : sibling;
        node >>= 1;
    }
    return value;
}

}  // namespace sonivex
