// These tests watch what the plug-ins ask of the system while they run.
#include <gtest/gtest.h>

#include <string>

#include "plugins/lv2/lv2_host.h"
#include "real_time/failing_allocator.h"

namespace {

using test::AllocationWatch;
using test::FakeLv2Worker;
using test::Planes;

TEST(Lv2RealTime, NoPlugInAllocatesWhileItRuns) {
    for (const auto& kind : test::kLv2Kinds) {
        const Planes in = test::noisePlanes(80, kind.channels_in, 20000);
        Planes out(kind.channels_out, std::vector<float>(20000));
        test::Lv2Plugin plugin(kind);
        const AllocationWatch allocations;
        for (std::size_t at = 0; at < 20000; at += 500) {
            if (at % 2000 == 0) plugin.control(test::kBypass) = 1.0F - plugin.control(test::kBypass);
            plugin.run(in, out, at, 500);
        }
        EXPECT_EQ(allocations.requested(), 0) << kind.uri;
    }
}

TEST(Lv2RealTime, AChangeAllocatesOnTheWorkerOnly) {
    const auto& kind = test::kSurround51;
    const Planes in = test::noisePlanes(81, kind.channels_in, 60000);
    Planes out(kind.channels_out, std::vector<float>(60000));
    FakeLv2Worker worker(FakeLv2Worker::Manner::kQueued);
    test::Lv2Plugin plugin(kind, 48000, &worker);
    const auto run = [&](std::size_t first, std::size_t last) {
        const AllocationWatch allocations;
        for (std::size_t at = first; at < last; at += 500) plugin.run(in, out, at, 500);
        EXPECT_EQ(allocations.alive(), 0) << "memory was freed";
        return allocations.requested();
    };
    EXPECT_EQ(run(0, 1000), 0);
    plugin.control(test::kType) = 13;
    EXPECT_EQ(run(1000, 10000), 0);
    {
        const AllocationWatch allocations;
        worker.workAll();
        EXPECT_GT(allocations.requested(), 0) << "the library's allocations are not seen";
    }
    EXPECT_EQ(run(10000, 50000), 0);
    EXPECT_EQ(worker.waiting(), 1U);
    worker.workAll();
    EXPECT_EQ(run(50000, 60000), 0);
}

}  // namespace
