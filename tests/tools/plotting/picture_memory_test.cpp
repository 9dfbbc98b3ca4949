// Pictures without memory.
#include <gtest/gtest.h>

#include <new>
#include <stdexcept>
#include <string>

#include "element_canvas.h"
#include "failing_calls/failing_memory.h"
#include "picture.h"

namespace {

using sonivex_plotting::Canvas;
using sonivex_plotting::ElementCanvas;
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

// Expects what a function returns with memory, or an exception, whichever of its requests fails.
template <typename Make>
void expectWholeOrNone(const Make& make) {
    const auto whole = make();
    int failures = 0;
    for (int first = 1;; ++first) {
        SCOPED_TRACE("request " + std::to_string(first));
        test::FailingMemory memory(first, test::FailingMemory::Which::kOne);
        try {
            EXPECT_EQ(memory.during(make), whole);
        } catch (const std::bad_alloc&) {
            ++failures;
        }
        if (!memory.hasFailed()) break;
    }
    EXPECT_GT(failures, 0);
}

TEST(PictureWithoutMemory, IsWholeOrNone) {
    expectWholeOrNone(drawnWithoutNumbers);
}

TEST(PictureWithoutMemory, IsWholeOrNoneAsPng) {
    expectWholeOrNone([] {
        try {
            return pictureFile(PictureFormat::Png, 100, 100, "title", [](Canvas& canvas) {
                canvas.fill({10.0, 10.0, 5.0, 5.0}, sonivex_plotting::kBlue);
            });
        } catch (const std::runtime_error& error) {
            // The writer of PNG files reports a lack of memory as any other failure.
            if (std::string(error.what()).find("libpng") == std::string::npos) throw;
            throw std::bad_alloc();
        }
    });
}

// Words are not measured here: the drawing library itself crashes if it finds no memory for a typeface.
TEST(PageElementsWithoutMemory, AreNotBegun) {
    int request = 0;
    for (bool has_failed = true; has_failed; ++request) {
        SCOPED_TRACE("request " + std::to_string(request + 1));
        test::FailingMemory memory(request + 1, test::FailingMemory::Which::kOne);
        bool is_made = false;
        try {
            memory.during([] { return ElementCanvas(); });
            is_made = true;
        } catch (const std::bad_alloc&) {
        }
        has_failed = memory.hasFailed();
        EXPECT_NE(is_made, has_failed);
    }
    EXPECT_GT(request, 1);
}

}  // namespace
