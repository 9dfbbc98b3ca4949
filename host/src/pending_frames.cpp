#include "pending_frames.h"

#include <algorithm>
#include <utility>

#include "sample_line.h"
#include "stream_times.h"
#include "vorlin/av_compat.h"
#include "vorlin/av_frame.h"
#include "wrapped_frame.h"

extern "C" {
#include <libavutil/error.h>
#include <libavutil/samplefmt.h>
}

namespace Vorlin {

namespace {

bool hasFormatOf(const AVFrame& a, const AVFrame& b) {
    return a.format == b.format && a.sample_rate == b.sample_rate &&
           av_channel_layout_compare(&a.ch_layout, &b.ch_layout) == 0;
}

}  // namespace

void PendingFrames::add(std::unique_ptr<IQFFrame> frame, AVFrame* samples, int64_t begin,
                        AVRational time_base) {
    mFrames.push_back({std::move(frame), samples, {begin, begin + samples->nb_samples}, time_base});
    if (mFrames.size() == 1) handOutFinished(begin);  // a frame without samples waits for nothing
}

int64_t PendingFrames::end() const {
    return mFrames.empty() ? 0 : mFrames.back().span.end;
}

void PendingFrames::markLost(Span span) {
    const auto is_before = [](const Span& a, const Span& b) { return a.begin < b.begin; };
    mLost.insert(std::upper_bound(mLost.begin(), mLost.end(), span, is_before), span);
}

int PendingFrames::takeError() {
    return std::exchange(mError, 0);
}

void PendingFrames::clear() {
    mFrames.clear();
    mLost.clear();
    mPiece.reset();
    mPieceFrames = 0;
    mError = 0;
}

void PendingFrames::supply(Span span, const AVFrame& source, int offset) {
    while (!mLost.empty() && mLost.front().end <= span.begin) mLost.pop_front();
    for (;;) {
        handOutFinished(span.begin);
        if (mFrames.empty() || mFrames.front().span.begin >= span.end) break;
        Pending& frame = mFrames.front();
        const int64_t begin = std::max(span.begin, frame.span.begin + frame.done);
        const int64_t end = std::min(span.end, frame.span.end);
        if (begin >= end) break;
        if (begin > frame.span.begin + frame.done) finishPiece(frame);
        frame.done = static_cast<int>(begin - frame.span.begin);
        const int frames = static_cast<int>(end - begin);
        if (!append(frame, source, offset + static_cast<int>(begin - span.begin), frames)) finishPiece(frame);
        frame.done += frames;
    }
}

// Hands out the frames that need nothing from `begin` on. What an older frame still lacks is lost.
void PendingFrames::handOutFinished(int64_t begin) {
    while (!mFrames.empty()) {
        Pending& frame = mFrames.front();
        const bool is_complete = frame.done == frame.span.frames();
        if (!is_complete && frame.span.end > begin) return;
        if (frame.span.frames() == 0) {
            mOutput(std::move(frame.frame));
        } else {
            finishPiece(frame);
        }
        mFrames.pop_front();
    }
}

// Copies `frames` samples behind those that the oldest frame has. @return false if they are lost.
bool PendingFrames::append(Pending& frame, const AVFrame& source, int offset, int frames) {
    if (offset + frames > source.nb_samples) return false;
    if (mPiece && !hasFormatOf(*mPiece, source)) finishPiece(frame);
    if (!mPiece) {
        mPiece = makeFrameLike(source, static_cast<int>(frame.span.frames()) - frame.done);
        mPieceBegin = frame.done;
        mPieceFrames = 0;
    }
    if (!mPiece) {
        mError = AVERROR(ENOMEM);
        return false;
    }
    av_samples_copy(mPiece->extended_data, source.extended_data, mPieceFrames, offset, frames,
                    source.ch_layout.nb_channels, static_cast<AVSampleFormat>(source.format));
    mPieceFrames += frames;
    return true;
}

// Hands out the new samples of the oldest frame: in the frame itself if they are all of it.
void PendingFrames::finishPiece(Pending& frame) {
    const OwnedAVFrame piece = std::move(mPiece);
    if (!piece || mPieceFrames == 0 || !frame.frame) return;
    const bool is_whole = mPieceFrames == frame.span.frames();
    piece->nb_samples = mPieceFrames;
    if (av_frame_copy_props(piece.get(), frame.samples) < 0) {
        mError = AVERROR(ENOMEM);
        return;
    }
    if (is_whole) {
        av_frame_unref(frame.samples);
        av_frame_move_ref(frame.samples, piece.get());
        frame.frame->getInfo() = AVQFFrame::describe(frame.samples);
        mOutput(std::move(frame.frame));
        return;
    }
    const int rate_hz = piece->sample_rate;
    const int64_t begin = laterBy(frame.samples->pts, mPieceBegin, rate_hz, frame.time_base);
    const int64_t end = laterBy(frame.samples->pts, mPieceBegin + mPieceFrames, rate_hz, frame.time_base);
    const bool is_known = begin != AV_NOPTS_VALUE && end != AV_NOPTS_VALUE;
    piece->pts = begin;
    av::setFrameDuration(piece.get(), is_known ? end - begin : 0);
    OwnedAVFrame owned(av_frame_alloc());
    if (!owned) {
        mError = AVERROR(ENOMEM);
        return;
    }
    av_frame_move_ref(owned.get(), piece.get());
    mOutput(wrapFrame(std::move(owned)));
}

void PendingFrames::supplyUntouched(int64_t end) {
    int64_t begin = mFrames.empty() ? end : mFrames.front().span.begin;
    for (const Span& lost : mLost) {
        if (lost.end > begin && lost.begin < end) {
            supplyOwn(begin, lost.begin);
            begin = lost.end;
        }
    }
    supplyOwn(begin, end);
    std::erase_if(mLost, [end](const Span& lost) { return lost.end <= end; });
    handOutFinished(end);
}

void PendingFrames::supplyOwn(int64_t begin, int64_t end) {
    handOutFinished(begin);
    while (!mFrames.empty()) {
        Pending& frame = mFrames.front();
        const Span own = frame.span;
        if (own.begin >= end) return;
        const int64_t from = std::max(begin, own.begin + frame.done);
        const int64_t to = std::min(end, own.end);
        if (frame.done == 0 && from == own.begin && to == own.end) {
            mOutput(std::move(frame.frame));
            mFrames.pop_front();
            continue;
        }
        supply({from, to}, *frame.samples, static_cast<int>(from - own.begin));
        if (to == end) return;
    }
}

}  // namespace Vorlin
