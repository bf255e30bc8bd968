#include "input/media_source.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <functional>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/random.h"
#include "unit/tools/input/clips.h"

extern "C" {
#include <libavutil/log.h>
}

namespace {

using clips::broadcast;
using clips::join;
using clips::kPartSeconds;
using clips::kSmallVideo;
using clips::kTone;
using support::ffmpeg;
using support::ScratchDir;
using zel_monitor::AudioFrame;
using zel_monitor::MediaError;
using zel_monitor::MediaOptions;
using zel_monitor::MediaSource;
using zel_monitor::timeOf;
using zel_monitor::VideoFrame;

[[maybe_unused]] const bool kDecodersAreQuiet = (av_log_set_level(AV_LOG_QUIET), true);

struct Collected {
    std::vector<double> frame_times;
    std::map<std::pair<uint32_t, uint32_t>, int> sizes;
    double sound_seconds = 0;
    double latest = -1;
    double worst_step_back = 0;
};

Collected collect(MediaSource& source) {
    Collected all;
    while (const auto item = source.next()) {
        all.worst_step_back = std::max(all.worst_step_back, all.latest - timeOf(*item));
        all.latest = std::max(all.latest, timeOf(*item));
        if (const auto* const frame = std::get_if<VideoFrame>(&*item)) {
            all.frame_times.push_back(frame->time);
            ++all.sizes[{frame->planes.width, frame->planes.height}];
        } else {
            const auto& sound = std::get<AudioFrame>(*item);
            all.sound_seconds += static_cast<double>(sound.samples) / sound.sample_rate;
        }
    }
    return all;
}

TEST(MediaSource, DecodesEveryFrameAndAllSoundInOrderOfTime) {
    const ScratchDir scratch;
    const std::string clip = scratch.file("clip.mp4");
    ffmpeg(kSmallVideo + kTone + "-c:v libx264 -bf 2 -c:a aac", clip);
    MediaSource source(clip);
    EXPECT_EQ("h264", source.facts().video->codec);
    EXPECT_EQ(160, source.facts().video->width);
    EXPECT_DOUBLE_EQ(25.0, source.facts().video->frame_rate);
    EXPECT_EQ("aac", source.facts().audio->codec);
    EXPECT_EQ(44100, source.facts().audio->sample_rate);
    EXPECT_EQ(1, source.facts().audio->channels);
    EXPECT_NEAR(2.0, source.facts().duration.value(), 0.05);

    const Collected all = collect(source);
    ASSERT_EQ(50U, all.frame_times.size());
    for (size_t i = 0; i < 50; ++i) {
        EXPECT_NEAR(static_cast<double>(i) / 25, all.frame_times[i], 1e-3);
    }
    EXPECT_NEAR(2.0, all.sound_seconds, 0.05);
    EXPECT_LT(all.worst_step_back,
              0.05);  // at the start, where an item waits for the second one of its track
    EXPECT_EQ(50U, source.counts().video_frames);
    EXPECT_EQ(0U, source.counts().damaged);
    EXPECT_GT(source.counts().bytes_read, 1000U);
    EXPECT_FALSE(source.next().has_value());
}

TEST(MediaSource, PlacesFramesWithoutTimestampsByTheFrameRate) {
    const ScratchDir scratch;
    const std::string clip = scratch.file("bare.h264");
    ffmpeg(kSmallVideo + "-c:v libx264 -bf 0", clip);
    MediaSource source(clip);
    const Collected all = collect(source);
    ASSERT_EQ(50U, all.frame_times.size());
    EXPECT_NEAR(0.0, all.frame_times.front(), 0.05);
    EXPECT_NEAR(49.0 / 25, all.frame_times.back(), 0.05);
}

TEST(MediaSource, FollowsAChangeOfResolution) {
    const ScratchDir scratch;
    ffmpeg(kSmallVideo + "-c:v libx264", scratch.file("a.ts"));
    ffmpeg("-f lavfi -i testsrc2=s=97x55:r=25:d=1 -c:v libx264 -pix_fmt yuv444p -output_ts_offset 2",
           scratch.file("b.ts"));
    join(scratch.file("a.ts"), scratch.file("b.ts"), scratch.file("both.ts"));
    MediaSource source(scratch.file("both.ts"));
    Collected all = collect(source);
    EXPECT_EQ(50, (all.sizes[{160, 90}]));
    EXPECT_EQ(25, (all.sizes[{96, 54}]));
    EXPECT_NEAR(2.96, all.latest, 0.1);
}

TEST(MediaSource, SkipsAndCountsWhatIsDamaged) {
    const ScratchDir scratch;
    ffmpeg(kSmallVideo + "-c:v mpeg2video -g 5 -b:v 1M", scratch.file("whole.ts"));
    auto bytes = support::readFile(scratch.file("whole.ts"));
    for (size_t i = bytes.size() / 3; i < bytes.size() / 2; i += 7) {
        bytes[i] = static_cast<char>(~bytes[i]);
    }
    support::writeFile(scratch.file("hurt.ts"), bytes);
    MediaSource source(scratch.file("hurt.ts"));
    const Collected all = collect(source);
    EXPECT_GT(all.frame_times.size(), 25U);
    EXPECT_GT(source.counts().damaged, 0U);
    ASSERT_FALSE(source.complaints().empty());
    for (const auto& complaint : source.complaints()) {  // from a third to a half of two seconds
        if (complaint.reason == zel_monitor::ComplaintReason::kSmallGaps) {
            continue;
        }
        EXPECT_GT(complaint.span.start_s, 0.5) << wordsFor(complaint.reason);
        EXPECT_LT(complaint.span.end_s, 1.2) << wordsFor(complaint.reason);
        EXPECT_EQ(complaint.track, ZEL::StreamTrack::kVideo);
    }
}

/// All that comes out of each track of a file, and what is said of it.
std::vector<std::string> everythingIn(const std::string& path, const MediaOptions& options) {
    MediaSource source(path, options);
    std::vector<std::string> frames;
    std::vector<std::string> all;
    while (const auto item = source.next()) {
        std::string content;
        const bool is_video = trackOf(*item) == ZEL::StreamTrack::kVideo;
        if (const auto* const frame = std::get_if<VideoFrame>(&*item)) {
            for (uint32_t row = 0; row < frame->planes.height; ++row) {
                content.append(
                    reinterpret_cast<const char*>(frame->planes.data[0] + row * frame->planes.stride[0]),
                    frame->planes.width);
            }
        } else {
            const auto& sound = std::get<AudioFrame>(*item);
            content.append(reinterpret_cast<const char*>(sound.data),
                           sizeof(int16_t) * static_cast<size_t>(sound.samples * sound.channels));
        }
        (is_video ? frames : all)
            .push_back(std::to_string(timeOf(*item)) + ' ' +
                       std::to_string(std::hash<std::string>()(content)));
    }
    all.insert(all.end(), frames.begin(), frames.end());
    for (const auto& complaint : source.complaints()) {
        all.push_back(std::to_string(complaint.span.start_s) + ' ' + std::string(wordsFor(complaint.reason)) +
                      ' ' + std::to_string(complaint.count) + ' ' + std::to_string(complaint.share));
    }
    return all;
}

TEST(MediaSource, GivesTheSameEveryTimeWhateverTheNumberOfThreads) {
    const ScratchDir scratch;
    ffmpeg("-f lavfi -i testsrc2=s=320x180:r=25:d=4 " + kTone + "-c:v libx264 -b:v 300k -c:a mp2",
           scratch.file("h264.ts"));
    ffmpeg("-f lavfi -i testsrc2=s=320x180:r=25:d=4 -c:v mpeg4 -g 50", scratch.file("mpeg4.mkv"));
    ffmpeg("-f lavfi -i testsrc2=s=64x64:r=1:d=30 -f lavfi -i sine=d=30 -c:v libx264 -c:a libopus",
           scratch.file("slow.mkv"));
    support::Random random(3);
    for (const std::string name : {"h264.ts", "mpeg4.mkv", "slow.mkv"}) {
        if (name != "slow.mkv") {
            auto bytes = support::readFile(scratch.file(name));
            for (int i = 0; i < 20; ++i) {
                bytes[bytes.size() / 3 + random.next() % (bytes.size() / 2)] ^= 4;
            }
            support::writeFile(scratch.file(name), bytes);
        }
        const auto first = everythingIn(scratch.file(name), {.threads = 1});
        EXPECT_GT(first.size(), 30U);
        for (int run = 0; run < 20; ++run) {
            const int threads = std::array{1, 2, 4, 16}[static_cast<size_t>(run % 4)];
            EXPECT_EQ(first, everythingIn(scratch.file(name), {.threads = threads}))
                << name << " with " << threads;
        }
    }
}

TEST(MediaSource, DeliversWhatATruncatedFileStillHolds) {
    const ScratchDir scratch;
    ffmpeg(kSmallVideo + "-c:v libx264 -movflags +faststart", scratch.file("whole.mp4"));
    auto bytes = support::readFile(scratch.file("whole.mp4"));
    bytes.resize(bytes.size() / 2);
    support::writeFile(scratch.file("cut.mp4"), bytes);
    MediaSource source(scratch.file("cut.mp4"));
    const Collected all = collect(source);
    EXPECT_GT(all.frame_times.size(), 5U);
    EXPECT_LT(all.latest, source.facts().duration.value() - 0.5);
    EXPECT_GT(source.counts().damaged, 0U);
}

TEST(MediaSource, CountsTheBytesOfPlaylists) {
    const ScratchDir scratch;
    ffmpeg(kSmallVideo + "-c:v mpeg2video -f hls", scratch.file("list.m3u8"));
    MediaSource source(scratch.file("list.m3u8"));
    collect(source);
    EXPECT_GT(source.counts().bytes_read, 10'000U);
}

TEST(MediaSource, GoesOnWithTheStreamsThatTakeOver) {
    const ScratchDir scratch;
    broadcast("-c:v mpeg2video -c:a mp2", 0x100, scratch.file("a.ts"));
    for (const std::string codecs : {"-c:v mpeg2video -c:a mp2", "-c:v mpeg2video -c:a ac3"}) {
        broadcast(codecs, 0x200, scratch.file("b.ts"));
        join(scratch.file("a.ts"), scratch.file("b.ts"), scratch.file("ab.ts"));
        join(scratch.file("ab.ts"), scratch.file("a.ts"), scratch.file("aba.ts"));
        for (const auto& [name, parts] : {std::pair("ab.ts", 2), std::pair("aba.ts", 3)}) {
            MediaSource source(scratch.file(name));
            const Collected all = collect(source);
            // The last frame and some sound of a stream come only when the next ones have been taken.
            const double seconds = kPartSeconds * parts;
            EXPECT_NEAR(25 * seconds, static_cast<double>(all.frame_times.size()), 2.0 * parts) << name;
            EXPECT_NEAR(seconds, all.sound_seconds, 0.2 * parts) << name;
            EXPECT_EQ(source.shortfall(), std::nullopt) << name;
        }
    }
}

TEST(MediaSource, LeavesTracksThatRunBesideTheChosenOneAlone) {
    const ScratchDir scratch;
    ffmpeg("-f lavfi -i testsrc2=s=160x90:r=25:d=6 " + kTone +
               "-f lavfi -i sine=880:d=6 -map 0 -map 1 -map 2 -c:v mpeg2video -c:a mp2",
           scratch.file("two.ts"));
    MediaSource source(scratch.file("two.ts"));
    EXPECT_NEAR(2.0, collect(source).sound_seconds, 0.1);
    EXPECT_EQ(source.shortfall(), std::nullopt);

    const auto languages = [&](const std::string& seconds, const std::string& arguments, const char* name) {
        ffmpeg("-f lavfi -i testsrc2=s=160x90:r=25:d=" + seconds + " -f lavfi -i sine=440:r=16000:d=" +
                   seconds + " -f lavfi -i sine=880:r=16000:d=" + seconds +
                   " -map 0 -map 1 -map 2 -c:v mpeg2video " + arguments,
               scratch.file(name));
        MediaSource both(scratch.file(name));
        EXPECT_NEAR(std::stod(seconds), collect(both).sound_seconds, 0.2) << name;
        EXPECT_EQ(both.shortfall(), std::nullopt) << name;
    };
    languages("20", "-c:a mp2 -b:a 8k -f vob", "in_long_pieces.vob");
    languages("0.2", "-c:a aac", "of_one_piece_each.ts");
    languages("0.1", "-c:a aac", "of_one_small_piece_each.ts");
}

TEST(MediaSource, TakesFramesAndSoundOfOneProgramme) {
    const ScratchDir scratch;
    const std::string streams = kSmallVideo + kSmallVideo + "-f lavfi -i sine=880:d=4 " + kTone +
                                "-map 0 -map 1 -map 2 -map 3 -c:v mpeg2video -c:a mp2 ";
    ffmpeg(streams + "-program program_num=1:st=0:st=3 -program program_num=2:st=1:st=2",
           scratch.file("two.ts"));
    MediaSource two(scratch.file("two.ts"));
    EXPECT_NEAR(collect(two).sound_seconds, 2.0, 0.1);
    ffmpeg(streams + "-program program_num=1:st=0 -program program_num=2:st=1:st=2:st=3",
           scratch.file("silent.ts"));
    MediaSource silent(scratch.file("silent.ts"));
    EXPECT_EQ(collect(silent).sound_seconds, 0.0);
    EXPECT_EQ(silent.shortfall(), std::nullopt);
}

TEST(MediaSource, RunsOnWhereTheTimestampsWrapOrJumpBack) {
    const ScratchDir scratch;
    const std::string clip = kSmallVideo + kTone + "-c:v mpeg2video -bf 0 -c:a mp2 -output_ts_offset ";
    ffmpeg(clip + "0", scratch.file("b.ts"));
    for (const std::string offset : {"5", "1000", "95442.7"}) {  // 33 bits are used up after 95443.7 s
        ffmpeg(clip + offset, scratch.file("a.ts"));
        join(scratch.file("a.ts"), scratch.file("b.ts"), scratch.file("ab.ts"));
        MediaSource source(scratch.file("ab.ts"));
        const Collected all = collect(source);
        EXPECT_NEAR(99.0, static_cast<double>(all.frame_times.size()), 1.0) << offset;
        EXPECT_TRUE(std::is_sorted(all.frame_times.begin(), all.frame_times.end())) << offset;
        EXPECT_NEAR(4.0, all.sound_seconds, 0.1) << offset;
        EXPECT_NEAR(4.0, all.latest, 0.2) << offset;
    }
}

TEST(MediaSource, TakesACoverFrameForNoVideo) {
    const ScratchDir scratch;
    ffmpeg("-f lavfi -i color=red:s=64x64 -frames:v 1", scratch.file("cover.png"));
    ffmpeg(kTone + "-i '" + scratch.file("cover.png") +
               "' -map 0:a -map 1:v -c:a libmp3lame -c:v copy -disposition:v attached_pic",
           scratch.file("song.mp3"));
    MediaSource source(scratch.file("song.mp3"));
    EXPECT_FALSE(source.facts().video.has_value());
    EXPECT_NEAR(2.0, collect(source).sound_seconds, 0.1);

    MediaSource frame(scratch.file("cover.png"));
    EXPECT_EQ(1U, collect(frame).frame_times.size());
}

TEST(MediaSource, EndsWhenInterrupted) {
    const ScratchDir scratch;
    const std::string clip = scratch.file("clip.ts");
    ffmpeg(kSmallVideo + kTone + "-c:v mpeg2video", clip);
    std::atomic<bool> interrupted = false;
    const MediaOptions options{.format = "mpegts", .label = "live", .interrupted = &interrupted};
    MediaSource source(clip, options);
    EXPECT_EQ("live", source.facts().input);
    for (int i = 0; i < 20; ++i) {
        ASSERT_TRUE(source.next().has_value());
    }
    interrupted = true;
    EXPECT_FALSE(source.next().has_value());
    EXPECT_THROW(MediaSource(clip, options), MediaError);
}

TEST(MediaSource, DecodesAFilterGraph) {
    MediaSource source("testsrc2=s=64x64:d=1[out0];sine=d=1[out1]", {.format = "lavfi", .label = "graph"});
    const Collected all = collect(source);
    EXPECT_EQ(25U, all.frame_times.size());
    EXPECT_NEAR(1.0, all.sound_seconds, 0.01);
}

}  // namespace
