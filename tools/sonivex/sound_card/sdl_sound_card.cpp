#include "sdl_sound_card.h"

// SDL_main would replace the program's own main() on some systems.
#define SDL_MAIN_HANDLED
#include <SDL.h>

#include <utility>

#include "failure.h"
#include "hasty_end.h"

namespace sonivex_tool {
namespace {

// Frames that a card takes at once; short, because it is a part of the delay between a key and its effect.
constexpr Uint16 kCardBuffer_frames = 1024;

void startSdl() {
    // The program has handlers of its own for Ctrl-C and its like.
    SDL_SetHint(SDL_HINT_NO_SIGNAL_HANDLERS, "1");
    SDL_SetHint(SDL_HINT_APP_NAME, "sonivex");
    SDL_SetMainReady();
    if (SDL_InitSubSystem(SDL_INIT_AUDIO | SDL_INIT_EVENTS) < 0) {
        throw Failure(ExitCode::NoSoundCard, std::string("cannot start the sound system: ") + SDL_GetError());
    }
}

class SdlSoundCard final : public SoundCard {
  public:
    SdlSoundCard(const SoundCardSettings& settings, std::shared_ptr<SoundFeed> feed)
        : source_(std::make_unique<Source>(Source{std::move(feed), 0})) {
        startSdl();
        SDL_AudioSpec wanted{};
        wanted.freq = settings.rate_hz;
        wanted.format = AUDIO_F32SYS;
        wanted.channels = kPlayedChannels;
        wanted.samples = kCardBuffer_frames;
        wanted.callback = &SdlSoundCard::fill;
        wanted.userdata = source_.get();
        SDL_AudioSpec obtained{};
        const char* name = settings.device.empty() ? nullptr : settings.device.c_str();
        constexpr int kPlayback = 0;
        constexpr int kNoChanges = 0;  // SDL converts to whatever the card takes
        device_ = SDL_OpenAudioDevice(name, kPlayback, &wanted, &obtained, kNoChanges);
        if (device_ == 0) {
            const std::string reason = SDL_GetError();
            SDL_QuitSubSystem(SDL_INIT_AUDIO | SDL_INIT_EVENTS);
            const std::string what =
                settings.device.empty() ? "the default sound card" : "sound card \"" + settings.device + "\"";
            throw Failure(ExitCode::NoSoundCard, "cannot open " + what + ": " + reason);
        }
        buffer_frames_ = obtained.samples;
        // Taken only now: if no device opens, the card before this one keeps its ticket. SDL does not call
        // `fill` before the device is started.
        source_->ticket = source_->feed->newTicket();
        SDL_PauseAudioDevice(device_, 0);
    }

    ~SdlSoundCard() override {
        if (device_ == 0) return;
        SDL_CloseAudioDevice(device_);
        SDL_QuitSubSystem(SDL_INIT_AUDIO | SDL_INIT_EVENTS);
    }

    bool isGone() override {
        SDL_Event event{};
        while (SDL_PollEvent(&event) != 0) {
            if (event.type == SDL_AUDIODEVICEREMOVED && event.adevice.iscapture == 0 &&
                event.adevice.which == device_) {
                is_gone_ = true;
            }
        }
        return is_gone_;
    }

    void abandon() override {
        device_ = 0;
        skipCleanUpAtEnd();
        (void)source_.release();  // the card's thread may still use it
    }

    int latency_frames() const override { return buffer_frames_; }

  private:
    struct Source {
        std::shared_ptr<SoundFeed> feed;
        uint64_t ticket;
    };

    static void fill(void* userdata, Uint8* bytes, int length_bytes) {
        const auto* source = static_cast<Source*>(userdata);
        constexpr int kFrame_bytes = kPlayedChannels * static_cast<int>(sizeof(float));
        source->feed->take(source->ticket, reinterpret_cast<float*>(bytes), length_bytes / kFrame_bytes);
    }

    std::unique_ptr<Source> source_;
    SDL_AudioDeviceID device_ = 0;
    int buffer_frames_ = 0;
    bool is_gone_ = false;
};

}  // namespace

std::unique_ptr<SoundCard> openSdlSoundCard(const SoundCardSettings& settings,
                                            std::shared_ptr<SoundFeed> feed) {
    return std::make_unique<SdlSoundCard>(settings, std::move(feed));
}

std::vector<std::string> listSdlSoundCards() {
    startSdl();
    constexpr int kPlayback = 0;
    std::vector<std::string> names;
    const int count = SDL_GetNumAudioDevices(kPlayback);
    for (int i = 0; i < count; ++i) {
        const char* name = SDL_GetAudioDeviceName(i, kPlayback);
        if (name != nullptr) names.emplace_back(name);
    }
    SDL_QuitSubSystem(SDL_INIT_AUDIO | SDL_INIT_EVENTS);
    return names;
}

}  // namespace sonivex_tool
