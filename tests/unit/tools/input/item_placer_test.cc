#include "input/item_placer.h"

#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using testing::DoubleNear;
using testing::Pointwise;
using zel_monitor::ItemPlacer;
using zel_monitor::MediaItem;
using zel_monitor::Picture;
using zel_monitor::Sound;

/// `number` tells it from the others.
Picture pictureAt(double time_s, uint32_t number) {
    return {.time = time_s,
            .duration = 0.1,
            .planes = {.width = number, .height = 0, .data = {}, .stride = {}},
            .frame = nullptr};
}

Sound soundAt(double time_s) {
    return {.time = time_s,
            .sample_rate = 1000,
            .channels = 1,
            .samples = 100,
            .data = nullptr,
            .buffer = nullptr};
}

TEST(ItemPlacer, GivesEachItemItsOwnPlaceInStreamTime) {
    ItemPlacer placer;
    uint32_t number = 0;
    std::vector<double> pictures_s;
    const auto take = [&](double from_s, double to_s) {
        for (int i = 0; i < std::lround((to_s - from_s) * 10); ++i) {
            placer.take(pictureAt(from_s + 0.1 * i, number++));
            placer.take(soundAt(from_s + 0.1 * i));
        }
    };
    const auto give = [&] {
        while (const auto item = placer.next()) {
            if (const auto* const picture = std::get_if<Picture>(&*item)) {
                EXPECT_EQ(picture->planes.width, pictures_s.size());
                pictures_s.push_back(picture->time);
            }
        }
    };
    take(0, 6);
    give();
    EXPECT_EQ(pictures_s.size(), 60U) << "nothing is held without need";
    take(1, 4);    // five seconds back
    take(64, 65);  // a gap of a minute
    placer.finish();
    give();
    std::vector<double> expected_s;
    for (int i = 0; i < 100; ++i) {
        expected_s.push_back(i < 90 ? 0.1 * i : 0.1 * i + 60);
    }
    EXPECT_THAT(pictures_s, Pointwise(DoubleNear(1e-9), expected_s));
    EXPECT_NEAR(placer.reached(), 70, 1e-9);
}

TEST(ItemPlacer, HoldsAStillPictureNoLongerThanASecondOfSound) {
    ItemPlacer placer;
    placer.take(pictureAt(0, 0));
    bool given = false;
    for (int i = 0; i < 12; ++i) {
        placer.take(soundAt(0.1 * i));
        while (const auto item = placer.next()) {
            given = given || std::holds_alternative<Picture>(*item);
        }
    }
    EXPECT_TRUE(given);
}

}  // namespace
