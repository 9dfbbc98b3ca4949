// Engines that another thread makes while the sound plays. The thread sanitizer watches.
#include <gtest/gtest.h>

#include <atomic>
#include <condition_variable>
#include <mutex>
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
            changed_.wait(lock, [this] { return ends_ || !messages_.empty(); });
            if (messages_.empty()) return;
            const auto message = messages_.front();
            messages_.erase(messages_.begin());
            lock.unlock();
            interface_->work(instance_, nullptr, nullptr, static_cast<std::uint32_t>(message.size()),
                             message.data());
            ++worked_;
            lock.lock();
        }
    }

    std::mutex mutex_;
    std::condition_variable changed_;
    std::vector<std::vector<unsigned char>> messages_;
    bool ends_ = false;
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

}  // namespace
