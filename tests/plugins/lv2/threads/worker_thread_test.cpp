// Engines that another thread makes while the sound plays. The thread sanitizer watches.
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <condition_variable>
#include <cstdint>
#include <limits>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "plugins/lv2/lv2_host.h"

namespace {

using test::Planes;

// A host's worker with a thread of its own.
class WorkerThread {
  public:
    WorkerThread() : thread_([this] { work(); }) {}
    ~WorkerThread() {
        {
            const std::lock_guard lock(mutex_);
            ends_ = true;
        }
        changed_.notify_all();
        thread_.join();
    }
    WorkerThread(const WorkerThread&) = delete;
    WorkerThread& operator=(const WorkerThread&) = delete;

    void serve(LV2_Handle instance, const LV2_Worker_Interface* interface) {
        const std::lock_guard lock(mutex_);
        instance_ = instance;
        interface_ = interface;
    }
    LV2_Worker_Schedule* schedule() { return &schedule_; }
    int worked() const { return worked_; }
    /** Waits until no work is under way, and begins none before `release`. */
    void hold() {
        std::unique_lock lock(mutex_);
        changed_.wait(lock, [this] { return !is_working_; });
        is_held_ = true;
    }
    void release() {
        {
            const std::lock_guard lock(mutex_);
            is_held_ = false;
        }
        changed_.notify_all();
    }
    /** Loses all messages. */
    void dropAll() {
        const std::lock_guard lock(mutex_);
        messages_.clear();
    }

  private:
    static LV2_Worker_Status add(LV2_Worker_Schedule_Handle handle, std::uint32_t size, const void* data) {
        auto& worker = *static_cast<WorkerThread*>(handle);
        const auto* const bytes = static_cast<const unsigned char*>(data);
        {
            const std::lock_guard lock(worker.mutex_);
            worker.messages_.emplace_back(bytes, bytes + size);
        }
        worker.changed_.notify_all();
        return LV2_WORKER_SUCCESS;
    }

    void work() {
        std::unique_lock lock(mutex_);
        while (true) {
            changed_.wait(lock, [this] { return ends_ || (!messages_.empty() && !is_held_); });
            if (messages_.empty() || is_held_) return;
            const auto message = messages_.front();
            messages_.erase(messages_.begin());
            is_working_ = true;
            lock.unlock();
            interface_->work(instance_, nullptr, nullptr, static_cast<std::uint32_t>(message.size()),
                             message.data());
            ++worked_;
            lock.lock();
            is_working_ = false;
            changed_.notify_all();
        }
    }

    std::mutex mutex_;
    std::condition_variable changed_;
    std::vector<std::vector<unsigned char>> messages_;
    bool ends_ = false;
    bool is_working_ = false;
    bool is_held_ = false;
    std::atomic<int> worked_ = 0;
    LV2_Handle instance_ = nullptr;
    const LV2_Worker_Interface* interface_ = nullptr;
    LV2_Worker_Schedule schedule_ = {this, add};
    std::thread thread_;
};

TEST(Lv2WorkerThread, ChangesReachTheSoundWhileAnotherThreadMakesTheEngines) {
    const LV2_Descriptor* const descriptor = test::findLv2Descriptor(test::kSurroundStereo.uri);
    Planes in = test::noisePlanes(90, 2, 480);
    Planes out = in;
    float type = 1.0F;
    float mode = 1.0F;
    int changes = 0;
    LV2_Handle instance = nullptr;
    {
        WorkerThread worker;
        const LV2_Feature schedule = {LV2_WORKER__schedule, worker.schedule()};
        const LV2_Feature* const features[] = {&schedule, nullptr};
        instance = descriptor->instantiate(descriptor, 48000.0, nullptr, features);
        ASSERT_NE(instance, nullptr);
        worker.serve(instance, static_cast<const LV2_Worker_Interface*>(
                                   descriptor->extension_data(LV2_WORKER__interface)));
        for (std::uint32_t i = 0; i < 2; ++i) {
            descriptor->connect_port(instance, i, in[i].data());
            descriptor->connect_port(instance, 2 + i, out[i].data());
        }
        descriptor->connect_port(instance, 6, &type);
        descriptor->connect_port(instance, 7, &mode);
        descriptor->activate(instance);
        test::Random random(91);
        for (int block = 0; block < 3000; ++block) {
            if (random.between(0, 99) == 0) {
                type = random.between(0, 1) == 0 ? 1.0F : 13.0F;
                mode = static_cast<float>(random.between(1, 3));
                ++changes;
            }
            descriptor->run(instance, 480);
        }
        EXPECT_GT(worker.worked(), 4) << changes << " changes";
    }
    descriptor->cleanup(instance);
}

std::size_t controlsOf(const test::Lv2Kind& kind) {
    if (kind.effect == test::Lv2Effect::kSurround) return test::kLimiter + 1;
    return kind.effect == test::Lv2Effect::kDialogue ? test::kVoice + 1 : test::kLatency + 1;
}

float randomControl(test::Random& random) {
    constexpr float kOdd[] = {std::numeric_limits<float>::quiet_NaN(), std::numeric_limits<float>::infinity(),
                              -1.0F, 1e9F};
    return random.between(0, 9) == 0 ? kOdd[random.between(0, 3)] : static_cast<float>(random.between(0, 13));
}

// A careless host: blocks of any length, controls and samples that are no numbers, restarts while the worker
// has work, an end that loses the work.
TEST(Lv2WorkerThread, APlugInStaysSoundInTheHandsOfACarelessHost) {
    constexpr std::size_t kLongest_frames = 3000;
    constexpr int kBlocks = 120;
    for (std::uint64_t seed = 1; seed <= test::kLv2Kinds.size(); ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        const test::Lv2Kind& kind = test::kLv2Kinds[seed - 1];
        test::Random random(seed);
        const LV2_Descriptor* const descriptor = test::findLv2Descriptor(kind.uri);
        Planes in = test::noisePlanes(seed, kind.channels_in, kLongest_frames);
        in[0][kLongest_frames / 2] = std::numeric_limits<float>::quiet_NaN();
        Planes out(kind.channels_out, std::vector<float>(kLongest_frames));
        std::vector<float> controls(controlsOf(kind), 0.0F);
        WorkerThread worker;
        const LV2_Feature schedule = {LV2_WORKER__schedule, worker.schedule()};
        const LV2_Feature* const features[] = {&schedule, nullptr};
        const LV2_Handle instance = descriptor->instantiate(descriptor, 48000.0, nullptr, features);
        ASSERT_NE(instance, nullptr);
        if (descriptor->extension_data != nullptr) {
            worker.serve(instance, static_cast<const LV2_Worker_Interface*>(
                                       descriptor->extension_data(LV2_WORKER__interface)));
        }
        std::uint32_t port = 0;
        for (auto& plane : in) descriptor->connect_port(instance, port++, plane.data());
        for (auto& plane : out) descriptor->connect_port(instance, port++, plane.data());
        for (float& control : controls) descriptor->connect_port(instance, port++, &control);
        descriptor->activate(instance);
        for (int block = 0; block < kBlocks; ++block) {
            if (random.between(0, 5) == 0) {
                controls[static_cast<std::size_t>(random.between(0, static_cast<int>(controls.size()) - 1))] =
                    randomControl(random);
            }
            if (random.between(0, 19) == 0) {
                worker.hold();
                if (descriptor->deactivate != nullptr) descriptor->deactivate(instance);
                descriptor->activate(instance);
                worker.release();
            }
            const auto frames = static_cast<std::size_t>(random.between(0, kLongest_frames));
            descriptor->run(instance, static_cast<std::uint32_t>(frames));
            for (const auto& plane : out) {
                ASSERT_TRUE(std::all_of(plane.begin(), plane.begin() + static_cast<std::ptrdiff_t>(frames),
                                        [](float sample) { return std::isfinite(sample); }));
            }
        }
        worker.hold();
        worker.dropAll();
        if (descriptor->deactivate != nullptr) descriptor->deactivate(instance);
        descriptor->cleanup(instance);
    }
}

}  // namespace
