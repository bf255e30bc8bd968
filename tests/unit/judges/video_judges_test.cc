#include "judges/video_judges.h"

#include <algorithm>
#include <functional>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "judges/frame_meter.h"
#include "support/patterns.h"
#include "support/random.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using ZELJudges::Stretch;

constexpr size_t kWidth = 320;
constexpr size_t kHeight = 192;

/// A grey frame to draw on; all of its chroma is of one colour.
struct Canvas {
    std::vector<uint8_t> luma = std::vector<uint8_t>(kWidth * kHeight);
    uint8_t chroma = 128;
    support::Random random{1};

    void box(size_t left, size_t top, size_t width, size_t height, uint8_t value) {
        for (size_t y = top; y < top + height; ++y) {
            std::fill_n(luma.begin() + static_cast<std::ptrdiff_t>(y * kWidth + left), width, value);
        }
    }
    void flat(uint8_t value) { box(0, 0, kWidth, kHeight, value); }
    /// Filmed ground, seen from `at` samples further right.
    void scene(size_t at = 0, uint64_t seed = 5) {
        constexpr size_t kGround = 2 * kWidth;
        static const auto kScenes = [] {
            return std::vector{support::patternPlane(support::Pattern::kClouds, kGround, kHeight, 5),
                               support::patternPlane(support::Pattern::kClouds, kGround, kHeight, 6)};
        }();
        for (size_t i = 0; i < luma.size(); ++i) {
            luma[i] = kScenes[seed - 5][i / kWidth * kGround + (i % kWidth + at) % kGround];
        }
    }
    void noise(int most) {
        each([&](int value) {
            return value + static_cast<int>(random.below(static_cast<uint32_t>(2 * most + 1))) - most;
        });
    }
    void each(const std::function<int(int)>& change) {
        for (uint8_t& sample : luma) {
            sample = static_cast<uint8_t>(std::clamp(change(sample), 0, 255));
        }
    }
};

using Draw = std::function<void(Canvas& canvas, double time_s)>;

/// Faults that were told, those that touch as one.
struct Told {
    std::vector<Stretch> black, block, freeze, loss, under, over;
};

void join(std::vector<Stretch>& all, std::span<const Stretch> some) {
    for (const Stretch& stretch : some) {
        if (!stretch.present) {
            continue;
        }
        if (!all.empty() && !stretch.apart && stretch.start_s - all.back().end_s < 0.01) {
            all.back().end_s = stretch.end_s;
        } else {
            all.push_back(stretch);
        }
    }
}

/// Judges what is drawn, of which only the upper left part may be in the frame.
Told judge(const Draw& draw, double seconds = 2.0, double rate = 25.0, uint32_t width = kWidth,
           uint32_t height = kHeight) {
    ZELJudges::FrameMeter meter;
    ZELJudges::MeasuredFrame measured;
    ZELJudges::VideoJudges judges;
    ZELJudges::LossJudge loss;  // on its own, as the other judge of blocks sees its edges
    Told told;
    const auto take = [&told](const ZELJudges::VideoJudges::Settled& settled) {
        join(told.black, settled.black);
        join(told.block, settled.block);
        join(told.freeze, settled.freeze);
        join(told.under, settled.under);
        join(told.over, settled.over);
    };
    for (int i = 0; i < static_cast<int>(seconds * rate); ++i) {
        const double time_s = i / rate;
        Canvas canvas;
        canvas.random = support::Random(static_cast<uint64_t>(i));
        draw(canvas, time_s);
        const std::vector<uint8_t> chroma(kWidth * kHeight / 4, canvas.chroma);
        meter.measure({.width = width,
                       .height = height,
                       .data = {canvas.luma.data(), chroma.data(), chroma.data()},
                       .stride = {kWidth, kWidth / 2, kWidth / 2}},
                      time_s, measured);
        take(judges.feed(measured, time_s, 1.0 / rate));
        join(told.loss, loss.feed(measured.cells, time_s, 1.0 / rate));
    }
    take(judges.finish());
    return told;
}

auto lasts(double start_s, double end_s, double slack_s = 0.05) {
    return testing::AllOf(testing::Field(&Stretch::start_s, testing::DoubleNear(start_s, slack_s)),
                          testing::Field(&Stretch::end_s, testing::DoubleNear(end_s, slack_s)));
}

size_t steps(double time_s, double per_second) {
    return static_cast<size_t>(time_s * per_second + 1e-6);
}

TEST(FreezeJudge, TellsFramesThatStayLikeTheFirst) {
    const std::pair<const char*, Draw> kOnTop[] = {
        {"nothing", [](Canvas&, double) {}},
        {"noise", [](Canvas& canvas, double) { canvas.noise(14); }},
        {"clock", [](Canvas& canvas, double time_s) {
             canvas.box(264, 8, 40, 16, static_cast<uint8_t>(steps(time_s, 25) * 37 % 256));
         }}};
    for (const auto& [name, on_top] : kOnTop) {
        const auto told = judge(
            [&draw = on_top](Canvas& canvas, double time_s) {
                canvas.scene(steps(std::min(time_s, 1.0) + std::max(time_s - 4.0, 0.0), 75));
                draw(canvas, time_s);
            },
            5.0);
        EXPECT_THAT(told.freeze, ElementsAre(lasts(1.0, 4.04))) << name;
    }
    EXPECT_THAT(
        judge([](Canvas& canvas, double time_s) { canvas.scene(0, time_s < 3.0 ? 5 : 6); }, 6.0).freeze,
        ElementsAre(lasts(0.0, 3.0), lasts(3.0, 6.0)))
        << "a cut ends it";
}

TEST(FreezeJudge, CallsNoSlowMotionFrozen) {
    for (const double rate : {25.0, 50.0, 60.0}) {
        const auto pan = [](Canvas& canvas, double time_s) { canvas.scene(steps(time_s, 20)); };
        EXPECT_THAT(judge(pan, 4.0, rate).freeze, IsEmpty()) << rate;
    }
    const auto walker = [](Canvas& canvas, double time_s) {
        canvas.scene();
        canvas.box(40 + steps(time_s, 24), 80, 16, 32, 250);
    };
    EXPECT_THAT(judge(walker, 4.0).freeze, IsEmpty());
    EXPECT_THAT(judge([](Canvas& canvas, double time_s) { canvas.scene(time_s < 1.9 ? 0 : 99); }, 2.5).freeze,
                IsEmpty())
        << "shorter than the minimum";
}

TEST(FreezeJudge, TellsWhatStopsOnPlainGroundFromCards) {
    const auto frozen_from_2_to_5 = [](double time_s) {
        return time_s < 2.0 ? time_s : std::max(2.0, time_s - 3.0);
    };
    const auto walker = [=](Canvas& canvas, double time_s) {
        canvas.flat(90);
        canvas.box(40 + steps(frozen_from_2_to_5(time_s), 40), 80, 16, 24, 210);
    };
    EXPECT_THAT(judge(walker, 8.0).freeze, ElementsAre(lasts(1.0, 5.0, 1.0)));
    EXPECT_THAT(judge(walker, 5.0).freeze, IsEmpty()) << "nothing goes on";
    const auto stands_for_long = [](Canvas& canvas, double time_s) {
        canvas.flat(90);
        canvas.box(40 + steps(std::min(time_s, 2.0), 40), 80, 16, 24, 210);
    };
    const auto for_long = judge(stands_for_long, 16.0).freeze;
    ASSERT_THAT(for_long, ElementsAre(lasts(1.0, 16.0, 1.0)));
    EXPECT_NEAR(16.0, for_long[0].end_s, 0.05) << "to the end";
    const auto title = [](Canvas& canvas, double time_s) {
        canvas.flat(20);
        const double shown = std::min({time_s / 1.5, (8.0 - time_s) / 1.5, 1.0});
        canvas.box(100, 90, 120, 16, static_cast<uint8_t>(20 + 200 * shown));
    };
    EXPECT_THAT(judge(title, 8.0).freeze, IsEmpty()) << "fades in and out";
    const auto put_up = [&walker](Canvas& canvas, double time_s) {
        time_s < 2.0 || time_s >= 5.0 ? walker(canvas, time_s) : canvas.flat(30);
    };
    EXPECT_THAT(judge(put_up, 8.0).freeze, IsEmpty()) << "another ground";
}

TEST(BlackJudge, ToleratesNoiseAndALogoButNoPicture) {
    struct Case {
        const char* name;
        bool is_black;
        Draw draw;
    };
    const Case kCases[] = {
        {"noise", true, [](Canvas& c, double) { c.flat(16), c.noise(8); }},
        {"logo", true, [](Canvas& c, double) { c.flat(16), c.box(256, 8, 48, 24, 235); }},
        {"title", false, [](Canvas& c, double) { c.flat(16), c.box(120, 88, 80, 16, 235); }},
        {"three corners", false,
         [](Canvas& c, double) {
             c.flat(16), c.box(8, 8, 32, 16, 235), c.box(280, 8, 32, 16, 235), c.box(8, 168, 32, 16, 235);
         }},
        {"dark scene", false, [](Canvas& c, double) { c.scene(), c.each([](int v) { return 4 + v / 9; }); }},
        {"dark blue", false, [](Canvas& c, double) { c.flat(20), c.chroma = 150; }},
        {"lower half", false, [](Canvas& c, double) { c.scene(), c.box(0, 96, kWidth, 96, 16); }}};
    for (const Case& item : kCases) {
        const auto told = judge(item.draw, 0.4).black;
        EXPECT_THAT(told, SizeIs(item.is_black ? 1 : 0)) << item.name;
    }
}

TEST(BlockJudge, FindsGridsOfAnyPeriodAndPhase) {
    for (const size_t side : {8U, 12U, 16U, 24U}) {
        for (const size_t phase : {0U, 3U}) {
            const auto mosaic = [side, phase](Canvas& canvas, double time_s) {
                canvas.scene(steps(time_s, 75));
                const auto from = canvas.luma;
                for (size_t i = 0; i < from.size(); ++i) {
                    const size_t x = i % kWidth;
                    const size_t y = i / kWidth;
                    canvas.luma[i] = from[(y - std::min(y, (y + phase) % side)) * kWidth + x -
                                          std::min(x, (x + phase) % side)];
                }
            };
            EXPECT_THAT(judge(mosaic).block, ElementsAre(lasts(0.0, 2.0))) << side << " from " << phase;
        }
    }
}

TEST(BlockJudge, CallsNoScenesStripesOrSlopesBlocky) {
    const std::pair<const char*, std::function<int(size_t, size_t)>> kCases[] = {
        {"flat", [](size_t, size_t) { return 90; }},
        {"slope", [](size_t x, size_t y) { return static_cast<int>((x + y) / 2); }},
        {"stripes", [](size_t x, size_t) { return x / 16 % 2 == 0 ? 60 : 180; }},
        {"facade", [](size_t x, size_t y) { return x % 32 < 20 && y % 24 < 14 ? 60 : 170; }},
        {"text", [](size_t x, size_t y) {
             const uint32_t glyph =
                 support::Random(x / 7 * 77 + y / 22).below(6);  // a stroke, with a bar or not
             return y % 22 < 12 && (x % 7 / 2 == glyph / 2 || (y % 22 < 2 && glyph % 2 == 0)) ? 235 : 40;
         }}};
    for (const auto& [name, value] : kCases) {
        const auto draw = [&value_of = value](Canvas& canvas, double) {
            for (size_t i = 0; i < canvas.luma.size(); ++i) {
                canvas.luma[i] = static_cast<uint8_t>(value_of(i % kWidth, i / kWidth));
            }
        };
        EXPECT_THAT(judge(draw).block, IsEmpty()) << name;
    }
    EXPECT_THAT(judge([](Canvas& c, double time_s) { c.scene(steps(time_s, 75)); }).block, IsEmpty());
}

TEST(BlockJudge, TakesNoChanceInSmallFramesForAGrid) {
    const auto grains = [](Canvas& canvas, double time_s) {  // sharp things anywhere, in a frame of 160x96
        canvas.flat(90);
        support::Random random(7);
        for (int i = 0; i < 260; ++i) {
            const size_t x = (random.below(160) + steps(time_s, 5)) % 152;
            canvas.box(x, random.below(88), 1 + random.below(8), 1 + random.below(8),
                       static_cast<uint8_t>(40 + random.below(180)));
        }
    };
    EXPECT_THAT(judge(grains, 2.0, 25.0, 160, 96).block, IsEmpty());
    const auto mosaic = [&grains](Canvas& canvas, double time_s) {
        grains(canvas, time_s);
        for (size_t y = 0; y < 96; y += 16) {
            for (size_t x = 0; x < 160; x += 16) {
                canvas.box(x, y, 16, 16, canvas.luma[y * kWidth + x]);
            }
        }
    };
    EXPECT_THAT(judge(mosaic, 2.0, 25.0, 160, 96).block, ElementsAre(lasts(0.0, 2.0)));
}

TEST(BlockJudge, FindsAMosaicOfLittleOnPlainGround) {
    const auto disc = [](size_t side) {
        return [side](Canvas& canvas, double time_s) {
            const auto centre = static_cast<double>(60 + steps(time_s, 40));
            for (size_t i = 0; i < canvas.luma.size(); ++i) {
                const double x = static_cast<double>(i % kWidth / side * side) - centre;
                const double y = static_cast<double>(i / kWidth / side * side) - 96.0;
                canvas.luma[i] = x * x + y * y < 28.0 * 28.0 ? 200 : 90;
            }
        };
    };
    EXPECT_THAT(judge(disc(16)).block, ElementsAre(lasts(0.0, 2.0)));
    EXPECT_THAT(judge(disc(1)).block, IsEmpty());
    const auto sign = [](Canvas& c, double) { c.flat(90), c.box(64, 64, 128, 64, 200); };
    EXPECT_THAT(judge(sign).block, IsEmpty()) << "along the cells, but one thing";
}

TEST(LossJudge, TellsGreyThatAppearsAtOnceWhereTheRestGoesOn) {
    const auto half = [](double from_s, double scene_rate, uint8_t chroma) {
        return judge([=](Canvas& canvas, double time_s) {
                   canvas.chroma = chroma;
                   canvas.scene(steps(time_s, scene_rate), scene_rate > 1000.0 && time_s >= 1.0 ? 6 : 5);
                   if (time_s >= from_s) {
                       canvas.box(0, 96, kWidth, 96, 128);
                   }
               })
            .loss;
    };
    EXPECT_THAT(half(1.0, 25.0, 128), ElementsAre(lasts(1.0, 2.0)));
    EXPECT_THAT(half(0.0, 25.0, 128), IsEmpty()) << "there from the start";
    EXPECT_THAT(half(1.0, 25.0, 150), IsEmpty()) << "coloured";
    EXPECT_THAT(half(1.0, 5000.0, 128), IsEmpty()) << "the rest is cut as well";
    const auto card = [](Canvas& canvas, double time_s) { time_s < 1.0 ? canvas.scene() : canvas.flat(128); };
    EXPECT_THAT(judge(card).loss, IsEmpty()) << "nothing goes on";
}

TEST(ExposureJudge, MissesHighlightsAndShadows) {
    struct Case {
        const char* name;
        int gain;  // of 8
        int lift;
        size_t border;  // rows of black above
        bool under;
        bool over;
    };
    const Case kCases[] = {{"scene", 8, 0, 0, false, false},
                           {"dark", 2, 16, 0, true, false},
                           {"bright", 1, 200, 0, false, true},
                           {"letterbox", 8, 0, 64, false, false},
                           {"bright letterbox", 1, 200, 64, false, true},
                           {"black", 0, 16, 0, false, false}};
    for (const Case& item : kCases) {
        const auto told = judge(
            [&item](Canvas& canvas, double) {
                canvas.scene();
                canvas.each([&item](int value) { return value * item.gain / 8 + item.lift; });
                canvas.box(0, 0, kWidth, item.border, 16);
            },
            0.2);
        EXPECT_EQ(told.under.empty(), !item.under) << item.name;
        EXPECT_EQ(told.over.empty(), !item.over) << item.name;
    }
}

}  // namespace
