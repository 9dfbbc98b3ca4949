#include <gtest/gtest.h>

#include <string>

#include "common_effects.h"
#include "real_time/dialogue/failing_libavutil.h"
#include "real_time/failing_allocator.h"
#include "real_time/mapping_watch.h"

namespace {

using test::AllocationWatch;
using test::LibavutilWatch;
using test::MappingWatch;

// Creates one effect; each kind is a function, so that creation itself needs no memory of the test's.
using Create = int (*)(SonivexEffect** effect);

struct Kind {
    const char* name;
    Create create;
    std::size_t most_bytes;  // as the header documents
};

constexpr std::size_t kMiB = std::size_t{1} << 20;
constexpr Kind kKinds[] = {
    {"surround, stereo", [](SonivexEffect** e) { return sonivex_create_surround(e, 2, 48000, 1, 1, 1); },
     3 * kMiB},
    {"surround, 7.1", [](SonivexEffect** e) { return sonivex_create_surround(e, 8, 48000, 1, 1, 1); },
     3 * kMiB},
    {"MegaBass, 5.1", [](SonivexEffect** e) { return sonivex_create_surround(e, 6, 48000, 13, 2, 0); },
     3 * kMiB},
    {"dialogue, 48 kHz", [](SonivexEffect** e) { return sonivex_create_dialogue(e, 48000, 1.0); }, kMiB},
    {"dialogue, 192 kHz", [](SonivexEffect** e) { return sonivex_create_dialogue(e, 192000, 1.0); }, kMiB},
    {"normalizer, 8 channels", [](SonivexEffect** e) { return sonivex_create_normalizer(e, 8, 48000); },
     kMiB},
};

SonivexEffect* const kUntouched = reinterpret_cast<SonivexEffect*>(1);

// Makes one request for memory fail. Returns the status of the creation, which must free everything.
int statusWithout(const Kind& kind, int failing, int failing_of_libavutil, MappingWatch::Kernel kernel) {
    SonivexEffect* effect = kUntouched;
    int status = SONIVEX_OK;
    testing::internal::CaptureStdout();
    {
        const MappingWatch mappings(kernel);
        const LibavutilWatch libavutil(failing_of_libavutil);
        const AllocationWatch watch(failing);
        status = kind.create(&effect);
        if (status == SONIVEX_OK) {
            sonivex_release(effect);
        } else {
            EXPECT_EQ(effect, nullptr);
        }
        EXPECT_EQ(watch.alive(), 0);
        EXPECT_EQ(libavutil.alive(), 0);
        EXPECT_EQ(mappings.bytes(), 0);
    }
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    return status;
}

TEST(CommonInterfaceOutOfMemory, CreationReportsItAndFreesEverythingWhicheverRequestFails) {
    for (const Kind& kind : kKinds) {
        SCOPED_TRACE(kind.name);
        for (const auto kernel : {MappingWatch::Kernel::kGives, MappingWatch::Kernel::kRefuses}) {
            int failing = 1;
            while (statusWithout(kind, failing, 0, kernel) == SONIVEX_ERROR_MEMORY)
                ASSERT_LT(++failing, 1000);
            EXPECT_EQ(statusWithout(kind, failing, 0, kernel), SONIVEX_OK);
            EXPECT_GT(failing, 6);
        }
    }
}

TEST(CommonInterfaceOutOfMemory, CreationReportsItIfLibavutilHasNone) {
    constexpr int kArraysAndTransforms = 16;
    for (int failing = 1; failing <= kArraysAndTransforms; ++failing) {
        EXPECT_EQ(statusWithout(kKinds[3], 0, failing, MappingWatch::Kernel::kGives), SONIVEX_ERROR_MEMORY)
            << "request " << failing;
    }
    EXPECT_EQ(statusWithout(kKinds[3], 0, kArraysAndTransforms + 1, MappingWatch::Kernel::kGives),
              SONIVEX_OK);
}

TEST(CommonInterfaceMemory, StaysWithinTheDocumentedSize) {
    for (const Kind& kind : kKinds) {
        SCOPED_TRACE(kind.name);
        SonivexEffect* effect = nullptr;
        const MappingWatch mappings;
        const AllocationWatch watch;
        ASSERT_EQ(kind.create(&effect), SONIVEX_OK);
        // libavutil's arrays and transforms are not counted here: up to 400 KiB.
        EXPECT_LE(watch.bytes() + static_cast<std::size_t>(mappings.bytes()), kind.most_bytes);
        sonivex_release(effect);
    }
}

}  // namespace
