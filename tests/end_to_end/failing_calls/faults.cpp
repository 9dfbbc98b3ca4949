#include "end_to_end/failing_calls/faults.h"

#include <cerrno>

namespace test {
namespace {

constexpr int kInternal = 1;
constexpr int kInputNotReadable = 3;
constexpr int kNoAudio = 4;
constexpr int kOutputNotWritable = 7;
constexpr int kNoSpace = 8;

}  // namespace

std::vector<Fault> everyFault() {
    const auto number = [](int error) { return std::to_string(error); };
    return {
        {"open", "once", number(EACCES), {kInputNotReadable, kOutputNotWritable}},
        {"open", "always", number(EMFILE), {kInputNotReadable, kOutputNotWritable}},
        {"folder", "once", number(EACCES), {kOutputNotWritable}, true},
        {"folder", "always", number(ENOSPC), {kNoSpace}, true},
        {"read", "once", number(EIO), {kInputNotReadable, kNoAudio}},
        {"read", "once", number(EINTR), {}},
        {"read", "always", number(EIO), {kInputNotReadable, kNoAudio}},
        {"read", "once", "short", {}},
        {"write", "once", "full", {kNoSpace}, true},
        {"write", "once", number(EIO), {kOutputNotWritable}, true},
        {"write", "once", number(EINTR), {}},
        {"write", "always", number(ENOSPC), {kNoSpace}, true},
        {"write", "once", "short", {}},
        {"sync", "once", number(EIO), {kOutputNotWritable}, true},
        {"sync", "once", number(EINTR), {}},
        {"close", "once", number(EIO), {}},
        {"close", "always", number(ENOSPC), {}},
        {"close-written", "once", number(EIO), {kOutputNotWritable}, true},
        {"close-written", "always", number(ENOSPC), {kNoSpace}, true},
        {"rename", "once", number(EACCES), {kOutputNotWritable}, true},
        {"rename", "always", number(EIO), {kOutputNotWritable}, true},
        {"thread", "once", number(EAGAIN), {kInternal}},
        {"thread", "always", number(EAGAIN), {kInternal}},
    };
}

std::vector<Fault> oneFaultOfEachCall() {
    std::vector<Fault> faults;
    for (Fault& fault : everyFault()) {
        if (faults.empty() || faults.back().call != fault.call) faults.push_back(std::move(fault));
    }
    return faults;
}

}  // namespace test
