#include "random_host/random_host.h"

#include <chrono>
#include <thread>
#include <utility>

#include "random_host/promise.h"
#include "random_host/random_options.h"
#include "vorlin/filter_prototype.h"

namespace test {

namespace {

using Vorlin::filterPrototype;

constexpr char kName[] = "sonivex";
constexpr int kHuge_frames = 200'000;  // longer than any queue of an effect
constexpr int kWaits = 100;            // different lengths

}  // namespace

RandomHost::RandomHost(ByteSource& bytes, const Habits& habits, const DropLog& log)
    : bytes_(bytes), habits_(habits), log_(log) {
    addFilter();
}

RandomHost::~RandomHost() = default;

void RandomHost::step() {
    if (habits_.is_hostile) {
        stepHostile();
    } else {
        stepKind();
    }
    log_.check();
}

void RandomHost::rest() {
    while (filters_.size() > 1) {
        filters_.back()->destroy();
        filters_.pop_back();
    }
    current_ = 0;
    current().rest();
    checkSum();
}

void RandomHost::finish() {
    for (const auto& each : filters_) each->destroy();
    filters_.clear();
    checkSum();
}

void RandomHost::checkSum() const {
    log_.check();
    promise(counts_.pushed == counts_.pulled + counts_.given_up + counts_.thrown_away,
            "every frame came out, was given up or was thrown away");
}

void RandomHost::stepHostile() {
    switch (bytes_.below(32)) {
        case 0:
            push(makeOddFrame(sound_, bytes_));
            break;
        case 1:
            changeSound(bytes_.oneIn(2));
            break;
        case 2:
        case 3:
            current().setOptions(effectOption(bytes_));
            break;
        case 4:
            sendOption();
            break;
        case 5:
            sendNumber();
            break;
        case 6:
            callGuard();
            break;
        case 7:
            current().setInvalid(bytes_.oneIn(4));
            break;
        case 8:
        case 9:
            current().setInvalid(false);
            break;
        case 16:
            current().flush();
            break;
        case 10:
            listen();
            break;
        case 11:
            askAround();
            break;
        case 12:
            addFilter();
            break;
        case 13:
            removeFilter();
            break;
        case 14:
            current_ = bytes_.below(static_cast<std::uint32_t>(filters_.size()));
            break;
        case 15:
            wait();
            break;
        case 17:
        case 18:
        case 19:
        case 20:
        case 21:
            current().pull(bytes_.oneIn(4));
            break;
        default:
            pushHonest();
            break;
    }
}

void RandomHost::stepKind() {
    switch (bytes_.below(256)) {
        case 0:
            changeSound(true);
            break;
        case 1:
        case 2:
            current().setOptions(effectOption(bytes_));
            break;
        case 3:
            sendOption();
            break;
        case 4:
            sendNumber();
            break;
        case 5:
            callGuard();
            break;
        case 6:
            current().setInvalid(bytes_.oneIn(2));
            break;
        case 7:
            current().flush();
            break;
        case 8:
            askAround();
            break;
        case 9:
            if (bytes_.oneIn(4)) addFilter();
            break;
        case 10:
            if (bytes_.oneIn(4)) removeFilter();
            break;
        case 11:
            push(makeOddFrame(sound_, bytes_));
            break;
        case 12:
        case 13:
        case 16:
        case 17:
        case 18:
        case 14:
        case 15:
            current().setInvalid(false);
            break;
        case 19:
            if (habits_.may_dump && bytes_.oneIn(2)) dumpForAMoment();
            break;
        default:
            current_ = (current_ + 1) % filters_.size();
            pushHonest();
            if (current().isActive() && bytes_.oneIn(4)) wait();
            while (current().pull(false)) continue;
            break;
    }
}

void RandomHost::push(RandomFrame made) {
    current().push(std::move(made));
}

void RandomHost::pushHonest() {
    const int longest_frames = bytes_.oneIn(256) ? kHuge_frames : habits_.longest_frames;
    push(makeHonestFrame(sound_, longest_frames, bytes_));
}

// All filters play the same stream.
void RandomHost::changeSound(bool flushes) {
    sound_ = randomSound(bytes_);
    ++counts_.streams;
    if (!flushes) return;
    for (const auto& each : filters_) each->flush();
}

void RandomHost::sendOption() {
    if (!habits_.is_hostile || !bytes_.oneIn(3)) {
        const std::string text = objectOption(bytes_, habits_.may_dump && habits_.is_hostile);
        promise(current().setOptions(text), "a JSON object is understood");
        return;
    }
    if (bytes_.oneIn(2)) {
        current().setOptions(bytes_.text(64));
        return;
    }
    const std::string key = bytes_.text(16);
    try {
        const std::string text = bytes_.text(64);
        if (key == filterPrototype::FILTER_OPTION) {
            current().setOptions(text);
        } else {
            current().filter().setOption(key, text, bytes_.text(4));
        }
    } catch (const std::invalid_argument&) {
        promise(key == filterPrototype::VIDEO_FPS_OPTION || key == filterPrototype::PLAYER_SPEED_OPTION,
                "only a number can be refused by an exception");
    }
}

void RandomHost::sendNumber() {
    const char* const option =
        bytes_.oneIn(2) ? filterPrototype::VIDEO_FPS_OPTION : filterPrototype::PLAYER_SPEED_OPTION;
    current().setNumber(option, numberOption(bytes_));
}

void RandomHost::listen() {
    const bool hears = !bytes_.oneIn(4);
    const bool obeys = bytes_.oneIn(2);
    current().listen(hears, obeys);
}

void RandomHost::callGuard() {
    if (bytes_.oneIn(4)) {
        (void)current().filter().isOverFps();
        return;
    }
    constexpr std::uint32_t kMostReports = 24;
    const std::uint64_t elapsed_ms =
        bytes_.oneIn(8) ? ~std::uint64_t{0} >> bytes_.below(64) : bytes_.below(256);
    for (std::uint32_t left = bytes_.below(kMostReports); left > 0; --left) {
        current().checkTimeConsume(elapsed_ms);
    }
}

void RandomHost::askAround() {
    Vorlin::IAudioFilter& filter = current().filter();
    switch (bytes_.below(5)) {
        case 0:
            promise(filter.getName() == "SonivexFilter", "a filter tells its name");
            break;
        case 1: {
            const std::string name = bytes_.oneIn(2) ? kName : bytes_.text(12);
            promise(filter.is_supported(name, 0, -1, 1) == (name == kName), "a filter answers to one name");
            break;
        }
        case 2:
            filter.setCurrentTarget(bytes_.text(40));
            break;
        case 3:
            promise(filter.init(bytes_.word()), "a filter is ready again");
            break;
        default:
            DropLog::install();
            break;
    }
}

void RandomHost::dumpForAMoment() {
    constexpr int kDumped_frames = 4;
    current().setOptions(R"({"enable_dump": true})");
    for (int i = 0; i < kDumped_frames; ++i) {
        pushHonest();
        wait();
        while (current().pull(false)) continue;
    }
    current().setOptions(R"({"enable_dump": false})");
}

void RandomHost::addFilter() {
    if (filters_.size() >= habits_.most_filters) return;
    const bool is_active = habits_.workers == Habits::Workers::kAlways ||
                           (habits_.workers == Habits::Workers::kSometimes && bytes_.oneIn(2));
    const Vorlin::IQFFrame::audioInfo stream{
        .format = sound_.format, .channels = sound_.channels, .sample_rate = sound_.rate_hz};
    std::unique_ptr<Vorlin::IAudioFilter> filter;
    if (filters_.empty() || bytes_.oneIn(2)) {
        filter = filterPrototype::createFilter(kName, stream, {}, is_active);
    } else {
        filter.reset(current().filter().clone(stream, stream, is_active));
    }
    promise(filter != nullptr, "a filter can be made");
    current_ = filters_.size();
    filters_.push_back(std::make_unique<HostedFilter>(std::move(filter), is_active, counts_));
    if (bytes_.oneIn(16)) return;  // a filter that is never ready, and is invalid
    promise(current().filter().init(0), "a filter is ready");
    current().listen(true, true);
    current().setOptions(effectOption(bytes_));
    current().setInvalid(false);
}

void RandomHost::removeFilter() {
    if (filters_.size() == 1 || (!habits_.is_hostile && current_ == 0)) return;  // a player keeps the first
    current().destroy();
    filters_.erase(filters_.begin() + static_cast<std::ptrdiff_t>(current_));
    current_ = 0;
}

void RandomHost::wait() {
    if (habits_.longest_wait_us == 0) return;
    const std::chrono::microseconds step(habits_.longest_wait_us / kWaits);
    std::this_thread::sleep_for(step * bytes_.below(kWaits + 1));
}

}  // namespace test
