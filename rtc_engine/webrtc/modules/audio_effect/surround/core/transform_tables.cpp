#include "transform_tables.h"

#include "float_rules.h"
#include "unit_roots.h"

namespace audiofft::details {

void makeRoots(double* table, int doubles, int* offsets) {
    const sonivex::UnitRoots roots(doubles);
    double* next = table;
    for (int j = 0; j < doubles / 2; ++j) {
        const sonivex::UnitPoint point = roots.at(j);
        *next++ = point.cosine;
        *next++ = point.sine;
    }
    reversePointOrder(table, static_cast<std::size_t>(doubles / 2), offsets);
}

void makeHalfCosines(double* table, int count) {
    const sonivex::UnitRoots roots(count);
    for (int j = 0; j < count; ++j) table[j] = 0.5 * roots.at(j).cosine;
}

TransformTables::TransformTables(std::size_t samples) : points_(samples / 2) {
    if (points_ < 4) return;
    std::vector<double> half_cosines(points_ / 2);
    makeHalfCosines(half_cosines.data(), static_cast<int>(points_ / 2));
    pair_factors_.resize(points_ / 2);
    for (std::size_t k = 1; k < points_ / 2; ++k) {
        pair_factors_[k] = {.re = 0.5 - half_cosines[points_ / 2 - k], .im = half_cosines[k]};
    }

    std::vector<double> roots(points_ / 2);
    std::vector<int> offsets(roots.size());
    makeRoots(roots.data(), static_cast<int>(roots.size()), offsets.data());
    const std::size_t blocks = points_ / 4;
    block_roots_.reserve(blocks);
    for (std::size_t block = 0; block < blocks; ++block) {
        block_roots_.push_back(rootsOfBlock(roots.data(), block));
    }

    block_order_.resize(blocks);
    for (std::size_t filled = 1; filled < blocks; filled *= 2) {
        const auto step = static_cast<std::uint32_t>(blocks / (2 * filled));
        for (std::size_t i = 0; i < filled; ++i) block_order_[filled + i] = block_order_[i] + step;
    }
}

}  // namespace audiofft::details
