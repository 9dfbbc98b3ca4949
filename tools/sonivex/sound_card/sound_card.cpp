#include "sound_card.h"

#include <utility>

#include "failure.h"
#include "sdl_sound_card.h"

namespace sonivex_tool {

#ifdef SONIVEX_HAS_SDL2

std::unique_ptr<SoundCard> openSoundCard(const SoundCardSettings& settings, std::shared_ptr<SoundFeed> feed) {
    return openSdlSoundCard(settings, std::move(feed));
}

std::vector<std::string> listSoundCards() {
    return listSdlSoundCards();
}

#else

namespace {

[[noreturn]] void refuse() {
    throw Failure(ExitCode::NoSoundCard, "cannot play: this program was built without SDL2");
}

}  // namespace

std::unique_ptr<SoundCard> openSoundCard(const SoundCardSettings& /*settings*/,
                                         std::shared_ptr<SoundFeed> /*feed*/) {
    refuse();
}

std::vector<std::string> listSoundCards() {
    refuse();
}

#endif

}  // namespace sonivex_tool
