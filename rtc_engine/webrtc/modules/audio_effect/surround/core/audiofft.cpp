#include "audiofft.h"

#include <algorithm>
#include <bit>
#include <cmath>

#include "fft_passes.h"
#include "fft_roots.h"
#include "float_rules.h"

namespace audiofft {
namespace details {
namespace {

constexpr int kTableSizes = 2;  // entries of ip before its work area

// Returns the points of a complex transform on n doubles.
std::size_t pointsOf(int n) {
    return static_cast<std::size_t>(n / 2);
}

// Runs the radix-2 pass if the radix-4 passes leave one over.
void finishTransform(int n, int done, double* a) {
    if (done < n) radix2LastPass(a, pointsOf(n));
}

}  // namespace

void OouraFFT::init(std::size_t length) {
    if (length == size) return;

    const auto work_entries = static_cast<std::size_t>(std::sqrt(static_cast<double>(length)));
    std::vector<int> new_ip(kTableSizes + work_entries);
    std::vector<double> new_w(length / 2);
    std::vector<double> new_buffer(length);
    ip.swap(new_ip);
    w.swap(new_w);
    buffer.swap(new_buffer);
    size = length;

    const int quarter = static_cast<int>(size / 4);
    ip[0] = quarter;
    ip[1] = quarter;
    if (quarter < 2 || !std::has_single_bit(size)) return;
    makeRoots(w.data(), quarter, ip.data() + kTableSizes);
    makeHalfCosines(w.data() + quarter, quarter);
}

void OouraFFT::fft(const float* data, float* re, float* im) {
    if (size == 0) return;
    const std::size_t half = size / 2;
    std::copy_n(data, size, buffer.begin());
    if (half == 0) {
        re[0] = data[0];
        im[0] = 0.0F;
        return;
    }
    rdft(static_cast<int>(size), 1, buffer.data(), ip.data(), w.data());
    for (std::size_t k = 0; k < half; ++k) {
        re[k] = static_cast<float>(buffer[2 * k]);
        im[k] = -static_cast<float>(buffer[2 * k + 1]);
    }
    re[half] = -im[0];
    im[0] = 0.0F;
    im[half] = 0.0F;
}

void OouraFFT::ifft(float* data, const float* re, const float* im) {
    if (size == 0) return;
    const std::size_t half = size / 2;
    if (half == 0) {
        data[0] = re[0];
        return;
    }
    for (std::size_t k = 0; k < half; ++k) {
        buffer[2 * k] = static_cast<double>(re[k]);
        buffer[2 * k + 1] = -static_cast<double>(im[k]);
    }
    buffer[1] = static_cast<double>(re[half]);
    rdft(static_cast<int>(size), -1, buffer.data(), ip.data(), w.data());
    const double scale = 2.0 / static_cast<double>(size);
    for (std::size_t j = 0; j < size; ++j) data[j] = static_cast<float>(buffer[j] * scale);
}

void OouraFFT::rdft(int n, int isgn, double* a, int* ip, double* w) {
    const double* const half_cosines = w + ip[0];
    int* const work = ip + kTableSizes;
    if (isgn >= 0) {
        bitrv2(n, work, a);
        cftfsub(n, a, w);
        spectrumOfPairsToReal(a, static_cast<std::size_t>(n), half_cosines);
    } else {
        spectrumOfRealToPairs(a, static_cast<std::size_t>(n), half_cosines);
        bitrv2(n, work, a);
        cftbsub(n, a, w);
    }
}

void OouraFFT::bitrv2(int n, int* ip, double* a) {
    reversePointOrder(a, pointsOf(n), ip);
}

void OouraFFT::cftfsub(int n, double* a, double* w) {
    int l = 2;
    for (; 4 * l <= n; l *= 4) l == 2 ? cft1st(n, a, w) : cftmdl(n, l, a, w);
    finishTransform(n, l, a);
}

void OouraFFT::cftbsub(int n, double* a, double* w) {
    int l = 2;
    for (; 4 * l <= n; l *= 4) radix4Pass(a, pointsOf(n), pointsOf(l), w, Turn::kBackward);
    finishTransform(n, l, a);
}

void OouraFFT::cft1st(int n, double* a, double* w) {
    radix4Pass(a, pointsOf(n), 1, w, Turn::kForward);
}

void OouraFFT::cftmdl(int n, int l, double* a, double* w) {
    radix4Pass(a, pointsOf(n), pointsOf(l), w, Turn::kForward);
}

}  // namespace details

AudioFFT::AudioFFT() : impl(std::make_unique<details::OouraFFT>()) {}

AudioFFT::~AudioFFT() = default;

void AudioFFT::init(std::size_t length) {
    impl->init(length);
}

void AudioFFT::fft(const float* data, float* re, float* im) {
    impl->fft(data, re, im);
}

void AudioFFT::ifft(float* data, const float* re, const float* im) {
    impl->ifft(data, re, im);
}

std::size_t AudioFFT::ComplexSize(std::size_t length) {
    return length / 2 + 1;
}

}  // namespace audiofft
