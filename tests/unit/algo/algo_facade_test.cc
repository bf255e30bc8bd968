#include <zel/algo/algo_facade.h>

#include <algorithm>
#include <limits>
#include <vector>

#include <gtest/gtest.h>

#include "support/log_capture.h"

namespace {

using ZELAlgo::AlgoFacade;
using ZELAlgo::ZELAlgoConfig;
using ZELAlgo::ZELVideoFrame;
using ZELAlgo::ZELVideoResult;

constexpr const char* kStaticFailure = "Staticframe dete process fail ! \n";

/// An I420 picture of one luma and one chroma value.
class Picture {
  public:
    Picture(uint32_t width, uint32_t height, uint8_t luma, uint8_t chroma = 128)
        : width_(width), height_(height), bytes_(size_t{width} * height * 3 / 2, chroma) {
        std::fill_n(bytes_.begin(), size_t{width} * height, luma);
    }
    uint8_t& luma(uint32_t x, uint32_t y) { return bytes_[size_t{y} * width_ + x]; }
    ZELVideoFrame frame() const { return {width_, height_, 0, bytes_.data()}; }

  private:
    uint32_t width_;
    uint32_t height_;
    std::vector<uint8_t> bytes_;
};

ZELVideoResult detect(AlgoFacade& facade, const Picture& picture) {
    ZELVideoResult result{7, 99, 99, true, true};
    EXPECT_TRUE(facade.detectVideo(picture.frame(), result));
    EXPECT_EQ(result.status, 7U);
    return result;
}

TEST(AlgoFacade, TouchesNothingForNullData) {
    AlgoFacade facade;
    ZELVideoResult result{7, 99, 99, true, true};
    EXPECT_FALSE(facade.detectVideo({64, 64, 0, nullptr}, result));
    EXPECT_EQ(result.screen_type, 99U);
}

TEST(AlgoFacade, FindsNothingWithAllDetectorsOff) {
    AlgoFacade facade(ZELAlgoConfig{.enable_black_screen = false,
                                    .enable_block = false,
                                    .enable_exposure = false,
                                    .enable_green_screen = false,
                                    .enable_staticframe = false});
    const Picture green(64, 64, 0, 0);
    for (int i = 0; i < 12; ++i) {
        const ZELVideoResult result = detect(facade, green);
        EXPECT_EQ(result.screen_type, 0U);
        EXPECT_EQ(result.exposure_type, 0U);
        EXPECT_FALSE(result.is_block);
        EXPECT_FALSE(result.is_staticframe);
    }
}

TEST(AlgoFacade, TellsScreensAndExposuresApart) {
    AlgoFacade facade;
    const auto verdict = [&facade](uint8_t luma, uint8_t chroma) {
        const ZELVideoResult result = detect(facade, Picture(64, 48, luma, chroma));
        return std::pair(result.screen_type, result.exposure_type);
    };
    EXPECT_EQ(verdict(0, 0), std::pair(2U, 0U)) << "green goes before black";
    EXPECT_EQ(verdict(0, 128), std::pair(1U, 0U));
    EXPECT_EQ(verdict(29, 128), std::pair(1U, 0U));
    EXPECT_EQ(verdict(30, 128), std::pair(0U, 1U));
    EXPECT_EQ(verdict(128, 128), std::pair(0U, 0U));
    EXPECT_EQ(verdict(240, 128), std::pair(0U, 2U));
}

TEST(AlgoFacade, LogsAFailureOnEveryStaticFrameAndStillReportsIt) {
    AlgoFacade facade;
    const Picture picture(64, 64, 128);
    const support::LogCapture log;
    std::vector<int> found;
    for (int i = 1; i <= 31; ++i) {
        if (detect(facade, picture).is_staticframe) {
            found.push_back(i);
        }
    }
    // The first picture differs from the black one that every stream is compared with at first.
    EXPECT_EQ(found, (std::vector<int>{11, 21, 31}));
    EXPECT_EQ(log.count(kStaticFailure), found.size());
    EXPECT_EQ(log.messages().size(), found.size());
}

TEST(AlgoFacade, TakesItsConfigurationAtTheFirstFrame) {
    AlgoFacade facade;
    facade.setConfig({.staticframe_param = 2.9F});
    const Picture black(64, 64, 0);
    EXPECT_FALSE(detect(facade, black).is_staticframe);
    facade.setConfig({.staticframe_param = 100.0F});
    EXPECT_TRUE(detect(facade, black).is_staticframe);
}

TEST(AlgoFacade, AcceptsAnyFrameSizeInOneStream) {
    AlgoFacade facade;
    for (uint32_t width = 1; width < 12; ++width) {
        for (uint32_t height = 1; height < 12; ++height) {
            const Picture picture(width, height, 128);
            const ZELVideoResult result = detect(facade, picture);
            EXPECT_EQ(result.screen_type, 0U);
            EXPECT_EQ(result.exposure_type, 0U);
            EXPECT_FALSE(result.is_block);
        }
    }
}

TEST(AlgoFacade, TakesParametersThatNoIntegerHolds) {
    for (const float value : {1e20F, -1e20F, std::numeric_limits<float>::quiet_NaN(), -1.0F}) {
        AlgoFacade facade(ZELAlgoConfig{.block_param = value, .staticframe_param = value});
        EXPECT_FALSE(detect(facade, Picture(64, 64, 0)).is_staticframe);
    }
}

}  // namespace
