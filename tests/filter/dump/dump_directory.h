#pragma once

#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "support/processes/temporary_folder.h"
#include "support/signals/signals.h"
#include "vorlin/global_settings.h"

namespace test {

inline constexpr char kDumpDirectoryProperty[] = "protected.network.cache.local.saveDir";

/** A temporary folder that the player's property names as the filter's dump folder while it lives. */
class DumpDirectory : public TemporaryFolder {
  public:
    DumpDirectory() { Vorlin::globalSettings::GetInstance().setProperty(kDumpDirectoryProperty, path()); }
    ~DumpDirectory() { Vorlin::globalSettings::GetInstance().setProperty(kDumpDirectoryProperty, ""); }
};

/** Returns the samples of a dump file; ignores half a sample at its end. */
inline Pcm samplesInFile(const std::string& path) {
    const std::string bytes = readFile(path);
    Pcm samples(bytes.size() / sizeof(int16_t));
    if (!samples.empty()) std::memcpy(samples.data(), bytes.data(), samples.size() * sizeof(int16_t));
    return samples;
}

/** Returns the name that the filter gives a dump file. @param stage "input" or "output". */
inline std::string dumpFileName(const std::string& effect, const std::string& stage,
                                const std::string& session_id) {
    return "sonivex_" + effect + "_" + stage + "_" + session_id + ".pcm";
}

}  // namespace test
