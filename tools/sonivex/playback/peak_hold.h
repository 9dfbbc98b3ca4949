#pragma once

#include <array>
#include <cstddef>
#include <optional>

namespace sonivex_tool {

/** Finds the highest sample of the last second. */
class PeakHold {
  public:
    explicit PeakHold(int rate_hz) : part_frames_(rate_hz / kParts) {}

    /** Adds frames. @param samples [frames][2] */
    void add(const float* samples, int frames);
    /** Returns the peak in dBFS; missing for digital silence. */
    std::optional<double> peak_dbfs() const;

  private:
    static constexpr int kParts = 10;

    int part_frames_;
    std::array<float, kParts> peaks_{};  // of the last tenths of a second, in a ring
    size_t part_ = 0;
    int frames_in_part_ = 0;
};

}  // namespace sonivex_tool
