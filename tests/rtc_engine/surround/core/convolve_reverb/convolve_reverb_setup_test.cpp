#include <gtest/gtest.h>

#include <set>

#include "convolve_reverb_inspector.h"
#include "impulse_response_tables.h"

namespace {

using Inspector = ConvolveReverbInspector;
using Table = ConvolveReverb::Table;

std::set<std::size_t> agentsSetUp(const Inspector& inspector) {
    std::set<std::size_t> numbers;
    for (std::size_t agent = 0; agent < Inspector::kAgents; ++agent) {
        if (inspector.isSetUp(agent)) numbers.insert(agent);
    }
    return numbers;
}

std::set<std::size_t> range(std::size_t first, std::size_t last) {
    std::set<std::size_t> numbers;
    for (std::size_t i = first; i <= last; ++i) numbers.insert(i);
    return numbers;
}

void expectResponse(const ConvolveReverb::Response& response, const Table& table, double divisor) {
    ASSERT_EQ(response.size(), table.size());
    EXPECT_EQ(response.capacity(), table.size());
    for (std::size_t i = 0; i < table.size(); ++i) {
        ASSERT_EQ(response[i], static_cast<float>(table[i] / divisor)) << "tap " << i;
    }
}

TEST(SurroundResponseTables, EveryTableHasTheRightLength) {
    std::size_t tables = 0;
    const auto expectLength = [&](const Table& table, std::size_t length) {
        EXPECT_EQ(table.size(), length);
        ++tables;
    };
#define EXPECT_13000(name) expectLength(ConvolveReverb::g_##name, 13000);
#define EXPECT_8544(name) expectLength(ConvolveReverb::g_##name, 8544);
#define EXPECT_8640(name) expectLength(ConvolveReverb::g_##name, 8640);
#define EXPECT_7000(name) expectLength(ConvolveReverb::g_##name, 7000);
    SONIVEX_TABLES_BINGO_2(EXPECT_13000)
    SONIVEX_TABLES_BINGO_5_1(EXPECT_8544)
    SONIVEX_TABLES_BINGO_7_1(EXPECT_8640)
    SONIVEX_TABLES_SURROUND_2(EXPECT_7000, mode1)
    SONIVEX_TABLES_SURROUND_2(EXPECT_7000, mode2)
    SONIVEX_TABLES_SURROUND_2(EXPECT_7000, mode3)
    SONIVEX_TABLES_SURROUND_5_1(EXPECT_7000, mode1)
    SONIVEX_TABLES_SURROUND_5_1(EXPECT_7000, mode2)
    SONIVEX_TABLES_SURROUND_5_1(EXPECT_7000, mode3)
    SONIVEX_TABLES_SURROUND_7_1(EXPECT_7000, mode1)
    SONIVEX_TABLES_SURROUND_7_1(EXPECT_7000, mode2)
    SONIVEX_TABLES_SURROUND_7_1(EXPECT_7000, mode3)
    expectLength(ConvolveReverb::g_dolbyL441, 6000);
    expectLength(ConvolveReverb::g_dolbyR441, 6000);
    EXPECT_EQ(tables, 118U);
}

TEST(SurroundResponseTables, TheAudioTablesAreEqualAndOthersDiffer) {
    EXPECT_EQ(ConvolveReverb::g_dolbyL441, ConvolveReverb::g_dolbyR441);
    EXPECT_NE(ConvolveReverb::g_cingoLL48, ConvolveReverb::g_cingoRR48);
    EXPECT_NE(ConvolveReverb::g_7_1_3_h_mode2L48, ConvolveReverb::g_7_1_3_h_mode3L48);
}

TEST(SurroundResponseTables, TheLastSampleOfEverySetIsReadable) {
    EXPECT_EQ(ConvolveReverb::g_cingoLL48.at(12999), k_cingoLL48[12999]);
    EXPECT_EQ(ConvolveReverb::g_5_1_1_h_cL48.at(8543), k_5_1_1_h_cL48[8543]);
    EXPECT_EQ(ConvolveReverb::g_7_1_8_h_cR48.at(8639), k_7_1_8_h_cR48[8639]);
    EXPECT_EQ(ConvolveReverb::g_dolbyR441.at(5999), k_dolby441[5999]);
    EXPECT_EQ(ConvolveReverb::g_2_2_h_mode3R48.at(6999), k_2_2_h_mode3R48[6999]);
    EXPECT_EQ(ConvolveReverb::g_7_1_7_h_mode1L48.at(6999), k_7_1_7_h_mode1L48[6999]);
}

TEST(ConvolveReverbSetUp, StartsEmpty) {
    ConvolveReverb reverb;
    Inspector inspector(reverb);
    EXPECT_EQ(inspector.channels(), 0);
    EXPECT_EQ(inspector.headBlockSize(), 0U);
    EXPECT_EQ(inspector.tailBlockSize(), 0U);
    EXPECT_EQ(inspector.loadedSets(), 0U);
    EXPECT_EQ(inspector.layout(), nullptr);
    EXPECT_FALSE(inspector.hasAudioStage());
    EXPECT_EQ(inspector.blockFrames(), 0U);
    EXPECT_TRUE(agentsSetUp(inspector).empty());
}

TEST(ConvolveReverbSetUp, PartitionSizesFollowFromTheBlockLength) {
    struct Sizes {
        int block_frames;
        std::uint64_t head;
        std::uint64_t tail;
    };
    for (const auto& [block_frames, head, tail] :
         {Sizes{240, 256, 12768}, Sizes{1, 1, 12768}, Sizes{0, 1, 12768}, Sizes{4096, 4096, 12768},
          Sizes{6385, 8192, 16384}, Sizes{8192, 8192, 16384}, Sizes{-5, 1, 12768}}) {
        SCOPED_TRACE(block_frames);
        ConvolveReverb reverb;
        reverb.prepareToPlay_Kelvo_Audio(2, block_frames);
        Inspector inspector(reverb);
        EXPECT_EQ(inspector.headBlockSize(), head);
        EXPECT_EQ(inspector.tailBlockSize(), tail);
        EXPECT_EQ(inspector.blockFrames(), static_cast<std::size_t>(std::max(block_frames, 0)));
    }
}

TEST(ConvolveReverbSetUp, TwoChannelBingoLoadsFourResponses) {
    ConvolveReverb reverb;
    reverb.prepareToPlay_Kelvo_Bingo_2(1, 240);
    Inspector inspector(reverb);
    EXPECT_EQ(inspector.channels(), 1);
    EXPECT_EQ(inspector.layout(), &sonivex::kBingo2);
    EXPECT_FALSE(inspector.hasAudioStage());
    EXPECT_EQ(inspector.loadedSets(), 1U);
    EXPECT_EQ(agentsSetUp(inspector), range(0, 3));
    expectResponse(inspector.responses()[0], ConvolveReverb::g_cingoLL48, 10000);
    expectResponse(inspector.responses()[1], ConvolveReverb::g_cingoLR48, 10000);
    expectResponse(inspector.responses()[2], ConvolveReverb::g_cingoRL48, 10000);
    expectResponse(inspector.responses()[3], ConvolveReverb::g_cingoRR48, 10000);
}

TEST(ConvolveReverbSetUp, FiveOneBingoLoadsSixPairs) {
    ConvolveReverb reverb;
    reverb.prepareToPlay_Kelvo_Bingo_5_1(6, 240);
    Inspector inspector(reverb);
    EXPECT_EQ(inspector.channels(), 6);
    EXPECT_EQ(inspector.layout(), &sonivex::kBingo51);
    EXPECT_EQ(inspector.loadedSets(), 1U);
    EXPECT_EQ(agentsSetUp(inspector), range(8, 19));
    expectResponse(inspector.responses()[0], ConvolveReverb::g_5_1_1_h_cL48, 20000);
    expectResponse(inspector.responses()[5], ConvolveReverb::g_5_1_3_h_cR48, 20000);
    expectResponse(inspector.responses()[11], ConvolveReverb::g_5_1_6_h_cR48, 20000);
}

TEST(ConvolveReverbSetUp, SevenOneBingoLoadsEightPairs) {
    ConvolveReverb reverb;
    reverb.prepareToPlay_Kelvo_Bingo_7_1(8, 240);
    Inspector inspector(reverb);
    EXPECT_EQ(inspector.layout(), &sonivex::kBingo71);
    EXPECT_EQ(inspector.loadedSets(), 1U);
    EXPECT_EQ(agentsSetUp(inspector), range(8, 23));
    expectResponse(inspector.responses()[1], ConvolveReverb::g_7_1_1_h_cR48, 20000);
    expectResponse(inspector.responses()[14], ConvolveReverb::g_7_1_8_h_cL48, 20000);
}

TEST(ConvolveReverbSetUp, MegaBassOfSixChannelsLoadsFivePairsAndTheAudioStage) {
    ConvolveReverb reverb;
    reverb.prepareToPlay_Kelvo_Surround_5_1(6, 240, 2);
    reverb.prepareToPlay_Kelvo_Audio(6, 240);
    Inspector inspector(reverb);
    EXPECT_EQ(inspector.channels(), 6);
    EXPECT_EQ(inspector.headBlockSize(), 256U);
    EXPECT_EQ(inspector.loadedSets(), 2U);
    std::set<std::size_t> expected = range(8, 17);
    expected.insert({4, 7});
    EXPECT_EQ(agentsSetUp(inspector), expected);
    expectResponse(inspector.audio()[0], ConvolveReverb::g_dolbyL441, 24000);
    expectResponse(inspector.audio()[1], ConvolveReverb::g_dolbyR441, 24000);
    expectResponse(inspector.responses()[0], ConvolveReverb::g_5_1_1_h_mode2L48, 20000);
    expectResponse(inspector.responses()[9], ConvolveReverb::g_5_1_5_h_mode2R48, 20000);
}

// The first and the last table of a mode.
struct ModeTables {
    const Table* first;
    const Table* last;
};

TEST(ConvolveReverbSetUp, EveryModeExceptOneAndTwoMeansThree) {
    using R = ConvolveReverb;
    constexpr ModeTables kStereo[] = {{&R::g_2_1_h_mode1L48, &R::g_2_2_h_mode1R48},
                                      {&R::g_2_1_h_mode2L48, &R::g_2_2_h_mode2R48},
                                      {&R::g_2_1_h_mode3L48, &R::g_2_2_h_mode3R48}};
    constexpr ModeTables kFiveOne[] = {{&R::g_5_1_1_h_mode1L48, &R::g_5_1_5_h_mode1R48},
                                       {&R::g_5_1_1_h_mode2L48, &R::g_5_1_5_h_mode2R48},
                                       {&R::g_5_1_1_h_mode3L48, &R::g_5_1_5_h_mode3R48}};
    constexpr ModeTables kSevenOne[] = {{&R::g_7_1_1_h_mode1L48, &R::g_7_1_7_h_mode1R48},
                                        {&R::g_7_1_1_h_mode2L48, &R::g_7_1_7_h_mode2R48},
                                        {&R::g_7_1_1_h_mode3L48, &R::g_7_1_7_h_mode3R48}};
    const auto expect_set = [](const Inspector& inspector, const ModeTables& tables, std::size_t last) {
        EXPECT_EQ(inspector.loadedSets(), 1U);
        ASSERT_EQ(inspector.responses().size(), last + 1);
        expectResponse(inspector.responses()[0], *tables.first, 20000);
        expectResponse(inspector.responses()[last], *tables.last, 20000);
        EXPECT_EQ(inspector.responses()[last].size(), 7000U);
    };
    for (const unsigned mode : {0U, 1U, 2U, 3U, 7U, 0xFFFFFFFFU}) {
        SCOPED_TRACE(mode);
        const std::size_t set = mode == 1 ? 0 : (mode == 2 ? 1 : 2);
        R stereo;
        stereo.prepareToPlay_Kelvo_Surround_2(2, 240, mode);
        expect_set(Inspector(stereo), kStereo[set], 3);
        EXPECT_EQ(agentsSetUp(Inspector(stereo)), range(0, 3));
        R five_one;
        five_one.prepareToPlay_Kelvo_Surround_5_1(6, 240, mode);
        expect_set(Inspector(five_one), kFiveOne[set], 9);
        EXPECT_EQ(agentsSetUp(Inspector(five_one)), range(8, 17));
        R seven_one;
        seven_one.prepareToPlay_Kelvo_Surround_7_1(8, 240, mode);
        expect_set(Inspector(seven_one), kSevenOne[set], 13);
        EXPECT_EQ(agentsSetUp(Inspector(seven_one)), range(8, 21));
    }
}

TEST(ConvolveReverbSetUp, ASecondSetUpAppendsToTheResponses) {
    ConvolveReverb reverb;
    reverb.prepareToPlay_Kelvo_Audio(2, 240);
    reverb.prepareToPlay_Kelvo_Audio(2, 240);
    Inspector inspector(reverb);
    ASSERT_EQ(inspector.audio()[0].size(), 12000U);
    for (std::size_t i = 0; i < 6000; ++i) {
        ASSERT_EQ(inspector.audio()[0][i], inspector.audio()[0][6000 + i]) << i;
    }
}

TEST(ConvolveReverbSetUp, ASetUpForAnotherLayoutOrModeDropsThePreviousResponses) {
    ConvolveReverb reverb;
    const Inspector inspector(reverb);
    reverb.prepareToPlay_Kelvo_Audio(2, 240);
    reverb.prepareToPlay_Kelvo_Surround_2(2, 240, 1);
    reverb.prepareToPlay_Kelvo_Surround_2(2, 240, 2);
    ASSERT_EQ(inspector.responses().size(), 4U);
    expectResponse(inspector.responses()[0], ConvolveReverb::g_2_1_h_mode2L48, 20000);
    reverb.prepareToPlay_Kelvo_Bingo_5_1(6, 240);
    ASSERT_EQ(inspector.responses().size(), 12U);
    expectResponse(inspector.responses()[11], ConvolveReverb::g_5_1_6_h_cR48, 20000);
    EXPECT_EQ(inspector.layout(), &sonivex::kBingo51);
    // The Audio stage is a separate one and keeps its responses.
    ASSERT_EQ(inspector.audio().size(), 2U);
    expectResponse(inspector.audio()[0], ConvolveReverb::g_dolbyL441, 24000);
}

// Puts a value into a table, which is read-only otherwise, and restores it at the end of its lifetime.
class PlantedSample {
  public:
    PlantedSample(const ConvolveReverb::Table& table, std::int16_t value)
        : sample_(const_cast<std::int16_t&>(table.front())), former_(sample_) {
        sample_ = value;
    }
    PlantedSample(const PlantedSample&) = delete;
    PlantedSample& operator=(const PlantedSample&) = delete;
    ~PlantedSample() { sample_ = former_; }

  private:
    std::int16_t& sample_;
    const std::int16_t former_;
};

// Full scale by hand: -32768 / 10000 and -32768 / 24000 as floats.
TEST(ConvolveReverbSetUp, TheLowestSampleIsScaledByTheDivisorOfItsSet) {
    const PlantedSample in_cingo(ConvolveReverb::g_cingoLL48, -32768);
    const PlantedSample in_audio(ConvolveReverb::g_dolbyL441, -32768);
    ConvolveReverb reverb;
    reverb.prepareToPlay_Kelvo_Bingo_2(2, 240);
    reverb.prepareToPlay_Kelvo_Audio(2, 240);
    Inspector inspector(reverb);
    EXPECT_EQ(inspector.responses()[0][0], -3.2768F);
    EXPECT_EQ(inspector.audio()[0][0], -1.3653333F);
}

TEST(ConvolveReverbSetUp, DividesSamplesInDoubleAndRoundsOnce) {
    ConvolveReverb reverb;
    reverb.prepareToPlay_Kelvo_Bingo_2(2, 240);
    Inspector inspector(reverb);
    for (std::size_t i = 0; i < 13000; ++i) {
        const double quotient = ConvolveReverb::g_cingoRR48[i] / 10000.0;
        ASSERT_EQ(inspector.responses()[3][i], static_cast<float>(quotient));
    }
}

}  // namespace
