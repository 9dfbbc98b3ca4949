#include <algorithm>

#include "convolve_reverb.h"
#include "response_length.h"

namespace {

using Table = ConvolveReverb::Table;

/* What stands for 1 in the tables of a set. */
constexpr double kDivisorCingo = 10000.0;
constexpr double kDivisorLoudspeakers = 20000.0;
constexpr double kDivisorAudio = 24000.0;

/* Shortest tail partition, before it is rounded up to a power of two. At the blocks that surround uses it
 * holds every response whole, so that all of a response is in the head stage. */
constexpr std::uint64_t kShortestTail = 12768;

#define SONIVEX_ADDRESS(name) &ConvolveReverb::g_##name,
constexpr const Table* kBingo2Tables[] = {SONIVEX_TABLES_BINGO_2(SONIVEX_ADDRESS)};
constexpr const Table* kBingo51Tables[] = {SONIVEX_TABLES_BINGO_5_1(SONIVEX_ADDRESS)};
constexpr const Table* kBingo71Tables[] = {SONIVEX_TABLES_BINGO_7_1(SONIVEX_ADDRESS)};
constexpr const Table* kAudioTables[] = {&ConvolveReverb::g_dolbyL441, &ConvolveReverb::g_dolbyR441};
constexpr const Table* kSurround2Mode1Tables[] = {SONIVEX_TABLES_SURROUND_2(SONIVEX_ADDRESS, mode1)};
constexpr const Table* kSurround2Mode2Tables[] = {SONIVEX_TABLES_SURROUND_2(SONIVEX_ADDRESS, mode2)};
constexpr const Table* kSurround2Mode3Tables[] = {SONIVEX_TABLES_SURROUND_2(SONIVEX_ADDRESS, mode3)};
constexpr const Table* kSurround51Mode1Tables[] = {SONIVEX_TABLES_SURROUND_5_1(SONIVEX_ADDRESS, mode1)};
constexpr const Table* kSurround51Mode2Tables[] = {SONIVEX_TABLES_SURROUND_5_1(SONIVEX_ADDRESS, mode2)};
constexpr const Table* kSurround51Mode3Tables[] = {SONIVEX_TABLES_SURROUND_5_1(SONIVEX_ADDRESS, mode3)};
constexpr const Table* kSurround71Mode1Tables[] = {SONIVEX_TABLES_SURROUND_7_1(SONIVEX_ADDRESS, mode1)};
constexpr const Table* kSurround71Mode2Tables[] = {SONIVEX_TABLES_SURROUND_7_1(SONIVEX_ADDRESS, mode2)};
constexpr const Table* kSurround71Mode3Tables[] = {SONIVEX_TABLES_SURROUND_7_1(SONIVEX_ADDRESS, mode3)};
#undef SONIVEX_ADDRESS

void appendScaled(const Table& table, double divisor, ConvolveReverb::Response& response) {
    const std::size_t loaded = response.size();
    response.resize(loaded + table.size());
    for (std::size_t i = 0; i < table.size(); ++i) {
        response[loaded + i] = static_cast<float>(static_cast<double>(table[i]) / divisor);
    }
}

}  // namespace

void ConvolveReverb::prepareToPlay_Kelvo_Bingo_2(int new_channels, int block_frames) {
    prepareBlocks(new_channels, block_frames);
    load(kBingo2Tables, kDivisorCingo, irBingo2, kBingo2Sources, layoutStage);
    resizeWorkVectors(block_frames);
}

void ConvolveReverb::prepareToPlay_Kelvo_Bingo_5_1(int new_channels, int block_frames) {
    prepareBlocks(new_channels, block_frames);
    load(kBingo51Tables, kDivisorLoudspeakers, irBingo51, kBingo51Sources, layoutStage);
    resizeWorkVectors(block_frames);
}

void ConvolveReverb::prepareToPlay_Kelvo_Bingo_7_1(int new_channels, int block_frames) {
    prepareBlocks(new_channels, block_frames);
    load(kBingo71Tables, kDivisorLoudspeakers, irBingo71, kBingo71Sources, layoutStage);
    resizeWorkVectors(block_frames);
}

void ConvolveReverb::prepareToPlay_Kelvo_Audio(int new_channels, int block_frames) {
    prepareBlocks(new_channels, block_frames);
    load(kAudioTables, kDivisorAudio, irAudio, kAudioSources, audioStage);
    resizeWorkVectors(block_frames);
}

void ConvolveReverb::prepareToPlay_Kelvo_Surround_2(int new_channels, int block_frames, unsigned mode) {
    prepareBlocks(new_channels, block_frames);
    if (mode == 1) {
        load(kSurround2Mode1Tables, kDivisorLoudspeakers, irSurround2Mode1, kSurround2Sources, layoutStage);
    } else if (mode == 2) {
        load(kSurround2Mode2Tables, kDivisorLoudspeakers, irSurround2Mode2, kSurround2Sources, layoutStage);
    } else {
        load(kSurround2Mode3Tables, kDivisorLoudspeakers, irSurround2Mode3, kSurround2Sources, layoutStage);
    }
    resizeWorkVectors(block_frames);
}

void ConvolveReverb::prepareToPlay_Kelvo_Surround_5_1(int new_channels, int block_frames, unsigned mode) {
    prepareBlocks(new_channels, block_frames);
    if (mode == 1) {
        load(kSurround51Mode1Tables, kDivisorLoudspeakers, irSurround51Mode1, kSurround51Sources,
             layoutStage);
    } else if (mode == 2) {
        load(kSurround51Mode2Tables, kDivisorLoudspeakers, irSurround51Mode2, kSurround51Sources,
             layoutStage);
    } else {
        load(kSurround51Mode3Tables, kDivisorLoudspeakers, irSurround51Mode3, kSurround51Sources,
             layoutStage);
    }
    resizeWorkVectors(block_frames);
}

void ConvolveReverb::prepareToPlay_Kelvo_Surround_7_1(int new_channels, int block_frames, unsigned mode) {
    prepareBlocks(new_channels, block_frames);
    if (mode == 1) {
        load(kSurround71Mode1Tables, kDivisorLoudspeakers, irSurround71Mode1, kSurround71Sources,
             layoutStage);
    } else if (mode == 2) {
        load(kSurround71Mode2Tables, kDivisorLoudspeakers, irSurround71Mode2, kSurround71Sources,
             layoutStage);
    } else {
        load(kSurround71Mode3Tables, kDivisorLoudspeakers, irSurround71Mode3, kSurround71Sources,
             layoutStage);
    }
    resizeWorkVectors(block_frames);
}

void ConvolveReverb::prepareBlocks(int new_channels, int block_frames) {
    channels = new_channels;
    headBlockSize = fftconvolver::powerOfTwoNotBelow(static_cast<std::uint64_t>(std::max(block_frames, 0)));
    tailBlockSize = std::max(kShortestTail, 2 * headBlockSize);
}

/* Tables are in the order of the agents: source by source, left ear before right. */
void ConvolveReverb::load(Tables tables, double divisor, Responses responses, Sources sources, Stage& stage) {
    const bool is_first = stage.agents.none();
    std::array<fftconvolver::Taps, kAgents> taps{};
    std::size_t longest = 0;
    auto table = tables.begin();
    auto response = responses.begin();
    for (const Source& source : sources) {
        for (const int number : {source.left_agent, source.right_agent}) {
            if (number == sonivex::kNoAgent) continue;
            const auto agent = static_cast<std::size_t>(number);
            appendScaled(**table, divisor, *response);
            taps[agent] = {response->data(), response->size()};
            longest = std::max(longest, response->size());
            responseOfAgent[agent] = &*response;
            stage.agents.set(agent);
            ++table;
            ++response;
        }
    }
    /* Banks have no tail stage. */
    if (!is_first || longest > fftconvolver::powerOfTwoNotBelow(tailBlockSize)) {
        loadAgents(stage);
        return;
    }
    using Workspace = fftconvolver::ConvolutionWorkspace;
    if (workspace == nullptr || workspace->blockFrames() != headBlockSize) {
        workspace = std::make_shared<Workspace>(headBlockSize, sonivex::SourceBanks::kLargestShape);
    }
    stage.banks.build(sources, taps, workspace);
}

/* In place of the banks. */
void ConvolveReverb::loadAgents(Stage& stage) {
    stage.banks.clear();
    for (std::size_t agent = 0; agent < kAgents; ++agent) {
        if (!stage.agents.test(agent)) continue;
        const Response& response = *responseOfAgent[agent];
        agents[agent].init(headBlockSize, tailBlockSize, response.data(), response.size());
    }
}

void ConvolveReverb::resizeWorkVectors(int block_frames) {
    const auto frames = static_cast<std::size_t>(std::max(block_frames, 0));
    agentOut.resize(frames);
    outLeft.resize(frames);
    outRight.resize(frames);
    plane.resize(frames);
    ears.resize(2 * frames);
}
