#include "media_file.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

extern "C" {
#include <libavutil/mem.h>
}

#include <climits>
#include <string>

#include "failure.h"
#include "support/processes/temporary_folder.h"

namespace {

using namespace sonivex_tool;
using testing::HasSubstr;

// Makes FFmpeg refuse larger blocks of memory.
class LargestBlock {
  public:
    explicit LargestBlock(size_t bytes) { av_max_alloc(bytes); }
    ~LargestBlock() { av_max_alloc(INT_MAX); }
    LargestBlock(const LargestBlock&) = delete;
    LargestBlock& operator=(const LargestBlock&) = delete;
};

TEST(MediaFile, SaysThatAFileMayBeDamagedWhoseHeaderAsksForMoreMemoryThanThereIs) {
    const test::TemporaryFolder folder;
    const std::string path = folder.file("a.flac");
    // A FLAC file whose first block is a picture of 16 MiB.
    test::writeFile(path, std::string("fLaC\x86\xFF\xFF\xFF") + std::string(100, '\0'));
    const LargestBlock limit(size_t{4} << 20U);
    try {
        const MediaFile file(path);
        FAIL() << "the file opens";
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.exitCode(), ExitCode::InputNotReadable);
        EXPECT_THAT(failure.what(),
                    HasSubstr("a.flac\": it asks for more memory than there is; it may be damaged"));
    }
}

}  // namespace
