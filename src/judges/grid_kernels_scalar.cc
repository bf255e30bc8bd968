#include "judges/grid_kernels.h"

#include <algorithm>
#include <cstdlib>
#include <functional>
#include <limits>

namespace ZELJudges {
namespace {

struct Tally {
    int edges = 0;
    int signs = 0;
    uint32_t living = 0;

    void add(bool edge, int step, bool alive) {
        edges += edge ? 1 : 0;
        signs += edge ? (step < 0 ? -1 : 1) : 0;
        living += alive ? 1U : 0U;
    }
    void addTo(EdgeProfile::Counts& counts, size_t boundary) const {
        counts.incoherent[boundary] += static_cast<uint32_t>(edges - std::abs(signs));
        counts.living[boundary] += living;
    }
};

/// Looks at the boundary before the sum at `at`, whose neighbours lie `next` elements apart.
void look(const uint16_t* at, std::ptrdiff_t next, Tally& near, Tally& far) {
    const auto sum = [at, next](std::ptrdiff_t i) { return static_cast<int>(at[i * next]); };
    const auto step = [&sum](std::ptrdiff_t i) { return sum(i) - sum(i - 1); };
    int beside = 0;
    for (const std::ptrdiff_t i : {-4, -3, -2, 2, 3, 4}) {
        beside = std::max(beside, std::abs(step(i)));
    }
    const int here = std::abs(step(0));
    const int bend = std::abs(2 * step(0) - step(-1) - step(1));
    near.add(here >= 16 && here >= 2 * beside && bend >= 32, step(0), std::max(here, beside) >= 8);

    const auto left = std::minmax({sum(-3), sum(-4), sum(-5), sum(-6)});
    const auto right = std::minmax({sum(2), sum(3), sum(4), sum(5)});
    const int apart = sum(2) + sum(3) + sum(4) + sum(5) - sum(-3) - sum(-4) - sum(-5) - sum(-6);  // 4 times
    const int range = std::max(left.second - left.first, right.second - right.first);
    // The slopes of both sides, in sums per 3 samples, over the 8 samples from middle to middle: all in 6ths
    // of a level's eight, cut to what 16 bits hold, which is beyond every range.
    const int slopes = sum(-3) - sum(-6) + sum(5) - sum(2);
    const int beyond =
        std::min(std::abs((3 * apart >> 1) - 8 * slopes), int{std::numeric_limits<int16_t>::max()});
    far.add(beyond >= 6 * range + 144, apart, std::abs(apart) >= 32 || range >= 8);
}

}  // namespace

void EdgeProfile::clear(size_t boundaries) {
    for (Counts* const counts : {&near, &far}) {
        counts->incoherent.assign(boundaries, 0);
        counts->living.assign(boundaries, 0);
    }
}

void EdgeProfile::add(const EdgeProfile& other) {
    const auto add = [](std::vector<uint32_t>& sums, const std::vector<uint32_t>& more) {
        std::transform(sums.begin(), sums.end(), more.begin(), sums.begin(), std::plus<>());
    };
    add(near.incoherent, other.near.incoherent);
    add(near.living, other.near.living);
    add(far.incoherent, other.far.incoherent);
    add(far.living, other.far.living);
}

size_t paddedStrip(size_t count) {
    constexpr size_t kWidestVector = 128;  // 2048 bits
    return count + kWidestVector;
}

void addColumnEdgesScalar(const Strips& strips, EdgeProfile& profile) {
    for (size_t x = kGridMargin; x + kGridMargin < strips.width; ++x) {
        Tally near;
        Tally far;
        for (size_t at = x; at < strips.columns.size(); at += strips.column_pitch) {
            look(strips.columns.data() + at, 1, near, far);
        }
        near.addTo(profile.near, x);
        far.addTo(profile.far, x);
    }
}

void addRowEdgesScalar(const Strips& strips, EdgeProfile& profile) {
    const size_t height = strips.height / 8 * 8;
    for (size_t y = kGridMargin; y + kGridMargin < height; ++y) {
        Tally near;
        Tally far;
        for (size_t cell = 0; cell < strips.width / 8; ++cell) {
            look(strips.rows.data() + y * strips.row_pitch + cell,
                 static_cast<std::ptrdiff_t>(strips.row_pitch), near, far);
        }
        near.addTo(profile.near, y);
        far.addTo(profile.far, y);
    }
}

}  // namespace ZELJudges
