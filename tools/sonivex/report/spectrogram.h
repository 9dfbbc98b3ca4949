#pragma once

#include <complex>
#include <cstddef>
#include <span>
#include <vector>

#include "grey_image.h"
#include "stereo_spectrum.h"

namespace sonivex_tool {

/** The range of a spectrogram. The rows are equally far apart on a logarithmic scale. */
inline constexpr double kLowestRow_hz = 40.0;
inline constexpr double kHighestRow_hz = 20000.0;
inline constexpr double kLowestShown_db = -110.0;  // 0 dB is a sine at full scale in both channels
inline constexpr double kHighestShown_db = -10.0;

/** Measures the power of a stereo sound over time and frequency: Hann windows of 2048 samples, half of which
 *  overlap, and the mean power of both channels. The memory that it takes does not grow with the sound: when
 *  there are too many columns, each two become one of their mean power. */
class SpectrogramMeter {
  public:
    /** @param most_columns an even number; at least half of it are kept of a long sound */
    SpectrogramMeter(int rate_hz, std::size_t most_columns);

    /** Takes samples. @param samples [frames][2] */
    void add(std::span<const float> samples);
    /** Takes the last samples as if silence followed, and returns the image: a column for each stretch of
     *  time, the highest frequency at the top; 0 for kLowestShown_db and less, 255 for kHighestShown_db and
     *  more. */
    sonivex_plotting::GreyImage finish();
    /** Returns the time of one column in seconds, after finish(). */
    double column_s() const;

  private:
    struct Column {
        std::vector<double> powers;  // by row, the lowest frequency first; the sum of the windows
    };

    void analyse();
    void halve();
    double level_db(double power) const;

    int rate_hz_;
    std::size_t most_columns_;
    StereoSpectrum spectrum_;
    std::vector<std::complex<float>>
        samples_;                          // the two channels of the present window, as real and imaginary
    std::vector<std::size_t> first_bins_;  // of each row, and the end of the last
    std::size_t windows_in_column_ = 1;
    std::size_t in_last_ = 1;  // windows in the last column
    std::size_t pending_ = 0;  // samples after the last window
    std::vector<Column> columns_;
};

}  // namespace sonivex_tool
