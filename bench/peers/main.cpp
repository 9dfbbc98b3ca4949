// Compares the library with other implementations of the same work, in one process and in turns.
//
//   peer_comparison [--quick] [--csv]
//
//   --quick  takes under a minute; the ratios scatter more
//   --csv    prints the same rows in a machine-readable form; lines that begin with # are notes
//
// Outputs are checked before they are timed, except those of dialogue enhancement. If the library or FFmpeg's
// limiter is wrong, the program ends with exit code 1. A convolution peer that is wrong is left out.
// Surround is measured twice: in calls of 240 frames, its own block length, and of 1024, a frame of many
// decoders.
// A convolution peer gets its input in its own format before the clock starts and returns floats. The library
// takes and returns 16-bit PCM and limits it; the conversions count toward its time.
#include <cstdio>
#include <cstring>
#include <exception>

#include "comparisons.h"
#include "machine.h"

extern "C" {
#include <libavutil/log.h>
}

namespace {

constexpr compare::Effort kThorough = {
    .turns = 41, .material_steps = 4, .calls_timed = 20000, .handles_timed = 41};
constexpr compare::Effort kQuick = {.turns = 9, .material_steps = 2, .calls_timed = 2000, .handles_timed = 9};

int run(const compare::Effort& effort, compare::Report::Style style) {
    compare::Report report(style);
    compare::describeMachine(report);
    compare::compareSurround(report, effort);
    compare::measureSurround(report, effort);
    compare::compareVectorWidths(report, effort);
    compare::compareNormalizer(report, effort);
    compare::compareDialogue(report, effort);
    compare::measureFilter(report, effort);
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    compare::Effort effort = kThorough;
    compare::Report::Style style = compare::Report::Text;
    for (int i = 1; i < argc; ++i) {
        if (std::strcmp(argv[i], "--quick") == 0) {
            effort = kQuick;
        } else if (std::strcmp(argv[i], "--csv") == 0) {
            style = compare::Report::Csv;
        } else {
            std::fprintf(stderr, "usage: %s [--quick] [--csv]\n", argv[0]);
            return 2;
        }
    }
    av_log_set_level(AV_LOG_ERROR);
    try {
        return run(effort, style);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "peer_comparison: %s\n", error.what());
        return 1;
    }
}
