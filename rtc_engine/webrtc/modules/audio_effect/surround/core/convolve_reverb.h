// Loudspeakers in a room, heard through headphones: every input channel convolved with the responses of its
// loudspeaker to the left and to the right ear, and summed per ear.
//
//   ear[i] = sum over the sources of (source * response(source, ear))[i]
//
// A set-up loads the responses of a layout (layouts.h) into banks of convolvers (convolution/), which give
// the bits of one scalar convolver (fftconvolver.h) for each pair of a source and an ear. Those pairs have
// the numbers of their agents (IRAgent.h):
//
//   0-3    two channels
//   4, 7   Audio stage, left and right
//   8-23   5.1 and 7.1: source by source, left ear before right
//
// Use: construct; one prepareToPlay_* for the layout, for the Surround layouts also
// prepareToPlay_Kelvo_Audio; then the process_* of the same name for every block. The pipelines do the same
// by the layout's record: prepare, process.
//
// Threads: the tables are written while the library is loaded and only read afterwards. An object is used by
// one thread at a time.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "layout.h"
#include "source_banks.h"
#include "table_list.h"

class ConvolveReverb {
  public:
    using Table = sonivex::ResponseTable;
    using Layout = sonivex::Layout;
    using Response = std::vector<float>;  // one to one

    // The tables, filled before main or while the library is loaded.
#define SONIVEX_DECLARE_TABLE(name) static const Table g_##name;
    SONIVEX_TABLES_LOUDSPEAKERS(SONIVEX_DECLARE_TABLE)
    SONIVEX_DECLARE_TABLE(dolbyL441)
    SONIVEX_DECLARE_TABLE(dolbyR441)
#undef SONIVEX_DECLARE_TABLE

    /** @param owner_bytes room to leave beside the convolutions, for arrays of the owner that every call goes
     *                     through, too; the owner takes them from arena() after the set-ups. */
    explicit ConvolveReverb(std::size_t owner_bytes = 0) : owner_bytes_(owner_bytes) {}
    ConvolveReverb(const ConvolveReverb&) = delete;
    ConvolveReverb& operator=(const ConvolveReverb&) = delete;

    /** Load the responses of a layout, and start from silence. A second time for the same layout and mode the
     *  responses are appended, so that each is there twice, one behind the other.
     *  @param new_channels channels of the input: 1 or 2, 6, or 8 by the layout.
     *  @param block_frames longest block that will be processed; below 0 counts as 0.
     *  @param mode         1 or 2; every other value is 3. Without meaning for layouts that have no modes.
     *  Throws std::bad_alloc when memory runs out; the object may only be destroyed then. */
    void prepare(const Layout& layout, int new_channels, int block_frames, unsigned mode);

    void prepareToPlay_Kelvo_Bingo_2(int new_channels, int block_frames);
    void prepareToPlay_Kelvo_Bingo_5_1(int new_channels, int block_frames);
    void prepareToPlay_Kelvo_Bingo_7_1(int new_channels, int block_frames);
    void prepareToPlay_Kelvo_Surround_2(int new_channels, int block_frames, unsigned mode);
    void prepareToPlay_Kelvo_Surround_5_1(int new_channels, int block_frames, unsigned mode);
    void prepareToPlay_Kelvo_Surround_7_1(int new_channels, int block_frames, unsigned mode);
    void prepareToPlay_Kelvo_Audio(int new_channels, int block_frames);

    /** Render blocks of one length. The output's bits are those of as many calls with one block each.
     *  @param in     [blocks * n][width] interleaved: 2, 6 or 8 channels by the layout, 2 for the Audio
     *                stage; full scale is 1.
     *  @param out    [blocks * n][2] interleaved; may be `in`.
     *  @param n      frames of a block, at most the block length of the set-up. Below 1 nothing is read or
     *                written.
     *  @param blocks as many as are at hand; two at a time are quicker than one.
     *  @return n. The output is silence if the object was not set up for this layout, for these channels or
     *          for blocks of this length.
     *  Real-time safe. The two-channel Surround layout keeps the sides apart: each ear hears its own channel
     *  through both of its responses. */
    int process(const Layout& layout, const float* in, float* out, int n, int blocks = 1);

    int process_Kelvo_Bingo_2(const float* in, float* out, int n);
    int process_Kelvo_Bingo_5_1(const float* in, float* out, int n);
    int process_Kelvo_Bingo_7_1(const float* in, float* out, int n);
    int process_Kelvo_Surround_2(const float* in, float* out, int n);
    int process_Kelvo_Surround_5_1(const float* in, float* out, int n);
    int process_Kelvo_Surround_7_1(const float* in, float* out, int n);
    int process_kelvo_audio_(const float* in, float* out, int n);

    /** The memory of the last set-up; there must have been one. */
    sonivex::Arena& arena() {
        return memory_->arena;
    }

  private:
    friend class ConvolveReverbInspector;  // how tests look inside

    // The sources of a layout and those of the Audio stage are set up and rendered apart.
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
