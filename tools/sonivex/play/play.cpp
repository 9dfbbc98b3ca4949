#include "play.h"

#include <algorithm>
#include <csignal>
#include <optional>
#include <utility>

#include "card_keeper.h"
#include "console.h"
#include "failure.h"
#include "interrupt.h"
#include "play_thread.h"
#include "play_view.h"

namespace sonivex_tool {
namespace {

// The longest that a sample waits between the mix and the card: what a key takes to be heard, and what a busy
// machine may take to come back.
constexpr double kFeed_s = 0.15;
// Time for the last fade and for the feed to run empty, after which a card or a file that hangs is given up.
constexpr std::chrono::milliseconds kQuitLimit{1500};

std::string streamText(const SourceInfo& info) {
    std::string text =
        info.codec + ", " + std::to_string(info.spec.rate_hz) + " Hz, " + layoutName(info.spec.layout);
    if (info.audio_streams > 1)
        text +=
            ", stream " + std::to_string(info.stream_number) + " of " + std::to_string(info.audio_streams);
    return text;
}

[[noreturn]] void throwInterrupted(int signal, const std::string& when) {
    throw Failure(signal == SIGINT ? ExitCode::Interrupted : ExitCode::Terminated, "interrupted " + when);
}

/** Plays one file: the thread that plays, the card, and what the user sees. */
class Session {
  public:
    Session(const PlaySettings& settings, const std::shared_ptr<Vorlin::Plugin>& plugin, ResultStream& result,
            const OpenSoundCard& open)
        : settings_(settings),
          playback_(settings.playback, plugin),
          feed_(std::make_shared<SoundFeed>(static_cast<int>(kFeed_s * playback_.rate_hz()))),
          keeper_(open, {.device = settings.device, .rate_hz = playback_.rate_hz()}, feed_,
                  CardKeeper::Clock::now()),
          thread_(playback_, feed_, settings.script),
          view_(settings, result) {
        for (const std::string& line : notes_) view_.note(0.0, line);
    }

    void run() {
        while (!thread_.hasEnded() && pendingSignal() == 0) {
            for (const PlayAction action : view_.waitForKeys()) press(action);
            const auto now = CardKeeper::Clock::now();
            if (quit_since_ && now - *quit_since_ > kQuitLimit) break;
            const std::optional<std::string> line = keeper_.check(now);
            if (line) view_.note(heardPosition_s(), *line);
            showEvents();
            view_.show(contents(), now);
        }
        thread_.stop();
        showEvents();
        finish();
    }

  private:
    void press(PlayAction action) {
        if (action == PlayAction::Quit && !quit_since_) quit_since_ = CardKeeper::Clock::now();
        thread_.act(action);
    }

    void showEvents() {
        for (const PlayEvent& event : thread_.takeEvents()) view_.note(event.position_s, event.text);
    }

    // Everything in the feed and in the card is still to be heard.
    double heardPosition_s() {
        const double waiting_s =
            static_cast<double>(feed_->waitingFrames() + keeper_.latency_frames()) / playback_rate_hz_;
        return std::max(thread_.status().position_s - waiting_s, 0.0);
    }

    ScreenContents contents() {
        const PlayStatus status = thread_.status();
        ScreenContents contents;
        contents.title = settings_.playback.input.path;
        contents.stream = stream_text_;
        contents.card = settings_.device.empty() ? "default sound card" : settings_.device;
        contents.position_s = heardPosition_s();
        contents.length_s = length_s_;
        contents.is_paused = status.is_paused;
        contents.hears_effect = status.hears_effect;
        contents.effect = status.effect;
        contents.is_matching = status.is_matching;
        contents.original = {status.reading.original_lufs, status.reading.original_peak_dbfs,
                             status.reading.original_gain_db};
        contents.processed = {status.reading.processed_lufs, status.reading.processed_peak_dbfs,
                              status.reading.processed_gain_db};
        contents.output_peak_dbfs = status.output_peak_dbfs;
        contents.volume_db = status.volume_db;
        contents.cpu_share = status.cpu_share;
        contents.guard = status.guard;
        contents.gaps = feed_->gaps();
        contents.clipped_samples = status.clipped_samples;
        return contents;
    }

    void finish() {
        const PlayStatus status = thread_.status();
        const std::string end = clockTime(status.position_s);
        if (const int signal = pendingSignal(); signal != 0) throwInterrupted(signal, "at " + end);
        thread_.rethrow();
        view_.finish("ended at " + end + "; gaps " + std::to_string(feed_->gaps()) + ", clipped samples " +
                     std::to_string(status.clipped_samples));
        if (playback_.hasReadAll() && playback_.damage().isDamaged()) {
            throw Failure(ExitCode::InputDamaged,
                          "a part of \"" + settings_.playback.input.path + "\" is lost; the rest was played");
        }
    }

    const PlaySettings& settings_;
    Playback playback_;
    const int playback_rate_hz_ = playback_.rate_hz();
    const std::optional<double> length_s_ = playback_.info().length_seconds;
    const std::vector<std::string> notes_ = sentencesOn(settings_.playback.input.path, playback_.info());
    const std::string stream_text_ = streamText(playback_.info());
    std::shared_ptr<SoundFeed> feed_;
    CardKeeper keeper_;
    PlayThread thread_;
    PlayView view_;
    std::optional<CardKeeper::Clock::time_point> quit_since_;
};

}  // namespace

void play(const PlaySettings& settings, const std::shared_ptr<Vorlin::Plugin>& plugin, ResultStream& result,
          const OpenSoundCard& open) {
    std::optional<Session> session;
    try {
        session.emplace(settings, plugin, result, open);
    } catch (const Failure&) {
        if (const int signal = pendingSignal(); signal != 0) throwInterrupted(signal, "before it played");
        throw;
    }
    session->run();
}

}  // namespace sonivex_tool
