#define HWY_TARGET_INCLUDE "bank_arithmetic.cpp"
#include "compile_for_each_target.h"

#include <hwy/cache_control.h>

#include "bank_arithmetic.h"
#include "float_rules.h"
#include "tile_vectors-inl.h"

HWY_BEFORE_NAMESPACE();
namespace sonivex::HWY_NAMESPACE {

// Prefetch distance, in partitions ahead of the one being summed.
constexpr std::size_t kPrefetchDistance = 32;

// ---- responses in a tile ----

// Every channel has its own spectrum in every row.
template <std::size_t rows>
struct OwnResponses {
    static constexpr std::size_t kRows = rows;
    static constexpr std::size_t kFloats = rows * kTileSpectrumFloats;  // per partition

    template <std::size_t vectors>
    static HWY_INLINE Numbers<vectors> load(const float* partition, std::size_t row, std::size_t offset) {
        return loadTile<vectors>(partition + row * kTileSpectrumFloats, offset);
    }
};

// Both channels of the only row share one spectrum.
struct SharedResponse {
    static constexpr std::size_t kRows = 1;
    static constexpr std::size_t kFloats = kTileFloats;

    template <std::size_t vectors>
    static HWY_INLINE Numbers<vectors> load(const float* partition, std::size_t /* row */,
                                            std::size_t offset) {
        Numbers<vectors> numbers;
        for (std::size_t v = 0; v < vectors; ++v) {
            numbers.re[v] = loadTwice(partition, offset + v * kLanes);
            numbers.im[v] = loadTwice(partition + kTileFloats / 2, offset + v * kLanes);
        }
        return numbers;
    }
};

// ---- the sums at one place of a tile ----

template <class Responses>
struct Sums {
    PlaceNumbers row[Responses::kRows];
};

// A place is the run of kPlaceFloats indices k in a tile that the kernel works on at once.
template <class Responses>
struct Place {
    const BankMemory& memory;
    std::size_t tile;
    std::size_t offset;  // in the tile

    float* input(std::size_t slot) const {
        return memory.inputs + (tile * (memory.partitions - 1) + slot) * kTileSpectrumFloats;
    }
    const float* response(std::size_t partition) const {
        return memory.responses + (tile * memory.partitions + partition) * Responses::kFloats;
    }
    float* accumulated(std::size_t row) const {
        return memory.accumulated + (tile * Responses::kRows + row) * kTileSpectrumFloats;
    }
};

// Sums over the older partitions (i >= 1) of one block, or of two consecutive blocks. Partition i of the
// second block multiplies the same input as partition i - 1 of the first block.
template <class Responses, std::size_t blocks, std::size_t vectors, bool has_reals>
struct OlderPartitions {
    Numbers<vectors> sums[blocks][Responses::kRows];
    Factor<vectors> previous;  // the input for the second block's next partition

    // Adds the products of partitions i .. i + count - 1 with `count` blocks of the ring, from `input` on.
    HWY_INLINE void accumulate(const Place<Responses>& place, std::size_t offset, const float* input,
                               std::size_t i, std::size_t count) {
        const float* response = place.response(i);
        for (std::size_t n = 0; n < count; ++n) {
            const Factor<vectors> x =
                asFactor<has_reals>(loadTile<vectors>(input, offset), place.memory.channels, offset);
            for (std::size_t row = 0; row < Responses::kRows; ++row) {
                const auto h = Responses::template load<vectors>(response, row, offset);
                multiplyAccumulate(sums[0][row], h, x);
                if constexpr (blocks == 2) multiplyAccumulate(sums[1][row], h, previous);
            }
            previous = x;
            if (offset == 0) prefetch(input, response);  // fetches whole cache lines: once per tile is enough
            input += kTileSpectrumFloats;
            response += Responses::kFloats;
        }
    }

    // The next partitions come from the second-level cache, in steps too wide for the hardware prefetcher.
    static HWY_INLINE void prefetch(const float* input, const float* response) {
        for (std::size_t line = 0; line < kTileSpectrumFloats; line += kTileFloats) {
            hwy::Prefetch(input + kPrefetchDistance * kTileSpectrumFloats + line);
        }
        for (std::size_t line = 0; line < Responses::kFloats; line += kTileFloats) {
            hwy::Prefetch(response + kPrefetchDistance * Responses::kFloats + line);
        }
    }
};

// Sums the older partitions at a place: all its vectors at once for one block, one vector at a time for two
// blocks, because there are no registers for more. `newest` is the ring slot of the block before the first
// one. `first` is the first block's spectrum, which partition 1 of the second block multiplies.
template <class Responses, std::size_t blocks, bool has_reals>
HWY_INLINE void sumOlderPartitions(const Place<Responses>& place, std::size_t newest,
                                   const PlaceNumbers& first, Sums<Responses>* sums) {
    constexpr std::size_t kAtOnce = blocks == 1 ? kVectors : 1;
    const std::size_t slots = place.memory.partitions - 1;
    for (std::size_t v = 0; v < kVectors; v += kAtOnce) {
        const std::size_t offset = place.offset + v * kLanes;
        OlderPartitions<Responses, blocks, kAtOnce, has_reals> older;
        for (auto& of_block : older.sums) {
            for (auto& of_row : of_block) of_row = zeros<kAtOnce>();
        }
        if constexpr (blocks == 2) {
            const Numbers<1> some = {{first.re[v]}, {first.im[v]}};
            older.previous = asFactor<has_reals>(some, place.memory.channels, offset);
        }
        if (slots > 0) {
            older.accumulate(place, offset, place.input(newest), 1, slots - newest);
            older.accumulate(place, offset, place.input(0), 1 + slots - newest, newest);
        }
        for (std::size_t block = 0; block < blocks; ++block) {
            for (std::size_t row = 0; row < Responses::kRows; ++row) {
                for (std::size_t i = 0; i < kAtOnce; ++i) {
                    sums[block].row[row].re[v + i] = older.sums[block][row].re[i];
                    sums[block].row[row].im[v + i] = older.sums[block][row].im[i];
                }
            }
        }
    }
}

template <class Responses, bool has_reals>
HWY_INLINE void addNewest(const Place<Responses>& place, const PlaceNumbers& input, Sums<Responses>& sums) {
    const auto x = asFactor<has_reals>(input, place.memory.channels, place.offset);
    for (std::size_t row = 0; row < Responses::kRows; ++row) {
        const auto h = Responses::template load<kVectors>(place.response(0), row, place.offset);
        multiplyAccumulate(sums.row[row], h, x);
    }
}

template <class Responses>
HWY_INLINE Sums<Responses> noSums() {
    Sums<Responses> sums;
    for (PlaceNumbers& numbers : sums.row) numbers = zeros<kVectors>();
    return sums;
}

template <class Responses>
HWY_INLINE Sums<Responses> loadAccumulated(const Place<Responses>& place) {
    Sums<Responses> sums;
    for (std::size_t row = 0; row < Responses::kRows; ++row) {
        sums.row[row] = loadTile<kVectors>(place.accumulated(row), place.offset);
    }
    return sums;
}

template <class Responses>
HWY_INLINE void storeAccumulated(const Place<Responses>& place, const Sums<Responses>& sums) {
    for (std::size_t row = 0; row < Responses::kRows; ++row) {
        storeTile(sums.row[row], place.accumulated(row), place.offset);
    }
}

template <std::size_t snapshots>
HWY_INLINE void loadInputs(const LanePlanes& planes, std::size_t k, std::size_t channels,
                           PlaceNumbers (&inputs)[snapshots]) {
    for (std::size_t v = 0; v < kVectors; ++v) {
        Vector re[snapshots];
        Vector im[snapshots];
        loadLanes(planes.re, k + v * kLanes, channels, re);
        loadLanes(planes.im, k + v * kLanes, channels, im);
        for (std::size_t i = 0; i < snapshots; ++i) {
            inputs[i].re[v] = re[i];
            inputs[i].im[v] = im[i];
        }
    }
}

template <class Responses, std::size_t snapshots>
HWY_INLINE void storeOutputs(const LanePlanes& planes, std::size_t k, Ears ears,
                             const Sums<Responses>* sums) {
    for (std::size_t v = 0; v < kVectors; ++v) {
        Vector re[snapshots][Responses::kRows];
        Vector im[snapshots][Responses::kRows];
        for (std::size_t i = 0; i < snapshots; ++i) {
            for (std::size_t row = 0; row < Responses::kRows; ++row) {
                re[i][row] = sums[i].row[row].re[v];
                im[i][row] = sums[i].row[row].im[v];
            }
        }
        storeLanes<Responses::kRows, snapshots>(planes.re, k + v * kLanes, ears, re);
        storeLanes<Responses::kRows, snapshots>(planes.im, k + v * kLanes, ears, im);
    }
}

// ---- the steps ----

// Serves any step and looks its cuts up at run time.
struct AnyCuts {
    const Step& step;

    bool continuesABlock() const { return !step.beginsABlock(); }
    std::size_t blocks() const { return step.blocks(); }
    std::size_t finishedBlocks() const { return step.finishedBlocks(); }
    std::size_t snapshots() const { return step.count; }
    std::size_t blockOf(std::size_t snapshot) const { return step.snapshots[snapshot].block; }
};

// Serves a step that continues a block, ends within a block, and whose snapshots belong to the blocks named
// here. Calls slightly shorter than a block nearly always produce such steps. The compiler knows the cuts and
// keeps in registers the values that would otherwise go through memory.
template <std::size_t... blocks_of_snapshots>
struct KnownCuts {
    static constexpr std::size_t kBlocks[] = {blocks_of_snapshots...};
    static constexpr std::size_t kCount = sizeof...(blocks_of_snapshots);

    static bool areThoseOf(const Step& step) {
        bool are_equal = step.count == kCount && !step.beginsABlock() && !step.endsWithABlock();
        for (std::size_t i = 0; are_equal && i < kCount; ++i)
            are_equal = step.snapshots[i].block == kBlocks[i];
        return are_equal;
    }

    static constexpr bool continuesABlock() { return true; }
    static constexpr std::size_t blocks() { return kBlocks[kCount - 1] + 1; }
    static constexpr std::size_t finishedBlocks() { return blocks() - 1; }
    static constexpr std::size_t snapshots() { return kCount; }
    static constexpr std::size_t blockOf(std::size_t snapshot) { return kBlocks[snapshot]; }
};

struct Call {
    const BankMemory& memory;
    Ears ears;
    std::size_t newest;
    const LanePlanes& in;
    const LanePlanes (&out)[kMaxSnapshots / kSnapshotsOfPlanes];
};

// Stores a finished block's spectrum in the ring. Returns its slot, the new `newest`.
template <class Responses>
HWY_INLINE std::size_t keepFinished(const Place<Responses>& place, std::size_t newest,
                                    const PlaceNumbers& input) {
    const std::size_t slots = place.memory.partitions - 1;
    if (slots == 0) return newest;
    const std::size_t slot = slotOfNextBlock(newest, slots);
    storeTile(input, place.input(slot), place.offset);
    return slot;
}

// Sums the older partitions of every block of the step and stores finished blocks in the ring. `last` holds
// the latest input spectrum of every block.
template <class Responses, bool has_reals, class Cuts>
HWY_INLINE void sumBlocks(const Call& call, const Cuts& cuts, const Place<Responses>& place,
                          const PlaceNumbers (&last)[kMaxBlocks], Sums<Responses> (&sums)[kMaxBlocks]) {
    const std::size_t finished = cuts.finishedBlocks();
    std::size_t newest = call.newest;
    if (cuts.continuesABlock()) {
        sums[0] = loadAccumulated(place);
        if (finished > 0) newest = keepFinished(place, newest, last[0]);
    }
    const std::size_t first = cuts.continuesABlock() ? 1 : 0;
    const std::size_t fresh = cuts.blocks() - first;
    if (fresh == 0) return;
    if (fresh == 1) {
        sumOlderPartitions<Responses, 1, has_reals>(place, newest, last[first], sums + first);
    } else {
        sumOlderPartitions<Responses, 2, has_reals>(place, newest, last[first], sums + first);
    }
    for (std::size_t block = first; block < finished; ++block) {
        newest = keepFinished(place, newest, last[block]);
    }
    storeAccumulated(place, sums[cuts.blocks() - 1]);
}

template <class Responses, std::size_t snapshots, bool has_reals, class Cuts>
HWY_INLINE void renderPlace(const Call& call, const Cuts& cuts, const Place<Responses>& place) {
    const std::size_t k = place.tile * kTileFloats + place.offset;
    PlaceNumbers inputs[snapshots];
    loadInputs(call.in, k, call.memory.channels, inputs);
    PlaceNumbers last[kMaxBlocks];
    for (std::size_t i = 0; i < cuts.snapshots(); ++i) last[cuts.blockOf(i)] = inputs[i];
    Sums<Responses> blocks[kMaxBlocks];
    sumBlocks<Responses, has_reals>(call, cuts, place, last, blocks);

    Sums<Responses> sums[snapshots];
    for (std::size_t i = 0; i < snapshots; ++i) {
        if (i >= cuts.snapshots()) {
            sums[i] = noSums<Responses>();
            continue;
        }
        sums[i] = blocks[cuts.blockOf(i)];
        addNewest<Responses, has_reals>(place, inputs[i], sums[i]);
    }
    constexpr std::size_t kOfPlanes = snapshots < kSnapshotsOfPlanes ? snapshots : kSnapshotsOfPlanes;
    for (std::size_t i = 0; i < snapshots; i += kOfPlanes) {
        storeOutputs<Responses, kOfPlanes>(call.out[i / kSnapshotsOfPlanes], k, call.ears, sums + i);
    }
}

template <class Responses, std::size_t snapshots, bool has_reals, class Cuts>
HWY_INLINE void renderTile(const Call& call, const Cuts& cuts, std::size_t tile) {
    for (std::size_t offset = 0; offset < kTileFloats; offset += kPlaceFloats) {
        renderPlace<Responses, snapshots, has_reals>(call, cuts, Place<Responses>{call.memory, tile, offset});
    }
}

template <class Responses, std::size_t snapshots, class Cuts>
void renderTiles(const Call& call, const Cuts& cuts) {
    renderTile<Responses, snapshots, true>(call, cuts, 0);
    for (std::size_t tile = 1; tile < call.memory.tiles; ++tile) {
        renderTile<Responses, snapshots, false>(call, cuts, tile);
    }
}

template <class Responses>
void renderStep(const Call& call, const Step& step) {
    using OneCall = KnownCuts<0, 1>;
    using TwoCalls = KnownCuts<0, 1, 1, 2>;
    if (OneCall::areThoseOf(step)) return renderTiles<Responses, 2>(call, OneCall());
    if (TwoCalls::areThoseOf(step)) return renderTiles<Responses, 4>(call, TwoCalls());
    const AnyCuts cuts = {step};
    if (step.lanes() == 1) return renderTiles<Responses, 1>(call, cuts);
    if (step.lanes() == 2) return renderTiles<Responses, 2>(call, cuts);
    renderTiles<Responses, 4>(call, cuts);
}

void render(const BankMemory& memory, Ears ears, std::size_t newest, const Step& step, const LanePlanes& in,
            const LanePlanes (&out)[kMaxSnapshots / kSnapshotsOfPlanes]) {
    const Call call = {memory, ears, newest, in, out};
    if (memory.shares_response) return renderStep<SharedResponse>(call, step);
    if (memory.rows == 1) return renderStep<OwnResponses<1>>(call, step);
    renderStep<OwnResponses<2>>(call, step);
}

const BankArithmetic* arithmetic() {
    static constexpr BankArithmetic kArithmetic = {render};
    return &kArithmetic;
}

}  // namespace sonivex::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace sonivex {
namespace {
HWY_EXPORT(arithmetic);
}  // namespace

const BankArithmetic& bankArithmetic() {
    return *HWY_DYNAMIC_DISPATCH(arithmetic)();
}

}  // namespace sonivex
#endif
