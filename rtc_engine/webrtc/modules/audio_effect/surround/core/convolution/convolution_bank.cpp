#include "convolution_bank.h"

#include <algorithm>
#include <cstdint>
#include <type_traits>

#include "bit_cast.h"
#include "float_rules.h"
#include "lane_frames.h"

namespace sonivex {
namespace {

std::size_t tilesOf(const BankShape& shape, std::size_t block_frames) {
    return (shape.channels * block_frames + kTileFloats - 1) / kTileFloats;
}

// Floats of one plane, real or imaginary, with the spectra of `lanes` lanes per channel.
std::size_t planeFloats(const BankShape& shape, std::size_t block_frames, std::size_t lanes) {
    return tilesOf(shape, block_frames) * kTileFloats * lanes;
}

// Floats that the responses of one partition take in a tile.
std::size_t responseFloats(const BankShape& shape) {
    return shape.shares_response ? kTileFloats : shape.rows * kTileSpectrumFloats;
}

LanePlanes planesAt(float* memory, std::size_t plane_floats) {
    return {memory, memory + plane_floats};
}

// Returns true if all numbers are zeros of either sign. Only a zero has no bit set below its sign.
bool areZeros(const float* numbers, std::size_t count) {
    std::uint32_t bits = 0;
    for (std::size_t i = 0; i < count; ++i) bits |= bit_cast<std::uint32_t>(numbers[i]);
    return bits << 1 == 0;
}

template <std::size_t channels>
void gather(const ConvolutionBank::Input& in, std::size_t frames, float* to) {
    const bool are_neighbours = channels == 1 || in.first[1] == in.first[0] + 1;
    if (in.stride == channels && are_neighbours) {  // the input is interleaved just like `to`
        std::copy_n(in.first[0], frames * channels, to);
        return;
    }
    for (std::size_t i = 0; i < frames; ++i) {
        for (std::size_t channel = 0; channel < channels; ++channel) {
            to[i * channels + channel] = in.first[channel][i * in.stride];
        }
    }
}

// Returns the source of every lane of a step. A lane without a snapshot repeats the last snapshot; nothing
// reads it.
LaneSources lanesOf(const Step& step, const float* stream, std::size_t channels) {
    LaneSources sources{};
    for (std::size_t lane = 0; lane < step.lanes(); ++lane) {
        const Snapshot& snapshot = step.snapshots[std::min(lane, step.count - 1)];
        sources[lane] = {stream + snapshot.block * step.block_frames * channels, snapshot.to};
    }
    return sources;
}

// A view of outputs [frame][term][ear], with a stride for frames and one for terms.
struct Outputs {
    const float* first;
    std::size_t frame_stride;
    std::size_t term_stride;
};

// Overlap-add: every output is the sum of the first half of its own block and the second half of the block
// before. The outputs of all frames are written without gaps.
template <std::size_t terms, std::size_t ear_lanes>
void sumHalves(const Outputs& first_halves, const Outputs& second_halves, std::size_t frames,
               float* __restrict to) {
    const float* first = first_halves.first;
    const float* second = second_halves.first;
    for (std::size_t frame = 0; frame < frames; ++frame) {
        for (std::size_t term = 0; term < terms; ++term) {
            for (std::size_t ear = 0; ear < ear_lanes; ++ear) {
                to[term * ear_lanes + ear] = first[term * first_halves.term_stride + ear] +
                                             second[term * second_halves.term_stride + ear];
            }
        }
        first += first_halves.frame_stride;
        second += second_halves.frame_stride;
        to += terms * ear_lanes;
    }
}

template <std::size_t terms, std::size_t ear_lanes>
void addTerms(const float* __restrict outputs, std::size_t frames, float* __restrict ears) {
    constexpr std::size_t kEars = 2;
    for (std::size_t frame = 0; frame < frames; ++frame) {
        for (std::size_t ear = 0; ear < kEars; ++ear) {
            float sum = ears[frame * kEars + ear];
            for (std::size_t term = 0; term < terms; ++term) {
                sum += outputs[(frame * terms + term) * ear_lanes + ear % ear_lanes];
            }
            ears[frame * kEars + ear] = sum;
        }
    }
}

// Copies the outputs of all frames without gaps.
template <std::size_t terms, std::size_t ear_lanes>
void packTerms(const Outputs& from, std::size_t frames, float* __restrict to) {
    const float* first = from.first;
    for (std::size_t frame = 0; frame < frames; ++frame) {
        for (std::size_t term = 0; term < terms; ++term) {
            for (std::size_t ear = 0; ear < ear_lanes; ++ear) {
                to[term * ear_lanes + ear] = first[term * from.term_stride + ear];
            }
        }
        first += from.frame_stride;
        to += terms * ear_lanes;
    }
}

// Calls `function` with a shape's terms and ear lanes as compile-time constants.
template <typename Function>
void forShape(const BankShape& shape, Function function) {
    if (shape.earLanes() == 1) {
        function(std::integral_constant<std::size_t, 1>(), std::integral_constant<std::size_t, 1>());
    } else if (shape.terms() == 1) {
        function(std::integral_constant<std::size_t, 1>(), std::integral_constant<std::size_t, 2>());
    } else {
        function(std::integral_constant<std::size_t, 2>(), std::integral_constant<std::size_t, 2>());
    }
}

// The frames of a step's snapshots, as the inverse transforms leave them: [2 L][term][snapshot][ear]. The
// frames of the first two snapshots precede those of the others.
class RenderedFrames {
  public:
    RenderedFrames(const Step& step, const BankShape& shape, const float* frames,
                   std::size_t floats_of_planes)
        : step_(step),
          frames_(frames),
          floats_of_planes_(floats_of_planes),
          ear_lanes_(shape.earLanes()),
          term_stride_(std::min(step.lanes(), kSnapshotsOfPlanes) * ear_lanes_),
          frame_stride_(shape.terms() * term_stride_) {}

    // The outputs of a snapshot, from `frame` of its block on, 0..2 L - 1.
    Outputs of(std::size_t snapshot, std::size_t frame) const {
        const float* const planes = frames_ + snapshot / kSnapshotsOfPlanes * floats_of_planes_;
        return {planes + frame * frame_stride_ + snapshot % kSnapshotsOfPlanes * ear_lanes_, frame_stride_,
                term_stride_};
    }
    // The second half of a finished block, which overlaps the next block, from `frame` of the next block on.
    Outputs secondHalfOf(std::size_t block, std::size_t frame) const {
        std::size_t last = step_.count - 1;
        while (step_.snapshots[last].block > block) --last;
        return of(last, step_.block_frames + frame);
    }

  private:
    const Step& step_;
    const float* frames_;
    std::size_t floats_of_planes_;
    std::size_t ear_lanes_;
    std::size_t term_stride_;
    std::size_t frame_stride_;
};

constexpr std::size_t kPairsOfSnapshots = kMaxSnapshots / kSnapshotsOfPlanes;

// Lengths of the workspace's arrays, in elements, for the largest bank.
struct WorkspaceSizes {
    std::size_t input;
    std::size_t lanes;
    std::size_t work;

    explicit WorkspaceSizes(std::size_t block_frames) {
        constexpr const BankShape& kShape = ConvolutionWorkspace::kLargestShape;
        input = 2 * planeFloats(kShape, block_frames, kMaxSnapshots);
        lanes = 2 * planeFloats(kShape, block_frames, kMaxSnapshots * kShape.rows);
        work = LaneTransform::workDoubles(2 * block_frames);
    }
};

}  // namespace

std::size_t ConvolutionWorkspace::bytesOf(std::size_t block_frames) {
    const WorkspaceSizes sizes(block_frames);
    return Arena::bytesOf<float>(sizes.input) + Arena::bytesOf<float>(sizes.lanes) +
           Arena::bytesOf<double>(sizes.work);
}

ConvolutionWorkspace::ConvolutionWorkspace(std::size_t block_frames, Arena& arena)
    : tables_(2 * block_frames), transform_(laneTransform()), arithmetic_(bankArithmetic()) {
    const WorkspaceSizes sizes(block_frames);
    input_ = arena.take<float>(sizes.input);
    lanes_ = arena.take<float>(sizes.lanes);
    work_ = arena.take<double>(sizes.work);
}

std::size_t ConvolutionBank::bytesOf(const BankShape& shape, std::size_t partitions,
                                     std::size_t block_frames) {
    const std::size_t tiles = tilesOf(shape, block_frames);
    return Arena::bytesOf<float>(tiles * (partitions - 1) * kTileSpectrumFloats) +
           Arena::bytesOf<float>(tiles * partitions * responseFloats(shape)) +
           Arena::bytesOf<float>(tiles * shape.rows * kTileSpectrumFloats) +
           Arena::bytesOf<float>(block_frames * shape.outputs()) +
           Arena::bytesOf<float>(kMaxBlocks * block_frames * shape.channels) +
           Arena::bytesOf<float>(kMaxBlocksOfFrames * block_frames * shape.outputs());
}

ConvolutionBank::ConvolutionBank(const BankShape& shape, const Taps* responses, std::size_t partitions,
                                 ConvolutionWorkspace& workspace, Arena& arena)
    : shape_(shape), block_frames_(workspace.blockFrames()), silent_blocks_(partitions) {
    const std::size_t tiles = tilesOf(shape, block_frames_);
    float* const inputs = arena.take<float>(tiles * (partitions - 1) * kTileSpectrumFloats);
    float* const spectra = arena.take<float>(tiles * partitions * responseFloats(shape));
    float* const accumulated = arena.take<float>(tiles * shape.rows * kTileSpectrumFloats);
    overlap_ = arena.take<float>(block_frames_ * shape.outputs());
    stream_ = arena.take<float>(kMaxBlocks * block_frames_ * shape.channels);
    outputs_ = arena.take<float>(kMaxBlocksOfFrames * block_frames_ * shape.outputs());
    memory_ = {.inputs = inputs,
               .responses = spectra,
               .accumulated = accumulated,
               .tiles = tiles,
               .partitions = partitions,
               .channels = shape.channels,
               .rows = shape.rows,
               .shares_response = shape.shares_response};
    transformResponses(responses, spectra, workspace);
}

// Transforms two partitions of every response at a time, as lanes [partition][response].
void ConvolutionBank::transformResponses(const Taps* responses, float* spectra,
                                         ConvolutionWorkspace& workspace) const {
    constexpr std::size_t kAtOnce = 2;
    const std::size_t lanes = kAtOnce * shape_.responses();
    float* const frames = workspace.lanes_;
    const LanePlanes planes = planesAt(frames, block_frames_ * lanes);
    for (std::size_t first = 0; first < memory_.partitions; first += kAtOnce) {
        for (std::size_t lane = 0; lane < lanes; ++lane) {
            const Taps& response = responses[lane % shape_.responses()];
            const std::size_t partition = first + lane / shape_.responses();
            const std::size_t start = std::min(partition * block_frames_, response.count);
            const std::size_t count = std::min(response.count - start, block_frames_);
            for (std::size_t i = 0; i < count; ++i) frames[i * lanes + lane] = response.data[start + i];
            for (std::size_t i = count; i < block_frames_; ++i) frames[i * lanes + lane] = 0.0F;
        }
        workspace.transform_.forward(workspace.tables_, frames, lanes, planes.re, planes.im, workspace.work_);
        const std::size_t channels = shape_.shares_response ? 1 : shape_.channels;
        const std::size_t plane = kTileFloats / shape_.channels * channels;  // complex numbers in a tile
        const std::size_t count = std::min(kAtOnce, memory_.partitions - first);
        for (std::size_t lane = 0; lane < count * shape_.responses(); ++lane) {
            const std::size_t partition = first + lane / shape_.responses();
            const std::size_t row = lane % shape_.responses() / channels;
            const std::size_t channel = lane % channels;
            for (std::size_t bin = 0; bin < block_frames_; ++bin) {
                const std::size_t k = bin * channels + channel;
                float* const tile = spectra +
                                    (k / plane * memory_.partitions + partition) * responseFloats(shape_) +
                                    row * kTileSpectrumFloats;
                tile[k % plane] = planes.re[bin * lanes + lane];
                tile[plane + k % plane] = planes.im[bin * lanes + lane];
            }
        }
    }
}

void ConvolutionBank::render(const Step& step, const Input& in, ConvolutionWorkspace& workspace) {
    float* const fresh = stream_ + step.firstFill() * shape_.channels;
    shape_.channels == 1 ? gather<1>(in, step.frames(), fresh) : gather<2>(in, step.frames(), fresh);
    // After P silent blocks the ring holds only zeros. The sums start from +0 and never become -0, so they
    // and the overlap are +0 everywhere, and rendering would leave them so. The block being filled may hold
    // zeros of either sign, which give the same result.
    const bool was_silent = silent_blocks_ == memory_.partitions && is_block_silent_;
    const bool is_silent = takeSilence(step);
    has_outputs_ = !was_silent || !is_silent;
    if (has_outputs_) convolve(step, workspace);
    if (step.blocks() > 1) {
        const std::size_t last_block = (step.blocks() - 1) * block_frames_ * shape_.channels;
        std::copy_n(stream_ + last_block, step.lastFill() * shape_.channels, stream_);
    }
}

// The other arrays are written before they are read again: the stream when a block begins, the outputs in
// every step that has some. The sums are not: a block that begins silently is rendered from its first sound
// on.
void ConvolutionBank::reset() {
    std::fill_n(memory_.inputs, inputFloats(), 0.0F);
    std::fill_n(memory_.accumulated, sumFloats(), 0.0F);
    std::fill_n(overlap_, overlapFloats(), 0.0F);
    newest_ = 0;
    has_outputs_ = false;
    is_block_silent_ = true;
    silent_blocks_ = memory_.partitions;
}

void ConvolutionBank::addOutputs(std::size_t frames, float* ears) const {
    if (!has_outputs_) return;
    forShape(shape_, [&](auto terms, auto ear_lanes) { addTerms<terms, ear_lanes>(outputs_, frames, ears); });
}

// Updates the count of silent blocks. Returns true if all frames of the step are silent.
bool ConvolutionBank::takeSilence(const Step& step) {
    bool is_silent = true;
    for (std::size_t i = 0; i < step.count; ++i) {
        const Snapshot& snapshot = step.snapshots[i];
        const std::size_t first = snapshot.block * block_frames_ + snapshot.from;
        const bool are_zeros =
            areZeros(stream_ + first * shape_.channels, snapshot.frames() * shape_.channels);
        is_silent = is_silent && are_zeros;
        is_block_silent_ = is_block_silent_ && are_zeros;
        if (snapshot.to < block_frames_) continue;
        silent_blocks_ = is_block_silent_ ? std::min(silent_blocks_ + 1, memory_.partitions) : 0;
        is_block_silent_ = true;
    }
    return is_silent;
}

void ConvolutionBank::convolve(const Step& step, ConvolutionWorkspace& workspace) {
    const std::size_t snapshots = step.lanes();
    const std::size_t of_planes = std::min(snapshots, kSnapshotsOfPlanes);
    float* const lanes = workspace.lanes_;
    layLanes(lanesOf(step, stream_, shape_.channels), snapshots, shape_.channels, block_frames_, lanes);
    const LanePlanes input = planesAt(workspace.input_, planeFloats(shape_, block_frames_, snapshots));
    workspace.transform_.forward(workspace.tables_, lanes, snapshots * shape_.channels, input.re, input.im,
                                 workspace.work_);

    const std::size_t plane = planeFloats(shape_, block_frames_, of_planes * shape_.rows);
    const LanePlanes sums[kPairsOfSnapshots] = {planesAt(lanes, plane), planesAt(lanes + 2 * plane, plane)};
    workspace.arithmetic_.render(memory_, shape_.ears, newest_, step, input, sums);
    for (std::size_t i = 0; i < step.finishedBlocks() && memory_.partitions > 1; ++i) {
        newest_ = slotOfNextBlock(newest_, memory_.partitions - 1);
    }
    for (std::size_t i = 0; i < snapshots; i += kSnapshotsOfPlanes) {
        const LanePlanes& spectra = sums[i / kSnapshotsOfPlanes];
        workspace.transform_.inverse(workspace.tables_, spectra.re, spectra.im, of_planes * shape_.outputs(),
                                     spectra.re, workspace.work_);
    }

    const RenderedFrames frames(step, shape_, lanes, 2 * plane);
    const std::size_t overlap_stride = shape_.outputs();
    forShape(shape_, [&](auto terms, auto ear_lanes) {
        float* to = outputs_;
        for (std::size_t i = 0; i < step.count; ++i) {
            const Snapshot& snapshot = step.snapshots[i];
            const Outputs before =
                snapshot.block == 0
                    ? Outputs{overlap_ + snapshot.from * overlap_stride, overlap_stride, ear_lanes}
                    : frames.secondHalfOf(snapshot.block - 1, snapshot.from);
            sumHalves<terms, ear_lanes>(frames.of(i, snapshot.from), before, snapshot.frames(), to);
            to += snapshot.frames() * shape_.outputs();
        }
        if (step.finishedBlocks() == 0) return;
        packTerms<terms, ear_lanes>(frames.secondHalfOf(step.finishedBlocks() - 1, 0), block_frames_,
                                    overlap_);
    });
}

}  // namespace sonivex
