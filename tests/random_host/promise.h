#pragma once

#include <stdexcept>
#include <string>

namespace test {

/** The filter broke a promise of its interface. */
class BrokenPromise : public std::logic_error {
  public:
    using std::logic_error::logic_error;
};

/** @throws BrokenPromise if `is_kept` is false. */
inline void promise(bool is_kept, const char* text) {
    if (!is_kept) throw BrokenPromise(text);
}

}  // namespace test
