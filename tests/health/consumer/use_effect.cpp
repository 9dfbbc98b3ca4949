// Streams floats through an effect of the installed library, in C++17 or later.
#include <sonivex/sonivex.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <memory>

namespace {

struct Release {
    void operator()(SonivexEffect* effect) const { sonivex_release(effect); }
};

}  // namespace

int main() {
    SonivexEffect* made = nullptr;
    if (const int status = sonivex_create_normalizer(&made, 1, 48000); status != SONIVEX_OK) {
        std::puts(sonivex_status_text(status));
        return 1;
    }
    const std::unique_ptr<SonivexEffect, Release> effect(made);
    std::array<float, 1024> samples{};
    samples.fill(0.01F);
    const float* const in[] = {samples.data()};
    float* const out[] = {samples.data()};
    if (sonivex_stream_float(effect.get(), in, out, 1024) != SONIVEX_OK) return 1;
    const auto peak = *std::max_element(samples.begin(), samples.end());
    std::printf("C++ %ld: peak in 0.01, out %.3f\n", static_cast<long>(__cplusplus),
                static_cast<double>(peak));
    return peak > 0.09F ? 0 : 1;
}
