#include "vorlin/filter.h"

namespace Vorlin {

IFilter::~IFilter() = default;

IAudioFilter::IAudioFilter(const IQFFrame::audioInfo& src, const IQFFrame::audioInfo& dst, bool active)
    : mSource(src), mDestination(dst), mActive(active) {}

IAudioFilter::~IAudioFilter() = default;

bool IAudioFilter::isInvalid() {
    return false;
}

void IAudioFilter::setDCA(const EventCallback& callback) {
    mEventCallback = callback;
}

}  // namespace Vorlin
