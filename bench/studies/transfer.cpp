#include "transfer.h"

#include <cmath>

#include "effect_runs.h"

namespace study {
namespace {

double energyOf(const std::vector<Spectrum>& spectra, double low_hz, double high_hz) {
    double sum = 0.0;
    for (const auto& spectrum : spectra) sum += bandEnergy(spectrum, low_hz, high_hz);
    return sum;
}

}  // namespace

Transfer::Transfer(const Channels& in, const test::Pcm& out) {
    for (const Sound& channel : in) in_.push_back(spectrumOf(channel, kRate_hz));
    for (std::size_t ear = 0; ear < 2; ++ear) {
        Sound samples = channelOf(out, 2, ear);
        samples.resize(in.front().size());
        out_.push_back(spectrumOf(samples, kRate_hz));
    }
}

double Transfer::gain_db(double low_hz, double high_hz) const {
    return 10.0 * std::log10(energyOf(out_, low_hz, high_hz) / energyOf(in_, low_hz, high_hz));
}

}  // namespace study
