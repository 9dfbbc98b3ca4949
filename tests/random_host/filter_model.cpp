#include "random_host/filter_model.h"

#include <algorithm>
#include <bit>

#include "random_host/promise.h"
#include "vorlin/av_compat.h"

namespace test {

namespace {

using Kind = FrameNote::Kind;

bool isSampleFormat(int format) {
    return format >= 0 && format < AV_SAMPLE_FMT_NB;
}

}  // namespace

void FilterModel::flush() {
    waiting_.clear();
    finished_.clear();
    graph_ = Graph::kNone;
    format_ = -1;
    last_format_.reset();
}

FilterModel::Finished FilterModel::pull() {
    const Finished oldest = finished_.front();
    finished_.pop_front();
    return oldest;
}

void FilterModel::work() {
    while (!waiting_.empty() && finished_.size() <= 1) {
        const FrameNote& note = *waiting_.front();
        waiting_.pop_front();
        const bool is_looked_at = note.kind != Kind::kNull && !is_invalid_;
        const ModelEffect effect = is_looked_at ? effectFor(note.info) : ModelEffect::kNone;
        Way way = follow(note, effect);
        if (way == Way::kProcessed && effect == ModelEffect::kDialogue &&
            note.record->fate() == Fate::kRefusedByDialogue) {
            way = Way::kGivenUp;
        }
        const bool is_lost = note.record && note.record->isGivenUp();
        promise(way == Way::kGivenUp || !is_lost,
                "a frame that the filter can pass on or process is not lost");
        promise(way != Way::kGivenUp || is_lost, "a frame that cannot be processed is given up");
        if (way == Way::kGivenUp) return;
        Finished finished{.way = way, .shape = {}};
        if (way == Way::kProcessed) {
            finished.shape.channels = effect == ModelEffect::kSurround ? 2 : note.channels;
            if (graph_ == Graph::kKnown)
                finished.shape.format = isSampleFormat(format_) ? format_ : AV_SAMPLE_FMT_S16;
        }
        finished_.push_back(finished);
        if (way == Way::kUntouched) return;
    }
}

FilterModel::Stream FilterModel::streamOf(const FrameNote& note) {
    const std::uint64_t mask = note.info.channel_layout;
    return {note.info.format, note.info.channels, note.info.sample_rate,
            mask != 0 ? mask : Vorlin::av::defaultLayoutMask(note.info.channels)};
}

// @return how the frame left. A way that the interface leaves open is what the record of the frame tells.
Way FilterModel::follow(const FrameNote& note, ModelEffect effect) {
    if (note.kind == Kind::kNull) return Way::kUntouched;
    if (format_ == -1) format_ = note.info.format;
    if (effect == ModelEffect::kNone) return Way::kUntouched;
    if (note.kind == Kind::kWithSamples && !note.is_honest) return Way::kGivenUp;

    const bool was_given_up = note.record->isGivenUp();
    const Way kept = note.kind == Kind::kWithSamples ? Way::kProcessed : Way::kUntouched;
    if (graph_ == Graph::kUnclear) return was_given_up ? Way::kGivenUp : kept;
    if (graph_ == Graph::kNone) return followStart(note, was_given_up);
    if (note.kind == Kind::kWithoutSamples) return Way::kUntouched;
    return streamOf(note) == stream_ ? Way::kProcessed : Way::kGivenUp;
}

// Follows a frame for whose stream the filter makes a graph.
Way FilterModel::followStart(const FrameNote& note, bool was_given_up) {
    if (last_format_ && *last_format_ != note.info.format) format_ = note.info.format;
    last_format_ = note.info.format;
    stream_ = streamOf(note);
    if (note.kind == Kind::kWithSamples) {
        if (was_given_up && !note.has_common_layout) return Way::kGivenUp;
        graph_ = Graph::kKnown;
        return Way::kProcessed;
    }
    // Nobody has compared the description with samples.
    if (!isSampleFormat(note.info.format)) return Way::kGivenUp;
    const bool is_default = stream_.mask == Vorlin::av::defaultLayoutMask(note.info.channels);
    if (is_default) {
        graph_ = Graph::kKnown;
        return Way::kUntouched;
    }
    if (was_given_up) return Way::kGivenUp;
    graph_ = Graph::kUnclear;
    return Way::kUntouched;
}

}  // namespace test
