#include "engine_maker.h"

#include <cstring>

#include "sonivex/status.h"

namespace sonivex_lv2 {

EngineMaker::EngineMaker(const PluginKind& kind, int sample_rate_hz, const HostFeatures& host)
    : kind_(kind), sample_rate_hz_(sample_rate_hz), host_(host) {}

EngineMaker::~EngineMaker() {
    releaseRetired();
}

bool EngineMaker::ask(const Settings& settings) {
    asked_ = settings;
    stage_.store(Stage::kAsked, std::memory_order_release);
    if (host_.worker() == nullptr) {
        make(settings);
        return true;
    }
    if (send({.make = 1, .settings = settings})) return true;
    stage_.store(Stage::kIdle, std::memory_order_release);
    return false;
}

Engine EngineMaker::take() {
    Engine engine = std::move(made_);
    stage_.store(Stage::kIdle, std::memory_order_release);
    return engine;
}

void EngineMaker::retire(Engine& engine) {
    if (host_.worker() == nullptr) {
        engine.reset();
        return;
    }
    if (engine != nullptr && retired_.load(std::memory_order_acquire) == nullptr) {
        retired_.store(engine.release(), std::memory_order_release);
        owes_message_ = true;
    }
    if (owes_message_ && send({.make = 0, .settings = {}})) owes_message_ = false;
}

LV2_Worker_Status EngineMaker::work(std::uint32_t size, const void* data) {
    Message message;
    if (size != sizeof message || data == nullptr) return LV2_WORKER_ERR_UNKNOWN;
    std::memcpy(&message, data, sizeof message);
    if (message.make != 0 && message.make != 1) return LV2_WORKER_ERR_UNKNOWN;
    releaseRetired();
    if (message.make == 1) make(message.settings);
    return LV2_WORKER_SUCCESS;
}

bool EngineMaker::send(const Message& message) {
    const LV2_Worker_Schedule* const worker = host_.worker();
    return worker->schedule_work(worker->handle, sizeof message, &message) == LV2_WORKER_SUCCESS;
}

void EngineMaker::make(const Settings& settings) {
    const int status = makeEngine(kind_, sample_rate_hz_, settings, made_);
    if (status != SONIVEX_OK) {
        host_.logError("the effect keeps its old settings", sonivex_status_text(status));
    }
    stage_.store(Stage::kDone, std::memory_order_release);
}

void EngineMaker::releaseRetired() {
    sonivex_release(retired_.exchange(nullptr, std::memory_order_acq_rel));
}

}  // namespace sonivex_lv2
