#include "algo/video/video_handle.h"

#include <zel/algo/algo_facade.h>

#include <algorithm>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "algo/video/planes.h"
#include "support/allocations.h"
#include "support/log_capture.h"
#include "support/random.h"

namespace {

using support::FailingNew;
using support::LogCapture;
using ZELAlgo::planesOf;
using Bytes = std::vector<uint8_t>;

Bytes noise(uint32_t width, uint32_t height) {
    support::Random random(width * 1000 + height);
    Bytes frame(size_t{width} * height * 3 / 2);
    for (uint8_t& byte : frame) {
        byte = random.byte();
    }
    return frame;
}

TEST(VideoDetectors, RefuseNullWithALogLine) {
    const LogCapture log;
    const Bytes bytes = noise(16, 16);
    uint32_t screen = 0;
    uint32_t exposed = 0;
    bool found = false;
    const ZELAlgo::Planes planes = planesOf(bytes.data(), 16, 16);
    const ZELAlgo::Planes nothing = planesOf(nullptr, 16, 16);
    ZELAlgo::ExposureFrame_t exposure{};
    ZELAlgo::BlockFrame_t block{};
    ZELAlgo::StaticFrame_t freeze{};
    EXPECT_EQ(ZELAlgo::ExposureExecute(nullptr, planes, screen, exposed), 1);
    EXPECT_EQ(ZELAlgo::ExposureExecute(&exposure, nothing, screen, exposed), 1);
    EXPECT_EQ(log.count("ExposureExecute input is Null \n"), 2U);
    EXPECT_EQ(ZELAlgo::BlockExecute(nullptr, planes, found), 1);
    EXPECT_EQ(ZELAlgo::BlockExecute(&block, nothing, found), 1);
    EXPECT_EQ(log.count("BlockExecute input is Null \n"), 2U);
    EXPECT_EQ(ZELAlgo::StaticFrameExecute(nullptr, planes, found), 1);
    EXPECT_EQ(ZELAlgo::StaticFrameExecute(&freeze, nothing, found), 1);
    EXPECT_EQ(log.count("StaticFrameExecute input is Null \n"), 2U);
    ZELAlgo::ExposureDestroy(nullptr);
    ZELAlgo::BlockDestroy(nullptr);
    ZELAlgo::StaticFrameDestroy(nullptr);
    EXPECT_EQ(ZELAlgo::VideoAlgoDestroy(nullptr), 0);
}

TEST(VideoDetectors, StopAtTheFirstFailureAndKeepWhatWasFoundBefore) {
    ZELAlgo::VideoAlgoHandle_t* const handle = ZELAlgo::VideoAlgoCreate({.enable_block = false,
                                                                         .enable_exposure = false,
                                                                         .enable_green_screen = false,
                                                                         .staticframe_param = 0.0F},
                                                                        16, 16);
    const LogCapture log;
    ZELAlgo::ZELVideoResult result{7, 99, 99, true, false};
    const Bytes black(16 * 16 * 3 / 2, 0);
    EXPECT_EQ(ZELAlgo::VideoAlgoExecute(handle, planesOf(black.data(), 16, 16), result), -1);
    EXPECT_EQ(result.status, 7U);
    EXPECT_EQ(result.screen_type, ZELAlgo::kScreenBlack);
    EXPECT_EQ(result.exposure_type, ZELAlgo::kExposureNormal);
    EXPECT_FALSE(result.is_block);
    EXPECT_TRUE(result.is_staticframe);
    EXPECT_EQ(log.messages(), std::vector<std::string>{"Staticframe dete process fail ! \n"});
    ZELAlgo::VideoAlgoDestroy(handle);
}

/// The log of a facade's first frame when its nth request for memory fails, and what the frame after it says.
struct Failure {
    bool happened;
    bool first;
    bool second;
    std::string log;
};

Failure failFirstFrame(size_t nth) {
    const Bytes frame = noise(64, 48);
    const LogCapture log;
    ZELAlgo::AlgoFacade facade;
    ZELAlgo::ZELVideoResult result{};
    Failure failure{};
    {
        const FailingNew fail(nth);
        failure.first = facade.detectVideo({64, 48, 0, frame.data()}, result);
        failure.happened = fail.happened();
    }
    for (const std::string& message : log.messages()) {
        failure.log += message;
    }
    failure.second = facade.detectVideo({64, 48, 0, frame.data()}, result);
    return failure;
}

TEST(VideoDetectors, SurviveEveryFailedAllocationAndTryAgainWithTheNextFrame) {
    std::vector<std::string> logs;
    for (size_t nth = 0;; ++nth) {
        const Failure failure = failFirstFrame(nth);
        if (!failure.happened) {
            EXPECT_TRUE(failure.first);
            break;
        }
        const bool record_failed = nth == 0 || failure.log.ends_with("_handle create failed\n");
        EXPECT_EQ(failure.first, !record_failed) << failure.log;
        EXPECT_TRUE(failure.second);
        logs.push_back(failure.log);
    }
    const auto count = [&logs](const std::string& text) {
        return std::count(logs.begin(), logs.end(), text);
    };
    EXPECT_EQ(count(""), 2)
        << "the handle itself; the plane of the previous frame, which the frame asks for again";
    EXPECT_EQ(count("ExposureFrame_t create fail ! \nexposure_handle create failed\n"), 1);
    EXPECT_EQ(count("BlockFrame_t create fail ! \nblock_handle create failed\n"), 1);
    EXPECT_EQ(count("BlockFrame_t create space fail !"), 4);
    EXPECT_EQ(count("StaticFrame_t create fail ! \nstaticframe_handle create failed\n"), 1);
}

TEST(VideoDetectors, AllocateNothingPerFrame) {
    const Bytes large = noise(320, 180);
    const Bytes small = noise(99, 51);
    ZELAlgo::AlgoFacade facade;
    ZELAlgo::ZELVideoResult result{};
    const auto allocations = [&](const Bytes& frame, uint32_t width, uint32_t height) {
        const size_t before = support::allocationCount();
        EXPECT_TRUE(facade.detectVideo({width, height, 0, frame.data()}, result));
        return support::allocationCount() - before;
    };
    EXPECT_GT(allocations(large, 320, 180), 0U);
    for (int i = 0; i < 5; ++i) {
        EXPECT_EQ(allocations(large, 320, 180), 0U);
    }
    EXPECT_GT(allocations(small, 99, 51), 0U);
    EXPECT_EQ(allocations(small, 99, 51), 0U);
}

}  // namespace
