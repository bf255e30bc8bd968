#include "judges/grid_kernels.h"

#if ZEL_SIMD

// clang-format off: foreach_target.h compiles this file once per instruction set and must come first.
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "judges/grid_kernels_simd.cc"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>
// clang-format on

#include <algorithm>
#include <cstdlib>

HWY_BEFORE_NAMESPACE();
namespace ZELJudges::HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

#if HWY_TARGET == HWY_SCALAR

void addColumnEdgesSimd(const Strips& strips, EdgeProfile& profile) {
    addColumnEdgesScalar(strips, profile);
}

void addRowEdgesSimd(const Strips& strips, EdgeProfile& profile) {
    addRowEdgesScalar(strips, profile);
}

#else

constexpr hn::ScalableTag<int16_t> kShorts{};
constexpr hn::ScalableTag<int32_t> kInts{};
using Shorts = hn::VFromD<decltype(kShorts)>;

/// What was found at one boundary per lane, or in all lanes at one.
struct Tally {
    Shorts edges;
    Shorts signs;
    Shorts living;

    HWY_INLINE Tally() : edges(hn::Zero(kShorts)), signs(edges), living(edges) {}

    HWY_INLINE void add(Shorts edge, Shorts step, Shorts alive) {  // edge and alive: -1 or 0
        edges = hn::Sub(edges, edge);
        const auto falls = hn::BroadcastSignBit(step);
        signs = hn::Sub(signs, hn::And(edge, hn::Or(falls, hn::Set(kShorts, 1))));
        living = hn::Sub(living, alive);
    }
};

/// As look() of the plain version, for as many neighbouring boundaries as there are lanes.
HWY_INLINE void look(const uint16_t* at, std::ptrdiff_t next, Tally& near, Tally& far) {
    const hn::Rebind<uint16_t, decltype(kShorts)> unsigned_shorts;
    const auto sum = [at, next, unsigned_shorts](std::ptrdiff_t i)
                         HWY_ATTR { return hn::BitCast(kShorts, hn::LoadU(unsigned_shorts, at + i * next)); };
    const auto above = [](Shorts value, Shorts limit)
                           HWY_ATTR { return hn::VecFromMask(kShorts, hn::Gt(value, limit)); };
    const auto l6 = sum(-6);
    const auto l5 = sum(-5);
    const auto l4 = sum(-4);
    const auto l3 = sum(-3);
    const auto l2 = sum(-2);
    const auto l1 = sum(-1);
    const auto r0 = sum(0);
    const auto r1 = sum(1);
    const auto r2 = sum(2);
    const auto r3 = sum(3);
    const auto r4 = sum(4);
    const auto r5 = sum(5);

    const auto apart_of = [](Shorts a, Shorts b) HWY_ATTR { return hn::Abs(hn::Sub(a, b)); };
    const auto left_steps = hn::Max(hn::Max(apart_of(l4, l5), apart_of(l3, l4)), apart_of(l2, l3));
    const auto right_steps = hn::Max(hn::Max(apart_of(r2, r1), apart_of(r3, r2)), apart_of(r4, r3));
    const auto beside = hn::Max(left_steps, right_steps);
    const auto step = hn::Sub(r0, l1);
    const auto here = hn::Abs(step);
    // 2 (r0 - l1) - (l1 - l2) - (r1 - r0)
    const auto bend = hn::Abs(hn::Sub(hn::Add(hn::Add(step, hn::Add(step, step)), l2), r1));
    // Each limit less one, as there is no "at least" for integers.
    const auto needed = hn::Max(hn::Sub(hn::Add(beside, beside), hn::Set(kShorts, 1)), hn::Set(kShorts, 15));
    near.add(hn::And(above(here, needed), above(bend, hn::Set(kShorts, 31))), step,
             above(hn::Max(here, beside), hn::Set(kShorts, 7)));

    const auto range_of = [](Shorts a, Shorts b, Shorts c, Shorts d) HWY_ATTR {
        return hn::Sub(hn::Max(hn::Max(a, b), hn::Max(c, d)), hn::Min(hn::Min(a, b), hn::Min(c, d)));
    };
    const auto range = hn::Max(range_of(l3, l4, l5, l6), range_of(r2, r3, r4, r5));
    const auto apart =
        hn::Sub(hn::Add(hn::Add(r2, r3), hn::Add(r4, r5)), hn::Add(hn::Add(l3, l4), hn::Add(l5, l6)));
    const auto slopes = hn::Add(hn::Sub(l3, l6), hn::Sub(r5, r2));
    // Differences of sums up to 2040 leave the first at 12240 and the second at 32640 at most; the larger of
    // the two saturated differences is the distance, cut at 32767.
    const auto steps3 = hn::ShiftRight<1>(hn::Add(apart, hn::Add(apart, apart)));
    const auto slopes8 = hn::ShiftLeft<3>(slopes);
    const auto beyond = hn::Max(hn::SaturatedSub(steps3, slopes8), hn::SaturatedSub(slopes8, steps3));
    const auto range2 = hn::Add(range, range);
    const auto limit = hn::Add(hn::Add(range2, hn::Add(range2, range2)), hn::Set(kShorts, 143));
    far.add(above(beyond, limit), apart,
            hn::Or(above(hn::Abs(apart), hn::Set(kShorts, 31)), above(range, hn::Set(kShorts, 7))));
}

/// A tally of one boundary per lane, into the first `count` of them.
HWY_INLINE void addLanes(const Tally& tally, size_t boundary, size_t count, EdgeProfile::Counts& counts) {
    HWY_ALIGN int16_t incoherent[hn::MaxLanes(kShorts)];
    HWY_ALIGN int16_t living[hn::MaxLanes(kShorts)];
    hn::Store(hn::Sub(tally.edges, hn::Abs(tally.signs)), kShorts, incoherent);
    hn::Store(tally.living, kShorts, living);
    for (size_t i = 0; i < count; ++i) {
        counts.incoherent[boundary + i] += static_cast<uint32_t>(incoherent[i]);
        counts.living[boundary + i] += static_cast<uint32_t>(living[i]);
    }
}

HWY_INLINE int32_t total(Shorts counts) {
    auto others = hn::Zero(kInts);
    const auto sums =
        hn::ReorderWidenMulAccumulate(kInts, counts, hn::Set(kShorts, 1), hn::Zero(kInts), others);
    return hn::GetLane(hn::SumOfLanes(kInts, hn::Add(sums, others)));
}

/// A tally of one boundary in all lanes.
HWY_INLINE void addSum(const Tally& tally, size_t boundary, EdgeProfile::Counts& counts) {
    counts.incoherent[boundary] += static_cast<uint32_t>(total(tally.edges) - std::abs(total(tally.signs)));
    counts.living[boundary] += static_cast<uint32_t>(total(tally.living));
}

void addColumnEdgesSimd(const Strips& strips, EdgeProfile& profile) {
    const size_t lanes = hn::Lanes(kShorts);
    for (size_t x = kGridMargin; x + kGridMargin < strips.width; x += lanes) {
        Tally near;
        Tally far;
        for (size_t at = x; at < strips.columns.size(); at += strips.column_pitch) {
            look(strips.columns.data() + at, 1, near, far);
        }
        const size_t count = std::min(lanes, strips.width - kGridMargin - x);
        addLanes(near, x, count, profile.near);
        addLanes(far, x, count, profile.far);
    }
}

void addRowEdgesSimd(const Strips& strips, EdgeProfile& profile) {
    const size_t lanes = hn::Lanes(kShorts);
    const size_t height = strips.height / 8 * 8;
    for (size_t y = kGridMargin; y + kGridMargin < height; ++y) {
        Tally near;
        Tally far;
        for (size_t cell = 0; cell < strips.width / 8; cell += lanes) {  // padding shows nothing and is dead
            look(strips.rows.data() + y * strips.row_pitch + cell,
                 static_cast<std::ptrdiff_t>(strips.row_pitch), near, far);
        }
        addSum(near, y, profile.near);
        addSum(far, y, profile.far);
    }
}

#endif  // HWY_TARGET

}  // namespace ZELJudges::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace ZELJudges {

HWY_EXPORT(addColumnEdgesSimd);
HWY_EXPORT(addRowEdgesSimd);

void addColumnEdges(const Strips& strips, EdgeProfile& profile) {
    HWY_DYNAMIC_DISPATCH(addColumnEdgesSimd)(strips, profile);
}

void addRowEdges(const Strips& strips, EdgeProfile& profile) {
    HWY_DYNAMIC_DISPATCH(addRowEdgesSimd)(strips, profile);
}

}  // namespace ZELJudges
#endif  // HWY_ONCE

#else  // ZEL_SIMD

namespace ZELJudges {

void addColumnEdges(const Strips& strips, EdgeProfile& profile) {
    addColumnEdgesScalar(strips, profile);
}

void addRowEdges(const Strips& strips, EdgeProfile& profile) {
    addRowEdgesScalar(strips, profile);
}

}  // namespace ZELJudges

#endif  // ZEL_SIMD
