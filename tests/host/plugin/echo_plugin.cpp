// A minimal filter library. It registers its prototype when it is loaded. getName of a clone identifies the
// library.
#include <memory>

#include "vorlin/filter.h"
#include "vorlin/filter_prototype.h"

namespace {

class EchoFilter final : public Vorlin::IAudioFilter, public Vorlin::filterPrototype {
  public:
    EchoFilter() { addPrototype(this); }
    EchoFilter(const Vorlin::IQFFrame::audioInfo& src, const Vorlin::IQFFrame::audioInfo& dst, bool active)
        : IAudioFilter(src, dst, active) {}

    bool setOption(const std::string&, const std::string&, const std::string&) override { return true; }
    bool init(uint64_t) override { return true; }
    int push(std::unique_ptr<Vorlin::IQFFrame>& frame, uint64_t) override {
        if (held_) return kTryAgain;
        held_ = std::move(frame);
        return 0;
    }
    int pull(std::unique_ptr<Vorlin::IQFFrame>& frame, uint64_t) override {
        if (!held_) return kTryAgain;
        frame = std::move(held_);
        return 0;
    }
    void flush() override { held_.reset(); }
    std::string getName() override { return ECHO_NAME; }
    bool is_supported(const std::string& name, int, int, int) override {
        return name == ECHO_NAME || name == "echo";
    }
    IAudioFilter* clone(Vorlin::IQFFrame::audioInfo src, Vorlin::IQFFrame::audioInfo dst,
                        bool active) override {
        return new EchoFilter(src, dst, active);
    }
    void setInvalid(bool) override {}
    void setCurrentTarget(const std::string&) override {}
    bool isOverFps() override { return false; }
    void checkTimeConsume(uint64_t) override {}

  private:
    static constexpr int kTryAgain = -35;

    std::unique_ptr<Vorlin::IQFFrame> held_;
};

EchoFilter prototype;

}  // namespace

extern "C" VORLIN_API const char* echo_plugin_name() {
    return ECHO_NAME;
}
