// std::bit_cast, also where the standard library does not have it yet.
#pragma once

#include <bit>

namespace sonivex {

#if defined(__cpp_lib_bit_cast)
using std::bit_cast;
#else
/** @return the object of type To whose bits are those of `from`. [any, concurrent] real-time safe */
template <typename To, typename From>
constexpr To bit_cast(const From& from) noexcept {
    return __builtin_bit_cast(To, from);
}
#endif

}  // namespace sonivex
