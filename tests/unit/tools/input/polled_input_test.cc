#include "input/polled_input.h"

#include <array>
#include <cerrno>
#include <fcntl.h>
#include <numeric>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/clip.h"

namespace {

using testing::ElementsAreArray;
using zel_monitor::FfmpegError;
using zel_monitor::PolledInput;

class NamedPipe : public testing::Test {
  protected:
    void SetUp() override { ASSERT_EQ(mkfifo(path_.c_str(), 0600), 0); }

    const support::ScratchDir scratch_;
    const std::string path_ = scratch_.file("pipe");
    std::atomic<bool> interrupted_ = false;
};

TEST_F(NamedPipe, GivesWhatIsWrittenAndKeepsTheBeginning) {
    PolledInput input = PolledInput::file(path_, &interrupted_);
    std::vector<uint8_t> written(3 * PolledInput::kBeginningBytes / 2);
    std::iota(written.begin(), written.end(), uint8_t{0});
    const int writer = open(path_.c_str(), O_WRONLY);
    std::vector<uint8_t> given(2 * written.size());
    ASSERT_EQ(write(writer, written.data(), 1000), 1000);
    ASSERT_EQ(avio_read(input.context(), given.data(), 1000), 1000);
    ASSERT_GT(write(writer, written.data() + 1000, written.size() - 1000), 0);
    close(writer);
    const int rest = avio_read(input.context(), given.data() + 1000, static_cast<int>(given.size()) - 1000);
    ASSERT_EQ(static_cast<size_t>(rest) + 1000, written.size()) << "then the writer has gone";
    given.resize(written.size());
    EXPECT_EQ(given, written);
    written.resize(PolledInput::kBeginningBytes);
    EXPECT_THAT(input.beginning(), ElementsAreArray(written));
}

TEST_F(NamedPipe, EndsAReadThatNobodyAnswersWhenInterrupted) {
    PolledInput input = PolledInput::file(path_, &interrupted_);
    int result = 0;
    std::thread reader([&] {
        uint8_t byte = 0;
        result = avio_read(input.context(), &byte, 1);
    });
    interrupted_ = true;
    reader.join();
    EXPECT_EQ(result, AVERROR_EXIT);
}

TEST_F(NamedPipe, IsToBePolledUnlikeAFile) {
    support::writeFile(scratch_.file("file"), {'a'});
    EXPECT_TRUE(zel_monitor::mustBePolled(path_));
    EXPECT_TRUE(zel_monitor::mustBePolled("/dev/null"));
    EXPECT_FALSE(zel_monitor::mustBePolled(scratch_.file("file")));
    EXPECT_FALSE(zel_monitor::mustBePolled(scratch_.file("absent")));
    try {
        PolledInput::file(scratch_.file("absent"), nullptr);
        FAIL();
    } catch (const FfmpegError& error) {
        EXPECT_EQ(error.code(), AVERROR(ENOENT));
    }
}

}  // namespace
