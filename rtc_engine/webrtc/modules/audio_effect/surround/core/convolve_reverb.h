// Loudspeakers in a room, heard through headphones: every input channel is convolved with the responses of
// its loudspeaker at the left and the right ear, and the results are summed per ear.
//
//   ear[i] = sum over the sources of (source * response(source, ear))[i]
//
// A set-up loads the responses of a layout (layouts.h) into banks of convolvers (convolution/). Their output
// has the same bits as one scalar convolver (fftconvolver.h) for each pair of a source and an ear. The pairs
// carry the numbers of their agents (IRAgent.h):
//
//   0-3    two channels
//   4, 7   Audio stage, left and right
//   8-23   5.1 and 7.1: source by source, left ear before right
//
// Use: construct an object; call the prepareToPlay_* of the layout and, for the Surround layouts, also
// prepareToPlay_Kelvo_Audio; then call the process_* of the same name for every block. The pipelines call
// prepare and process with the layout's record instead.
//
// Threads: the tables are written while the library is loaded and only read afterwards. One thread at a time
// uses an object.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "layout.h"
#include "source_banks.h"
#include "table_list.h"

/** Convolves one layout, and the Audio stage if the layout has one. */
class ConvolveReverb {
  public:
    using Table = sonivex::ResponseTable;
    using Layout = sonivex::Layout;
    using Response = std::vector<float>;  // taps; 1 is unity gain

    // The tables, filled before main or while the library is loaded.
#define SONIVEX_DECLARE_TABLE(name) static const Table g_##name;
    SONIVEX_TABLES_LOUDSPEAKERS(SONIVEX_DECLARE_TABLE)
    SONIVEX_DECLARE_TABLE(dolbyL441)
    SONIVEX_DECLARE_TABLE(dolbyR441)
#undef SONIVEX_DECLARE_TABLE

    /** @param owner_bytes room to leave in the arena for arrays of the owner that every call touches, too.
     *                     The owner takes them from arena() after the set-ups.
     *  [any] real-time safe */
    explicit ConvolveReverb(std::size_t owner_bytes = 0) : owner_bytes_(owner_bytes) {}
    ConvolveReverb(const ConvolveReverb&) = delete;
    ConvolveReverb& operator=(const ConvolveReverb&) = delete;

    /** Loads the responses of a layout and starts from silence. A second call for the same layout and mode
     *  appends the responses, so that each is there twice, one behind the other.
     *  @param layout       kAudio sets up the Audio stage. Every other layout replaces the one before.
     *  @param new_channels channels of the input: 1 or 2, 6, or 8, depending on the layout.
     *  @param block_frames longest block that will be processed; a negative value counts as 0.
     *  @param mode         1 or 2; every other value is 3. Layouts without modes ignore it.
     *  Throws std::bad_alloc when memory runs out; the object may then only be destroyed.
     *  [any] not real-time safe: allocates */
    void prepare(const Layout& layout, int new_channels, int block_frames, unsigned mode);

    /** Calls prepare for kBingo2. [any] not real-time safe: allocates */
    void prepareToPlay_Kelvo_Bingo_2(int new_channels, int block_frames);
    /** Calls prepare for kBingo51. [any] not real-time safe: allocates */
    void prepareToPlay_Kelvo_Bingo_5_1(int new_channels, int block_frames);
    /** Calls prepare for kBingo71. [any] not real-time safe: allocates */
    void prepareToPlay_Kelvo_Bingo_7_1(int new_channels, int block_frames);
    /** Calls prepare for kSurround2. [any] not real-time safe: allocates */
    void prepareToPlay_Kelvo_Surround_2(int new_channels, int block_frames, unsigned mode);
    /** Calls prepare for kSurround51. [any] not real-time safe: allocates */
    void prepareToPlay_Kelvo_Surround_5_1(int new_channels, int block_frames, unsigned mode);
    /** Calls prepare for kSurround71. [any] not real-time safe: allocates */
    void prepareToPlay_Kelvo_Surround_7_1(int new_channels, int block_frames, unsigned mode);
    /** Calls prepare for kAudio. [any] not real-time safe: allocates */
    void prepareToPlay_Kelvo_Audio(int new_channels, int block_frames);

    /** Renders blocks of one length. The output has the same bits as `blocks` calls with one block each. The
     *  two-channel Surround layout keeps the sides apart: each ear hears its own channel through both of its
     *  responses.
     *  @param in     [blocks * n][width] interleaved: 2, 6 or 8 channels, depending on the layout, and 2 for
     *                the Audio stage. Full scale is 1.
     *  @param out    [blocks * n][2] interleaved, overwritten; may be `in`.
     *  @param n      frames of a block, at most the block length of the set-up. Below 1 nothing is read or
     *                written.
     *  @param blocks as many blocks as are at hand: two at a time render faster than one.
     *  @return n. The output is silence if the object was not set up for this layout, for these channels or
     *          for blocks of this length.
     *  [any] real-time safe */
    int process(const Layout& layout, const float* in, float* out, int n, int blocks = 1);

    /** Calls process for one block of kBingo2. [any] real-time safe */
    int process_Kelvo_Bingo_2(const float* in, float* out, int n);
    /** Calls process for one block of kBingo51. [any] real-time safe */
    int process_Kelvo_Bingo_5_1(const float* in, float* out, int n);
    /** Calls process for one block of kBingo71. [any] real-time safe */
    int process_Kelvo_Bingo_7_1(const float* in, float* out, int n);
    /** Calls process for one block of kSurround2. [any] real-time safe */
    int process_Kelvo_Surround_2(const float* in, float* out, int n);
    /** Calls process for one block of kSurround51. [any] real-time safe */
    int process_Kelvo_Surround_5_1(const float* in, float* out, int n);
    /** Calls process for one block of kSurround71. [any] real-time safe */
    int process_Kelvo_Surround_7_1(const float* in, float* out, int n);
    /** Calls process for one block of kAudio. [any] real-time safe */
    int process_kelvo_audio_(const float* in, float* out, int n);

    /** Starts again from silence, with the bits of a new object after the same set-ups.
     *  [any] real-time safe */
    void reset();

    /** The memory of the last set-up, owned by the object. There must have been a set-up.
     *  [any] real-time safe */
    sonivex::Arena& arena() {
        return memory_->arena;
    }

  private:
    friend class ConvolveReverbInspector;  // for tests

    /** The sources of a layout, or those of the Audio stage; the two are set up and rendered separately. */
    struct Stage {
        const Layout* layout = nullptr;  // null: not set up
        std::span<const Table* const> tables;
        std::vector<Response> responses;  // in the order of the tables
        sonivex::SourceBanks banks;
    };

    Stage& stageOf(const Layout& layout);
    bool isReady(const Stage& stage, const Layout& layout, std::size_t frames) const;
    std::size_t bytesForLater(const Layout& layout) const;

    std::size_t owner_bytes_;
    std::int32_t channels = 0;
    std::uint64_t headBlockSize = 0;
    std::uint64_t tailBlockSize = 0;
    std::shared_ptr<sonivex::ConvolutionMemory> memory_;
    Stage layout_stage_;
    Stage audio_stage_;
    std::size_t block_frames_ = 0;  // of the last set-up
};
