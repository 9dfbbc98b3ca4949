#include "play_view.h"

#include <unistd.h>

#include <thread>
#include <utility>

#include "console.h"
#include "descriptor_input.h"

namespace sonivex_tool {
namespace {

constexpr int kKeyWait_ms = 50;
constexpr size_t kMostEvents = 50;
constexpr std::chrono::milliseconds kScreenPeriod{100};
constexpr std::chrono::seconds kLinePeriod{5};

bool isTerminal(int descriptor) {
    return descriptor >= 0 && isatty(descriptor) != 0;
}

}  // namespace

PlayView::PlayView(const PlaySettings& settings, ResultStream& result)
    : result_(result), is_quiet_(settings.is_quiet), has_screen_(false), last_shown_(Clock::now()) {
    if (!isTerminal(STDIN_FILENO) || isStandardInput(settings.playback.input.path)) return;
    if (!isInForeground(STDIN_FILENO)) return;
    const int screen = originalStandardOutput();
    const bool wants_screen = settings.uses_screen && isTerminal(screen);
    terminal_.emplace(STDIN_FILENO, screen, wants_screen ? TerminalUse::KeysAndScreen : TerminalUse::Keys);
    has_screen_ = terminal_->hasScreen();
}

std::vector<PlayAction> PlayView::waitForKeys() {
    if (!terminal_) {
        std::this_thread::sleep_for(std::chrono::milliseconds(kKeyWait_ms));
        return {};
    }
    std::vector<PlayAction> actions;
    for (const std::string& key : keys_.read(terminal_->read(kKeyWait_ms))) {
        if (const auto action = actionOfKey(key)) actions.push_back(*action);
    }
    if (terminal_->hasEnded()) actions.push_back(PlayAction::Quit);
    return actions;
}

void PlayView::note(double position_s, const std::string& text) {
    std::string line = clockTime(position_s) + "  " + text;
    if (!has_screen_ && !is_quiet_) result_.write(line + "\n");
    events_.push_back(std::move(line));
    if (events_.size() > kMostEvents) events_.erase(events_.begin());
}

void PlayView::show(ScreenContents contents, Clock::time_point now) {
    const auto period = has_screen_ ? Clock::duration(kScreenPeriod) : Clock::duration(kLinePeriod);
    if (now - last_shown_ < period) return;
    last_shown_ = now;
    if (has_screen_) {
        contents.events = events_;
        terminal_->draw(screenLines(contents, terminal_->columns(), terminal_->rows()));
    } else if (!is_quiet_) {
        result_.write(statusLine(contents) + "\n");
    }
}

void PlayView::finish(const std::string& line) {
    const bool takes_output = !terminal_ || terminal_->giveBack();
    terminal_.reset();
    if (!is_quiet_ && takes_output) result_.write(line + "\n");
}

}  // namespace sonivex_tool
