#pragma once

namespace test {

/** Arguments of aem_CreateDialoguEnhance. The defaults are those of the filter. */
struct DialogueSettings {
    int channels = 2;
    int rate_hz = 48000;
    double gain_floor = 1.0;
    double gain_scale = 1.0;
    double voice_level = 1.0;
    bool operator==(const DialogueSettings&) const = default;
};

}  // namespace test
