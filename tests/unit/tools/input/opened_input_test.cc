#include "input/opened_input.h"

#include <algorithm>
#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "input/media_source.h"
#include "unit/tools/input/clips.h"

namespace {

using clips::kSmallVideo;
using clips::kTone;
using support::ffmpeg;
using testing::Pair;
using zel_monitor::Incomplete;
using zel_monitor::MediaError;
using zel_monitor::MediaSource;

class RefusedInput : public testing::Test {
  protected:
    std::string file(const std::string& name) const { return scratch_.file(name); }
    void write(const std::string& name, const std::string& content) const {
        support::writeFile(file(name), {content.begin(), content.end()});
    }
    void writeBeginning(const std::string& name, const std::string& of, size_t bytes) const {
        auto content = support::readFile(file(of));
        content.resize(std::min(bytes, content.size()));
        support::writeFile(file(name), content);
    }
    /// Every occurrence of a text in a file replaced by another of its length.
    void replace(const std::string& name, const std::string& from, const std::string& to) const {
        auto content = support::readFile(file(name));
        int replaced = 0;
        for (auto at = content.begin();
             (at = std::search(at, content.end(), from.begin(), from.end())) != content.end(); ++replaced) {
            at = std::copy(to.begin(), to.end(), at);
        }
        ASSERT_GT(replaced, 0) << name;
        support::writeFile(file(name), content);
    }

    /// Why a file cannot be opened, or gives nothing.
    std::pair<Incomplete, std::string> refusalOf(const std::string& name) const {
        try {
            MediaSource source(file(name));
            while (source.next()) {
            }
        } catch (const MediaError& error) {
            EXPECT_EQ(error.what(), file(name) + ": " + error.reason());
            EXPECT_LT(error.code(), 0);
            return {error.kind(), error.reason()};
        }
        return {};
    }

  private:
    const support::ScratchDir scratch_;
};

TEST_F(RefusedInput, IsNotThereOrHasNothingInIt) {
    EXPECT_THAT(refusalOf("absent.mp4"), Pair(Incomplete::kUnreachable, "No such file or directory"));
    std::filesystem::create_directory(file("folder.mp4"));
    EXPECT_THAT(refusalOf("folder.mp4"), Pair(Incomplete::kUnreachable, "Is a directory"));
    write("empty.mp4", "");
    EXPECT_THAT(refusalOf("empty.mp4"), Pair(Incomplete::kEmpty, "it is empty"));
}

TEST_F(RefusedInput, IsTextOrNoMedia) {
    const auto is_text = Pair(Incomplete::kNotMedia, "it is a text file, not media");
    std::string notes;
    while (notes.size() < 5000) {
        notes +=
            "Dear reader,\r\n\tthis is \xc3\xbc"
            "ber text.\n";
    }
    write("movie.mp4", notes);
    write("long.txt", notes);  // FFmpeg would show it as video
    write("short.csv", "a,b\n");
    write("lines.srt", "1\n00:00:01,000 --> 00:00:02,000\nNothing to see\n");
    for (const std::string name : {"movie.mp4", "long.txt", "short.csv", "lines.srt"}) {
        EXPECT_THAT(refusalOf(name), is_text) << name;
    }
    write("list.m3u8", "#EXTM3U\n#EXT-X-TARGETDURATION:2\n#EXTINF:2,\nabsent.ts\n#EXT-X-ENDLIST\n");
    EXPECT_EQ(refusalOf("list.m3u8").first, Incomplete::kReadError) << "what it lists is missing";
    write("zeros.mp4", std::string(100'000, '\0'));
    EXPECT_THAT(refusalOf("zeros.mp4"), Pair(Incomplete::kNotMedia, "it begins like no known media format"));
}

TEST_F(RefusedInput, IsCutOff) {
    ffmpeg(kSmallVideo + "-c:v mpeg4", file("late.mp4"));
    ffmpeg(kSmallVideo + "-c:v mpeg4 -movflags +faststart", file("early.mp4"));
    ffmpeg(kSmallVideo + "-c:v mpeg4", file("whole.avi"));
    ffmpeg(kTone, file("whole.flac"));
    for (const auto& [name, bytes, reason] :
         {std::tuple("late.mp4", 20'000, "it is cut off: its index is missing"),
          std::tuple("early.mp4", 500, "it is cut off: its index is not whole"),
          std::tuple("whole.avi", 60, "it is cut off before its end"),
          std::tuple("whole.flac", 30, "it is cut off: its header is not whole")}) {
        writeBeginning("cut", name, static_cast<size_t>(bytes));
        EXPECT_THAT(refusalOf("cut"), Pair(Incomplete::kCutOff, reason)) << name;
    }
}

TEST_F(RefusedInput, IsEncrypted) {
    const auto is_encrypted = Pair(Incomplete::kEncrypted, "it is encrypted");
    ffmpeg(kSmallVideo + kTone +
               "-c:v libx264 -c:a aac -encryption_scheme cenc-aes-ctr -encryption_key "
               "00112233445566778899aabbccddeeff -encryption_kid 112233445566778899aabbccddeeff00",
           file("common.mp4"));
    EXPECT_THAT(refusalOf("common.mp4"), is_encrypted);

    const std::string entry("\0\0\0\0\0\0\0\1", 8);  // what its type is followed by
    for (const auto& [video, audio] : {std::pair("encv", "enca"), std::pair("drmi", "drms")}) {
        ffmpeg(kSmallVideo + kTone + "-c:v libx264 -c:a aac", file("protected.mp4"));
        replace("protected.mp4", "avc1" + entry, video + entry);
        replace("protected.mp4", "mp4a" + entry, audio + entry);
        EXPECT_THAT(refusalOf("protected.mp4"), is_encrypted) << video;
    }

    ffmpeg(kSmallVideo + kTone + "-c:v mpeg2video -c:a mp2", file("clear.ts"));
    clips::scramble(file("clear.ts"), {0x100, 0x101}, file("scrambled.ts"));
    EXPECT_THAT(refusalOf("scrambled.ts"), is_encrypted);

    // The track's name makes room for the element that says how its content is encoded.
    const std::string name(40, 'n');
    ffmpeg(kSmallVideo + "-c:v mpeg4 -metadata:s:v title=" + name, file("a.mkv"));
    const std::string key = "\x47\xe2\x84key1";
    const std::string encryption =
        "\x50\x35" + std::string(1, static_cast<char>(0x84 + key.size())) + "\x47\xe1\x81\x05" + key;
    const std::string encoding = "\x50\x33\x81\x01" + encryption;
    std::string encodings = "\x62\x40" + std::string(1, static_cast<char>(0x80 + encoding.size())) + encoding;
    encodings += "\xec" + std::string(1, static_cast<char>(0x80 + 40 - 2 - encodings.size()));
    encodings.resize(40, '\0');
    replace("a.mkv", "\x53\x6e\xa8" + name, "\x6d\x80\xa8" + encodings);
    EXPECT_THAT(refusalOf("a.mkv"), is_encrypted);

    // The title's object turned into that of content encryption: secret data, type of protection, key,
    // address.
    ffmpeg(kTone + "-metadata title=tttttttttt", file("a.wma"));
    replace("a.wma", "\x33\x26\xb2\x75\x8e\x66\xcf\x11\xa6\xd9" + std::string("\0\xaa\0\x62\xce\x6c", 6),
            "\xfb\xb3\x11\x22\x23\xbd\xd2\x11\xb4\xb7" + std::string("\0\xa0\xc9\x55\xfc\x6e", 6));
    std::string title("\x16\0\0\0\0\0\0\0\0\0", 10);
    for (int i = 0; i < 10; ++i) {
        title += std::string("t\0", 2);
    }
    std::string protection("\4\0\0\0data\4\0\0\0DRM\0\2\0\0\0K\0", 22);
    protection.resize(title.size());
    replace("a.wma", title, protection);
    EXPECT_THAT(refusalOf("a.wma"), is_encrypted);
}

TEST_F(RefusedInput, IsAnUnknownFormatOrWasInterrupted) {
    try {
        MediaSource source("-", {.format = "no such format", .label = "named"});
        FAIL();
    } catch (const MediaError& error) {
        EXPECT_STREQ(error.what(), "named: unknown input format no such format");
    }
    ffmpeg(kTone, file("a.wav"));
    const std::atomic<bool> interrupted = true;
    try {
        MediaSource source(file("a.wav"), {.interrupted = &interrupted});
        FAIL();
    } catch (const MediaError& error) {
        EXPECT_EQ(error.kind(), Incomplete::kStopped);
    }
}

}  // namespace
