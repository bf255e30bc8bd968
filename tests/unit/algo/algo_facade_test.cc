#include <zel/algo/algo_facade.h>

#include <algorithm>
#include <array>
#include <limits>
#include <memory>
#include <set>
#include <tuple>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "support/log_capture.h"
#include "support/patterns.h"

namespace {

using ZELAlgo::AlgoFacade;
using ZELAlgo::kExposureNormal;
using ZELAlgo::kExposureOver;
using ZELAlgo::kExposureUnder;
using ZELAlgo::kScreenBlack;
using ZELAlgo::kScreenGreen;
using ZELAlgo::kScreenNormal;
using ZELAlgo::ZELAlgoConfig;
using ZELAlgo::ZELVideoFrame;
using ZELAlgo::ZELVideoPlanes;
using ZELAlgo::ZELVideoResult;

constexpr const char* kStaticFailure = "Staticframe dete process fail ! \n";

/// An I420 frame of one luma and one chroma value.
class Frame {
  public:
    Frame(uint32_t width, uint32_t height, uint8_t luma, uint8_t chroma = 128)
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

ZELVideoResult detect(AlgoFacade& facade, const Frame& frame) {
    ZELVideoResult result{7, 99, 99, true, true};
    EXPECT_TRUE(facade.detectVideo(frame.frame(), result));
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
    const Frame green(64, 64, 0, 0);
    for (int i = 0; i < 12; ++i) {
        const ZELVideoResult result = detect(facade, green);
        EXPECT_EQ(result.screen_type, kScreenNormal);
        EXPECT_EQ(result.exposure_type, kExposureNormal);
        EXPECT_FALSE(result.is_block);
        EXPECT_FALSE(result.is_staticframe);
    }
}

TEST(AlgoFacade, TellsScreensAndExposuresApart) {
    AlgoFacade facade;
    const auto verdict = [&facade](uint8_t luma, uint8_t chroma) {
        const ZELVideoResult result = detect(facade, Frame(64, 48, luma, chroma));
        return std::pair(result.screen_type, result.exposure_type);
    };
    EXPECT_EQ(verdict(0, 0), std::pair(kScreenGreen, kExposureNormal)) << "green goes before black";
    EXPECT_EQ(verdict(0, 128), std::pair(kScreenBlack, kExposureNormal));
    EXPECT_EQ(verdict(29, 128), std::pair(kScreenBlack, kExposureNormal));
    EXPECT_EQ(verdict(30, 128), std::pair(kScreenNormal, kExposureUnder));
    EXPECT_EQ(verdict(128, 128), std::pair(kScreenNormal, kExposureNormal));
    EXPECT_EQ(verdict(240, 128), std::pair(kScreenNormal, kExposureOver));
}

TEST(AlgoFacade, LogsAFailureOnEveryStaticFrameAndStillReportsIt) {
    AlgoFacade facade;
    const Frame frame(64, 64, 128);
    const support::LogCapture log;
    std::vector<int> found;
    for (int i = 1; i <= 31; ++i) {
        if (detect(facade, frame).is_staticframe) {
            found.push_back(i);
        }
    }
    // The first frame differs from the black one that every stream is compared with at first.
    EXPECT_EQ(found, (std::vector<int>{11, 21, 31}));
    EXPECT_EQ(log.count(kStaticFailure), found.size());
    EXPECT_EQ(log.messages().size(), found.size());
}

TEST(AlgoFacade, TakesItsConfigurationAtTheFirstFrame) {
    AlgoFacade facade;
    facade.setConfig({.staticframe_param = 2.9F});
    const Frame black(64, 64, 0);
    EXPECT_FALSE(detect(facade, black).is_staticframe);
    facade.setConfig({.staticframe_param = 100.0F});
    EXPECT_TRUE(detect(facade, black).is_staticframe);
}

TEST(AlgoFacade, AcceptsAnyFrameSizeInOneStream) {
    AlgoFacade facade;
    for (uint32_t width = 1; width < 12; ++width) {
        for (uint32_t height = 1; height < 12; ++height) {
            const Frame frame(width, height, 128);
            const ZELVideoResult result = detect(facade, frame);
            EXPECT_EQ(result.screen_type, kScreenNormal);
            EXPECT_EQ(result.exposure_type, kExposureNormal);
            EXPECT_FALSE(result.is_block);
        }
    }
}

/// The planes of an I420 frame apart from each other, with `gap` bytes between rows and none after the
/// last.
class Scattered {
  public:
    Scattered(const std::vector<uint8_t>& packed, uint32_t width, uint32_t height, size_t gap)
        : planes_{.width = width, .height = height, .data = {}, .stride = {}} {
        auto from = packed.begin();
        for (size_t plane = 0; plane < 3; ++plane) {
            const size_t columns = plane == 0 ? width : width / 2;
            const size_t rows = plane == 0 ? height : height / 2;
            const size_t stride = columns + gap * (plane + 1);
            bytes_[plane] = std::make_unique<uint8_t[]>(stride * (rows - 1) + columns);
            for (size_t y = 0; y < rows; ++y, from += static_cast<ptrdiff_t>(columns)) {
                std::copy_n(from, columns, bytes_[plane].get() + y * stride);
            }
            planes_.data[plane] = bytes_[plane].get();
            planes_.stride[plane] = stride;
        }
    }
    const ZELVideoPlanes& planes() const { return planes_; }

  private:
    std::array<std::unique_ptr<uint8_t[]>, 3> bytes_;
    ZELVideoPlanes planes_;
};

/// Frames that bring every verdict about.
std::vector<std::vector<uint8_t>> telling(uint32_t width, uint32_t height) {
    const size_t luma = size_t{width} * height;
    std::vector<std::vector<uint8_t>> frames;
    for (const support::Pattern pattern : support::kPatterns) {
        frames.push_back(support::patternPlane(pattern, width, height * 3 / 2, width));
        frames.push_back(frames.back());
    }
    frames.emplace_back(luma * 3 / 2, 0);
    std::vector<uint8_t> dark(luma * 3 / 2, 30);  // but for what is looked at
    for (size_t i = 0; i < luma / 2; i += 2) {
        dark[i] = 29;
    }
    frames.push_back(std::move(dark));
    return frames;
}

TEST(AlgoFacade, FindsGreenInEveryFourthChromaByteOnFromRowToRowAndPlaneToPlane) {
    for (uint32_t width = 2; width <= 24; width += 2) {
        for (uint32_t height = 2; height <= 12; height += 2) {
            for (const size_t place : {size_t{0}, size_t{1}, size_t{2}, size_t{3}}) {
                const size_t luma = size_t{width} * height;
                std::vector<uint8_t> frame(luma * 3 / 2, 0);
                for (size_t i = 0; i < luma / 2; ++i) {
                    frame[luma + i] = i % 4 == place ? 0 : 1;
                }
                // Each byte counts twice, and half of an odd count is rounded down.
                const uint32_t want = place == 0 && luma / 4 % 2 == 0 ? 2 : 1;
                ZELAlgoConfig config;
                config.green_screen_ratio = 1.0F;
                for (const size_t gap : {size_t{0}, size_t{1}, size_t{32}}) {
                    ZELVideoResult result{};
                    AlgoFacade facade(config);
                    ASSERT_TRUE(facade.detectPlanes(Scattered(frame, width, height, gap).planes(), result));
                    ASSERT_EQ(result.screen_type, want) << width << "x" << height << " gap " << gap;
                }
            }
        }
    }
}

TEST(AlgoFacade, SaysTheSameOfPlanesWhereverTheyLie) {
    constexpr std::pair<uint32_t, uint32_t> kSizes[] = {{2, 2},   {2, 6},    {6, 6},     {10, 14},
                                                        {64, 48}, {130, 70}, {222, 146}, {640, 360}};
    std::set<uint32_t> screens;
    int found = 0;
    for (const auto& [width, height] : kSizes) {
        for (const size_t gap : {size_t{0}, size_t{1}, size_t{32}}) {
            AlgoFacade packed(ZELAlgoConfig{.staticframe_param = 1.0F});
            AlgoFacade scattered(ZELAlgoConfig{.staticframe_param = 1.0F});
            for (const std::vector<uint8_t>& frame : telling(width, height)) {
                ZELVideoResult want{};
                ZELVideoResult have{};
                ASSERT_TRUE(packed.detectVideo({width, height, 0, frame.data()}, want));
                ASSERT_TRUE(scattered.detectPlanes(Scattered(frame, width, height, gap).planes(), have));
                ASSERT_EQ(std::tie(want.screen_type, want.exposure_type, want.is_block, want.is_staticframe),
                          std::tie(have.screen_type, have.exposure_type, have.is_block, have.is_staticframe))
                    << width << "x" << height << ", " << gap << " between rows";
                screens.insert(have.screen_type);
                found |= (have.exposure_type > 0 ? 1 : 0) | (have.is_block ? 2 : 0) |
                         (have.is_staticframe ? 4 : 0);
            }
        }
    }
    EXPECT_EQ(screens, (std::set<uint32_t>{0, 1, 2}));
    EXPECT_EQ(found, 7);
}

TEST(AlgoFacade, RefusesPlanesThatCannotBeRead) {
    const Scattered frame(std::vector<uint8_t>(16 * 8 * 3 / 2), 16, 8, 0);
    const auto refuses = [&frame](auto change) {
        AlgoFacade facade;
        ZELVideoPlanes planes = frame.planes();
        change(planes);
        ZELVideoResult result{7, 99, 99, true, true};
        return !facade.detectPlanes(planes, result) && result.screen_type == 99;
    };
    EXPECT_FALSE(refuses([](ZELVideoPlanes&) {}));
    EXPECT_TRUE(refuses([](ZELVideoPlanes& planes) { planes.width = 15; }));
    EXPECT_TRUE(refuses([](ZELVideoPlanes& planes) { planes.height = 7; }));
    for (size_t plane = 0; plane < 3; ++plane) {
        EXPECT_TRUE(refuses([plane](ZELVideoPlanes& planes) { planes.data[plane] = nullptr; }));
        EXPECT_TRUE(refuses([plane](ZELVideoPlanes& planes) { --planes.stride[plane]; }));
    }
}

TEST(AlgoFacade, RefusesFramesTooLargeToCount) {
    const uint8_t byte = 0;
    AlgoFacade facade;
    ZELVideoResult result{7, 99, 99, true, true};
    for (const uint32_t side : {37838U, 65536U, 131072U, 4294967294U}) {  // 37837 is the most
        EXPECT_FALSE(facade.detectVideo({side, side, 0, &byte}, result)) << side;
        EXPECT_FALSE(facade.detectPlanes({side, side, {&byte, &byte, &byte}, {side, side, side}}, result))
            << side;
    }
    EXPECT_EQ(result.screen_type, 99U);
}

TEST(AlgoFacade, TakesParametersThatNoIntegerHolds) {
    for (const float value : {1e20F, -1e20F, std::numeric_limits<float>::quiet_NaN(), -1.0F}) {
        AlgoFacade facade(ZELAlgoConfig{.block_param = value, .staticframe_param = value});
        EXPECT_FALSE(detect(facade, Frame(64, 64, 0)).is_staticframe);
    }
}

}  // namespace
