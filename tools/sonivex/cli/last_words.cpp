#include "last_words.h"

#include <cxxabi.h>
#include <unistd.h>

#include <cstdlib>
#include <exception>
#include <new>
#include <typeinfo>

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

// Throwing the exception again, to catch it by its type, would need memory.
bool isLackOfMemory() noexcept {
    const std::type_info* const reason = abi::__cxa_current_exception_type();
    if (reason == nullptr) return !hasMemory();
    return *reason == typeid(std::bad_alloc) || *reason == typeid(std::bad_array_new_length);
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
