#include "dump_name.h"

#include <gtest/gtest.h>

namespace {

using sonivex_tool::parseDumpName;

TEST(DumpName, ParsesThePathOfADumpFileAndRebuildsIt) {
    const auto name = parseDumpName("some/folder/sonivex_surround_input_12345678.pcm");
    ASSERT_TRUE(name.has_value());
    EXPECT_EQ(name->folder, "some/folder/");
    EXPECT_EQ(name->effect, "surround");
    EXPECT_TRUE(name->is_input);
    EXPECT_EQ(name->session, "12345678");
    EXPECT_EQ(name->path(), "some/folder/sonivex_surround_input_12345678.pcm");
    EXPECT_EQ(name->partner().path(), "some/folder/sonivex_surround_output_12345678.pcm");
}

TEST(DumpName, RejectsEveryOtherName) {
    for (const char* path :
         {"", "x.pcm", "sonivex_surround_input_1234567.pcm", "sonivex_surround_input_123456789.pcm",
          "sonivex_reverb_input_12345678.pcm", "sonivex_surround_middle_12345678.pcm",
          "sonivex_surround_input_12345678.wav", "sonivex_surround_input_12345678.pcm/",
          "xsonivex_surround_input_12345678.pcm"}) {
        EXPECT_FALSE(parseDumpName(path).has_value()) << path;
    }
}

}  // namespace
