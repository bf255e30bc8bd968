#include "input/decode_ahead.h"

#include <vector>

#include <gtest/gtest.h>

#include "support/clip.h"

namespace {

using zel_monitor::DecodeAhead;
using zel_monitor::MediaError;
using zel_monitor::MediaSource;
using zel_monitor::timeOf;

/// 25 pictures of 6144 bytes, and sound.
MediaSource graph(const std::atomic<bool>* interrupted = nullptr) {
    return MediaSource("testsrc2=s=64x64:d=1[out0];sine=d=1[out1]",
                       {.format = "lavfi", .interrupted = interrupted});
}

template <typename Source>
std::vector<double> timesOf(Source& source) {
    std::vector<double> times_s;
    while (const auto item = source.next()) {
        times_s.push_back(timeOf(*item));
    }
    return times_s;
}

TEST(DecodeAhead, GivesTheSameItemsHoweverLittleItMayHold) {
    MediaSource plain = graph();
    const auto expected_s = timesOf(plain);
    for (const size_t most_bytes : {size_t{1}, size_t{20'000}, size_t{10} << 20}) {
        MediaSource source = graph();
        DecodeAhead ahead(source, most_bytes);
        EXPECT_EQ(timesOf(ahead), expected_s);
        EXPECT_FALSE(ahead.next().has_value());
    }
}

TEST(DecodeAhead, HoldsNoMoreThanItMay) {
    std::atomic<bool> interrupted = false;
    MediaSource source = graph(&interrupted);
    DecodeAhead ahead(source, 20'000);
    ASSERT_TRUE(ahead.next().has_value());
    interrupted = true;
    int bytes = 0;
    while (const auto item = ahead.next()) {
        const auto* const sound = std::get_if<zel_monitor::Sound>(&*item);
        bytes += sound != nullptr ? sound->samples * 2 : 6144;
    }
    EXPECT_LE(bytes, 20'000 + 6144) << "one more was at hand";
}

TEST(DecodeAhead, ThrowsWhatTheSourceThrewAfterEverythingBefore) {
    const support::ScratchDir scratch;
    support::ffmpeg("-f lavfi -i testsrc2=s=64x64:d=1 -c:v libx264 -bsf:v noise=amount=1",
                    scratch.file("a.mkv"));
    MediaSource source(scratch.file("a.mkv"));
    DecodeAhead ahead(source);
    EXPECT_THROW(timesOf(ahead), MediaError);
    EXPECT_FALSE(ahead.next().has_value());
}

TEST(DecodeAhead, CanBeGivenUpWhileItWaitsForRoom) {
    MediaSource source = graph();
    for (int i = 0; i < 5; ++i) {
        DecodeAhead ahead(source, 1);
        EXPECT_TRUE(ahead.next().has_value());
    }
}

}  // namespace
