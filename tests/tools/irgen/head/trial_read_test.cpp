#include "trial_read.h"

#include <gtest/gtest.h>

#include <string>

#include "head_measurements.h"
#include "tools/irgen/heads/synthetic_head.h"

namespace {

using namespace sonivex_irgen;

TEST(IrgenTrialRead, RefusesAFileOfWhichReadingDoesNotEnd) {
    try {
        tryReading(SONIVEX_ENDLESS_SOFA, 1);
        ADD_FAILURE() << "accepted";
    } catch (const UnusableHead& reason) {
        EXPECT_STREQ(reason.what(),
                     "cannot be read as a SOFA file: it is damaged, and reading it does not end");
    }
}

TEST(IrgenTrialRead, LeavesEveryOtherRefusalToTheReader) {
    EXPECT_NO_THROW(tryReading("/nonexistent/x.sofa"));
    EXPECT_NO_THROW(tryReading("/dev/null"));
}

TEST(IrgenTrialRead, AcceptsThePackagedFile) {
    SONIVEX_NEED_PACKAGED_HEAD();
    EXPECT_NO_THROW(tryReading(SONIVEX_DEFAULT_SOFA));
}

}  // namespace
