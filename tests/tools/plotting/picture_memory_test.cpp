// Pictures without memory.
#include <gtest/gtest.h>

#include <new>
#include <string>

#include "failing_calls/failing_memory.h"
#include "picture.h"

namespace {

using sonivex_plotting::Canvas;
using sonivex_plotting::pictureFile;
using sonivex_plotting::PictureFormat;

// The drawing library numbers what it draws, and goes on from picture to picture.
std::string drawnWithoutNumbers() {
    std::string file = pictureFile(PictureFormat::Svg, 100, 100, "title", [](Canvas& canvas) {
        canvas.fill({10.0, 10.0, 5.0, 5.0}, sonivex_plotting::kBlue);
    });
    std::erase_if(file, [](char letter) { return letter >= '0' && letter <= '9'; });
    return file;
}

TEST(PictureWithoutMemory, IsWholeOrNone) {
    const std::string whole = drawnWithoutNumbers();
    int failures = 0;
    for (int first = 1;; ++first) {
        SCOPED_TRACE("request " + std::to_string(first));
        test::FailingMemory memory(first, test::FailingMemory::Which::kOne);
        try {
            EXPECT_EQ(memory.during(drawnWithoutNumbers), whole);
        } catch (const std::bad_alloc&) {
            ++failures;
        }
        if (!memory.hasFailed()) break;
    }
    EXPECT_GT(failures, 0);
}

}  // namespace
