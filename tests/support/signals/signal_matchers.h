// Comparison of two signals. A failure leaves both as WAV files, to look at and to listen to.
//
//     EXPECT_TRUE(test::sameSignal(out, expected, {.channels = 2}));
//     EXPECT_TRUE(test::closeSignal(out, expected, {.most = 1, .usual_share = 0.998}));
//
// The failure names the first frame and channel that differ, the greatest error in steps of 16 bits and in
// decibels, and the two files:
//
//     <folder>/<suite>.<test>.<number>.actual.wav
//     <folder>/<suite>.<test>.<number>.expected.wav
//
// The environment variable SONIVEX_FAILED_SIGNALS names the folder, which is created if it does not exist. By
// default it is the system's temporary folder. The number counts the failures of a test. At most kMaxPairs
// of them write files, because a test may compare thousands of signals.
#pragma once

#include <gtest/gtest.h>

#include <vector>

#include "support/signals/signals.h"

namespace test {

/** WAV files that one test leaves behind at most, in pairs. */
inline constexpr int kMaxPairs = 8;

struct SignalFormat {
    int channels = 2;
    int rate_hz = 48000;      // used for the WAV files only
    double full_scale = 1.0;  // of float samples; 16-bit samples have 32768
};

/** Bounds of the error, in the units of the samples. Samples that are 0 in both signals do not count for the
 *  share. */
struct Tolerance {
    double most = 0.0;         // no sample may err by more
    double usual = 0.0;        // most samples err by no more
    double usual_share = 0.0;  // required share of samples within `usual`, 0 to 1
};

/** Succeeds if both interleaved signals have the same length and samples. Floats must have the same bits. */
testing::AssertionResult sameSignal(const Pcm& actual, const Pcm& expected, const SignalFormat& format = {});
testing::AssertionResult sameSignal(const std::vector<float>& actual, const std::vector<float>& expected,
                                    const SignalFormat& format = {});

/** Succeeds if both interleaved signals have the same length and differ within the tolerance. A NaN differs
 *  from everything. */
testing::AssertionResult closeSignal(const Pcm& actual, const Pcm& expected, const Tolerance& tolerance,
                                     const SignalFormat& format = {});
testing::AssertionResult closeSignal(const std::vector<float>& actual, const std::vector<float>& expected,
                                     const Tolerance& tolerance, const SignalFormat& format = {});
testing::AssertionResult closeSignal(const std::vector<float>& actual, const std::vector<double>& expected,
                                     const Tolerance& tolerance, const SignalFormat& format = {});

/** Returns the share of samples that differ by `error` at most, 0 to 1; samples that are 0 in both signals do
 *  not count. Without any other sample it is 1. */
double shareWithin(double error, const Pcm& actual, const Pcm& expected);

}  // namespace test
