#pragma once

struct AVFrame;

namespace Vorlin {

/** What a frame carries beside its samples (timestamps, duration, side data, metadata), kept while the frame
 * goes through a graph that rescales or rebuilds them. */
class FrameProperties {
  public:
    FrameProperties() = default;
    FrameProperties(const FrameProperties&) = delete;
    FrameProperties& operator=(const FrameProperties&) = delete;
    ~FrameProperties();

    /** Keep the properties of `frame`. @return 0 or a negative AVERROR. */
    int save(const AVFrame* frame);
    /** Give `frame` exactly the properties that were saved. @return 0 or a negative AVERROR. */
    int restore(AVFrame* frame) const;

  private:
    AVFrame* mSaved = nullptr;
};

}  // namespace Vorlin
