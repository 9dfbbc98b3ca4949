#include "inspect.h"

#include <algorithm>

#include "dump_name.h"
#include "failure.h"
#include "frame_stream.h"
#include "pair_comparison.h"

namespace sonivex_tool {
namespace {

/** A file with the way to read it again. */
struct Measured {
    InspectedFile file;
    std::function<FrameStream()> open;
};

Measured measure(const std::string& path, const PcmHints& hints, bool isOutput) {
    Measured measured;
    std::optional<PcmFormat> format;
    if (isPcmPath(path)) {
        const PcmGuess guess = guessPcmFormat(path, hints, isOutput);
        format = guess.format;
        measured.file.assumptions = guess.assumptions;
    }
    measured.open = [path, format] { return openFrameStream(path, format); };
    const FrameStream stream = measured.open();
    measured.file.path = path;
    measured.file.codec = stream.codec;
    measured.file.spec = stream.spec;
    LevelMeter meter(stream.spec);
    while (const FramePtr frame = stream.read()) meter.add(*frame);
    measured.file.levels = meter.result();
    return measured;
}

ComparedSide sideOf(const Measured& measured) {
    return {measured.open, measured.file.levels.frames, measured.file.levels.firstAudibleFrame};
}

InspectedPair compare(const Measured& input, const Measured& output) {
    if (input.file.spec.rateHz != output.file.spec.rateHz) {
        throw Failure(ExitCode::UnsupportedAudio,
                      output.file.path + ": has " + std::to_string(output.file.spec.rateHz) +
                          " Hz, its input " + std::to_string(input.file.spec.rateHz) + " Hz");
    }
    const PairDifference difference = comparePair(sideOf(input), sideOf(output));
    return {input.file.path, output.file.path, input.file.spec.rateHz, difference.delayFrames,
            difference.gain_db};
}

/** The output that belongs to `input`, or null. */
const Measured* outputOf(const Measured& input, const std::vector<Measured>& files) {
    const auto name = parseDumpName(input.file.path);
    if (!name || !name->isInput) return nullptr;
    const std::string path = name->partner().path();
    const auto found =
        std::find_if(files.begin(), files.end(), [&](const Measured& m) { return m.file.path == path; });
    return found == files.end() ? nullptr : &*found;
}

}  // namespace

InspectReport inspect(const InspectRequest& request) {
    InspectReport report;
    std::vector<Measured> files;
    for (const std::string& path : request.files) files.push_back(measure(path, request.hints, false));
    for (const Measured& input : files) {
        if (const Measured* output = outputOf(input, files)) report.pairs.push_back(compare(input, *output));
    }
    if (request.pair) {
        files.push_back(measure(request.pair->first, request.hints, false));
        files.push_back(measure(request.pair->second, request.hints, true));
        report.pairs.push_back(compare(files[files.size() - 2], files.back()));
    }
    for (Measured& measured : files) report.files.push_back(std::move(measured.file));
    return report;
}

}  // namespace sonivex_tool
