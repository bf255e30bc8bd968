#include <zel/algo/algo_facade.h>

#include <fstream>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace {

using ZELAlgo::AlgoFacade;
using ZELAlgo::ZELVideoResult;

/// The directory that video_verdicts.py has filled.
std::string goldenFile(const char* name) {
    return std::string(ZEL_GOLDEN_DIR "/") + name;
}

std::string verdicts(const ZELVideoResult& result) {
    std::ostringstream text;
    text << result.screen_type << ' ' << result.exposure_type << ' ' << result.is_block << ' '
         << result.is_staticframe;
    return text.str();
}

TEST(VideoGolden, VerdictsEqualThoseOfAnIndependentProgram) {
    std::ifstream text(goldenFile("verdicts.txt"));
    std::ifstream pixels(goldenFile("frames.i420"), std::ios::binary);
    ASSERT_TRUE(text && pixels);
    std::string line;
    std::string name;
    uint32_t width = 0;
    uint32_t height = 0;
    std::optional<AlgoFacade> facade;
    std::vector<char> frame;
    int frames = 0;
    while (std::getline(text, line)) {
        std::istringstream words(line);
        if (line.starts_with("stream")) {
            float block_param = 0;
            float static_param = 0;
            words.ignore(6) >> name >> width >> height >> block_param >> static_param;
            ZELAlgo::ZELAlgoConfig config;
            config.block_param = block_param;
            config.staticframe_param = static_param;
            facade.emplace(config);
            frame.resize(size_t{width} * height * 3 / 2);
            frames = 0;
            continue;
        }
        ASSERT_TRUE(pixels.read(frame.data(), static_cast<std::streamsize>(frame.size())));
        ZELVideoResult result{};
        ASSERT_TRUE(
            facade->detectVideo({width, height, 0, reinterpret_cast<const uint8_t*>(frame.data())}, result));
        EXPECT_EQ(verdicts(result), line) << name << ", frame " << frames;
        ++frames;
    }
    EXPECT_EQ(pixels.peek(), std::ifstream::traits_type::eof());
}

}  // namespace
