#include <span>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "input/container/flv_extent.h"
#include "input/container/matroska_extent.h"
#include "support/clip.h"
#include "support/random.h"

namespace {

using zel_monitor::flvSize;
using zel_monitor::matroskaSize;
using Bytes = std::vector<uint8_t>;

Bytes made(const std::string& arguments, const std::string& name) {
    const support::ScratchDir scratch;
    support::ffmpeg("-f lavfi -i sine=d=1 " + arguments, scratch.file(name));
    const auto chars = support::readFile(scratch.file(name));
    return {chars.begin(), chars.end()};
}

TEST(Extent, IsThatOfTheWholeFile) {
    const Bytes matroska = made("-c:a aac", "clip.mkv");
    EXPECT_EQ(static_cast<int64_t>(matroska.size()), matroskaSize(matroska));
    const Bytes flv = made("-c:a aac", "clip.flv");
    EXPECT_NEAR(static_cast<double>(flv.size()), static_cast<double>(flvSize(flv).value()), 4.0);
}

TEST(Extent, IsNotKnownOfWhatWasWrittenWhileItWasSent) {
    EXPECT_FALSE(matroskaSize(made("-c:a aac -live 1", "clip.mkv")));
    EXPECT_FALSE(flvSize(made("-c:a aac -flvflags no_duration_filesize", "clip.flv")));
    EXPECT_FALSE(flvSize(made("-c:a aac -flvflags no_metadata", "clip.flv")));
}

TEST(Extent, SurvivesWhateverTheBytesSay) {
    support::Random random(3);
    for (const auto& [bytes, size] : {std::pair{made("-c:a aac", "clip.mkv"), &matroskaSize},
                                      std::pair{made("-c:a aac", "clip.flv"), &flvSize}}) {
        for (size_t length = 0; length < 400; ++length) {
            Bytes beginning(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(length));
            const auto cut = size(beginning);
            EXPECT_TRUE(!cut || *cut > 0);
            for (uint8_t& byte : beginning) {
                byte = random.next() % 30 == 0 ? random.byte() : byte;
            }
            const auto changed = size(beginning);
            EXPECT_TRUE(!changed || *changed > -5);
        }
    }
}

}  // namespace
