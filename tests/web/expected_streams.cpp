// Writes what the library puts out for a choice of settings, for the tests that run the effects in a browser:
// for every case FOLDER/NAME.in.s16 and NAME.out.s16, interleaved, and a line in FOLDER/cases.json.
//
// Usage: expected_streams FOLDER
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>
#include <vector>

#include "sonivex/effect.h"
#include "support/signals/signals.h"

namespace {

constexpr int kRate_hz = 48000;
constexpr int kBlock_frames = 480;
constexpr int kStereo = 2;

struct Case {
    const char* effect;
    const char* type;
    int channels;
    int mode;
    int limiter;

    std::string name() const {
        return std::string(effect) + "-" + type + "-" + std::to_string(channels) + "-" +
               std::to_string(mode) + (limiter != 0 ? "-limited" : "");
    }
};

// Loud enough to reach the limiter, with silence in which responses ring out.
test::Pcm programme(int channels) {
    test::Pcm all = test::noise(5, channels * 6000, 3000);
    test::append(all, test::bursts(6, channels * 12000));
    test::append(all, test::square(channels * 3000, 41 * channels, 32767));
    test::append(all, test::Pcm(static_cast<std::size_t>(channels) * 3000, 0));
    return all;
}

SonivexEffect* makeEffect(const Case& of) {
    SonivexEffect* effect = nullptr;
    const int type = of.type == std::string("MegaBass") ? 13 : 1;
    const int status =
        of.effect == std::string("normalizer")
            ? sonivex_create_normalizer(&effect, of.channels, kRate_hz)
            : sonivex_create_surround(&effect, of.channels, kRate_hz, type, of.mode, of.limiter);
    if (status != SONIVEX_OK) {
        std::fprintf(stderr, "%s: %s\n", of.name().c_str(), sonivex_status_text(status));
        std::exit(1);
    }
    return effect;
}

// Streams in blocks and drops the delay.
test::Pcm render(const Case& of, const test::Pcm& in) {
    SonivexEffect* const effect = makeEffect(of);
    const auto channels = static_cast<std::size_t>(of.channels);
    const std::size_t frames = in.size() / channels;
    const auto latency = static_cast<std::size_t>(sonivex_stream_latency_frames(effect));
    test::Pcm out;
    std::vector<std::vector<float>> planes_in(channels, std::vector<float>(kBlock_frames));
    std::vector<std::vector<float>> planes_out(kStereo, std::vector<float>(kBlock_frames));
    for (std::size_t first = 0; first < frames + latency; first += kBlock_frames) {
        std::vector<const float*> inputs;
        std::vector<float*> outputs;
        for (std::size_t channel = 0; channel < channels; ++channel) {
            for (std::size_t i = 0; i < kBlock_frames; ++i) {
                const bool is_inside = first + i < frames;
                planes_in[channel][i] =
                    is_inside ? static_cast<float>(in[(first + i) * channels + channel]) / 32768.0F : 0.0F;
            }
            inputs.push_back(planes_in[channel].data());
        }
        for (auto& plane : planes_out) outputs.push_back(plane.data());
        sonivex_stream_float(effect, inputs.data(), outputs.data(), kBlock_frames);
        for (std::size_t i = 0; i < kBlock_frames; ++i) {
            for (const auto& plane : planes_out)
                out.push_back(static_cast<std::int16_t>(plane[i] * 32768.0F));
        }
    }
    sonivex_release(effect);
    out.erase(out.begin(), out.begin() + static_cast<std::ptrdiff_t>(kStereo * latency));
    out.resize(kStereo * frames);
    return out;
}

void write(const std::string& path, const test::Pcm& pcm) {
    std::ofstream file(path, std::ios::binary);
    file.write(reinterpret_cast<const char*>(pcm.data()),
               static_cast<std::streamsize>(pcm.size() * sizeof pcm[0]));
    if (!file.flush()) {
        std::fprintf(stderr, "cannot write %s\n", path.c_str());
        std::exit(1);
    }
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: %s FOLDER\n", argv[0]);
        return 2;
    }
    const std::string folder = argv[1];
    std::vector<Case> cases = {{"normalizer", "3DSurround", 2, 1, 1}};
    for (const int channels : {2, 6, 8}) {
        for (const int limiter : {0, 1}) cases.push_back({"surround", "3DSurround", channels, 1, limiter});
        for (const int mode : {1, 2, 3}) cases.push_back({"surround", "MegaBass", channels, mode, 1});
        cases.push_back({"surround", "MegaBass", channels, 2, 0});
    }
    std::string list;
    for (const Case& one : cases) {
        const test::Pcm in = programme(one.channels);
        write(folder + "/" + one.name() + ".in.s16", in);
        write(folder + "/" + one.name() + ".out.s16", render(one, in));
        list += list.empty() ? "[" : ",\n ";
        list += R"({"name": ")" + one.name() + R"(", "channels": )" + std::to_string(one.channels) +
                R"(, "choice": {"effect": ")" + one.effect + R"(", "type": ")" + one.type + R"(", "mode": )" +
                std::to_string(one.mode) + R"(, "limiter": )" + (one.limiter != 0 ? "true" : "false") + "}}";
    }
    std::ofstream(folder + "/cases.json") << list << "]\n";
    return 0;
}
