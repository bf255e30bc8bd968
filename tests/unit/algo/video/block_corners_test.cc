#include "algo/video/block_corners.h"

#include <memory>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "algo/video/edge_kernels.h"
#include "support/random.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using ZELAlgo::Corner;
using ZELAlgo::CornerList;
using ZELAlgo::Corners;

std::unique_ptr<Corners> find(const std::vector<std::string>& drawing) {
    const size_t width = drawing[0].size();
    const size_t words = ZELAlgo::edgeMapWords(width);
    std::vector<uint64_t> map(words * drawing.size());
    for (size_t y = 0; y < drawing.size(); ++y) {
        for (size_t x = 0; x < width; ++x) {
            map[y * words + x / 64] |= uint64_t{drawing[y][x] == '#'} << x % 64;
        }
    }
    auto corners = std::make_unique<Corners>();
    ZELAlgo::findCorners(map.data(), width, drawing.size(), *corners);
    return corners;
}

std::vector<Corner> all(const CornerList& list) {
    return {list.begin(), list.end()};
}

std::vector<std::string> blank(size_t width, size_t height) {
    return std::vector<std::string>(height, std::string(width, '.'));
}

/// Draws a side of four pixels at (y, x) with an arm of three up or down from its left or right end.
void drawCorner(std::vector<std::string>& drawing, size_t y, size_t x, bool down, bool right) {
    drawing[y].replace(x, 4, "####");
    for (size_t i = 1; i <= 3; ++i) {
        drawing[down ? y + i : y - i][right ? x + 3 : x] = '#';
    }
}

TEST(FindCorners, TellsTheFourKindsApart) {
    auto drawing = blank(80, 30);
    drawCorner(drawing, 3, 3, true, false);
    drawCorner(drawing, 3, 73, false, false);
    drawCorner(drawing, 15, 61, true, true);
    drawCorner(drawing, 25, 35, false, true);
    const auto corners = find(drawing);
    EXPECT_THAT(all(corners->down_left), ElementsAre(Corner{3, 3}));
    EXPECT_THAT(all(corners->up_left), ElementsAre(Corner{3, 73}));
    EXPECT_THAT(all(corners->down_right), ElementsAre(Corner{15, 61}));
    EXPECT_THAT(all(corners->up_right), ElementsAre(Corner{25, 35}));
}

TEST(FindCorners, LooksAtOddPlacesInsideTheMarginsOnly) {
    for (const size_t size : {7U, 8U, 9U, 20U}) {
        for (size_t y = 3; y + 3 < size; ++y) {
            for (size_t x = 0; x + 3 < size; ++x) {
                auto drawing = blank(size, size);
                drawCorner(drawing, y, x, true, false);
                const bool searched = y % 2 == 1 && y + 4 < size && x % 2 == 1 && x >= 3 && x + 4 < size;
                EXPECT_EQ(find(drawing)->down_left.size(), searched ? 1U : 0U)
                    << y << ' ' << x << " of " << size;
            }
        }
    }
}

TEST(FindCorners, TakesTheFirstKindThatHolds) {
    auto drawing = blank(20, 20);
    drawCorner(drawing, 7, 7, false, true);
    drawCorner(drawing, 7, 7, true, true);
    EXPECT_THAT(all(find(drawing)->down_right), ElementsAre(Corner{7, 7}));
    drawCorner(drawing, 7, 7, false, false);
    const auto corners = find(drawing);
    EXPECT_THAT(all(corners->up_left), ElementsAre(Corner{7, 7}));
    EXPECT_THAT(all(corners->down_right), IsEmpty());
}

TEST(FindCorners, PassesOnToTheNextKindWhenAListIsFull) {
    const std::vector<std::string> solid(120,
                                         std::string(120, '#'));  // 57 x 57 candidates, all of every kind
    const auto corners = find(solid);
    EXPECT_EQ(corners->down_left.size(), 500U);
    EXPECT_EQ(corners->up_left.size(), 500U);
    EXPECT_EQ(corners->down_right.size(), 500U);
    EXPECT_EQ(corners->up_right.size(), 500U);
    EXPECT_EQ(*corners->down_left.begin(), (Corner{3, 3}));
    EXPECT_EQ(*corners->up_left.begin(), (Corner{3 + 2 * (500 / 57), 3 + 2 * (500 % 57)}));
}

constexpr size_t kSize = 640;  // of the edge map in which all corners below lie

bool closesEnoughBlocks(const Corners& corners, uint32_t threshold) {
    std::vector<uint8_t> scratch(ZELAlgo::cornerScratch(kSize, kSize), 0xA5);
    return ZELAlgo::closesEnoughBlocks(corners, kSize, kSize, threshold, scratch.data());
}

void fill(CornerList& list, const std::vector<Corner>& corners) {
    list.clear();
    for (const Corner& corner : corners) {
        list.append(corner);
    }
}

TEST(BlockPairs, CountARectangleFromBothOfItsSides) {
    const auto corners = std::make_unique<Corners>();
    fill(corners->down_left, {{11, 11}});
    fill(corners->up_left, {{11, 21}});
    fill(corners->down_right, {{21, 13}});
    EXPECT_TRUE(closesEnoughBlocks(*corners, 1));
    EXPECT_FALSE(closesEnoughBlocks(*corners, 2));
    EXPECT_FALSE(closesEnoughBlocks(*corners, 0xFFFFFFFF));
    fill(corners->up_right,
         {{21, 23}});  // below the other end of the side, and beside down_right: three pairs more
    EXPECT_TRUE(closesEnoughBlocks(*corners, 4));
    EXPECT_FALSE(closesEnoughBlocks(*corners, 5));
}

TEST(BlockPairs, MustBeNearInOneDirectionAndCloseInTheOther) {
    const auto corners = std::make_unique<Corners>();
    const auto closes = [&](Corner b, Corner c) {
        fill(corners->down_left, {{101, 101}});
        fill(corners->up_left, {b});
        fill(corners->down_right, {c});
        return closesEnoughBlocks(*corners, 1);
    };
    EXPECT_TRUE(closes({103, 121}, {121, 103}));
    EXPECT_TRUE(closes({99, 81}, {81, 99}));
    EXPECT_FALSE(closes({105, 121}, {121, 103})) << "not near";
    EXPECT_FALSE(closes({103, 123}, {121, 103})) << "not close";
    EXPECT_FALSE(closes({103, 101}, {121, 103})) << "a distance of 0 is not close";
    EXPECT_FALSE(closes({103, 121}, {121, 105}));
    EXPECT_FALSE(closes({103, 121}, {123, 103}));
    EXPECT_FALSE(closes({103, 121}, {101, 103}));
}

TEST(BlockPairs, HaveOneLimitOfTwentyThatTheThresholdDoesNotMove) {
    // One upper side, and `n` corners below its right end.
    const auto corners = std::make_unique<Corners>();
    const auto blocky = [&](int n, uint32_t threshold) {
        fill(corners->down_left, {{101, 101}});
        fill(corners->up_left, {{101, 111}});
        std::vector<Corner> below;
        for (int i = 0; i < n; ++i) {
            below.push_back({103 + 2 * (i / 3), 109 + 2 * (i % 3)});
        }
        fill(corners->up_right, below);
        return closesEnoughBlocks(*corners, threshold);
    };
    EXPECT_FALSE(blocky(19, 5)) << "the threshold is not asked here";
    EXPECT_TRUE(blocky(20, 5));
    EXPECT_TRUE(blocky(20, 1000));
}

/// The rule as four nested loops.
bool plainCount(const Corners& k, uint32_t threshold) {
    const auto close = [](int32_t d) { return d != 0 && -20 <= d && d <= 20; };
    const auto near = [](int32_t d) { return -3 <= d && d <= 3; };
    const auto side = [&](Corner s, Corner t) { return near(s.y - t.y) && close(s.x - t.x); };
    const auto stack = [&](Corner s, Corner t) { return near(s.x - t.x) && close(s.y - t.y); };
    uint32_t n = 0;
    for (const Corner& a : k.down_left) {
        for (const Corner& b : k.up_left) {
            for (const Corner& c : k.down_right) {
                if (side(a, b) && stack(a, c) && ++n >= threshold) {
                    return true;
                }
            }
            for (const Corner& d : k.up_right) {
                if (side(a, b) && stack(b, d) && ++n >= 20) {
                    return true;
                }
            }
        }
    }
    for (const Corner& c : k.down_right) {
        for (const Corner& d : k.up_right) {
            for (const Corner& a : k.down_left) {
                if (side(c, d) && stack(c, a) && ++n >= threshold) {
                    return true;
                }
            }
            for (const Corner& b : k.up_left) {
                if (side(c, d) && stack(d, b) && ++n >= threshold) {
                    return true;
                }
            }
        }
    }
    return false;
}

TEST(BlockPairs, AreCountedAsByFourNestedLoops) {
    support::Random random(5);
    const auto corners = std::make_unique<Corners>();
    int blocky = 0;
    constexpr int kRounds = 600;
    for (int round = 0; round < kRounds; ++round) {
        const uint32_t spread = 10 + random.below(round % 2 == 0 ? 60 : 300);
        const uint32_t one_in = 2 + random.below(round % 2 == 0 ? 30 : 600);
        for (CornerList* list :
             {&corners->down_left, &corners->up_left, &corners->down_right, &corners->up_right}) {
            list->clear();
            for (uint32_t y = 0; y < spread; ++y) {
                for (uint32_t x = 0; x < spread; ++x) {
                    if (random.below(one_in) == 0 && list->size() < 60) {
                        list->append({static_cast<int32_t>(2 * y + 3), static_cast<int32_t>(2 * x + 3)});
                    }
                }
            }
        }
        const uint32_t threshold = random.below(40);
        const bool want = plainCount(*corners, threshold);
        ASSERT_EQ(want, closesEnoughBlocks(*corners, threshold)) << "round " << round;
        blocky += want ? 1 : 0;
    }
    EXPECT_GT(blocky, kRounds / 5);
    EXPECT_LT(blocky, kRounds * 4 / 5);
}

}  // namespace
