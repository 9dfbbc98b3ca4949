#include "media_file.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

extern "C" {
#include <libavutil/mem.h>
}

#include <climits>
#include <filesystem>
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

// Some writers into pipes leave 2^31 bytes as the length, and go on writing.
TEST(MediaFile, ReadsAWavFileOfUnknownLengthBeyondItsPlaceholder) {
    const test::TemporaryFolder folder;
    const std::string path = folder.file("long.wav");
    // 7.1 in 32 bits, 48 kHz; the samples are a hole in the file.
    const unsigned char head[] = {'R', 'I', 'F',  'F',  0x24, 0,   0,   0x80, 'W',  'A', 'V',
                                  'E', 'f', 'm',  't',  ' ',  16,  0,   0,    0,    1,   0,
                                  8,   0,   0x80, 0xBB, 0,    0,   0,   0x70, 0x17, 0,   32,
                                  0,   32,  0,    'd',  'a',  't', 'a', 0,    0,    0,   0x80};
    static_assert(sizeof head == 44);
    test::writeFile(path, std::string(reinterpret_cast<const char*>(head), sizeof head));
    const int64_t audio_bytes = (int64_t{1} << 31) + 32000;
    std::filesystem::resize_file(path, sizeof head + static_cast<uintmax_t>(audio_bytes));
    MediaFile file(path);
    const PacketPtr packet(allocated(av_packet_alloc()));
    int64_t read_bytes = 0;
    while (file.read(*packet)) read_bytes += packet->size;
    EXPECT_EQ(read_bytes, audio_bytes);
    EXPECT_EQ(file.faults().corrupt_packets + file.faults().messages, 0U);
}

}  // namespace
