// Makes and releases engines while others sound: on the host's worker thread, or at once if the host has no
// worker.
//
//   run()                                          worker
//   ask(settings)           -- message -->         work(): makes the engine and leaves it here
//   isReady(), take()
//   retire(engine)          -- message -->         work(): releases it
//
// No message owns an engine. So none is lost if the host drops a message or never calls the worker.
#pragma once

#include <atomic>
#include <cstdint>

#include "engine.h"
#include "host_features.h"

namespace sonivex_lv2 {

/** The maker of the engines of one instance. [audio] stands for the thread of run(), or of activate() while
 *  nothing runs. */
class EngineMaker {
  public:
    EngineMaker(const PluginKind& kind, int sample_rate_hz, const HostFeatures& host);
    ~EngineMaker();
    EngineMaker(const EngineMaker&) = delete;
    EngineMaker& operator=(const EngineMaker&) = delete;

    /** Asks for an engine. If the host has no worker, it is made before the function returns. Must not be
     *  called while isBusy().
     *  @return false if the host takes no message now; ask again later.
     *  [audio] real-time safe if the host has a worker */
    bool ask(const Settings& settings);

    /** Returns whether an engine has been asked for and not yet taken. [audio] real-time safe */
    bool isBusy() const { return stage_.load(std::memory_order_acquire) != Stage::kIdle; }

    /** Returns whether take() may be called. [audio] real-time safe */
    bool isReady() const { return stage_.load(std::memory_order_acquire) == Stage::kDone; }

    /** Returns the settings of the engine that was asked for last. [audio] real-time safe */
    const Settings& asked() const { return asked_; }

    /** Hands out the engine, or null if memory ran out. [audio] real-time safe */
    Engine take();

    /** Takes an engine to release it.
     *  @param engine null afterwards, unless an earlier engine still waits for the worker; then try again
     *                later.
     *  [audio] real-time safe if the host has a worker */
    void retire(Engine& engine);

    /** Does what a message asks for.
     *  @param size,data of the message. What is not a message of this class changes nothing.
     *  @return LV2_WORKER_SUCCESS or LV2_WORKER_ERR_UNKNOWN.
     *  [worker] not real-time safe: allocates and frees memory */
    LV2_Worker_Status work(std::uint32_t size, const void* data);

  private:
    enum class Stage { kIdle, kAsked, kDone };

    // The bytes of a message may be wrong, so it has no type that some bytes are no value of.
    struct Message {
        std::int32_t make = 0;  // 1: make an engine with the settings; 0: only release the retired one
        Settings settings;
    };

    bool send(const Message& message);
    void make(const Settings& settings);
    void releaseRetired();

    const PluginKind& kind_;
    int sample_rate_hz_;
    HostFeatures host_;
    Settings asked_;
    std::atomic<Stage> stage_ = Stage::kIdle;
    Engine made_;                                    // the worker's until stage_ is kDone
    std::atomic<SonivexEffect*> retired_ = nullptr;  // owned
    bool owes_message_ = false;                      // the host refused the one about retired_
};

}  // namespace sonivex_lv2
