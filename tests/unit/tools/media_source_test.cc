#include "input/media_source.h"

#include <atomic>
#include <map>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/clip.h"

extern "C" {
#include <libavutil/log.h>
}

namespace {

using support::ffmpeg;
using support::ScratchDir;
using testing::HasSubstr;
using zel_monitor::MediaError;
using zel_monitor::MediaOptions;
using zel_monitor::MediaSource;
using zel_monitor::Picture;
using zel_monitor::Sound;
using zel_monitor::timeOf;

[[maybe_unused]] const bool kDecodersAreQuiet = (av_log_set_level(AV_LOG_QUIET), true);

const std::string kSmallVideo = "-f lavfi -i testsrc2=s=160x90:r=25:d=2 ";
const std::string kTone = "-f lavfi -i sine=440:r=44100:d=2 ";

struct Collected {
    std::vector<double> picture_times;
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
        if (const auto* const picture = std::get_if<Picture>(&*item)) {
            all.picture_times.push_back(picture->time);
            ++all.sizes[{picture->planes.width, picture->planes.height}];
        } else {
            const auto& sound = std::get<Sound>(*item);
            all.sound_seconds += static_cast<double>(sound.samples) / sound.sample_rate;
        }
    }
    return all;
}

/// What is missing of an input that is read to its end.
std::string shortfallOf(const std::string& input) {
    MediaSource source(input);
    collect(source);
    return source.shortfall().value_or("nothing");
}

/// Writes both files one after the other.
void join(const std::string& first, const std::string& second, const std::string& joined) {
    auto bytes = support::readFile(first);
    const auto more = support::readFile(second);
    bytes.insert(bytes.end(), more.begin(), more.end());
    support::writeFile(joined, bytes);
}

std::string failureOf(const std::string& input) {
    try {
        MediaSource source(input);
        collect(source);
    } catch (const MediaError& error) {
        return error.what();
    }
    return "no failure";
}

TEST(MediaSource, DecodesEveryPictureAndAllSoundInOrderOfTime) {
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
    ASSERT_EQ(50U, all.picture_times.size());
    for (size_t i = 0; i < 50; ++i) {
        EXPECT_NEAR(static_cast<double>(i) / 25, all.picture_times[i], 1e-3);
    }
    EXPECT_NEAR(2.0, all.sound_seconds, 0.05);
    EXPECT_EQ(0.0, all.worst_step_back);
    EXPECT_EQ(50U, source.counts().pictures);
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
    ASSERT_EQ(50U, all.picture_times.size());
    EXPECT_NEAR(0.0, all.picture_times.front(), 0.05);
    EXPECT_NEAR(49.0 / 25, all.picture_times.back(), 0.05);
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
    EXPECT_GT(all.picture_times.size(), 25U);
    EXPECT_GT(source.counts().damaged, 0U);
}

TEST(MediaSource, SaysWhyAnInputCannotBeDecoded) {
    const ScratchDir scratch;
    EXPECT_THAT(failureOf(scratch.file("absent.mp4")),
                testing::AllOf(HasSubstr("absent.mp4: "), HasSubstr("No such file")));
    support::writeFile(scratch.file("empty.mp4"), {});
    EXPECT_THAT(failureOf(scratch.file("empty.mp4")), HasSubstr("empty.mp4: "));
    support::writeFile(scratch.file("zeros.mp4"), std::vector<char>(100'000));
    EXPECT_THAT(failureOf(scratch.file("zeros.mp4")), HasSubstr("zeros.mp4: "));
}

TEST(MediaSource, DeliversWhatATruncatedFileStillHolds) {
    const ScratchDir scratch;
    ffmpeg(kSmallVideo + "-c:v libx264 -movflags +faststart", scratch.file("whole.mp4"));
    auto bytes = support::readFile(scratch.file("whole.mp4"));
    bytes.resize(bytes.size() / 2);
    support::writeFile(scratch.file("cut.mp4"), bytes);
    MediaSource source(scratch.file("cut.mp4"));
    const Collected all = collect(source);
    EXPECT_GT(all.picture_times.size(), 5U);
    EXPECT_LT(all.latest, source.facts().duration.value() - 0.5);
    EXPECT_GT(source.counts().damaged, 0U);
}

TEST(MediaSource, DeclaredDurationIsThatOfTheChosenStreams) {
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

TEST(MediaSource, TellsAnInputThatIsCutOff) {
    const ScratchDir scratch;
    const auto shortfallOfCut = [&](const std::string& name, const std::string& arguments) {
        ffmpeg(arguments, scratch.file(name));
        EXPECT_EQ(shortfallOf(scratch.file(name)), "nothing") << name;
        auto bytes = support::readFile(scratch.file(name));
        bytes.resize(bytes.size() * 3 / 5 + 1);
        support::writeFile(scratch.file(name), bytes);
        return shortfallOf(scratch.file(name));
    };
    for (const auto& [name, arguments] : {
             std::pair("a.avi", kSmallVideo + kTone + "-c:v mpeg4 -c:a mp2"),
             std::pair("a.wav", kTone),
             std::pair("a.w64", kTone),
             std::pair("a.caf", kTone),
             std::pair("a.wma", kTone),
             std::pair("a.mp4", kSmallVideo + "-c:v mpeg4 -g 10 -movflags frag_keyframe+empty_moov"),
         }) {
        EXPECT_THAT(shortfallOfCut(name, arguments), HasSubstr("cut off")) << name;
    }

    for (const std::string format : {"wav", "caf", "asf"}) {
        ffmpeg(kTone + "-f " + format + " pipe: >", scratch.file("piped." + format));
        EXPECT_EQ(shortfallOf(scratch.file("piped." + format)), "nothing")
            << format << ": a length that was never known is none that is missed";
    }
}

TEST(MediaSource, BearsWithSizesThatAreAFewBytesTooLarge) {
    const ScratchDir scratch;
    ffmpeg("-f lavfi -i sine=d=1:r=8000,atrim=end_sample=7999 -c:a pcm_u8", scratch.file("odd.wav"));
    auto bytes = support::readFile(scratch.file("odd.wav"));
    bytes.pop_back();  // the pad byte
    const auto counted = bytes.size();
    for (size_t i = 0; i < 4; ++i) {  // all of the file, not what comes after the size
        bytes[4 + i] = static_cast<char>((counted + 1) >> (8 * i));
    }
    support::writeFile(scratch.file("odd.wav"), bytes);
    EXPECT_EQ(shortfallOf(scratch.file("odd.wav")), "nothing");
}

TEST(MediaSource, CountsTheBytesOfPlaylists) {
    const ScratchDir scratch;
    ffmpeg(kSmallVideo + "-c:v mpeg2video -f hls", scratch.file("list.m3u8"));
    MediaSource source(scratch.file("list.m3u8"));
    collect(source);
    EXPECT_GT(source.counts().bytes_read, 10'000U);
}

TEST(MediaSource, DoesNotTakeTheLastTimestampsForADeclaredEnd) {
    const ScratchDir scratch;
    ffmpeg(kSmallVideo + "-c:v mpeg2video -bf 0 -bsf:v 'setts=ts=TS+eq(N\\,49)*90000*60'",
           scratch.file("wild.ts"));
    MediaSource wild(scratch.file("wild.ts"));
    EXPECT_TRUE(wild.facts().duration_estimated);
    ffmpeg(kSmallVideo + "-c:v mpeg4", scratch.file("plain.mkv"));
    EXPECT_FALSE(MediaSource(scratch.file("plain.mkv")).facts().duration_estimated);
}

TEST(MediaSource, BelievesTheNewerOfTwoDurationTags) {
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

constexpr int kPartSeconds = 7;

/// Pictures and sound of a broadcast whose first stream has the identifier `pid`.
void broadcast(const std::string& codecs, int pid, const std::string& file) {
    const std::string seconds = std::to_string(kPartSeconds);
    ffmpeg("-f lavfi -i testsrc2=s=160x90:r=25:d=" + seconds + " -f lavfi -i sine=r=44100:d=" + seconds +
               ' ' + codecs + " -mpegts_start_pid " + std::to_string(pid),
           file);
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
            // The last picture and some sound of a stream come only when the next ones have been taken.
            const double seconds = kPartSeconds * parts;
            EXPECT_NEAR(25 * seconds, static_cast<double>(all.picture_times.size()), 2.0 * parts) << name;
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

TEST(MediaSource, TakesPicturesAndSoundOfOneProgramme) {
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

TEST(MediaSource, TellsWhatItCouldNotFollow) {
    const ScratchDir scratch;
    broadcast("-c:v mpeg2video -c:a mp2", 0x100, scratch.file("a.ts"));
    broadcast("-c:v libx264 -c:a aac", 0x100, scratch.file("b.ts"));
    join(scratch.file("a.ts"), scratch.file("b.ts"), scratch.file("recoded.ts"));
    EXPECT_THAT(shortfallOf(scratch.file("recoded.ts")), HasSubstr("nothing could be read"));

    ffmpeg("-f lavfi -i testsrc2=s=160x90:r=25:d=12 " + kTone +
               "-filter_complex [1:a]asetpts=PTS+10/TB -map 0 -c:v mpeg2video -c:a mp2",
           scratch.file("late.ts"));
    EXPECT_THAT(shortfallOf(scratch.file("late.ts")), HasSubstr("sound"));

    ffmpeg(kSmallVideo + kTone + "-c:v libx264 -preset ultrafast -bsf:v noise=amount=1 -c:a aac",
           scratch.file("noise.mkv"));
    EXPECT_THAT(shortfallOf(scratch.file("noise.mkv")), HasSubstr("none of its pictures"));
}

TEST(MediaSource, TellsWrapsOfTheTimestampsFromJumpsBack) {
    const ScratchDir scratch;
    // 33 bits at 90 kHz are used up after 95443.7 s.
    ffmpeg(kSmallVideo + "-c:v mpeg2video -bf 0 -muxdelay 0 -output_ts_offset 95442.7",
           scratch.file("wrap.ts"));
    MediaSource wrap(scratch.file("wrap.ts"));
    const Collected wrapped = collect(wrap);
    EXPECT_EQ(50U, wrapped.picture_times.size());
    EXPECT_NEAR(1.96, wrapped.latest, 0.1);
    EXPECT_EQ(0.0, wrapped.worst_step_back);

    ffmpeg(kSmallVideo + "-c:v mpeg2video -bf 0 -output_ts_offset 1000", scratch.file("a.ts"));
    ffmpeg(kSmallVideo + "-c:v mpeg2video -bf 0", scratch.file("b.ts"));
    join(scratch.file("a.ts"), scratch.file("b.ts"), scratch.file("back.ts"));
    MediaSource back(scratch.file("back.ts"));
    const Collected jumped = collect(back);
    EXPECT_LT(jumped.latest, 3.0);
    EXPECT_NEAR(jumped.worst_step_back, 1001.96, 0.5);
}

TEST(MediaSource, TakesACoverPictureForNoVideo) {
    const ScratchDir scratch;
    ffmpeg("-f lavfi -i color=red:s=64x64 -frames:v 1", scratch.file("cover.png"));
    ffmpeg(kTone + "-i '" + scratch.file("cover.png") +
               "' -map 0:a -map 1:v -c:a libmp3lame -c:v copy -disposition:v attached_pic",
           scratch.file("song.mp3"));
    MediaSource source(scratch.file("song.mp3"));
    EXPECT_FALSE(source.facts().video.has_value());
    EXPECT_NEAR(2.0, collect(source).sound_seconds, 0.1);

    MediaSource picture(scratch.file("cover.png"));
    EXPECT_EQ(1U, collect(picture).picture_times.size());
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
    EXPECT_EQ(25U, all.picture_times.size());
    EXPECT_NEAR(1.0, all.sound_seconds, 0.01);
}

}  // namespace
