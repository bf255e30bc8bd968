#include <string_view>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "input/media_source.h"
#include "unit/tools/input/clips.h"

namespace {

using clips::kSmallVideo;
using clips::kTone;
using support::ffmpeg;
using support::ScratchDir;
using zel_monitor::MediaSource;

TEST(DeclaredLength, IsThatOfTheChosenStreams) {
    const ScratchDir scratch;
    ffmpeg(kSmallVideo + "-c:v mpeg4 -output_ts_offset 30", scratch.file("late.mkv"));
    EXPECT_NEAR(2.0, MediaSource(scratch.file("late.mkv")).facts().duration.value(), 0.01);
    for (const std::string name : {"two.mkv", "two.mp4"}) {
        ffmpeg(kSmallVideo + kTone + "-f lavfi -i sine=880:d=9 -map 0 -map 1 -map 2 -c:v mpeg4 -c:a aac " +
                   "-disposition:a:0 default -disposition:a:1 0",
               scratch.file(name));
        EXPECT_NEAR(2.0, MediaSource(scratch.file(name)).facts().duration.value(), 0.05) << name;
    }
}

TEST(DeclaredLength, IsAnEstimateWhereOnlyTimestampsTell) {
    const ScratchDir scratch;
    ffmpeg(kSmallVideo + "-c:v mpeg2video -bf 0 -bsf:v 'setts=ts=TS+eq(N\\,49)*90000*60'",
           scratch.file("wild.ts"));
    MediaSource wild(scratch.file("wild.ts"));
    EXPECT_TRUE(wild.facts().duration_estimated);
    ffmpeg(kSmallVideo + "-c:v mpeg4", scratch.file("plain.mkv"));
    EXPECT_FALSE(MediaSource(scratch.file("plain.mkv")).facts().duration_estimated);
}

TEST(DeclaredLength, BelievesTheNewerOfTwoDurationTags) {
    const ScratchDir scratch;
    support::writeFile(scratch.file("late.srt"), [] {
        const std::string_view text = "1\n00:00:01,000 --> 00:00:02,000\nNothing to see\n";
        return std::vector<char>(text.begin(), text.end());
    }());
    ffmpeg(kSmallVideo + "-i '" + scratch.file("late.srt") +
               "' -c:v mpeg4 -metadata:s:v DURATION-eng=00:00:02.000000000",
           scratch.file("tagged.mkv"));
    ffmpeg("-i '" + scratch.file("tagged.mkv") + "' -map 0 -t 1 -c copy", scratch.file("cut.mkv"));
    EXPECT_NEAR(MediaSource(scratch.file("cut.mkv")).facts().duration.value(), 1.0, 0.1);
}

}  // namespace
