#include "option_checks.h"
#include "render_choices.h"

namespace sonivex_tool {
namespace {

constexpr char kConversionGroup[] = "Conversion";
constexpr char kLevelGroup[] = "Level";
constexpr int kLowestRate_hz = 1000;
constexpr int kHighestRate_hz = 768000;
constexpr double kQuietestTarget_lufs = -70.0;  // EBU R128 measures nothing below
constexpr double kLoudestTarget_lufs = -5.0;
constexpr double kLowestPeak_db = -20.0;

}  // namespace

void addSoundOptions(CLI::App& command, RenderChoices& choices) {
    ConversionSettings& conversion = choices.settings.conversion;
    LevelSettings& level = choices.settings.level;
    command
        .add_option("--rate", conversion.rate_hz,
                    "Sample rate at which the effects run. Without it, IN's, or the\n"
                    "nearest that they support")
        ->option_text("HZ")
        ->check(CLI::Range(kLowestRate_hz, kHighestRate_hz))
        ->group(kConversionGroup);
    command
        .add_option("--layout", conversion.layout,
                    "Channel layout that the effects get, such as stereo or 5.1.\n"
                    "Without it, IN's, or the nearest that they support")
        ->option_text("NAME")
        ->check(channelLayout())
        ->group(kConversionGroup);
    command.add_flag("--strict", conversion.strict, "Refuse audio that needs another sample rate or layout")
        ->group(kConversionGroup);
    command.add_flag("--no-dither", choices.no_dither, "Round samples without dither where bits are dropped")
        ->group(kConversionGroup);

    command
        .add_option("--target-lufs", level.target_lufs,
                    "Bring OUT to this integrated loudness (EBU R128) with a plain\n"
                    "gain, -70 to -5. Without it, the level stays")
        ->option_text("LUFS")
        ->check(finiteFrom(kQuietestTarget_lufs, kLoudestTarget_lufs))
        ->group(kLevelGroup);
    command
        .add_option("--true-peak", choices.true_peak_dbtp,
                    "With --target-lufs: limit the true peak, -20 to 0 (default -1)")
        ->option_text("DBTP")
        ->check(finiteFrom(kLowestPeak_db, 0.0))
        ->group(kLevelGroup);
    command
        .add_flag("--no-measure", choices.no_measure, "Measure neither loudness nor peaks; this is faster")
        ->group(kLevelGroup);
}

}  // namespace sonivex_tool
