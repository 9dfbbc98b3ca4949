/* Loudspeakers in a room, heard through headphones: every input channel convolved with the responses of its
 * loudspeaker to the left and to the right ear, and summed per ear.
 *
 *   ear[i] = sum over the sources of (source * response(source, ear))[i]
 *
 * Use: construct; one prepareToPlay_* for the layout, for the Surround layouts also
 * prepareToPlay_Kelvo_Audio; then the process_* of the same name for every block.
 *
 * The convolutions of a set-up are done together, in banks; agents step in where a set-up was repeated or
 * where an operation is called that the set-up was not made for.
 *
 * One agent stands for one pair of a source and an ear:
 *   0-3    two channels
 *   4, 7   Audio stage, left and right
 *   8-23   5.1 and 7.1: source by source, left ear before right
 *
 * Threads: the tables are written while the library is loaded and only read afterwards. An object is used by
 * one thread at a time. */
#pragma once

#include <array>
#include <bitset>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "IRAgent.h"
#include "source_banks.h"
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
     *  Real-time safe, but for the first call of an operation that the set-up was not made for: it takes
     *  memory for agents, and starts from silence. The two-channel Surround layout keeps the sides apart:
     *  each ear hears its own channel through both of its responses. */
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

    using Source = sonivex::Source;
    using Sources = std::span<const Source>;
    using Tables = std::span<const Table* const>;
    using Responses = std::span<Response>;

    /* What one set-up loads and one operation renders. Both orders, of the sources and of the agents in them,
     * are that of the float additions, and so part of the output's bits. */
    static constexpr Source kBingo2Sources[] = {{0, 0, 1}, {1, 2, 3}};
    static constexpr Source kBingo51Sources[] = {{0, 8, 9},   {1, 10, 11}, {2, 12, 13},
                                                 {3, 14, 15}, {4, 16, 17}, {5, 18, 19}};
    static constexpr Source kBingo71Sources[] = {{0, 8, 9},   {1, 10, 11}, {2, 12, 13}, {3, 14, 15},
                                                 {4, 16, 17}, {5, 18, 19}, {6, 20, 21}, {7, 22, 23}};
    /* Each ear hears one channel only, twice: the responses and their tone are made for that. */
    static constexpr Source kSurround2Sources[] = {{0, 0, sonivex::kNoAgent},
                                                   {1, sonivex::kNoAgent, 1},
                                                   {0, 2, sonivex::kNoAgent},
                                                   {1, sonivex::kNoAgent, 3}};
    /* Without channel 3, low frequency, for which the Surround sets have no response. */
    static constexpr Source kSurround51Sources[] = {
        {0, 8, 9}, {1, 10, 11}, {2, 12, 13}, {4, 14, 15}, {5, 16, 17}};
    static constexpr Source kSurround71Sources[] = {{0, 8, 9},   {1, 10, 11}, {2, 12, 13}, {4, 14, 15},
                                                    {5, 16, 17}, {6, 18, 19}, {7, 20, 21}};
    static constexpr Source kAudioSources[] = {{0, 4, sonivex::kNoAgent}, {1, sonivex::kNoAgent, 7}};

    /* The sources of a layout and those of the Audio stage are set up and rendered apart. */
    struct Stage {
        sonivex::SourceBanks banks;
        std::bitset<kAgents> agents;  // that responses were loaded for
    };

    void prepareBlocks(int new_channels, int block_frames);
    void load(Tables tables, double divisor, Responses responses, Sources sources, Stage& stage);
    void loadAgents(Stage& stage);
    void resizeWorkVectors(int block_frames);
    int render(Sources sources, Stage& stage, std::size_t width, bool is_set_up_for_layout, const float* in,
               float* out, int n);
    bool isAnyAgentLoaded(Sources sources) const;
    void renderByAgents(Sources sources, std::size_t width, const float* in, float* out, std::size_t frames);
    void addAgent(int number, std::size_t frames, Response& ear);

    std::int32_t channels = 0;
    std::uint64_t headBlockSize = 0;
    std::uint64_t tailBlockSize = 0;
    std::array<IRAgent, kAgents> agents;
    std::array<const Response*, kAgents> responseOfAgent{};         // null: none loaded
    std::shared_ptr<fftconvolver::ConvolutionWorkspace> workspace;  // of the last set-up's stage
    Stage layoutStage;
    Stage audioStage;

    std::vector<float> ears;     // what the ears hear of one block, interleaved
    std::vector<float> outLeft;  // the same ear by ear, by agents
    std::vector<float> outRight;
    std::vector<float> agentOut;  // one agent's share
    std::vector<float> plane;     // one input channel

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
