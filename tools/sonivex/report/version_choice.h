#pragma once

#include <string>
#include <vector>

#include "effect.h"

namespace sonivex_tool {

/** A chain of effects with their settings: one version of a sound that a report compares. */
struct VersionChoice {
    std::string text;  // as on the command line
    std::vector<const Effect*> chain;
    FilterOptions options;
};

/** Parses effects with commas between them, each with settings behind colons:
 *
 *    normalizer
 *    dialogue:voice=3,normalizer
 *    surround:type=MegaBass:mode=2:limiter=off
 *
 *  @throw Failure (Usage) that tells what is wrong */
VersionChoice parseVersion(const std::string& text);

/** Returns the chain for a heading: "dialogue (voice 3), normalizer". */
std::string titleOf(const VersionChoice& version);

/** Refuses two choices of one version, whose pictures would have the same names.
 *  @throw Failure (Usage) that quotes both */
void requireDifferent(const std::vector<VersionChoice>& versions);

/** Returns a name for files: lower-case letters, digits and hyphens, as in "dialogue-voice-3-normalizer". */
std::string fileNameOf(const VersionChoice& version);

}  // namespace sonivex_tool
