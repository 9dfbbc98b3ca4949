#define HWY_TARGET_INCLUDE "tiled_spectra.cpp"
#include "compile_for_each_target.h"

#include "tiled_spectra.h"

HWY_BEFORE_NAMESPACE();
namespace compare::HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

// Computes both ears at once. Eight sums stay in registers while X and H stream by; each part of a result has
// two sums, so that no product waits for the previous one.
void sumOfProducts(const Tile* x, const Tile* h, std::size_t tiles, std::size_t channels,
                   std::size_t partitions, std::size_t newest, Tile* y) {
    const hn::CappedTag<float, kTileBins> d;
    using Lanes = hn::Vec<decltype(d)>;
    const std::size_t lanes = hn::Lanes(d);
    for (std::size_t tile = 0; tile < tiles; ++tile) {
        for (std::size_t bin = 0; bin < kTileBins; bin += lanes) {
            Lanes left_re_re = hn::Zero(d);
            Lanes left_im_im = hn::Zero(d);
            Lanes left_re_im = hn::Zero(d);
            Lanes left_im_re = hn::Zero(d);
            Lanes right_re_re = hn::Zero(d);
            Lanes right_im_im = hn::Zero(d);
            Lanes right_re_im = hn::Zero(d);
            Lanes right_im_re = hn::Zero(d);
            for (std::size_t channel = 0; channel < channels; ++channel) {
                const Tile* const history = x + (tile * channels + channel) * 2 * partitions + newest;
                const Tile* const response = h + (tile * channels + channel) * partitions * 2;
                for (std::size_t partition = 0; partition < partitions; ++partition) {
                    const Tile& left = response[2 * partition];
                    const Tile& right = response[2 * partition + 1];
                    const Lanes re = hn::Load(d, history[partition].re + bin);
                    const Lanes im = hn::Load(d, history[partition].im + bin);
                    const Lanes h_left_re = hn::Load(d, left.re + bin);
                    const Lanes h_left_im = hn::Load(d, left.im + bin);
                    const Lanes h_right_re = hn::Load(d, right.re + bin);
                    const Lanes h_right_im = hn::Load(d, right.im + bin);
                    left_re_re = hn::MulAdd(re, h_left_re, left_re_re);
                    left_im_im = hn::MulAdd(im, h_left_im, left_im_im);
                    left_re_im = hn::MulAdd(re, h_left_im, left_re_im);
                    left_im_re = hn::MulAdd(im, h_left_re, left_im_re);
                    right_re_re = hn::MulAdd(re, h_right_re, right_re_re);
                    right_im_im = hn::MulAdd(im, h_right_im, right_im_im);
                    right_re_im = hn::MulAdd(re, h_right_im, right_re_im);
                    right_im_re = hn::MulAdd(im, h_right_re, right_im_re);
                }
            }
            hn::Store(hn::Sub(left_re_re, left_im_im), d, y[2 * tile].re + bin);
            hn::Store(hn::Add(left_re_im, left_im_re), d, y[2 * tile].im + bin);
            hn::Store(hn::Sub(right_re_re, right_im_im), d, y[2 * tile + 1].re + bin);
            hn::Store(hn::Add(right_re_im, right_im_re), d, y[2 * tile + 1].im + bin);
        }
    }
}

}  // namespace compare::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace compare {

HWY_EXPORT(sumOfProducts);

void sumOfProducts(const Tile* x, const Tile* h, std::size_t tiles, std::size_t channels,
                   std::size_t partitions, std::size_t newest, Tile* y) {
    HWY_DYNAMIC_DISPATCH(sumOfProducts)(x, h, tiles, channels, partitions, newest, y);
}

}  // namespace compare
#endif
