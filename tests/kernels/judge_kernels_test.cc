#include <algorithm>
#include <memory>
#include <vector>

#include <gtest/gtest.h>
#include <hwy/highway.h>
#include <hwy/tests/hwy_gtest.h>

#include "judges/cell_kernels.h"
#include "judges/cells.h"
#include "judges/grid_kernels.h"
#include "support/patterns.h"
#include "support/random.h"

// Each fast kernel of the judges against its plain twin with every instruction set of this machine. Sources
// are allocated to the byte, so that the address sanitizer sees every read outside; what lies around an
// output is compared as well.

namespace {

using support::Pattern;
using Shorts = std::vector<uint16_t>;
using Bytes = std::vector<uint8_t>;

class JudgeKernels : public hwy::TestWithParamTarget {};
HWY_TARGET_INSTANTIATE_TEST_SUITE_P(JudgeKernels);

constexpr size_t kGuard = 70;
constexpr size_t kRowPitch = 150;

/// Everything that is written of a band, with a guard before and behind.
struct Band {
    explicit Band(size_t width)
        : sums(width / 8 + 2 * kGuard, 0xA5A5),
          columns(width + 2 * kGuard, 0xA5A5),
          rows(8 * kRowPitch + 2 * kGuard, 0xA5A5),
          darkest(width / 8 + 2 * kGuard, 0xA5),
          brightest(darkest) {}

    ZELJudges::BandMeasures measures(bool strips) {
        return {.sums = sums.data() + kGuard,
                .darkest = darkest.data() + kGuard,
                .brightest = brightest.data() + kGuard,
                .columns = strips ? columns.data() + kGuard : nullptr,
                .rows = strips ? rows.data() + kGuard : nullptr,
                .row_pitch = kRowPitch};
    }
    bool operator==(const Band&) const = default;

    Shorts sums;
    Shorts columns;
    Shorts rows;
    Bytes darkest;
    Bytes brightest;
};

TEST_P(JudgeKernels, MeasureBandsLikeTheirTwins) {
    for (size_t width = 0; width < 300; ++width) {
        const Pattern pattern = support::kPatterns[width % std::size(support::kPatterns)];
        const size_t stride = width + width % 5 * 7;
        const size_t bytes = 7 * stride + width;
        const Bytes frame = support::patternPlane(pattern, std::max<size_t>(stride, 1), 8, width);
        const std::unique_ptr<uint8_t[]> exact(new uint8_t[bytes]);
        std::copy_n(frame.begin(), bytes, exact.get());
        for (const bool strips : {false, true}) {
            Band want(width);
            Band have(width);
            ZELJudges::measureBandScalar(exact.get(), stride, width, want.measures(strips));
            ZELJudges::measureBand(exact.get(), stride, width, have.measures(strips));
            ASSERT_TRUE(want == have) << "width " << width << (strips ? " with strips" : "");
        }
        Band want(width);
        Band have(width);
        ZELJudges::sumBandScalar(exact.get(), stride, width, want.sums.data() + kGuard);
        ZELJudges::sumBand(exact.get(), stride, width, have.sums.data() + kGuard);
        ASSERT_EQ(want.sums, have.sums) << "width " << width;
    }
}

TEST_P(JudgeKernels, CompareCellsLikeTheirTwins) {
    support::Random random(3);
    for (size_t count = 0; count < 200; ++count) {
        Shorts now(count);
        Shorts then(count);
        Shorts marks(count + 2 * kGuard, 0);
        const uint16_t limit = static_cast<uint16_t>(random.below(500));
        for (size_t i = 0; i < count; ++i) {
            now[i] = static_cast<uint16_t>(random.below(16321));
            const int near = now[i] + static_cast<int>(random.below(3)) * limit - limit;  // just at the limit
            const int off = static_cast<int>(random.below(3)) - 1;
            then[i] = random.below(4) == 0 ? static_cast<uint16_t>(random.below(16321))
                                           : static_cast<uint16_t>(std::clamp(near + off, 0, 16320));
            marks[kGuard + i] = random.below(9) == 0 ? 0xFFFF : 0;
        }
        Shorts same = marks;
        EXPECT_EQ(ZELJudges::countLikeScalar(now.data(), then.data(), count, limit),
                  ZELJudges::countLike(now.data(), then.data(), count, limit));
        EXPECT_EQ(ZELJudges::markUnlikeScalar(now.data(), then.data(), count, limit, marks.data() + kGuard),
                  ZELJudges::markUnlike(now.data(), then.data(), count, limit, same.data() + kGuard));
        ASSERT_EQ(marks, same) << count;
    }
}

TEST_P(JudgeKernels, TellDarkAndPlainCellsLikeTheirTwins) {
    constexpr ZELJudges::PlainLimits kLimits{
        .most_uneven = 8, .most_dark = 1536, .least_grey = 7872, .most_grey = 8384};
    support::Random random(4);
    for (size_t count = 0; count < 200; ++count) {
        Shorts luma(count);
        Bytes darkest(count);
        Bytes brightest(count);
        for (size_t i = 0; i < count; ++i) {
            const uint32_t limits[] = {1536, 7872, 8384, random.below(16320) + 1};
            luma[i] = static_cast<uint16_t>(limits[random.below(4)] + random.below(3) - 1);
            darkest[i] = random.byte();
            brightest[i] = static_cast<uint8_t>(std::min(255U, darkest[i] + 7 + random.below(3)));
        }
        const ZELJudges::PlainCells cells{luma.data(), darkest.data(), brightest.data(), count};
        Bytes want(count + 2 * kGuard, 0xA5);
        Bytes have = want;
        EXPECT_EQ(ZELJudges::markPlainScalar(cells, kLimits, want.data() + kGuard),
                  ZELJudges::markPlain(cells, kLimits, have.data() + kGuard));
        ASSERT_EQ(want, have) << count;
        ASSERT_EQ(ZELJudges::sumUpToScalar(luma.data(), count, 7872),
                  ZELJudges::sumUpTo(luma.data(), count, 7872));
    }
}

TEST_P(JudgeKernels, CountMoreCellsThanALaneHolds) {
    const Shorts bright(32768 * 64 + 5, 16320);
    const Shorts dark(bright.size(), 0);
    Shorts marks(bright.size(), 0);
    EXPECT_EQ(ZELJudges::countLike(bright.data(), dark.data(), bright.size(), 16320), bright.size());
    EXPECT_EQ(ZELJudges::markUnlike(bright.data(), dark.data(), bright.size(), 16319, marks.data()),
              bright.size());
    EXPECT_EQ(ZELJudges::sumUpTo(bright.data(), bright.size(), 16320),
              (ZELJudges::CellSum{bright.size(), bright.size() * 16320}));
    const Bytes even(bright.size(), 255);
    Bytes plain(bright.size());
    EXPECT_EQ(ZELJudges::markPlain({bright.data(), even.data(), even.data(), bright.size()},
                                   {.most_uneven = 0, .most_dark = 16320, .least_grey = 1, .most_grey = 0},
                                   plain.data()),
              bright.size());
}

void compareEdges(Pattern pattern, uint32_t width, uint32_t height) {
    const Bytes luma = support::patternPlane(pattern, width, height, width * 1000 + height);
    ZELJudges::Cells cells;
    ZELJudges::Strips strips;
    ZELJudges::measureLuma(
        {.width = width, .height = height, .data = {luma.data(), nullptr, nullptr}, .stride = {width, 0, 0}},
        cells, &strips);
    ZELJudges::EdgeProfile want;
    ZELJudges::EdgeProfile have;
    const auto compare = [&](size_t boundaries, auto plain, auto fast) {
        want.clear(boundaries);
        have.clear(boundaries);
        for (int frame = 0; frame < 2; ++frame) {  // they add up
            plain(strips, want);
            fast(strips, have);
        }
        ASSERT_EQ(want.near.incoherent, have.near.incoherent);
        ASSERT_EQ(want.near.living, have.near.living);
        ASSERT_EQ(want.far.incoherent, have.far.incoherent);
        ASSERT_EQ(want.far.living, have.far.living);
    };
    SCOPED_TRACE(testing::Message() << support::name(pattern) << ", " << width << "x" << height);
    compare(width, ZELJudges::addColumnEdgesScalar, ZELJudges::addColumnEdges);
    compare(height / 8 * 8, ZELJudges::addRowEdgesScalar, ZELJudges::addRowEdges);
}

TEST_P(JudgeKernels, FindEdgesLikeTheirTwins) {
    support::Random random(8);
    for (const Pattern pattern : support::kPatterns) {
        for (int i = 0; i < 40; ++i) {
            ASSERT_NO_FATAL_FAILURE(compareEdges(pattern, 1 + random.below(300), 1 + random.below(70)));
        }
        ASSERT_NO_FATAL_FAILURE(compareEdges(pattern, 720, 576));
    }
}

}  // namespace
