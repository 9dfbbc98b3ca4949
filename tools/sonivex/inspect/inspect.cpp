#include "inspect.h"

#include <algorithm>
#include <filesystem>

#include "dump_name.h"
#include "failure.h"
#include "frame_stream.h"
#include "pair_comparison.h"

namespace sonivex_tool {
namespace {

// A measured file, and a function that opens it again.
struct Measured {
    InspectedFile file;
    std::function<FrameStream()> open;
};

Measured measure(const std::string& path, const PcmHints& hints, bool is_output) {
    Measured measured;
    std::optional<PcmFormat> format;
    if (isPcmPath(path)) {
        const PcmGuess guess = guessPcmFormat(path, hints, is_output);
        format = guess.format;
        measured.file.assumptions = guess.assumptions;
    }
    measured.open = [path, format] { return openFrameStream(path, format); };
    const FrameStream stream = measured.open();
    measured.file.path = path;
    measured.file.codec = stream.codec;
    measured.file.spec = stream.spec;
    const std::string reason = whyUnmeasurable(stream.spec);
    if (!reason.empty())
        throw Failure(ExitCode::UnsupportedAudio, "cannot measure \"" + path + "\": " + reason);
    if (stream.rest_bytes > 0) {
        measured.file.notes.push_back("the file ends inside a frame; trailing bytes ignored: " +
                                      std::to_string(stream.rest_bytes));
    }
    LevelMeter meter(stream.spec);
    while (const FramePtr frame = stream.read()) meter.add(*frame);
    measured.file.levels = meter.result();
    if (stream.damage) measured.file.damage = stream.damage();
    return measured;
}

// Opens a measured file once more. What could be read the first time must be readable now, or the comparison
// would be wrong.
FrameStream openAgain(const Measured& measured) {
    FrameStream stream = measured.open();
    if (!stream.damage) return stream;
    stream.read = [read = stream.read, damage = stream.damage, path = measured.file.path,
                   known = measured.file.damage.read_errors] {
        FramePtr frame = read();
        if (damage().read_errors > known)
            throw Failure(ExitCode::InputNotReadable, "cannot read \"" + path + "\" a second time");
        return frame;
    };
    return stream;
}

ComparedSide sideOf(const Measured& measured) {
    return {[&measured] { return openAgain(measured); }, measured.file.levels.frames,
            measured.file.levels.first_audible_frame};
}

InspectedPair compare(const Measured& input, const Measured& output) {
    if (input.file.spec.rate_hz != output.file.spec.rate_hz) {
        throw Failure(ExitCode::UnsupportedAudio, "cannot compare \"" + output.file.path + "\" with \"" +
                                                      input.file.path + "\": their sample rates are " +
                                                      std::to_string(output.file.spec.rate_hz) + " Hz and " +
                                                      std::to_string(input.file.spec.rate_hz) + " Hz");
    }
    const PairDifference difference = comparePair(sideOf(input), sideOf(output));
    return {input.file.path, output.file.path, input.file.spec.rate_hz, difference.delay_frames,
            difference.gain_db};
}

// A comparison reads its files more than once, so a pipe or a device cannot be compared. A path that does not
// exist passes, because it may be a URL that libavformat opens.
void requireReadableTwice(const std::string& path) {
    std::error_code error;
    const auto status = std::filesystem::status(path, error);
    if (!std::filesystem::exists(status) || std::filesystem::is_regular_file(status) ||
        std::filesystem::is_directory(status))
        return;
    throw Failure(ExitCode::InputNotReadable,
                  "cannot compare \"" + path + "\": it is not a regular file, and --pair reads files twice");
}

// Returns the output of the dump session whose input is `input`, or null.
const Measured* outputOf(const Measured& input, const std::vector<Measured>& files) {
    const auto name = parseDumpName(input.file.path);
    if (!name || !name->is_input) return nullptr;
    const std::string path = name->partner().path();
    // The user may name the same file "name", "./name" or by its absolute path.
    const auto found = std::find_if(files.begin(), files.end(), [&](const Measured& m) {
        std::error_code error;
        return std::filesystem::equivalent(m.file.path, path, error);
    });
    return found == files.end() ? nullptr : &*found;
}

}  // namespace

InspectReport inspect(const InspectRequest& request) {
    if (request.pair) {
        requireReadableTwice(request.pair->first);
        requireReadableTwice(request.pair->second);
    }
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
