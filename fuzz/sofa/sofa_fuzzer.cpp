// Files of measured heads. The input is the file. The reader either refuses it with a reason, or returns a
// head that keeps what head_measurements.h promises. libmysofa, which is not built for fuzzing, goes round in
// very long loops in some damaged files; such an input is left after a second, with the memory that it
// holds.

#include "sofa_file.h"

#include <sys/time.h>

#include <csetjmp>
#include <csignal>
#include <cstdint>

#include "sound_head.h"
#include "support/memory_file.h"

namespace {

constexpr int kLongest_s = 1;  // of a processor's time

sigjmp_buf before_reading;

void giveUp(int /*signal*/) {
    siglongjmp(before_reading, 1);
}

void setTimer(int seconds) {
    const itimerval once = {.it_interval = {}, .it_value = {.tv_sec = seconds, .tv_usec = 0}};
    setitimer(ITIMER_PROF, &once, nullptr);
}

void read(const std::string& path) {
    try {
        fuzz::requireSoundHead(sonivex_irgen::readSofaFile(path));
    } catch (const sonivex_irgen::UnusableHead& reason) {
        fuzz::require(reason.what()[0] != '\0', "a refusal tells its reason");
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    std::signal(SIGPROF, giveUp);
    const fuzz::MemoryFile file(bytes, size);
    if (sigsetjmp(before_reading, 1) == 0) {
        setTimer(kLongest_s);
        read(file.path());
    }
    setTimer(0);
    return 0;
}
