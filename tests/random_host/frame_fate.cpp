#include "random_host/frame_fate.h"

#include <algorithm>
#include <string>

#include "random_host/promise.h"
#include "sonivex/log_bridge.h"
#include "vorlin/log.h"

namespace test {

namespace {

std::atomic<std::uint64_t> announced_frames;
std::atomic<std::uint64_t> given_up_frames;
std::atomic<std::uint64_t> frames_without_a_line;

constexpr char kDialogueRefused[] = "sonivex createDialoguEnhance failed!";

thread_local bool is_throwing_away = false;
thread_local int announcements = 0;             // on this thread, of frames that still live
thread_local bool is_dialogue_refused = false;  // the last announcement says so

// The last line of every way in which a filter gives a frame up. Lines before it may tell the reason.
bool announcesALostFrame(const std::string& line) {
    static const char* const beginnings[] = {
        "sonivex: frame lost",
        "sonivex: av_buffer_alloc failed, frame lost",
        "sonivex: frame does not hold what it describes",
        "init AVFilter error ",
        "av_buffersrc_add_frame error ",
        "av_buffersink_get_frame error ",
        "sonivex av_buffersink_get_frame error ",
        "sonivex createSurround failed!",
        kDialogueRefused,
        "sonivex createNormalizer failed!",
        "sonivex ProcessSurround failed!",
        "sonivex ProcessDialoguEnhance failed!",
        "sonivex ProcessNormalizer failed!",
    };
    return std::any_of(std::begin(beginnings), std::end(beginnings),
                       [&line](const char* beginning) { return line.starts_with(beginning); });
}

void read(int, const std::string&, const std::string& line) {
    if (!announcesALostFrame(line)) return;
    is_dialogue_refused = line.starts_with(kDialogueRefused);
    ++announced_frames;
    ++announcements;
}

}  // namespace

void FrameRecord::destroyed() {
    if (fate_.load() != Fate::kInside) return;
    if (is_throwing_away) {
        fate_.store(Fate::kThrownAway);
        return;
    }
    ++given_up_frames;
    if (announcements != 1) ++frames_without_a_line;
    announcements = 0;
    fate_.store(is_dialogue_refused ? Fate::kRefusedByDialogue : Fate::kGivenUp);
}

ThrowingAway::ThrowingAway() {
    is_throwing_away = true;
}

ThrowingAway::~ThrowingAway() {
    is_throwing_away = false;
}

DropLog::DropLog() : writer_before_(logWriterFun) {
    announced_frames = 0;
    given_up_frames = 0;
    frames_without_a_line = 0;
    announcements = 0;
    logWriterFun = nullptr;
    Vorlin::setLogLevel(Vorlin::LOG_DEBUG);
    install();
}

DropLog::~DropLog() {
    Vorlin::setLogLevel(Vorlin::LOG_QUIET);
    Vorlin::setLogSink({});
    logWriterFun = writer_before_;
}

void DropLog::install() {
    Vorlin::setLogSink(read);
}

std::uint64_t DropLog::announced() const {
    return announced_frames;
}

std::uint64_t DropLog::givenUp() const {
    return given_up_frames;
}

void DropLog::check() const {
    promise(frames_without_a_line == 0, "every lost frame has a log line of its own");
}

void DropLog::checkAtRest() const {
    check();
    promise(announced_frames == given_up_frames, "a log line announces a lost frame only if one is lost");
}

}  // namespace test
