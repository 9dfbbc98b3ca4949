// The bundle as a host's library reads and runs it: what the Turtle files promise is what the plug-ins do.
#include <gtest/gtest.h>
#include <lilv/lilv.h>

#include <cstdint>
#include <ctime>
#include <map>
#include <memory>
#include <set>
#include <string>

#include "plugins/lv2/lv2_host.h"

namespace {

using test::kLv2Kinds;
using test::Lv2Kind;
using test::Planes;

const std::string kLv2 = "http://lv2plug.in/ns/lv2core#";
const std::string kGroups = "http://lv2plug.in/ns/ext/port-groups#";
const std::string kUnits = "http://lv2plug.in/ns/extensions/units#";
const std::string kPresets = "http://lv2plug.in/ns/ext/presets#";

struct WorldRelease {
    void operator()(LilvWorld* world) const { lilv_world_free(world); }
};
struct NodeRelease {
    void operator()(LilvNode* node) const { lilv_node_free(node); }
};
using Node = std::unique_ptr<LilvNode, NodeRelease>;

class Lv2Bundle : public testing::Test {
  protected:
    Lv2Bundle() : world_(lilv_world_new()) {
        lilv_world_load_bundle(world_.get(), bundle().get());
        // The library reads the file of a plug-in when it is asked for the plug-in.
        for (const auto& kind : kLv2Kinds) lilv_plugin_get_num_ports(plugin(kind));
    }

    static Node fileUri(LilvWorld* world, const char* path) {
        return Node(lilv_new_file_uri(world, nullptr, path));
    }
    Node bundle() const { return fileUri(world_.get(), SONIVEX_LV2_BUNDLE "/"); }
    Node uri(const std::string& text) const { return Node(lilv_new_uri(world_.get(), text.c_str())); }

    const LilvPlugin* plugin(const Lv2Kind& kind) const {
        return lilv_plugins_get_by_uri(lilv_world_get_all_plugins(world_.get()), uri(kind.uri).get());
    }

    const LilvPort* port(const Lv2Kind& kind, const char* symbol) const {
        const Node name(lilv_new_string(world_.get(), symbol));
        return lilv_plugin_get_port_by_symbol(plugin(kind), name.get());
    }

    // Returns a value of a port's property, or an empty text.
    std::string portValue(const Lv2Kind& kind, const LilvPort* port, const std::string& property) const {
        const Node value(lilv_port_get(plugin(kind), port, uri(property).get()));
        return value == nullptr ? "" : lilv_node_as_string(value.get());
    }

    bool isA(const std::string& subject, const std::string& type) const {
        return lilv_world_ask(world_.get(), uri(subject).get(),
                              uri("http://www.w3.org/1999/02/22-rdf-syntax-ns#type").get(), uri(type).get());
    }

    std::unique_ptr<LilvWorld, WorldRelease> world_;
};

TEST_F(Lv2Bundle, HasEveryPlugInAndNeedsNoFeature) {
    EXPECT_EQ(lilv_plugins_size(lilv_world_get_all_plugins(world_.get())), kLv2Kinds.size());
    for (const auto& kind : kLv2Kinds) {
        SCOPED_TRACE(kind.uri);
        ASSERT_NE(plugin(kind), nullptr);
        EXPECT_TRUE(lilv_plugin_verify(plugin(kind)));
        LilvNodes* const required = lilv_plugin_get_required_features(plugin(kind));
        EXPECT_EQ(lilv_nodes_size(required), 0U);
        lilv_nodes_free(required);
    }
}

// Without a worker, surround allocates in `run` when its settings change.
TEST_F(Lv2Bundle, StatesHardRealTimeForAllButSurround) {
    const auto hard_real_time = uri("http://lv2plug.in/ns/lv2core#hardRTCapable");
    for (const auto& kind : kLv2Kinds) {
        const bool is_surround = std::string(kind.uri).find("surround") != std::string::npos;
        EXPECT_EQ(lilv_plugin_has_feature(plugin(kind), hard_real_time.get()), !is_surround) << kind.uri;
    }
}

// The time of the processor, so that other programs on the machine do not count.
TEST_F(Lv2Bundle, IsFoundAndReadWithinATenthOfASecond) {
    constexpr double kLongest_s = 0.1;
    const std::clock_t begin = std::clock();
    const std::unique_ptr<LilvWorld, WorldRelease> world(lilv_world_new());
    lilv_world_load_bundle(world.get(), fileUri(world.get(), SONIVEX_LV2_BUNDLE "/").get());
    const LilvPlugins* const plugins = lilv_world_get_all_plugins(world.get());
    std::uint32_t ports = 0;
    LILV_FOREACH(plugins, i, plugins) {
        ports += lilv_plugin_get_num_ports(lilv_plugins_get(plugins, i));
    }
    const double took_s = static_cast<double>(std::clock() - begin) / CLOCKS_PER_SEC;
    EXPECT_EQ(ports, 82U);
    EXPECT_LT(took_s, kLongest_s);
    RecordProperty("discovery_ms", std::to_string(1000.0 * took_s));
}

TEST_F(Lv2Bundle, AudioPortsStandInTheEffectsOrderWithTheirRoles) {
    const std::vector<std::string> roles_2 = {"left", "right"};
    const std::vector<std::string> roles_6 = {"left",     "right",    "center", "lowFrequencyEffects",
                                              "rearLeft", "rearRight"};
    const std::vector<std::string> roles_8 = {"left",     "right",     "center",   "lowFrequencyEffects",
                                              "rearLeft", "rearRight", "sideLeft", "sideRight"};
    const std::map<std::size_t, std::pair<std::vector<std::string>, std::string>> layouts = {
        {2, {roles_2, "StereoGroup"}},
        {6, {roles_6, "FivePointOneGroup"}},
        {8, {roles_8, "SevenPointOneGroup"}}};
    for (const auto& kind : kLv2Kinds) {
        SCOPED_TRACE(kind.uri);
        for (const bool is_input : {true, false}) {
            const std::size_t channels = is_input ? kind.channels_in : kind.channels_out;
            const auto& [roles, group_class] = layouts.at(channels);
            const std::string group = std::string(kind.uri) + (is_input ? "#in" : "#out");
            EXPECT_TRUE(isA(group, kGroups + group_class));
            const Node main(lilv_world_get(world_.get(), uri(kind.uri).get(),
                                           uri(kGroups + (is_input ? "mainInput" : "mainOutput")).get(),
                                           nullptr));
            ASSERT_NE(main, nullptr);
            EXPECT_EQ(lilv_node_as_string(main.get()), group);
            for (std::size_t i = 0; i < channels; ++i) {
                const auto index = static_cast<std::uint32_t>(is_input ? i : kind.channels_in + i);
                const LilvPort* const audio = lilv_plugin_get_port_by_index(plugin(kind), index);
                EXPECT_TRUE(lilv_port_is_a(plugin(kind), audio, uri(kLv2 + "AudioPort").get()));
                EXPECT_TRUE(lilv_port_is_a(plugin(kind), audio,
                                           uri(kLv2 + (is_input ? "InputPort" : "OutputPort")).get()));
                EXPECT_EQ(portValue(kind, audio, kLv2 + "designation"), kGroups + roles[i]);
                EXPECT_EQ(portValue(kind, audio, kGroups + "group"), group);
            }
        }
    }
}

TEST_F(Lv2Bundle, ControlsHaveTheirPlacesRangesAndPoints) {
    struct Row {
        const char* symbol;
        test::Lv2Control place;
        float least, greatest, standard;
        std::set<float> points;
    };
    const std::vector<Row> common = {{"bypass", test::kBypass, 0, 1, 0, {}}};
    const std::vector<Row> surround = {{"bypass", test::kBypass, 0, 1, 0, {}},
                                       {"type", test::kType, 1, 13, 1, {1, 13}},
                                       {"mode", test::kMode, 1, 3, 1, {1, 2, 3}},
                                       {"limiter", test::kLimiter, 0, 1, 1, {0, 1}}};
    const std::vector<Row> dialogue = {{"bypass", test::kBypass, 0, 1, 0, {}},
                                       {"voice", test::kVoice, 1, 10, 1, {}}};
    for (const auto& kind : kLv2Kinds) {
        const bool is_surround = kind.effect == test::Lv2Effect::kSurround;
        const bool is_dialogue = kind.effect == test::Lv2Effect::kDialogue;
        const auto& rows = is_surround ? surround : is_dialogue ? dialogue : common;
        EXPECT_EQ(lilv_plugin_get_num_ports(plugin(kind)),
                  kind.channels_in + kind.channels_out + rows.size() + 1);
        for (const Row& row : rows) {
            SCOPED_TRACE(std::string(kind.uri) + " " + row.symbol);
            const LilvPort* const control = port(kind, row.symbol);
            ASSERT_NE(control, nullptr);
            EXPECT_EQ(lilv_port_get_index(plugin(kind), control),
                      kind.channels_in + kind.channels_out + row.place);
            LilvNode *standard = nullptr, *least = nullptr, *greatest = nullptr;
            lilv_port_get_range(plugin(kind), control, &standard, &least, &greatest);
            EXPECT_EQ(lilv_node_as_float(standard), row.standard);
            EXPECT_EQ(lilv_node_as_float(least), row.least);
            EXPECT_EQ(lilv_node_as_float(greatest), row.greatest);
            for (LilvNode* node : {standard, least, greatest}) lilv_node_free(node);
            std::set<float> points;
            LilvScalePoints* const all = lilv_port_get_scale_points(plugin(kind), control);
            LILV_FOREACH(scale_points, i, all) {
                points.insert(lilv_node_as_float(lilv_scale_point_get_value(lilv_scale_points_get(all, i))));
            }
            lilv_scale_points_free(all);
            EXPECT_EQ(points, row.points);
            EXPECT_EQ(lilv_port_has_property(plugin(kind), control, uri(kLv2 + "enumeration").get()),
                      !row.points.empty());
            EXPECT_EQ(lilv_port_has_property(plugin(kind), control, uri(kLv2 + "toggled").get()),
                      row.place == test::kBypass);
        }
    }
    EXPECT_EQ(portValue(test::kDialogue, port(test::kDialogue, "voice"), kUnits + "unit"), kUnits + "coef");
}

TEST_F(Lv2Bundle, HostsFindTheLatency) {
    for (const auto& kind : kLv2Kinds) {
        SCOPED_TRACE(kind.uri);
        ASSERT_TRUE(lilv_plugin_has_latency(plugin(kind)));
        const std::uint32_t index = lilv_plugin_get_latency_port_index(plugin(kind));
        EXPECT_EQ(index, kind.channels_in + kind.channels_out + test::kLatency);
        const LilvPort* const latency = lilv_plugin_get_port_by_index(plugin(kind), index);
        EXPECT_EQ(portValue(kind, latency, kLv2 + "designation"), kLv2 + "latency");
        EXPECT_EQ(portValue(kind, latency, kUnits + "unit"), kUnits + "frame");
    }
}

TEST_F(Lv2Bundle, PresetsSetControlsWithinTheirRange) {
    std::map<std::string, std::set<std::string>> labels;
    for (const auto& kind : kLv2Kinds) {
        LilvNodes* const presets = lilv_plugin_get_related(plugin(kind), uri(kPresets + "Preset").get());
        LILV_FOREACH(nodes, i, presets) {
            const LilvNode* const preset = lilv_nodes_get(presets, i);
            lilv_world_load_resource(world_.get(), preset);
            const Node label(lilv_world_get(
                world_.get(), preset, uri("http://www.w3.org/2000/01/rdf-schema#label").get(), nullptr));
            ASSERT_NE(label, nullptr);
            labels[kind.uri].insert(lilv_node_as_string(label.get()));
            LilvNodes* const ports =
                lilv_world_find_nodes(world_.get(), preset, uri(kLv2 + "port").get(), nullptr);
            EXPECT_GE(lilv_nodes_size(ports), 1U);
            LILV_FOREACH(nodes, j, ports) {
                const LilvNode* const entry = lilv_nodes_get(ports, j);
                const Node symbol(lilv_world_get(world_.get(), entry, uri(kLv2 + "symbol").get(), nullptr));
                const Node value(lilv_world_get(world_.get(), entry, uri(kPresets + "value").get(), nullptr));
                const LilvPort* const control = port(kind, lilv_node_as_string(symbol.get()));
                ASSERT_NE(control, nullptr) << lilv_node_as_string(symbol.get());
                LilvNode *least = nullptr, *greatest = nullptr;
                lilv_port_get_range(plugin(kind), control, nullptr, &least, &greatest);
                EXPECT_GE(lilv_node_as_float(value.get()), lilv_node_as_float(least));
                EXPECT_LE(lilv_node_as_float(value.get()), lilv_node_as_float(greatest));
                lilv_node_free(least);
                lilv_node_free(greatest);
            }
            lilv_nodes_free(ports);
        }
        lilv_nodes_free(presets);
    }
    const std::set<std::string> rooms = {"3DSurround", "MegaBass, small room", "MegaBass, medium room",
                                         "MegaBass, large room"};
    EXPECT_EQ(labels[test::kSurroundStereo.uri], rooms);
    EXPECT_EQ(labels[test::kSurround51.uri], rooms);
    EXPECT_EQ(labels[test::kSurround71.uri], rooms);
    EXPECT_EQ(labels[test::kDialogue.uri], (std::set<std::string>{"Gentle", "Films", "Talk"}));
}

TEST_F(Lv2Bundle, RunsInTheHostsLibraryWithTheSoundOfTheEffect) {
    for (const auto& kind : kLv2Kinds) {
        LilvInstance* const instance = lilv_plugin_instantiate(plugin(kind), 48000.0, nullptr);
        ASSERT_NE(instance, nullptr) << kind.uri;
        Planes in = test::noisePlanes(60, kind.channels_in, 5000);
        Planes out(kind.channels_out, std::vector<float>(5000));
        std::uint32_t index = 0;
        for (auto& plane : in) lilv_instance_connect_port(instance, index++, plane.data());
        for (auto& plane : out) lilv_instance_connect_port(instance, index++, plane.data());
        float controls[] = {0, 0, 1, 1, 1};
        for (std::size_t i = 0; index < lilv_plugin_get_num_ports(plugin(kind)); ++i) {
            lilv_instance_connect_port(instance, index++, &controls[i]);
        }
        lilv_instance_activate(instance);
        lilv_instance_run(instance, 5000);
        lilv_instance_deactivate(instance);
        lilv_instance_free(instance);
        EXPECT_TRUE(out == test::Lv2Plugin(kind).process(in)) << kind.uri;
    }
}

}  // namespace
