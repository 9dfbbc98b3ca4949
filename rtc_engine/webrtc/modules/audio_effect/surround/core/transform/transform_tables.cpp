#include "transform_tables.h"

#include "float_rules.h"
#include "unit_roots.h"

namespace sonivex {
namespace {

// Returns t, t2 and t3. t is the unit point of an angle below a quarter turn. t2 is the unit point of twice
// that angle, not the rounded square of t. t3 is the product of t and t2.
BlockRoots rootsOf(const UnitRoots& roots, std::size_t angle, std::size_t quarter_turn) {
    const UnitPoint t1 = roots.at(static_cast<int>(angle));
    UnitPoint t2 = roots.at(static_cast<int>(2 * angle % quarter_turn));
    if (2 * angle >= quarter_turn) t2 = {.cosine = -t2.sine, .sine = t2.cosine};
    // The difference is written as a sum, which is the same number: GCC 12 fuses a difference of products
    // beside a sum of products, even if told not to contract.
    const double minus_sine = -t1.sine;
    return {.re = {t1.cosine, t2.cosine, t1.cosine * t2.cosine + minus_sine * t2.sine},
            .im = {t1.sine, t2.sine, t1.cosine * t2.sine + t1.sine * t2.cosine}};
}

}  // namespace

TransformTables::TransformTables(std::size_t samples) : points_(samples / 2) {
    if (points_ < 4) return;
    const std::size_t half = points_ / 2;
    const UnitRoots bins(static_cast<int>(half));
    pair_factors_.resize(half);
    for (std::size_t k = 1; k < half; ++k) {
        pair_factors_[k] = {.re = 0.5 - 0.5 * bins.at(static_cast<int>(half - k)).cosine,
                            .im = 0.5 * bins.at(static_cast<int>(k)).cosine};
    }

    const std::size_t blocks = points_ / 4;
    block_order_.resize(blocks);
    for (std::size_t filled = 1; filled < blocks; filled *= 2) {
        const auto step = static_cast<std::uint32_t>(blocks / (2 * filled));
        for (std::size_t i = 0; i < filled; ++i) block_order_[filled + i] = block_order_[i] + step;
    }
    // The angle of a block is the block's number with the binary digits reversed.
    const UnitRoots angles(static_cast<int>(blocks));
    block_roots_.reserve(blocks);
    for (const std::uint32_t angle : block_order_) block_roots_.push_back(rootsOf(angles, angle, blocks));
}

}  // namespace sonivex
