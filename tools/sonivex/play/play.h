#pragma once

#include <memory>
#include <string>
#include <vector>

#include "play_script.h"
#include "playback.h"
#include "result_stream.h"
#include "sound_card.h"

namespace sonivex_tool {

/** Tells the command "play" what to play, where, and what to show. */
struct PlaySettings {
    PlaybackSettings playback;
    std::string device;  // empty: the system's default sound card
    std::vector<ScriptedKey> script;
    bool uses_screen = true;  // if there is a terminal
    bool is_quiet = false;    // without a screen: no line at all
};

/** Plays a file to its end, or until the user ends it.
 *
 *  @param result receives plain lines if there is no screen
 *  @param open opens the sound card
 *  @throw Failure: as Playback does; NoSoundCard if no card plays; InputDamaged if a part of the file was
 *  lost, after the rest was played; Interrupted or Terminated by a signal */
void play(const PlaySettings& settings, const std::shared_ptr<Vorlin::Plugin>& plugin, ResultStream& result,
          const OpenSoundCard& open);

}  // namespace sonivex_tool
