// Runs the example as its user does and reads what it prints.
#include <array>
#include <cstdio>
#include <fstream>
#include <map>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "support/clip.h"

namespace {

using Fields = std::map<std::string, std::string>;
using Lines = std::multimap<std::string, Fields>;

/// The lines "what: key=value ..." by what they are about.
Lines play(const std::string& arguments) {
    const std::string command = std::string(ZEL_EMBEDDED_PLAYER) + " " + arguments + " 2>/dev/null";
    const std::unique_ptr<FILE, int (*)(FILE*)> output(popen(command.c_str(), "r"), &pclose);
    Lines lines;
    std::array<char, 4096> line{};
    while (std::fgets(line.data(), line.size(), output.get()) != nullptr) {
        std::istringstream words(line.data());
        std::string what;
        words >> what;
        Fields fields;
        for (std::string word; words >> word;) {
            const size_t equals = word.find('=');
            fields[word.substr(0, equals)] = word.substr(equals + 1);
        }
        lines.emplace(what, fields);
    }
    return lines;
}

/// Plays a file of this name that ffmpeg makes of `arguments`.
Lines playMade(const std::string& arguments, const std::string& name) {
    const support::ScratchDir scratch;
    const std::string clip = scratch.file(name);
    support::ffmpeg(arguments, clip);
    return play("'" + clip + "'");
}

long sumOf(const Lines& lines, const std::string& what, const std::string& key) {
    long sum = 0;
    for (auto [line, end] = lines.equal_range(what); line != end; ++line) {
        const auto field = line->second.find(key);
        sum += field != line->second.end() ? std::stol(field->second) : 0;
    }
    return sum;
}

double numberOf(const Lines& lines, const std::string& what, const std::string& key) {
    const auto line = lines.find(what);
    return line != lines.end() && line->second.contains(key) ? std::stod(line->second.at(key)) : -1.0;
}

TEST(EmbeddedPlayer, PlaysAFileAndTellsHowItWent) {
    const support::ScratchDir scratch;
    const std::string clip = scratch.file("clip.mp4");
    support::ffmpeg(
        "-f lavfi -i color=black:s=160x90:r=25:d=1 -f lavfi -i testsrc2=s=160x90:r=25:d=1 "
        "-f lavfi -i sine=440:r=48000:d=2 -filter_complex '[0][1]concat[v]' -map '[v]' -map 2 "
        "-c:v libx264 -c:a aac",
        clip);
    const Lines lines = play("'" + clip + "' '" + scratch.file("missing.mp4") + "'");

    // Every frame is counted; under load some may be dropped before they are examined.
    EXPECT_EQ(sumOf(lines, "heartbeat:", "zel_vframes"), 50);
    EXPECT_EQ(sumOf(lines, "session:", "zel_vframes"), 50);
    EXPECT_LE(lines.count("video:"), 50U);
    const long black = sumOf(lines, "video:", "screen_type");
    EXPECT_GT(black, 0);
    EXPECT_LE(black, 25);
    EXPECT_GE(lines.count("audio:"), 1U);
    EXPECT_EQ(sumOf(lines, "audio:", "is_mute"), 0);

    // What went in by the token came out in the session's reports.
    EXPECT_GE(sumOf(lines, "heartbeat:", "player_bytes"), static_cast<long>(support::readFile(clip).size()));
    EXPECT_GT(sumOf(lines, "heartbeat:", "player_decoding_ms_cnt"), 50);

    std::map<std::string, Fields> assessments;
    for (auto [line, end] = lines.equal_range("assessment:"); line != end; ++line) {
        assessments[line->second.at("metric")] = line->second;
    }
    EXPECT_GE(std::stod(assessments["RecentPlayerFF"]["recent_ff_vod"]), 1.0);
    EXPECT_GT(std::stod(assessments["RefNetSpeed"]["recent_vod_max"]), 0.0);
    EXPECT_EQ(assessments["PlayerErrorRate"]["recent_error_rate"], "0.500000");  // one of the two is missing
    EXPECT_EQ(assessments["PlayerBufferRate"]["version"], "1");
}

TEST(EmbeddedPlayer, RefusesFramesTooSmallForChroma) {
    const Lines lines =
        playMade("-f lavfi -i color=red:s=16x16:r=25:d=0.2 -vf format=rgb24,crop=1:1 -c:v ffv1", "one.mkv");
    EXPECT_LT(numberOf(lines, "playback:", "error_code"), 0);
    EXPECT_FALSE(lines.find("playback:")->second.contains("play_time"));
}

TEST(EmbeddedPlayer, PacesFramesWithoutTimes) {
    const Lines lines = playMade("-f lavfi -i testsrc2=s=160x90:r=25:d=1 -c:v libx264", "raw.h264");
    EXPECT_EQ(sumOf(lines, "session:", "zel_vframes"), 25);
    EXPECT_GE(numberOf(lines, "playback:", "play_time"), 900);
}

TEST(EmbeddedPlayer, GoesOnWhenTimesStepBackAndTheSoundChanges) {
    const support::ScratchDir scratch;
    const std::string clip = scratch.file("both.ts");
    std::ofstream both(clip, std::ios::binary);
    for (const std::string sound : {"-ac 6 -ar 48000", "-ac 1 -ar 44100"}) {
        const std::string part = scratch.file("part.ts");
        support::ffmpeg("-f lavfi -i testsrc2=s=160x90:r=25:d=1 -f lavfi -i sine=440:d=1 -c:a ac3 " + sound,
                        part);
        const auto bytes = support::readFile(part);
        both.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    }
    both.close();
    const Lines lines = play("'" + clip + "'");
    EXPECT_EQ(numberOf(lines, "playback:", "error_code"), 0);
    const double play_time = numberOf(lines, "playback:", "play_time");
    EXPECT_GE(play_time, 1800);
    // The step back is a second that is no stall; a stall of a busy machine lengthens the playback as well.
    EXPECT_GT(play_time - numberOf(lines, "playback:", "abnormal_total_time"), 1500);
}

TEST(EmbeddedPlayer, CountsTheFirstAudioFrameWhereThereIsNoVideo) {
    const Lines lines = playMade("-f lavfi -i sine=440:d=0.5", "sound.wav");
    EXPECT_GT(numberOf(lines, "playback:", "first_frame_rendering_time"), 0);
    EXPECT_GE(numberOf(lines, "playback:", "play_time"), 400);
}

}  // namespace
