// One instance of a plug-in: the ports, the effect, the delayed unprocessed sound, and the fade between the
// two.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "crossfade.h"
#include "dry_path.h"
#include "engine_slot.h"
#include "host_features.h"
#include "plugin_kinds.h"

namespace sonivex_lv2 {

/** An instance. [audio] is the thread of run(), [main] any thread while nothing runs, [worker] the host's
 *  worker. */
class Instance {
  public:
    /** @param engine with the default settings for the kind. Throws std::bad_alloc. */
    Instance(const PluginKind& kind, int sample_rate_hz, const HostFeatures& host, Engine engine);

    /** Connects a port, or disconnects it with null. [audio] real-time safe */
    void connectPort(std::uint32_t port, void* location) { connect(kind_, port, location, ports_); }

    /** Makes everything inside silent. [main] */
    void activate();

    /** Processes a block. Controls count for the whole block. An input that is not connected is silent; a
     *  sample that is not finite, or above 120 dB over full scale, counts as 0.
     *  [audio] real-time safe if the host has a worker, and as far as sonivex_stream_float is */
    void run(std::uint32_t frames);

    /** @see EngineMaker::work */
    LV2_Worker_Status work(std::uint32_t size, const void* data) { return engines_.work(size, data); }

  private:
    // Planes of one piece, [channels][kPiece_frames].
    class Piece {
      public:
        explicit Piece(int channels);
        Planes planes() const { return planes_.data(); }

      private:
        std::vector<float> samples_;
        std::array<float*, kMostChannels> planes_{};
    };

    void followControls();
    void readInputs(std::size_t first, int frames);
    void runPiece(std::size_t first, int frames);
    void writeOutputs(ConstPlanes planes, std::size_t first, int frames);

    const PluginKind& kind_;
    Ports ports_;
    EngineSlot engines_;
    DryPath dry_path_;
    Crossfade bypass_fade_;
    bool is_bypassed_ = false;  // or on the way there
    bool has_run_ = false;      // since activate()
    Piece in_;
    Piece wet_;
    Piece dry_;
};

}  // namespace sonivex_lv2
