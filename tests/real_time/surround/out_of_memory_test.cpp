#include <gtest/gtest.h>

#include <algorithm>

#include "buffer.h"
#include "fftconvolver.h"
#include "last_line.h"
#include "real_time/failing_allocator.h"
#include "real_time/mapping_watch.h"
#include "support/effects/surround_effect.h"
#include "support/signals/signal_matchers.h"
#include "two_stage_convolver.h"

namespace {

using test::AllocationWatch;
using test::LastLine;
using test::MappingWatch;

constexpr const char* kNoMemoryLine =
    "[ZubrelAem]: (surround: 122) [KelvoSurround]::kv surround handle is created failed.\n";

// Upper bound of all memory that a handle requests, allocated or mapped, including rings, responses and the
// temporary memory of its creation.
constexpr std::size_t mostKib(int channels, int type) {
    if (channels == 8) return type == 1 ? 2715 : 2235;
    if (channels == 6) return type == 1 ? 2110 : 1790;
    return type == 1 ? 1250 : 1150;
}

int allocationsOf(int channels, int type) {
    const AllocationWatch watch;
    void* const handle = aem_CreateSurround(channels, 48000, type, 1, 1);
    const int requested = watch.requested();
    aem_ReleaseSurround(handle);
    return requested;
}

struct Made {
    int channels;
    int type;
};

constexpr Made kEveryMade[] = {{1, 1}, {2, 1}, {6, 1}, {8, 1}, {1, 13}, {2, 13}, {6, 13}, {8, 13}};

// Only the arena of the largest set of responses is mapped. If the system refuses to map it, it becomes one
// more allocation that can fail.
TEST(SurroundOutOfMemory, CreationReturnsNullLogsAndFreesEverythingIfAnyAllocationFails) {
    for (const auto kernel : {MappingWatch::Kernel::kGives, MappingWatch::Kernel::kRefuses}) {
        for (const auto& [channels, type] : kEveryMade) {
            SCOPED_TRACE(std::to_string(channels) + " channels, type " + std::to_string(type));
            const bool is_refused = kernel == MappingWatch::Kernel::kRefuses;
            const int allocations_of_kind = allocationsOf(channels, type);
            const MappingWatch mappings(kernel);
            const int allocations = allocationsOf(channels, type);
            ASSERT_GT(allocations, 10);
            ASSERT_EQ(allocations - allocations_of_kind, is_refused && channels == 8 && type == 1 ? 1 : 0);
            for (int failing = 1; failing <= allocations; ++failing) {
                const LastLine log;
                const AllocationWatch watch(failing);
                ASSERT_EQ(aem_CreateSurround(channels, 48000, type, 1, 1), nullptr)
                    << "allocation " << failing;
                ASSERT_EQ(watch.alive(), 0) << "allocation " << failing;
                ASSERT_EQ(mappings.bytes(), 0) << "allocation " << failing;
                ASSERT_STREQ(LastLine::text(), kNoMemoryLine) << "allocation " << failing;
            }
        }
    }
}

TEST(SurroundOutOfMemory, AHandleStaysWithinItsMemoryLimitAndFreesEverything) {
    for (const auto& [channels, type] : kEveryMade) {
        SCOPED_TRACE(std::to_string(channels) + " channels, type " + std::to_string(type));
        const MappingWatch mappings;
        const AllocationWatch watch;
        void* const handle = aem_CreateSurround(channels, 48000, type, 2, 1);
        const std::size_t bytes = watch.bytes() + static_cast<std::size_t>(mappings.bytes());
        EXPECT_LE(bytes, mostKib(channels, type) * 1024);
        EXPECT_GT(bytes, mostKib(channels, type) * 1024 / 2);
        aem_ReleaseSurround(handle);
        EXPECT_EQ(watch.alive(), 0);
        EXPECT_EQ(mappings.bytes(), 0);
    }
}

TEST(SurroundOutOfMemory, TheSoundIsTheSameWhenTheSystemRefusesToMap) {
    const test::Pcm in = test::bursts(1, 8 * 4800);
    for (const auto& [channels, type] : kEveryMade) {
        test::SurroundEffect mapped(channels, type);
        test::SurroundEffect refused = [channels = channels, type = type] {
            const MappingWatch mappings(MappingWatch::Kernel::kRefuses);
            return test::SurroundEffect(channels, type);
        }();
        const auto calls = test::callsOf(480, 4800);
        EXPECT_TRUE(test::sameSignal(refused.process(in, calls), mapped.process(in, calls)));
    }
}

TEST(SurroundOutOfMemory, ABufferWithoutMemoryHasASizeAndIgnoresClear) {
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
