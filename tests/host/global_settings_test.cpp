#include "vorlin/global_settings.h"

#include <gtest/gtest.h>

namespace Vorlin {
namespace {

TEST(GlobalSettings, ReturnsTheLastValueSetAndOtherwiseAnEmptyString) {
    auto& settings = globalSettings::GetInstance();
    EXPECT_EQ(settings.getProperty("test.never.set"), "");
    settings.setProperty("test.one", "1");
    EXPECT_EQ(settings.getProperty("test.one"), "1");
    settings.setProperty("test.one", "2");
    EXPECT_EQ(globalSettings::GetInstance().getProperty("test.one"), "2");
}

}  // namespace
}  // namespace Vorlin
