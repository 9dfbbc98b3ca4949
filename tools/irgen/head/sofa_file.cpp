#include "sofa_file.h"

#include <mysofa.h>

#include <cmath>
#include <memory>

#include "sofa_error.h"

namespace sonivex_irgen {
namespace {

struct FreeHrtf {
    void operator()(MYSOFA_HRTF* hrtf) const { mysofa_free(hrtf); }
};
using Hrtf = std::unique_ptr<MYSOFA_HRTF, FreeHrtf>;

constexpr unsigned kCoordinates = 3;

// Index of the receiver on the +y side, which is the left ear.
unsigned leftReceiver(const MYSOFA_HRTF& hrtf) {
    const MYSOFA_ARRAY& positions = hrtf.ReceiverPosition;
    if (positions.values == nullptr || positions.elements < kEars * kCoordinates) {
        throw UnusableHead("the receiver positions are missing");
    }
    const float y0 = positions.values[1];
    const float y1 = positions.values[kCoordinates + 1];
    if (y0 > y1) return 0;
    if (y1 > y0) return 1;
    throw UnusableHead("the receivers are not on opposite sides of the head");
}

// libmysofa computes positions in single precision with the sines of the C library, whose last bit differs
// between libraries. Rounding to 1e-5, or 0.0006 degrees, removes the difference.
double snap(double coordinate) {
    return std::floor(coordinate * 1e5 + 0.5) / 1e5;
}

Vector3 unitVector(const float* position) {
    const Vector3 point{position[0], position[1], position[2]};
    const double distance = length(point);
    if (!(distance > 0.0)) throw UnusableHead("a source lies at the centre of the head");
    const Vector3 snapped{snap(point.x / distance), snap(point.y / distance), snap(point.z / distance)};
    return (1.0 / length(snapped)) * snapped;
}

void checkShape(const MYSOFA_HRTF& hrtf) {
    if (hrtf.R != kEars) throw UnusableHead(std::to_string(hrtf.R) + " receivers; a head has 2");
    const std::size_t responses = std::size_t{hrtf.M} * hrtf.R;
    if (hrtf.DataIR.values == nullptr || hrtf.DataIR.elements != responses * hrtf.N) {
        throw UnusableHead("the size of Data.IR does not match the dimensions");
    }
    if (hrtf.SourcePosition.values == nullptr ||
        hrtf.SourcePosition.elements != std::size_t{hrtf.M} * kCoordinates) {
        throw UnusableHead("the size of SourcePosition does not match the dimensions");
    }
    if (hrtf.DataSamplingRate.values == nullptr || hrtf.DataSamplingRate.elements < 1) {
        throw UnusableHead("Data.SamplingRate is missing");
    }
    const std::size_t delays = hrtf.DataDelay.elements;
    if (delays != 0 && (hrtf.DataDelay.values == nullptr || (delays != hrtf.R && delays != responses))) {
        throw UnusableHead("the size of Data.Delay does not match the dimensions");
    }
}

double delayOf(const MYSOFA_HRTF& hrtf, std::size_t direction, std::size_t receiver) {
    if (hrtf.DataDelay.elements == 0) return 0.0;
    const bool is_shared = hrtf.DataDelay.elements == hrtf.R;
    return hrtf.DataDelay.values[(is_shared ? 0 : direction * hrtf.R) + receiver];
}

}  // namespace

HeadMeasurements measurementsIn(const MYSOFA_HRTF& hrtf) {
    checkShape(hrtf);
    HeadMeasurements head;
    head.rate_hz = hrtf.DataSamplingRate.values[0];
    head.directions.resize(hrtf.M);
    const unsigned left = leftReceiver(hrtf);
    for (std::size_t m = 0; m < head.directions.size(); ++m) {
        HeadMeasurement& measured = head.directions[m];
        measured.direction = unitVector(hrtf.SourcePosition.values + m * kCoordinates);
        for (std::size_t ear = 0; ear < kEars; ++ear) {
            const std::size_t receiver = ear == 0 ? left : 1 - left;
            const float* samples = hrtf.DataIR.values + (m * kEars + receiver) * hrtf.N;
            measured.ears[ear].assign(samples, samples + hrtf.N);
            measured.delays_samples[ear] = delayOf(hrtf, m, receiver);
        }
    }
    return head;
}

HeadMeasurements readSofaFile(const std::string& path) {
    int error = 0;
    const Hrtf hrtf(mysofa_load(path.c_str(), &error));
    if (!hrtf) throw UnusableHead("cannot be read as a SOFA file: " + sofaErrorText(error));
    if (const int rejected = mysofa_check(hrtf.get()); rejected != MYSOFA_OK) {
        throw UnusableHead("not a file of free-field head responses: " + sofaErrorText(rejected));
    }
    mysofa_tocartesian(hrtf.get());
    HeadMeasurements head = measurementsIn(*hrtf);
    checkHeadMeasurements(head);
    return head;
}

}  // namespace sonivex_irgen
