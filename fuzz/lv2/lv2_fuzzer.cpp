// A host that makes one instance of a plug-in and treats it badly. The input begins with the plug-in, the
// rate and the host's features (hostile_host.h). Then come operations, one byte each and what it reads: ports
// that are connected to samples, controls, each other's memory or nothing; controls of any value; blocks of
// any length; activation and deactivation in any order; the worker's messages in time, late, lost or forged.
// Every sample that comes out must be finite.

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <vector>

#include "hostile_host.h"
#include "plugin_kinds.h"
#include "support/byte_stream.h"
#include "support/guarded_samples.h"
#include "support/promise.h"

namespace {

using fuzz::ByteStream;
using fuzz::GuardedSamples;
using fuzz::require;

constexpr std::uint32_t kLongest_frames = 8192;
constexpr std::uint32_t kMostFrames = 10000;  // of one input
constexpr float kMark = 0.123F;
constexpr std::size_t kMostPorts = 24;

class Host {
  public:
    Host(const LV2_Descriptor& descriptor, const sonivex_lv2::PluginKind& kind, ByteStream& stream)
        : descriptor_(descriptor), kind_(kind), stream_(stream), features_(stream) {
        instance_ = descriptor.instantiate(&descriptor, readRate(), "/nowhere/", features_.list());
        if (instance_ == nullptr) return;
        const void* const worker =
            descriptor.extension_data != nullptr ? descriptor.extension_data(LV2_WORKER__interface) : nullptr;
        features_.serve(instance_, static_cast<const LV2_Worker_Interface*>(worker));
        if (descriptor.extension_data != nullptr) {
            require(descriptor.extension_data("urn:fuzz:unknown") == nullptr,
                    "an unknown extension is not offered");
        }
    }
    ~Host() {
        if (instance_ != nullptr) descriptor_.cleanup(instance_);
    }
    Host(const Host&) = delete;
    Host& operator=(const Host&) = delete;

    void goOn() {
        if (instance_ == nullptr) return;
        connectAll();
        while (frames_ < kMostFrames && !stream_.isEmpty()) {
            const int operation = stream_.byte();
            if (operation < 0x80) {
                run();
            } else if (operation < 0xA0) {
                controls_[static_cast<std::size_t>(stream_.inRange(0, 4))] = readControl();
            } else if (operation < 0xB0) {
                connectPort();
            } else if (operation < 0xC0) {
                connectAll();
            } else if (operation < 0xD0) {
                if (descriptor_.activate != nullptr) descriptor_.activate(instance_);
            } else if (operation < 0xD8) {
                if (descriptor_.deactivate != nullptr) descriptor_.deactivate(instance_);
            } else if (operation < 0xF0) {
                features_.work(stream_);
            } else {
                features_.changeManner(stream_);
            }
        }
    }

  private:
    double readRate() {
        constexpr double kRates_hz[] = {48000.0, 48000.0, 44100.0, 96000.0, 192000.0, 8000.0, 22050.5};
        const int kind = stream_.byte();
        return kind >= 0xF0 ? stream_.longReal() : kRates_hz[kind % 7];
    }

    float readControl() {
        constexpr float kUsual[] = {0.0F, 1.0F, 2.0F, 3.0F, 7.0F, 13.0F, -1.0F, 0.5F};
        const int kind = stream_.byte();
        return kind >= 0xC0 ? stream_.real() : kUsual[kind % 8];
    }

    std::uint32_t portCount() const {
        return static_cast<std::uint32_t>(kind_.channels_in + kind_.channels_out + 5);
    }

    void connect(std::uint32_t port, void* location) { descriptor_.connect_port(instance_, port, location); }

    /** Connects every port to memory of its own, in which the next block will be. */
    void connectAll() {
        connected_.assign(portCount(), kOwn);
        for (std::size_t i = 0; i < 5; ++i) {
            connect(static_cast<std::uint32_t>(kind_.channels_in + kind_.channels_out) +
                        static_cast<std::uint32_t>(i),
                    &controls_[i]);
        }
    }

    void connectPort() {
        const std::uint32_t port = stream_.flag()
                                       ? static_cast<std::uint32_t>(stream_.number())
                                       : static_cast<std::uint32_t>(stream_.inRange(0, kMostPorts));
        const int how = stream_.byte() % 3;
        if (port >= portCount()) {
            connect(port, controls_.data());
            return;
        }
        const auto audio = static_cast<std::uint32_t>(kind_.channels_in + kind_.channels_out);
        if (port >= audio) {
            connect(port, how == 0 ? nullptr : &controls_[how == 1 ? port - audio : 0]);
        } else {
            connected_[port] = static_cast<Connection>(how);
        }
    }

    std::uint32_t blockLength() {
        switch (stream_.byte() % 5) {
            case 0:
                return stream_.byte();
            case 1:
                return 256;
            case 2:
                return 0;
            case 3:
                return static_cast<std::uint32_t>(stream_.inRange(0, 1024));
            default:
                return static_cast<std::uint32_t>(stream_.inRange(0, kLongest_frames));
        }
    }

    void fill(std::vector<float>& block) {
        const int kind = stream_.byte();
        if (kind < 0x60) {
            std::vector<std::int16_t> samples(block.size());
            fuzz::fillWithSamples(samples, stream_);
            std::transform(samples.begin(), samples.end(), block.begin(),
                           [](std::int16_t sample) { return static_cast<float>(sample) / 32768.0F; });
            return;
        }
        std::array<float, 4> period = {};
        for (float& sample : period) sample = kind < 0xB0 ? stream_.real() : 1.0e6F;
        for (std::size_t i = 0; i < block.size(); ++i) block[i] = period[i % period.size()];
    }

    /** Runs one block, in fresh memory of exactly its length. */
    void run() {
        const std::uint32_t frames = blockLength();
        const auto inputs = static_cast<std::size_t>(kind_.channels_in);
        const auto outputs = static_cast<std::size_t>(kind_.channels_out);
        std::vector<std::vector<float>> in(inputs, std::vector<float>(frames));
        std::vector<GuardedSamples<float>> out(outputs, {frames, kMark});
        for (std::size_t i = 0; i < inputs; ++i) {
            fill(in[i]);
            float* place = in[i].data();
            if (connected_[i] == kNothing) place = nullptr;
            if (connected_[i] == kShared) {
                place = out[i % outputs].data();
                std::copy(in[i].begin(), in[i].end(), place);
            }
            connect(static_cast<std::uint32_t>(i), place);
        }
        std::vector<bool> is_written(outputs, false);
        for (std::size_t i = 0; i < outputs; ++i) {
            // A shared output is that of the first channel.
            const Connection how = connected_[inputs + i];
            const std::size_t place = how == kShared ? 0 : i;
            if (how != kNothing) is_written[place] = true;
            connect(static_cast<std::uint32_t>(inputs + i), how == kNothing ? nullptr : out[place].data());
        }
        descriptor_.run(instance_, frames);
        for (std::size_t i = 0; i < outputs; ++i) {
            out[i].requireWholeGuards();
            if (!is_written[i]) continue;
            require(std::all_of(out[i].samples().begin(), out[i].samples().end(),
                                [](float sample) { return std::isfinite(sample); }),
                    "every sample that comes out is finite");
        }
        frames_ += std::max<std::uint32_t>(frames, 1);
    }

    enum Connection { kOwn, kNothing, kShared };

    const LV2_Descriptor& descriptor_;
    const sonivex_lv2::PluginKind& kind_;
    ByteStream& stream_;
    fuzz::HostileFeatures features_;
    LV2_Handle instance_ = nullptr;
    std::vector<Connection> connected_;  // of the audio ports
    std::array<float, 5> controls_ = {0.0F, 0.0F, 1.0F, 1.0F, 1.0F};
    std::uint32_t frames_ = 0;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    ByteStream stream(bytes, size);
    constexpr auto& kKinds = sonivex_lv2::kPluginKinds;
    const auto index = static_cast<std::uint32_t>(stream.inRange(0, static_cast<int>(kKinds.size())));
    const LV2_Descriptor* const descriptor = lv2_descriptor(index);
    require((descriptor != nullptr) == (index < kKinds.size()),
            "there is a descriptor for each plug-in, and no more");
    if (descriptor == nullptr) return 0;
    Host(*descriptor, kKinds[index], stream).goOn();
    return 0;
}
