/* Loudspeakers in a room, heard through headphones: every input channel convolved with the responses of its
 * loudspeaker to the left and to the right ear, and summed per ear.
 *
 *   ear[i] = sum over the sources of (source * response(source, ear))[i]
 *
 * Use: construct; one prepareToPlay_* for the layout, for the Surround layouts also
 * prepareToPlay_Kelvo_Audio; then the process_* of the same name for every block.
 *
 * One agent convolves for one pair of a source and an ear:
 *   0-3    two channels
 *   4, 7   Audio stage, left and right
 *   8-23   5.1 and 7.1: source by source, left ear before right
 *
 * Threads: the tables are written while the library is loaded and only read afterwards. An object is used by
 * one thread at a time. */
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "IRAgent.h"
#include "table_list.h"

class ConvolveReverb {
  public:
    using Table = std::vector<std::int16_t>;  // samples times the divisor of their set
    using Response = std::vector<float>;      // one to one

    /* The tables, filled before main or while the library is loaded. */
#define SONIVEX_DECLARE_TABLE(name) static const Table g_##name;
    SONIVEX_TABLES_LOUDSPEAKERS(SONIVEX_DECLARE_TABLE)
    SONIVEX_DECLARE_TABLE(dolbyL441)
    SONIVEX_DECLARE_TABLE(dolbyR441)
#undef SONIVEX_DECLARE_TABLE

    ConvolveReverb() = default;
    ConvolveReverb(const ConvolveReverb&) = delete;
    ConvolveReverb& operator=(const ConvolveReverb&) = delete;

    /** Load the responses of a layout. Each is called at most once for an object: responses are appended, so
     *  that a second call would give them twice.
     *  @param new_channels channels of the input: 1 or 2, 6, or 8 by the name.
     *  @param block_frames longest block that will be processed; below 0 counts as 0.
     *  @param mode         1 or 2; every other value is 3.
     *  Throws std::bad_alloc when memory runs out; the object may only be destroyed then. */
    void prepareToPlay_Kelvo_Bingo_2(int new_channels, int block_frames);
    void prepareToPlay_Kelvo_Bingo_5_1(int new_channels, int block_frames);
    void prepareToPlay_Kelvo_Bingo_7_1(int new_channels, int block_frames);
    void prepareToPlay_Kelvo_Surround_2(int new_channels, int block_frames, unsigned mode);
    void prepareToPlay_Kelvo_Surround_5_1(int new_channels, int block_frames, unsigned mode);
    void prepareToPlay_Kelvo_Surround_7_1(int new_channels, int block_frames, unsigned mode);
    void prepareToPlay_Kelvo_Audio(int new_channels, int block_frames);

    /** Render one block.
     *  @param in  [n][channels] interleaved: 2, 6 or 8 channels by the name, 2 for the Audio stage; full
     *             scale is 1.
     *  @param out [n][2] interleaved; may be `in`.
     *  @param n   frames, at most the block length of the set-up. Below 1 nothing is read or written.
     *  @return n. Silence if the object was not set up for these channels or for blocks of this length.
     *  Real-time safe. The two-channel Surround layout keeps the sides apart: each ear hears its own channel
     *  through both of its responses. */
    int process_Kelvo_Bingo_2(const float* in, float* out, int n);
    int process_Kelvo_Bingo_5_1(const float* in, float* out, int n);
    int process_Kelvo_Bingo_7_1(const float* in, float* out, int n);
    int process_Kelvo_Surround_2(const float* in, float* out, int n);
    int process_Kelvo_Surround_5_1(const float* in, float* out, int n);
    int process_Kelvo_Surround_7_1(const float* in, float* out, int n);
    int process_kelvo_audio_(const float* in, float* out, int n);

  private:
    friend class ConvolveReverbInspector;  // how tests look inside

    static constexpr std::size_t kAgents = 24;

    /* Which plane goes through which agents. */
    struct Source {
        std::size_t plane;
        int left_agent;  // or kNoAgent
        int right_agent;
    };
    static constexpr int kNoAgent = -1;

    using Tables = std::span<const Table* const>;
    using Responses = std::span<Response>;

    void prepareBlocks(int new_channels, int block_frames);
    void load(Tables tables, double divisor, Responses responses, std::span<const int> agent_numbers);
    void loadFrom(Tables tables, double divisor, Responses responses, int first_agent);
    void resizeWorkVectors(int block_frames);
    int render(std::span<const Source> sources, std::size_t width, bool is_set_up_for_layout, const float* in,
               float* out, int n);
    void addAgent(int number, const float* plane, int n, Response& ear);

    std::int32_t channels = 0;
    std::uint64_t headBlockSize = 0;
    std::uint64_t tailBlockSize = 0;
    std::array<IRAgent, kAgents> agents;

    std::vector<float> outLeft;  // what an ear hears of one block
    std::vector<float> outRight;
    std::vector<float> agentOut;  // one agent's share
    std::vector<float> planes;    // the input channels, one after the other

    /* The responses as floats; within a set source by source, left ear before right. */
    std::array<Response, 4> irBingo2;
    std::array<Response, 12> irBingo51;
    std::array<Response, 16> irBingo71;
    std::array<Response, 2> irAudio;
    std::array<Response, 4> irSurround2Mode1;
    std::array<Response, 10> irSurround51Mode1;
    std::array<Response, 14> irSurround71Mode1;
    std::array<Response, 4> irSurround2Mode2;
    std::array<Response, 10> irSurround51Mode2;
    std::array<Response, 14> irSurround71Mode2;
    std::array<Response, 4> irSurround2Mode3;
    std::array<Response, 10> irSurround51Mode3;
    std::array<Response, 14> irSurround71Mode3;
};
