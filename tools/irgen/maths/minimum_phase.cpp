#include "minimum_phase.h"

#include "exact_math.h"
#include "fft.h"

namespace sonivex_irgen {

std::vector<double> minimumPhaseResponse(const std::vector<double>& magnitude_db, std::size_t taps) {
    const double nepers_per_db = exactLog(10.0) / 20.0;
    const std::size_t half = magnitude_db.size() - 1;
    std::vector<Complex> bins(half + 1);
    for (std::size_t k = 0; k <= half; ++k) bins[k].re = magnitude_db[k] * nepers_per_db;

    // Folding the anticausal half of the cepstrum onto the causal half yields the minimum phase that belongs
    // to the magnitude.
    std::vector<double> cepstrum = realSignal(bins);
    for (std::size_t n = 1; n < half; ++n) cepstrum[n] *= 2.0;
    for (std::size_t n = half + 1; n < 2 * half; ++n) cepstrum[n] = 0.0;

    bins = realSpectrum(cepstrum, 2 * half);
    for (Complex& bin : bins) {
        const double magnitude = exactExp(bin.re);
        bin = {magnitude * exactCos(bin.im), magnitude * exactSin(bin.im)};
    }
    std::vector<double> response = realSignal(bins);
    response.resize(taps);
    const std::size_t fade_start = taps - taps / 2;
    for (std::size_t n = fade_start; n < taps; ++n) {
        response[n] *=
            halfCosineFade(static_cast<double>(n - fade_start) / static_cast<double>(taps - fade_start));
    }
    return response;
}

}  // namespace sonivex_irgen
