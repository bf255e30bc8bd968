#ifndef ZEL_SRC_ALGO_VIDEO_BLOCK_CORNERS_H_
#define ZEL_SRC_ALGO_VIDEO_BLOCK_CORNERS_H_

#include <array>
#include <cstddef>
#include <cstdint>

namespace ZELAlgo {

struct Corner {
    int32_t y;
    int32_t x;  ///< of the left end of the horizontal side, whichever end the corner is at

    // NOLINTNEXTLINE(modernize-use-nullptr): takes the compiler's own comparison for a 0
    friend bool operator==(const Corner&, const Corner&) = default;
    friend bool operator<(const Corner& a, const Corner& b) { return a.y != b.y ? a.y < b.y : a.x < b.x; }
};

/// Up to 500 corners of one kind, row by row from left to right.
class CornerList {
  public:
    static constexpr size_t kCapacity = 500;

    bool full() const { return size_ == corners_.size(); }
    void append(Corner corner) { corners_[size_++] = corner; }
    void clear() { size_ = 0; }
    size_t size() const { return size_; }
    const Corner* begin() const { return corners_.data(); }
    const Corner* end() const { return corners_.data() + size_; }

  private:
    std::array<Corner, kCapacity> corners_;
    size_t size_ = 0;
};

/// Right angles on an edge map, by where the vertical arm leaves the horizontal side.
struct Corners {
    CornerList down_left;
    CornerList up_left;
    CornerList down_right;
    CornerList up_right;
};

/// Finds the corners of a width x height edge map (see edge_kernels.h) whose horizontal sides begin at odd
/// places. Replaces what `corners` held.
void findCorners(const uint64_t* edge_map, size_t width, size_t height, Corners& corners);

/// Bytes of scratch that closesEnoughBlocks needs for a width x height edge map.
size_t cornerScratch(size_t width, size_t height);

/// Counts the pairs of corners, found in a width x height edge map, that close small rectangles; true as soon
/// as there are enough of them. Its time is bounded however full the lists are.
bool closesEnoughBlocks(const Corners& corners, size_t width, size_t height, uint32_t threshold,
                        uint8_t* scratch);

}  // namespace ZELAlgo

#endif  // ZEL_SRC_ALGO_VIDEO_BLOCK_CORNERS_H_
