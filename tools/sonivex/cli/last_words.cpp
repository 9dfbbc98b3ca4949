#include "last_words.h"

#include <unistd.h>

#include <cstdlib>
#include <exception>
#include <new>

#include "console.h"
#include "exit_codes.h"
#include "interrupt.h"

namespace sonivex_tool {
namespace {

// The C++ library cannot even throw if it finds no memory for the exception. Then there is none to look at.
bool hasMemory() {
    constexpr std::size_t kFewBytes = 1024;
    void* volatile memory = std::malloc(kFewBytes);
    std::free(memory);
    return memory != nullptr;
}

bool isLackOfMemory() noexcept {
    const std::exception_ptr reason = std::current_exception();
    if (reason == nullptr) return !hasMemory();
    try {
        std::rethrow_exception(reason);
    } catch (const std::bad_alloc&) {
        return true;
    } catch (...) {
        return false;
    }
}

[[noreturn]] void endOnTerminate() {
    cleanUpAtOnce();  // no destructor will give the terminal back
    if (!isLackOfMemory()) std::abort();
    printOutOfMemory();
    _exit(static_cast<int>(ExitCode::Internal));
}

}  // namespace

void printOutOfMemory() {
    printError("out of memory");
}

void explainLackOfMemoryAtTheEnd() {
    std::set_terminate(endOnTerminate);
}

}  // namespace sonivex_tool
