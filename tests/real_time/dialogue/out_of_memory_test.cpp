#include <gtest/gtest.h>

extern "C" {
#include <libavutil/mem.h>
#include <libavutil/version.h>
}

#include <climits>
#include <string>
#include <utility>

#include "failing_libavutil.h"
#include "real_time/failing_allocator.h"
#include "sonivex/dialoguenhance.h"
#include "support/memory/heap_bytes.h"

namespace {

using test::AllocationWatch;
using test::LibavutilWatch;

constexpr int kOwnAllocations = 2;        // the handle and its limiter
constexpr int kArraysAndTransforms = 16;  // 12 arrays and 4 transforms

void* createDialogue() {
    return aem_CreateDialoguEnhance(2, 48000, 1.0, 1.0, 1.0);
}

TEST(DialogueOutOfMemory, CreationWithoutAHandlePrintsALine) {
    testing::internal::CaptureStdout();
    void* handle = nullptr;
    {
        const AllocationWatch watch(1);
        handle = createDialogue();
    }
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "[audio]::kv dialoguenhance handle is created failed.\n");
    EXPECT_EQ(handle, nullptr);
}

// Makes one request fail, of operator new or of libavutil; 0: none.
void expectSilentFailureThatFreesEverything(int failing, int failing_of_libavutil) {
    testing::internal::CaptureStdout();
    void* handle = nullptr;
    int alive = -1;
    int alive_of_libavutil = -1;
    {
        const LibavutilWatch libavutil(failing_of_libavutil);
        const AllocationWatch watch(failing);
        handle = createDialogue();
        alive = watch.alive();
        alive_of_libavutil = libavutil.alive();
    }
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    EXPECT_EQ(handle, nullptr);
    EXPECT_EQ(alive, 0);
    EXPECT_EQ(alive_of_libavutil, 0);
}

TEST(DialogueOutOfMemory, CreationWithoutALimiterIsSilentAndFreesEverything) {
    expectSilentFailureThatFreesEverything(2, 0);
}

TEST(DialogueOutOfMemory, CreationWithoutAnArrayOrATransformIsSilentAndFreesEverything) {
    for (int failing = 1; failing <= kArraysAndTransforms; ++failing) {
        SCOPED_TRACE("request " + std::to_string(failing));
        expectSilentFailureThatFreesEverything(0, failing);
    }
}

TEST(DialogueOutOfMemory, CreationUnderAnyLimitOfLibavutilSucceedsOrReturnsNull) {
    int nulls = 0;
    int handles = 0;
    for (std::size_t limit = 32; limit <= 1U << 20U; limit *= 2) {
        av_max_alloc(limit);
        const AllocationWatch watch;
        void* const handle = createDialogue();
        av_max_alloc(INT_MAX);
        nulls += handle == nullptr ? 1 : 0;
        handles += handle != nullptr ? 1 : 0;
        if (handle != nullptr) aem_ReleaseDialoguEnhance(handle);
        EXPECT_EQ(watch.alive(), 0);
    }
    EXPECT_GT(nulls, 0);
    EXPECT_GT(handles, 0);
}

TEST(DialogueOutOfMemory, ReleaseFreesEverything) {
    for (const int rate_hz : {48000, 96000, 192000}) {
        const LibavutilWatch libavutil;
        const AllocationWatch watch;
        void* const handle = aem_CreateDialoguEnhance(2, rate_hz, 1.0, 1.0, 1.0);
        const int requested = watch.requested();
        const int requested_of_libavutil = libavutil.requested();
        aem_ReleaseDialoguEnhance(handle);
        EXPECT_EQ(requested, kOwnAllocations);
        EXPECT_EQ(requested_of_libavutil, kArraysAndTransforms);
        EXPECT_EQ(watch.alive(), 0);
        EXPECT_EQ(libavutil.alive(), 0);
    }
}

TEST(DialogueOutOfMemory, AHandleTakesNoMoreThanTheDocumentedMemory) {
    constexpr unsigned kOf8192Points_kib = LIBAVUTIL_VERSION_MAJOR >= 59 ? 920 : 860;  // since FFmpeg 7
    for (const auto& [rate_hz, promised_kib] :
         {std::pair{48000, 525U}, {96000, 635U}, {192000, kOf8192Points_kib}}) {
        const std::size_t before = test::heapBytes();
        void* const handle = aem_CreateDialoguEnhance(2, rate_hz, 1.0, 1.0, 1.0);
        const std::size_t taken = test::heapBytes() - before;
        aem_ReleaseDialoguEnhance(handle);
        // The memory of a transform differs slightly between libavutil releases, hence 5 % of tolerance.
        EXPECT_LE(taken, promised_kib * 1024 * 21 / 20) << rate_hz << " Hz";
    }
}

}  // namespace
