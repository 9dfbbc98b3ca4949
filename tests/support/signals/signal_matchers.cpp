#include "support/signals/signal_matchers.h"

#include <algorithm>
#include <bit>
#include <cctype>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iomanip>
#include <limits>
#include <sstream>
#include <string>

#include "support/signals/wav_file.h"

namespace test {
namespace {

constexpr double kSteps = 32768.0;  // steps of 16 bits from 0 to full scale
constexpr std::size_t kNone = std::numeric_limits<std::size_t>::max();

struct NumberedName {
    std::string test;
    int number;
};

// Name of the running test, with a number for each call during that test, from 1.
NumberedName nextName() {
    static NumberedName last{"", 0};
    std::string name = "no_test";
    if (const testing::TestInfo* test = testing::UnitTest::GetInstance()->current_test_info()) {
        name = std::string(test->test_suite_name()) + "." + test->name();
    }
    for (char& letter : name) {
        if (std::isalnum(static_cast<unsigned char>(letter)) == 0 && letter != '.') letter = '_';
    }
    last = {name, name == last.test ? last.number + 1 : 1};
    return last;
}

std::filesystem::path folderOfFailures() {
    const char* const folder = std::getenv("SONIVEX_FAILED_SIGNALS");
    if (folder == nullptr || *folder == '\0') return std::filesystem::temp_directory_path();
    std::filesystem::create_directories(folder);
    return folder;
}

std::string written(const std::filesystem::path& path, const std::string& bytes) {
    std::ofstream file(path, std::ios::binary);
    file << bytes;
    file.close();
    const std::string name = '"' + path.string() + '"';
    return file ? name : "cannot write " + name;
}

std::string wavOfSignal(const Pcm& samples, const SignalFormat& format) {
    return wavOf(samples, format.channels, static_cast<std::uint32_t>(format.rate_hz));
}

template <typename Number>
std::string wavOfSignal(const std::vector<Number>& samples, const SignalFormat& format) {
    std::vector<float> floats;
    for (const Number sample : samples) {
        floats.push_back(static_cast<float>(static_cast<double>(sample) / format.full_scale));
    }
    return wavOf(floats, format.channels, static_cast<std::uint32_t>(format.rate_hz));
}

template <typename Actual, typename Expected>
std::string keptSignals(const Actual& actual, const Expected& expected, const SignalFormat& format) {
    const NumberedName name = nextName();
    if (name.number > kMaxPairs) {
        return "no files: " + std::to_string(kMaxPairs) + " pairs are written for a test at most";
    }
    try {
        const std::string path =
            (folderOfFailures() / (name.test + "." + std::to_string(name.number))).string();
        return "actual:   " + written(path + ".actual.wav", wavOfSignal(actual, format)) +
               "\nexpected: " + written(path + ".expected.wav", wavOfSignal(expected, format));
    } catch (const std::filesystem::filesystem_error& error) {
        return std::string("no files: ") + error.what();
    }
}

template <typename Actual, typename Expected>
double errorOf(Actual actual, Expected expected) {
    const auto a = static_cast<double>(actual);
    const auto e = static_cast<double>(expected);
    if (a == e) return 0.0;
    const double error = std::fabs(a - e);
    return std::isnan(error) ? std::numeric_limits<double>::infinity() : error;
}

std::string placeOf(std::size_t sample, const SignalFormat& format) {
    const auto channels = static_cast<std::size_t>(format.channels);
    return "frame " + std::to_string(sample / channels) + ", channel " + std::to_string(sample % channels);
}

// Nine digits tell any two floats apart.
template <typename Actual, typename Expected>
std::string valuesAt(std::size_t sample, const Actual& actual, const Expected& expected,
                     const SignalFormat& format) {
    std::ostringstream text;
    text << placeOf(sample, format) << ": " << std::setprecision(9) << actual[sample] << " instead of "
         << expected[sample];
    return text.str();
}

std::string sizeOf(double error, const SignalFormat& format) {
    const double share = error / format.full_scale;
    std::ostringstream text;
    text << std::setprecision(4) << share * kSteps << " steps";
    if (share > 0.0 && std::isfinite(share)) {
        text << " (" << std::fixed << std::setprecision(1) << 20.0 * std::log10(share)
             << " dB of full scale)";
    }
    return text.str();
}

// Compares the common part of two signals; differs(a, e) decides on each pair of samples.
template <typename Actual, typename Expected, typename Differs>
testing::AssertionResult compared(const Actual& actual, const Expected& expected, const SignalFormat& format,
                                  Differs differs, const std::string& complaint = "") {
    std::size_t first = kNone;
    std::size_t worst = 0;
    std::size_t count = 0;
    double worst_error = -1.0;
    const std::size_t samples = std::min(actual.size(), expected.size());
    for (std::size_t i = 0; i < samples; ++i) {
        if (!differs(actual[i], expected[i])) continue;
        if (first == kNone) first = i;
        ++count;
        const double error = errorOf(actual[i], expected[i]);
        if (error > worst_error) {
            worst_error = error;
            worst = i;
        }
    }
    if (count == 0 && actual.size() == expected.size() && complaint.empty())
        return testing::AssertionSuccess();

    testing::AssertionResult failure = testing::AssertionFailure();
    failure << "\n" << complaint;
    if (actual.size() != expected.size())
        failure << "length: " << actual.size() << " samples instead of " << expected.size() << "\n";
    if (count > 0) {
        failure << "first difference: " << valuesAt(first, actual, expected, format) << "\n"
                << "greatest error: " << sizeOf(worst_error, format) << ", "
                << valuesAt(worst, actual, expected, format) << "\n"
                << "different: " << count << " of " << samples << " samples\n";
    }
    return failure << keptSignals(actual, expected, format) << "\n";
}

template <typename Actual, typename Expected>
double shareOf(double error, const Actual& actual, const Expected& expected) {
    std::size_t sounding = 0;
    std::size_t within = 0;
    for (std::size_t i = 0; i < std::min(actual.size(), expected.size()); ++i) {
        if (actual[i] == 0 && expected[i] == 0) continue;
        ++sounding;
        if (errorOf(actual[i], expected[i]) <= error) ++within;
    }
    return sounding == 0 ? 1.0 : static_cast<double>(within) / static_cast<double>(sounding);
}

template <typename Actual, typename Expected>
testing::AssertionResult comparedWithin(const Tolerance& tolerance, const Actual& actual,
                                        const Expected& expected, const SignalFormat& format) {
    double bound = tolerance.most;
    std::ostringstream complaint;
    const double share = shareOf(tolerance.usual, actual, expected);
    if (share < tolerance.usual_share) {
        complaint << "within " << tolerance.usual << ": " << 100.0 * share << " % of the samples instead of "
                  << 100.0 * tolerance.usual_share << " %\n";
        bound = std::min(bound, tolerance.usual);
    }
    return compared(
        actual, expected, format, [bound](auto a, auto e) { return !(errorOf(a, e) <= bound); },
        complaint.str());
}

SignalFormat sixteenBit(SignalFormat format) {
    format.full_scale = kSteps;
    return format;
}

}  // namespace

testing::AssertionResult sameSignal(const Pcm& actual, const Pcm& expected, const SignalFormat& format) {
    return compared(actual, expected, sixteenBit(format),
                    [](std::int16_t a, std::int16_t e) { return a != e; });
}

testing::AssertionResult sameSignal(const std::vector<float>& actual, const std::vector<float>& expected,
                                    const SignalFormat& format) {
    return compared(actual, expected, format, [](float a, float e) {
        return std::bit_cast<std::uint32_t>(a) != std::bit_cast<std::uint32_t>(e);
    });
}

testing::AssertionResult closeSignal(const Pcm& actual, const Pcm& expected, const Tolerance& tolerance,
                                     const SignalFormat& format) {
    return comparedWithin(tolerance, actual, expected, sixteenBit(format));
}

testing::AssertionResult closeSignal(const std::vector<float>& actual, const std::vector<float>& expected,
                                     const Tolerance& tolerance, const SignalFormat& format) {
    return comparedWithin(tolerance, actual, expected, format);
}

testing::AssertionResult closeSignal(const std::vector<float>& actual, const std::vector<double>& expected,
                                     const Tolerance& tolerance, const SignalFormat& format) {
    return comparedWithin(tolerance, actual, expected, format);
}

double shareWithin(double error, const Pcm& actual, const Pcm& expected) {
    return shareOf(error, actual, expected);
}

}  // namespace test
