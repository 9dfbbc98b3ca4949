// Convolution by its definition, in double: y[n] = sum over k of in[n - k] * response[k].
#pragma once

#include <cstddef>
#include <vector>

namespace model {

/** @return the first in.size() samples of the convolution */
inline std::vector<double> convolve(const std::vector<float>& in, const std::vector<float>& response) {
    std::vector<double> y(in.size() + response.size(), 0.0);
    for (std::size_t n = 0; n < in.size(); ++n) {
        const auto x = static_cast<double>(in[n]);
        if (x == 0) continue;
        for (std::size_t k = 0; k < response.size(); ++k) y[n + k] += x * static_cast<double>(response[k]);
    }
    y.resize(in.size());
    return y;
}

}  // namespace model
