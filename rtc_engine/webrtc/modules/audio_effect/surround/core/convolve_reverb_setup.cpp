#include <algorithm>
#include <numeric>

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

constexpr int kFirstAgentOfTwoChannels = 0;
constexpr int kFirstAgentOfMultichannel = 8;
constexpr int kAgentsOfAudio[] = {4, 7};

#define SONIVEX_ADDRESS(name) &ConvolveReverb::g_##name,
constexpr const Table* kBingo2[] = {SONIVEX_TABLES_BINGO_2(SONIVEX_ADDRESS)};
constexpr const Table* kBingo51[] = {SONIVEX_TABLES_BINGO_5_1(SONIVEX_ADDRESS)};
constexpr const Table* kBingo71[] = {SONIVEX_TABLES_BINGO_7_1(SONIVEX_ADDRESS)};
constexpr const Table* kAudio[] = {&ConvolveReverb::g_dolbyL441, &ConvolveReverb::g_dolbyR441};
constexpr const Table* kSurround2Mode1[] = {SONIVEX_TABLES_SURROUND_2(SONIVEX_ADDRESS, mode1)};
constexpr const Table* kSurround2Mode2[] = {SONIVEX_TABLES_SURROUND_2(SONIVEX_ADDRESS, mode2)};
constexpr const Table* kSurround2Mode3[] = {SONIVEX_TABLES_SURROUND_2(SONIVEX_ADDRESS, mode3)};
constexpr const Table* kSurround51Mode1[] = {SONIVEX_TABLES_SURROUND_5_1(SONIVEX_ADDRESS, mode1)};
constexpr const Table* kSurround51Mode2[] = {SONIVEX_TABLES_SURROUND_5_1(SONIVEX_ADDRESS, mode2)};
constexpr const Table* kSurround51Mode3[] = {SONIVEX_TABLES_SURROUND_5_1(SONIVEX_ADDRESS, mode3)};
constexpr const Table* kSurround71Mode1[] = {SONIVEX_TABLES_SURROUND_7_1(SONIVEX_ADDRESS, mode1)};
constexpr const Table* kSurround71Mode2[] = {SONIVEX_TABLES_SURROUND_7_1(SONIVEX_ADDRESS, mode2)};
constexpr const Table* kSurround71Mode3[] = {SONIVEX_TABLES_SURROUND_7_1(SONIVEX_ADDRESS, mode3)};
#undef SONIVEX_ADDRESS

}  // namespace

void ConvolveReverb::prepareToPlay_Kelvo_Bingo_2(int new_channels, int block_frames) {
    prepareBlocks(new_channels, block_frames);
    loadFrom(kBingo2, kDivisorCingo, irBingo2, kFirstAgentOfTwoChannels);
    resizeWorkVectors(block_frames);
}

void ConvolveReverb::prepareToPlay_Kelvo_Bingo_5_1(int new_channels, int block_frames) {
    prepareBlocks(new_channels, block_frames);
    loadFrom(kBingo51, kDivisorLoudspeakers, irBingo51, kFirstAgentOfMultichannel);
    resizeWorkVectors(block_frames);
}

void ConvolveReverb::prepareToPlay_Kelvo_Bingo_7_1(int new_channels, int block_frames) {
    prepareBlocks(new_channels, block_frames);
    loadFrom(kBingo71, kDivisorLoudspeakers, irBingo71, kFirstAgentOfMultichannel);
    resizeWorkVectors(block_frames);
}

void ConvolveReverb::prepareToPlay_Kelvo_Audio(int new_channels, int block_frames) {
    prepareBlocks(new_channels, block_frames);
    load(kAudio, kDivisorAudio, irAudio, kAgentsOfAudio);
    resizeWorkVectors(block_frames);
}

void ConvolveReverb::prepareToPlay_Kelvo_Surround_2(int new_channels, int block_frames, unsigned mode) {
    prepareBlocks(new_channels, block_frames);
    if (mode == 1) {
        loadFrom(kSurround2Mode1, kDivisorLoudspeakers, irSurround2Mode1, kFirstAgentOfTwoChannels);
    } else if (mode == 2) {
        loadFrom(kSurround2Mode2, kDivisorLoudspeakers, irSurround2Mode2, kFirstAgentOfTwoChannels);
    } else {
        loadFrom(kSurround2Mode3, kDivisorLoudspeakers, irSurround2Mode3, kFirstAgentOfTwoChannels);
    }
    resizeWorkVectors(block_frames);
}

void ConvolveReverb::prepareToPlay_Kelvo_Surround_5_1(int new_channels, int block_frames, unsigned mode) {
    prepareBlocks(new_channels, block_frames);
    if (mode == 1) {
        loadFrom(kSurround51Mode1, kDivisorLoudspeakers, irSurround51Mode1, kFirstAgentOfMultichannel);
    } else if (mode == 2) {
        loadFrom(kSurround51Mode2, kDivisorLoudspeakers, irSurround51Mode2, kFirstAgentOfMultichannel);
    } else {
        loadFrom(kSurround51Mode3, kDivisorLoudspeakers, irSurround51Mode3, kFirstAgentOfMultichannel);
    }
    resizeWorkVectors(block_frames);
}

void ConvolveReverb::prepareToPlay_Kelvo_Surround_7_1(int new_channels, int block_frames, unsigned mode) {
    prepareBlocks(new_channels, block_frames);
    if (mode == 1) {
        loadFrom(kSurround71Mode1, kDivisorLoudspeakers, irSurround71Mode1, kFirstAgentOfMultichannel);
    } else if (mode == 2) {
        loadFrom(kSurround71Mode2, kDivisorLoudspeakers, irSurround71Mode2, kFirstAgentOfMultichannel);
    } else {
        loadFrom(kSurround71Mode3, kDivisorLoudspeakers, irSurround71Mode3, kFirstAgentOfMultichannel);
    }
    resizeWorkVectors(block_frames);
}

void ConvolveReverb::prepareBlocks(int new_channels, int block_frames) {
    channels = new_channels;
    headBlockSize = fftconvolver::powerOfTwoNotBelow(static_cast<std::uint64_t>(std::max(block_frames, 0)));
    tailBlockSize = std::max(kShortestTail, 2 * headBlockSize);
}

void ConvolveReverb::load(Tables tables, double divisor, Responses responses,
                          std::span<const int> agent_numbers) {
    for (std::size_t i = 0; i < tables.size(); ++i) {
        const Table& table = *tables[i];
        Response& response = responses[i];
        response.reserve(response.size() + table.size());
        for (const std::int16_t sample : table) {
            response.push_back(static_cast<float>(static_cast<double>(sample) / divisor));
        }
        const auto agent = static_cast<std::size_t>(agent_numbers[i]);
        agents[agent].init(headBlockSize, tailBlockSize, response.data(), response.size());
    }
}

void ConvolveReverb::loadFrom(Tables tables, double divisor, Responses responses, int first_agent) {
    std::array<int, kAgents> numbers{};
    std::iota(numbers.begin(), numbers.end(), first_agent);
    load(tables, divisor, responses, numbers);
}

void ConvolveReverb::resizeWorkVectors(int block_frames) {
    const auto frames = static_cast<std::size_t>(std::max(block_frames, 0));
    const auto width = static_cast<std::size_t>(std::max(channels, 2));  // the Audio stage is stereo
    agentOut.resize(frames);
    outLeft.resize(frames);
    outRight.resize(frames);
    planes.resize(width * frames);
}
