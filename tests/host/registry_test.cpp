#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>

#include "fake_filter.h"
#include "vorlin/filter_prototype.h"

namespace Vorlin::test {
namespace {

std::unique_ptr<FakeFilter> makePrototype(const std::string& name) {
    return std::make_unique<FakeFilter>(name, std::make_shared<Script>());
}

TEST(FilterRegistry, AnswersOnlyToSupportedNames) {
    const auto prototype = makePrototype("one");
    EXPECT_TRUE(filterPrototype::isRegistered("one"));
    EXPECT_FALSE(filterPrototype::isRegistered("two"));
    EXPECT_NE(filterPrototype::createFilter("one", {}, {}, false), nullptr);
    EXPECT_EQ(filterPrototype::createFilter("two", {}, {}, false), nullptr);
    EXPECT_EQ(filterPrototype::createFilter("", {}, {}, false), nullptr);
}

TEST(FilterRegistry, ForgetsADestroyedPrototype) {
    auto prototype = makePrototype("gone");
    prototype.reset();
    EXPECT_FALSE(filterPrototype::isRegistered("gone"));
}

TEST(FilterRegistry, KeepsAPrototypeWhenItsClonesAreDestroyed) {
    const auto prototype = makePrototype("stays");
    for (int i = 0; i < 3; ++i) EXPECT_NE(filterPrototype::createFilter("stays", {}, {}, false), nullptr);
    EXPECT_TRUE(filterPrototype::isRegistered("stays"));
}

TEST(FilterRegistry, IgnoresASecondRegistrationOfAPrototype) {
    auto prototype = makePrototype("twice");
    filterPrototype::addPrototype(prototype.get());
    prototype.reset();
    EXPECT_FALSE(filterPrototype::isRegistered("twice"));
}

TEST(FilterRegistry, RejectsAPrototypeThatIsNotAnAudioFilter) {
    class Bare : public filterPrototype {};
    Bare bare;
    filterPrototype::addPrototype(&bare);
    filterPrototype::addPrototype(nullptr);
    EXPECT_FALSE(filterPrototype::isRegistered(""));
}

TEST(FilterRegistry, StaysUsableWhenACloneThrows) {
    // Failing throws inside clone, so its filterPrototype base is destroyed while the registry searches.
    class Failing : public filterPrototype {
      public:
        Failing() { throw std::runtime_error("no clone"); }
    };
    class Prototype : public IAudioFilter, public filterPrototype {
      public:
        bool setOption(const std::string&, const std::string&, const std::string&) override { return true; }
        bool init(uint64_t) override { return true; }
        int push(std::unique_ptr<IQFFrame>&, uint64_t) override { return 0; }
        int pull(std::unique_ptr<IQFFrame>&, uint64_t) override { return 0; }
        void flush() override {}
        std::string getName() override { return "failing"; }
        bool is_supported(const std::string& name, int, int, int) override { return name == "failing"; }
        IAudioFilter* clone(IQFFrame::audioInfo, IQFFrame::audioInfo, bool) override {
            const Failing failing;
            return nullptr;
        }
        void setInvalid(bool) override {}
        void setCurrentTarget(const std::string&) override {}
        bool isOverFps() override { return false; }
        void checkTimeConsume(uint64_t) override {}
    };
    Prototype prototype;
    filterPrototype::addPrototype(&prototype);
    EXPECT_THROW(filterPrototype::createFilter("failing", {}, {}, false), std::runtime_error);
    EXPECT_TRUE(filterPrototype::isRegistered("failing"));
    EXPECT_FALSE(prototype.isInvalid()) << "isInvalid() is false unless a filter overrides it";
}

}  // namespace
}  // namespace Vorlin::test
