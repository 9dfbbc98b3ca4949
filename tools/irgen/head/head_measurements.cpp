#include "head_measurements.h"

#include <bit>
#include <cstdint>
#include <sstream>

#include "loudspeaker_azimuths.h"

namespace sonivex_irgen {
namespace {

constexpr std::size_t kMinimumDirections = 64;
constexpr std::size_t kMinimumLength_samples = 64;
constexpr std::size_t kMaximumLength_samples = 4096;  // a longer response is that of a room, not of a head
constexpr double kMinimumRate_hz = 32000.0;
constexpr double kMaximumRate_hz = 192000.0;
constexpr double kWidestGap_deg = 15.0;
constexpr double kLongestDelay_samples = 4096.0;
constexpr double kSmallestEnergy = 1e-20;  // of a response, 200 dB below a unit sample

template <typename... Parts>
[[noreturn]] void fail(const Parts&... parts) {
    std::ostringstream text;
    (text << ... << parts);
    throw UnusableHead(text.str());
}

bool isFinite(double value) {
    constexpr std::uint64_t kExponentMask = 0x7FF0000000000000U;
    return (std::bit_cast<std::uint64_t>(value) & kExponentMask) != kExponentMask;
}

double energy(const std::vector<double>& response) {
    double sum = 0.0;
    for (const double sample : response) sum += sample * sample;
    return sum;
}

void checkResponses(const HeadMeasurement& measured, std::size_t number) {
    if (!isFinite(measured.direction.x) || !isFinite(measured.direction.y) ||
        !isFinite(measured.direction.z)) {
        fail("direction ", number, " is not finite");
    }
    for (std::size_t ear = 0; ear < kEars; ++ear) {
        if (!isFinite(measured.delays_samples[ear])) fail("a delay for direction ", number, " is not finite");
        if (measured.delays_samples[ear] < 0.0 || measured.delays_samples[ear] > kLongestDelay_samples) {
            fail("a delay for direction ", number, " is outside 0 to ", kLongestDelay_samples, " samples");
        }
        for (const double sample : measured.ears[ear]) {
            if (!isFinite(sample))
                fail("a response for direction ", number, " holds a value that is not finite");
        }
        const double heard = energy(measured.ears[ear]);
        if (heard == 0.0) fail("a response for direction ", number, " is all zeros");
        if (heard < kSmallestEnergy) fail("a response for direction ", number, " is too faint to be used");
    }
}

const HeadMeasurement& nearest(const HeadMeasurements& head, const Vector3& wanted) {
    const HeadMeasurement* best = head.directions.data();
    for (const HeadMeasurement& measured : head.directions) {
        if (dot(measured.direction, wanted) > dot(best->direction, wanted)) best = &measured;
    }
    return *best;
}

}  // namespace

void checkHeadMeasurements(const HeadMeasurements& head) {
    if (head.directions.size() < kMinimumDirections) {
        fail("only ", head.directions.size(), " directions; at least ", kMinimumDirections, " are needed");
    }
    if (!(head.rate_hz >= kMinimumRate_hz && head.rate_hz <= kMaximumRate_hz)) {
        fail("sample rate ", head.rate_hz, " Hz is outside 32000 to 192000 Hz");
    }
    const std::size_t length_samples = head.directions.front().ears[0].size();
    if (length_samples < kMinimumLength_samples || length_samples > kMaximumLength_samples) {
        fail("the responses have ", length_samples, " samples; a head response has ", kMinimumLength_samples,
             " to ", kMaximumLength_samples);
    }
    for (std::size_t number = 0; number < head.directions.size(); ++number) {
        for (const std::vector<double>& response : head.directions[number].ears) {
            if (response.size() != length_samples) fail("the responses differ in length");
        }
        checkResponses(head.directions[number], number);
    }
    const double smallest_cosine = exactCos(kWidestGap_deg * kPi / 180.0);
    for (const double azimuth_deg : kLoudspeakerAzimuths_deg) {
        const Vector3 wanted = horizontalDirection(azimuth_deg);
        if (dot(nearest(head, wanted).direction, wanted) < smallest_cosine) {
            fail("no direction within ", kWidestGap_deg, " degrees of azimuth ", azimuth_deg,
                 ", elevation 0");
        }
    }
    const Vector3 left = horizontalDirection(90.0);
    const HeadMeasurement& from_the_left = nearest(head, left);
    if (energy(from_the_left.ears[0]) <= energy(from_the_left.ears[1]))
        fail("the left and right ears are swapped");
}

}  // namespace sonivex_irgen
