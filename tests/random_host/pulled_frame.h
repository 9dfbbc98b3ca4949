#pragma once

#include "random_host/filter_model.h"

namespace test {

/** @return true if `frame` is as it was when it was pushed. */
bool isUntouched(Vorlin::IQFFrame* frame, const FrameNote& note);

/** Checks a frame that an effect processed: its description, its properties, and samples within its buffers.
 *  @throws BrokenPromise */
void checkProcessed(Vorlin::IQFFrame* frame, const FrameNote& note, const Shape& shape);

/** Checks that a buffer that the host shares with the frame still has its bytes.
 *  @throws BrokenPromise */
void checkShared(const FrameNote& note);

}  // namespace test
