#include "input/decode_ahead.h"

#include <atomic>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "support/clip.h"

namespace {

using zel_monitor::DecodeAhead;
using zel_monitor::MediaError;
using zel_monitor::MediaSource;
using zel_monitor::timeOf;

/// 25 frames of 6144 bytes, and sound. A file, since libavfilter leaks what a graph holds that is not read to
/// its end.
class DecodeAheadTest : public ::testing::Test {
  protected:
    DecodeAheadTest() {
        support::ffmpeg(
            "-f lavfi -i testsrc2=s=64x64:d=1 -f lavfi -i sine=d=1 -c:v rawvideo -pix_fmt yuv420p", clip_);
    }

    MediaSource open(const std::atomic<bool>* interrupted = nullptr) const {
        return MediaSource(clip_, {.interrupted = interrupted});
    }

    const support::ScratchDir scratch_;
    const std::string clip_ = scratch_.file("a.nut");
};

template <typename Source>
std::vector<double> timesOf(Source& source) {
    std::vector<double> times_s;
    while (const auto item = source.next()) {
        times_s.push_back(timeOf(*item));
    }
    return times_s;
}

TEST_F(DecodeAheadTest, GivesTheSameItemsHoweverLittleItMayHold) {
    MediaSource plain = open();
    const auto expected_s = timesOf(plain);
    for (const size_t most_bytes : {size_t{1}, size_t{20'000}, size_t{10} << 20}) {
        MediaSource source = open();
        DecodeAhead ahead(source, most_bytes);
        EXPECT_EQ(timesOf(ahead), expected_s);
        EXPECT_FALSE(ahead.next().has_value());
    }
}

TEST_F(DecodeAheadTest, HoldsNoMoreThanItMay) {
    std::atomic<bool> interrupted = false;
    MediaSource source = open(&interrupted);
    DecodeAhead ahead(source, 20'000);
    ASSERT_TRUE(ahead.next().has_value());
    interrupted = true;
    int bytes = 0;
    while (const auto item = ahead.next()) {
        const auto* const sound = std::get_if<zel_monitor::AudioFrame>(&*item);
        bytes += sound != nullptr ? sound->samples * 2 : 6144;
    }
    EXPECT_LE(bytes, 20'000 + 6144) << "one more was at hand";
}

TEST_F(DecodeAheadTest, ThrowsWhatTheSourceThrewAfterEverythingBefore) {
    const std::string noise = scratch_.file("a.mkv");
    support::ffmpeg("-f lavfi -i testsrc2=s=64x64:d=1 -c:v libx264 -bsf:v noise=amount=1", noise);
    MediaSource source(noise);
    DecodeAhead ahead(source);
    EXPECT_THROW(timesOf(ahead), MediaError);
    EXPECT_FALSE(ahead.next().has_value());
}

TEST_F(DecodeAheadTest, CanBeGivenUpWhileItWaitsForRoom) {
    MediaSource source = open();
    for (int i = 0; i < 5; ++i) {
        DecodeAhead ahead(source, 1);
        EXPECT_TRUE(ahead.next().has_value());
    }
}

}  // namespace
