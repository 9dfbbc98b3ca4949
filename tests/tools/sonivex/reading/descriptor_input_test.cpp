#include "descriptor_input.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <string>

#include "support/processes/temporary_folder.h"

namespace {

using namespace sonivex_tool;
using Closing = DescriptorInput::Closing;

class DescriptorInputTest : public testing::Test {
  protected:
    DescriptorInputTest() { test::writeFile(path_, "headtail"); }

    static std::string read(DescriptorInput& input, int bytes) {
        std::string text(static_cast<size_t>(bytes), '\0');
        const int count = avio_read(input.io(), reinterpret_cast<unsigned char*>(text.data()), bytes);
        return text.substr(0, count > 0 ? static_cast<size_t>(count) : 0);
    }

    static int errorOfReading(DescriptorInput& input) {
        unsigned char byte = 0;
        return avio_read(input.io(), &byte, 1);
    }

    test::TemporaryFolder folder_;
    std::string path_ = folder_.file("a");
    std::atomic<bool> is_abandoned_ = false;
};

TEST_F(DescriptorInputTest, RewindsToWhereTheDescriptorStoodAtFirst) {
    const int descriptor = open(path_.c_str(), O_RDONLY | O_CLOEXEC);
    ASSERT_EQ(lseek(descriptor, 4, SEEK_SET), 4);
    {
        DescriptorInput input(descriptor, Closing::Leave, is_abandoned_);
        EXPECT_EQ(read(input, 4), "tail");
        input.rewind();
    }
    DescriptorInput again(descriptor, Closing::Close, is_abandoned_);
    EXPECT_EQ(read(again, 8), "tail");
}

TEST_F(DescriptorInputTest, TellsTheErrorOfARead) {
    DescriptorInput input(open(path_.c_str(), O_WRONLY | O_CLOEXEC), Closing::Close, is_abandoned_);
    EXPECT_EQ(errorOfReading(input), AVERROR(EBADF));
}

// The system refuses to wait for more descriptors than a process may have.
TEST_F(DescriptorInputTest, TellsTheErrorOfAWait) {
    DescriptorInput input(open(path_.c_str(), O_RDONLY | O_CLOEXEC), Closing::Close, is_abandoned_);
    rlimit original{};
    ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &original), 0);
    rlimit none = original;
    none.rlim_cur = 0;
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &none), 0);
    const int error = errorOfReading(input);
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &original), 0);
    EXPECT_EQ(error, AVERROR(EINVAL));
}

}  // namespace
