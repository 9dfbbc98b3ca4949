// Checks each agent's table, channel and ear against a list written out by hand.
#include <gtest/gtest.h>

#include <map>

#include "convolve_reverb_inspector.h"
#include "impulse_response_tables.h"
#include "support/signals/signals.h"
#include "table_list.h"

namespace {

using AgentTable = ConvolveReverb::Table;
using AgentTables = std::vector<const AgentTable*>;

constexpr int kAgentBlock = 240;

// An agent convolves one channel for one ear.
struct AgentPlace {
    std::size_t channel;
    std::size_t ear;
};

struct AgentsOfLayout {
    const char* name;
    const sonivex::Layout* layout;
    int channels;
    unsigned mode;
    double divisor;
    std::map<std::size_t, AgentPlace> places;  // by agent number, in the order of `tables`
    AgentTables tables;
};

// Agent numbers from 8 on, two per channel.
std::map<std::size_t, AgentPlace> pairsFrom8(const std::vector<std::size_t>& channels) {
    std::map<std::size_t, AgentPlace> places;
    for (std::size_t i = 0; i < channels.size(); ++i) {
        places[8 + 2 * i] = {channels[i], 0};
        places[9 + 2 * i] = {channels[i], 1};
    }
    return places;
}

std::vector<AgentsOfLayout> everyNumbering() {
    using R = ConvolveReverb;
    const std::map<std::size_t, AgentPlace> crossed = {{0, {0, 0}}, {1, {0, 1}}, {2, {1, 0}}, {3, {1, 1}}};
    const std::map<std::size_t, AgentPlace> sides = {{0, {0, 0}}, {1, {1, 1}}, {2, {0, 0}}, {3, {1, 1}}};
    const auto six = pairsFrom8({0, 1, 2, 3, 4, 5});
    const auto eight = pairsFrom8({0, 1, 2, 3, 4, 5, 6, 7});
    const auto five = pairsFrom8({0, 1, 2, 4, 5});
    const auto seven = pairsFrom8({0, 1, 2, 4, 5, 6, 7});
#define TABLE(name) &R::g_##name,
    return {{"3DSurround, 2", &sonivex::kBingo2, 2, 0, 10000, crossed, {SONIVEX_TABLES_BINGO_2(TABLE)}},
            {"3DSurround, 5.1", &sonivex::kBingo51, 6, 0, 20000, six, {SONIVEX_TABLES_BINGO_5_1(TABLE)}},
            {"3DSurround, 7.1", &sonivex::kBingo71, 8, 0, 20000, eight, {SONIVEX_TABLES_BINGO_7_1(TABLE)}},
            {"MegaBass, 2, mode 1",
             &sonivex::kSurround2,
             2,
             1,
             20000,
             sides,
             {SONIVEX_TABLES_SURROUND_2(TABLE, mode1)}},
            {"MegaBass, 2, mode 2",
             &sonivex::kSurround2,
             2,
             2,
             20000,
             sides,
             {SONIVEX_TABLES_SURROUND_2(TABLE, mode2)}},
            {"MegaBass, 2, mode 3",
             &sonivex::kSurround2,
             2,
             3,
             20000,
             sides,
             {SONIVEX_TABLES_SURROUND_2(TABLE, mode3)}},
            {"MegaBass, 5.1, mode 1",
             &sonivex::kSurround51,
             6,
             1,
             20000,
             five,
             {SONIVEX_TABLES_SURROUND_5_1(TABLE, mode1)}},
            {"MegaBass, 5.1, mode 2",
             &sonivex::kSurround51,
             6,
             2,
             20000,
             five,
             {SONIVEX_TABLES_SURROUND_5_1(TABLE, mode2)}},
            {"MegaBass, 5.1, mode 3",
             &sonivex::kSurround51,
             6,
             3,
             20000,
             five,
             {SONIVEX_TABLES_SURROUND_5_1(TABLE, mode3)}},
            {"MegaBass, 7.1, mode 1",
             &sonivex::kSurround71,
             8,
             1,
             20000,
             seven,
             {SONIVEX_TABLES_SURROUND_7_1(TABLE, mode1)}},
            {"MegaBass, 7.1, mode 2",
             &sonivex::kSurround71,
             8,
             2,
             20000,
             seven,
             {SONIVEX_TABLES_SURROUND_7_1(TABLE, mode2)}},
            {"MegaBass, 7.1, mode 3",
             &sonivex::kSurround71,
             8,
             3,
             20000,
             seven,
             {SONIVEX_TABLES_SURROUND_7_1(TABLE, mode3)}},
            {"Audio",
             &sonivex::kAudio,
             2,
             0,
             24000,
             {{4, {0, 0}}, {7, {1, 1}}},
             {&R::g_dolbyL441, &R::g_dolbyR441}}};
#undef TABLE
}

// Expected signal at an ear for an impulse in a channel: the sum of the tables of its agents.
std::vector<float> heardOfImpulse(const AgentsOfLayout& agents, std::size_t channel, std::size_t ear) {
    std::vector<float> heard(kAgentBlock, 0.0F);
    std::size_t table = 0;
    for (const auto& [number, place] : agents.places) {
        const AgentTable& samples = *agents.tables[table++];
        if (place.channel != channel || place.ear != ear) continue;
        for (std::size_t k = 0; k < heard.size(); ++k) {
            heard[k] += static_cast<float>(samples[k] / agents.divisor);
        }
    }
    return heard;
}

TEST(ConvolveReverbAgents, EveryAgentOfALayoutHasTheTableOfItsChannelAndEar) {
    for (const AgentsOfLayout& agents : everyNumbering()) {
        SCOPED_TRACE(agents.name);
        const sonivex::Layout& layout = *agents.layout;
        const auto tables = sonivex::tablesOf(layout, agents.mode);
        ASSERT_EQ(agents.places.size(), agents.tables.size());
        ASSERT_EQ(tables.size(), agents.tables.size());
        EXPECT_EQ(layout.format.divisor, agents.divisor);
        EXPECT_EQ(layout.width, agents.channels);
        std::map<std::size_t, AgentPlace> places;
        for (const sonivex::Source& source : layout.sources) {
            if (source.left_agent >= 0)
                places[static_cast<std::size_t>(source.left_agent)] = {source.plane, 0};
            if (source.right_agent >= 0)
                places[static_cast<std::size_t>(source.right_agent)] = {source.plane, 1};
        }
        ASSERT_EQ(places.size(), agents.places.size());
        std::size_t table = 0;
        for (const auto& [number, place] : agents.places) {
            ASSERT_EQ(places.count(number), 1U) << "agent " << number;
            EXPECT_EQ(places[number].channel, place.channel) << "agent " << number;
            EXPECT_EQ(places[number].ear, place.ear) << "agent " << number;
            EXPECT_EQ(tables[table], agents.tables[table]) << "agent " << number;
            EXPECT_EQ(agents.tables[table]->size(), layout.format.samples);
            ++table;
        }
    }
}

TEST(ConvolveReverbAgents, AnImpulseInAChannelProducesTheTablesOfItsAgents) {
    for (const AgentsOfLayout& agents : everyNumbering()) {
        const auto width = static_cast<std::size_t>(agents.channels);
        for (std::size_t channel = 0; channel < width; ++channel) {
            SCOPED_TRACE(agents.name + std::string(", channel ") + std::to_string(channel));
            ConvolveReverb reverb;
            reverb.prepare(*agents.layout, agents.channels, kAgentBlock, agents.mode);
            std::vector<float> in(width * kAgentBlock, 0.0F);
            in[channel] = 1.0F;
            std::vector<float> out(2 * kAgentBlock);
            ASSERT_EQ(reverb.process(*agents.layout, in.data(), out.data(), kAgentBlock), kAgentBlock);
            const std::vector<float> left = heardOfImpulse(agents, channel, 0);
            const std::vector<float> right = heardOfImpulse(agents, channel, 1);
            for (std::size_t k = 0; k < kAgentBlock; ++k) {
                ASSERT_NEAR(out[2 * k], left[k], 1e-6F) << "frame " << k;
                ASSERT_NEAR(out[2 * k + 1], right[k], 1e-6F) << "frame " << k;
            }
        }
    }
}

// Changes one sample of a table, which is read-only otherwise, and restores it at the end of its lifetime.
class ChangedSample {
  public:
    explicit ChangedSample(const AgentTable& table)
        : sample_(const_cast<std::int16_t&>(table[1])), former_(sample_) {
        sample_ = 24000;
    }
    ChangedSample(const ChangedSample&) = delete;
    ChangedSample& operator=(const ChangedSample&) = delete;
    ~ChangedSample() { sample_ = former_; }

  private:
    std::int16_t& sample_;
    const std::int16_t former_;
};

// Both Audio tables have the same contents, so the test changes one of them to tell which ear uses which.
TEST(ConvolveReverbAgents, EachEarOfTheAudioStageHasItsOwnTable) {
    const ChangedSample in_left_only(ConvolveReverb::g_dolbyL441);
    ConvolveReverb reverb;
    reverb.prepareToPlay_Kelvo_Audio(2, kAgentBlock);
    std::vector<float> samples(2 * kAgentBlock, 0.0F);
    samples[0] = 1.0F;
    samples[1] = 1.0F;
    reverb.process_kelvo_audio_(samples.data(), samples.data(), kAgentBlock);
    EXPECT_NEAR(samples[2], 1.0F, 1e-6F);
    EXPECT_NEAR(samples[3], k_dolby441[1] / 24000.0F, 1e-6F);
    EXPECT_NE(k_dolby441[1], 24000);
}

}  // namespace
