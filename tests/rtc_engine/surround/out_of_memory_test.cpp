#include <gtest/gtest.h>

#include <cstdio>

#include "../failing_allocator.h"
#include "buffer.h"
#include "fftconvolver.h"
#include "sonivex/log_bridge.h"
#include "surround_owner.h"
#include "two_stage_convolver.h"

namespace {

using test::AllocationWatch;

constexpr const char* kNoMemoryLine =
    "[ZubrelAem]: (surround: 122) [KelvoSurround]::kv surround handle is created failed.\n";

/* Of a handle, rings and responses included; and what its creation takes for a while, which is counted too.
 */
constexpr std::size_t mostKib(int channels) {
    constexpr std::size_t kGivenBack = 8;
    return kGivenBack + (channels == 8 ? 2600 : (channels == 6 ? 2020 : 1200));
}

int allocationsOf(int channels, int type) {
    const AllocationWatch watch;
    void* const handle = aem_CreateSurround(channels, 48000, type, 1, 1);
    const int requested = watch.requested();
    aem_ReleaseSurround(handle);
    return requested;
}

/* Keeps the last line without allocating. */
class LastLine {
  public:
    LastLine() : previous_(logWriterFun) {
        text()[0] = '\0';
        logWriterFun = [](const char* line, int) { std::snprintf(text(), kBytes, "%s", line); };
    }
    ~LastLine() { logWriterFun = previous_; }
    LastLine(const LastLine&) = delete;
    LastLine& operator=(const LastLine&) = delete;

    static char* text() {
        static char text[kBytes];
        return text;
    }

  private:
    static constexpr std::size_t kBytes = 512;
    void (*previous_)(const char*, int);
};

TEST(SurroundOutOfMemory, CreationGivesNullLogsAndFreesEverythingWhicheverAllocationFails) {
    struct Case {
        int channels;
        int type;
    };
    for (const auto& [channels, type] : {Case{2, 13}, Case{1, 1}, Case{6, 13}, Case{8, 1}}) {
        SCOPED_TRACE(std::to_string(channels) + " channels, type " + std::to_string(type));
        const int allocations = allocationsOf(channels, type);
        ASSERT_GT(allocations, 20);
        for (int failing = 1; failing <= allocations; ++failing) {
            const LastLine log;
            const AllocationWatch watch(failing);
            ASSERT_EQ(aem_CreateSurround(channels, 48000, type, 1, 1), nullptr) << "allocation " << failing;
            ASSERT_EQ(watch.alive(), 0) << "allocation " << failing;
            ASSERT_STREQ(LastLine::text(), kNoMemoryLine) << "allocation " << failing;
        }
    }
}

TEST(SurroundOutOfMemory, AHandleIsFreedWholeAndTakesNoMoreThanPromised) {
    for (const int channels : {1, 2, 6, 8}) {
        for (const int type : {1, 13}) {
            const AllocationWatch watch;
            void* const handle = aem_CreateSurround(channels, 48000, type, 2, 1);
            EXPECT_LE(watch.bytes(), mostKib(channels) * 1024) << channels << " channels, type " << type;
            EXPECT_GT(watch.bytes(), mostKib(channels) * 1024 / 2);
            aem_ReleaseSurround(handle);
            EXPECT_EQ(watch.alive(), 0);
        }
    }
}

TEST(SurroundOutOfMemory, ABufferWithoutMemoryHasASizeAndIsNotFilled) {
    fftconvolver::Buffer<float> buffer;
    const AllocationWatch watch(1);
    buffer.resize(100);
    EXPECT_EQ(buffer.data(), nullptr);
    EXPECT_EQ(buffer.size(), 100U);
    buffer.clear();
    buffer.resize(50);
    EXPECT_NE(buffer.data(), nullptr);
}

template <typename Load>
void expectSilenceWhicheverAllocationFails(Load load) {
    const std::vector<float> response(300, 0.5F);
    const std::vector<float> in(64, 1.0F);
    for (int failing = 1;; ++failing) {
        std::vector<float> out(64, 3.0F);
        bool has_failed = false;
        const AllocationWatch watch(failing);
        {
            auto convolver = load(response, has_failed);
            if (!has_failed) break;
            if (convolver) {
                convolver->process(in.data(), out.data(), 64);
                ASSERT_EQ(std::count(out.begin(), out.end(), 0.0F), 64) << "allocation " << failing;
            }
        }
        ASSERT_EQ(watch.alive(), 0) << "allocation " << failing;
        ASSERT_LT(failing, 1000);
    }
}

template <typename Convolver, typename Init>
std::unique_ptr<Convolver> loaded(Init init, bool& has_failed) {
    std::unique_ptr<Convolver> convolver;
    try {
        convolver = std::make_unique<Convolver>();
        init(*convolver);
    } catch (const std::bad_alloc&) {
        has_failed = true;
    }
    return convolver;
}

TEST(SurroundOutOfMemory, AConvolverWithoutMemoryIsSilent) {
    using fftconvolver::FFTConvolver;
    expectSilenceWhicheverAllocationFails([](const std::vector<float>& response, bool& has_failed) {
        return loaded<FFTConvolver>([&](FFTConvolver& c) { c.init(64, response.data(), response.size()); },
                                    has_failed);
    });
}

TEST(SurroundOutOfMemory, ATwoStageConvolverWithoutMemoryIsSilent) {
    using fftconvolver::TwoStageFFTConvolver;
    expectSilenceWhicheverAllocationFails([](const std::vector<float>& response, bool& has_failed) {
        return loaded<TwoStageFFTConvolver>(
            [&](TwoStageFFTConvolver& c) { c.init(16, 64, response.data(), response.size()); }, has_failed);
    });
}

}  // namespace
