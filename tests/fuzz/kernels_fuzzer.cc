// Fast kernels against their scalar twins at sizes, strides, alignments and content that the input chooses,
// with every instruction set of the machine.
#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <vector>

#include <hwy/highway.h>

#include "algo/audio/audio_kernels.h"
#include "algo/audio/vad.h"
#include "algo/video/edge_kernels.h"
#include "algo/video/luma_kernels.h"
#include "algo/video/smoothing_kernels.h"
#include "fuzz/bytes.h"

namespace {

using fuzz::Bytes;
using Buffer = std::vector<uint8_t>;

/// `size` bytes of content, `offset` bytes past an aligned address, ending where their memory ends.
class Content {
  public:
    Content(Bytes& bytes, size_t size) : offset_(bytes.next() % 64), memory_(new uint8_t[offset_ + size]) {
        const uint8_t kind = bytes.next() % 4;
        const Bytes pattern = bytes.split(1 + bytes.next() % 40);
        Bytes left = pattern;
        for (size_t i = 0; i < size; ++i) {
            if (left.empty()) {
                left = pattern;
            }
            const uint8_t byte = left.next();
            // As it comes, repeated, with drift, or of two levels.
            memory_[offset_ + i] = kind == 0   ? byte
                                   : kind == 1 ? static_cast<uint8_t>(byte + i / 7)
                                   : kind == 2 ? static_cast<uint8_t>(byte + i * i % 251)
                                               : static_cast<uint8_t>(byte % 2 == 0 ? 0 : 255);
        }
    }
    const uint8_t* data() const { return memory_.get() + offset_; }

  private:
    size_t offset_;
    std::unique_ptr<uint8_t[]> memory_;
};

void count(Bytes& bytes) {
    const size_t samples = bytes.below(700);
    const Content content(bytes, 4 * samples);
    MUST_HOLD(ZELAlgo::histogramOfEvenBytes(content.data(), samples) ==
              ZELAlgo::histogramOfEvenBytesScalar(content.data(), samples));
    MUST_HOLD(ZELAlgo::summaryOfEvenBytes(content.data(), samples) ==
              ZELAlgo::summaryOfEvenBytesScalar(content.data(), samples));
    MUST_HOLD(ZELAlgo::zerosOfEveryFourthByte(content.data(), samples) ==
              ZELAlgo::zerosOfEveryFourthByteScalar(content.data(), samples));
}

void compare(Bytes& bytes) {
    const size_t width = 1 + bytes.below(300);
    const size_t stride = width + bytes.next() % 70;
    const size_t rows = 1 + bytes.next() % 6;
    std::array<size_t, 8> cuts{0, width};
    std::generate(cuts.begin() + 2, cuts.end(),
                  [&] { return bytes.below(static_cast<uint32_t>(width) + 1); });
    std::sort(cuts.begin(), cuts.end());
    const Content current(bytes, stride * (rows - 1) + width);
    const Content before(bytes, width * rows);
    Buffer fast(before.data(), before.data() + width * rows);
    Buffer scalar = fast;
    std::array<uint32_t, 7> fast_sums{};
    std::array<uint32_t, 7> scalar_sums{};
    ZELAlgo::replaceAndCompare(current.data(), stride, rows, cuts, fast.data(), fast_sums.data());
    ZELAlgo::replaceAndCompareScalar(current.data(), stride, rows, cuts, scalar.data(), scalar_sums.data());
    MUST_HOLD(fast == scalar && fast_sums == scalar_sums);
}

void findEdges(Bytes& bytes) {
    const size_t width = 1 + bytes.below(200);
    const size_t height = 1 + bytes.next() % 60;
    const size_t stride = width + bytes.next() % 70;
    const Content source(bytes, stride * (height - 1) + width);
    const size_t plane = width * height + ZELAlgo::kSpareBytes;
    const size_t lengths = ZELAlgo::magnitudeStride(width) * height + 2 * ZELAlgo::kSpareBytes;
    Buffer scratch(std::max(ZELAlgo::smoothingScratch(width, height), ZELAlgo::edgeScratch(width, height)));
    const auto kernel = ZELAlgo::gaussianKernel();
    Buffer fast(plane);
    Buffer scalar(plane);
    ZELAlgo::smooth(kernel, source.data(), stride, width, height, scratch.data(), fast.data());
    ZELAlgo::smoothScalar(kernel, source.data(), stride, width, height, scalar.data());
    MUST_HOLD(std::memcmp(fast.data(), scalar.data(), width * height) == 0);

    Buffer fast_lengths(lengths);
    Buffer scalar_lengths(lengths);
    uint8_t* const fast_at = fast_lengths.data() + ZELAlgo::kSpareBytes;
    uint8_t* const scalar_at = scalar_lengths.data() + ZELAlgo::kSpareBytes;
    const uint8_t maximum = ZELAlgo::thinnedMagnitude(fast.data(), width, height, scratch.data(), fast_at);
    MUST_HOLD(maximum ==
              ZELAlgo::thinnedMagnitudeScalar(fast.data(), width, height, scratch.data(), scalar_at));
    for (size_t y = 0; y < height; ++y) {
        const size_t row = y * ZELAlgo::magnitudeStride(width);
        MUST_HOLD(std::memcmp(fast_at + row, scalar_at + row, width) == 0);
    }

    std::vector<uint64_t> fast_map(ZELAlgo::edgeMapWords(width) * height);
    std::vector<uint64_t> scalar_map(fast_map.size());
    const ZELAlgo::EdgeLevels levels = ZELAlgo::edgeLevels(maximum);
    ZELAlgo::threshold(fast_at, fast.data(), width, height, levels, scratch.data(), fast_map.data());
    ZELAlgo::thresholdScalar(fast_at, fast.data(), width, height, levels, scalar_map.data());
    MUST_HOLD(fast_map == scalar_map);
}

void track(Bytes& bytes) {
    ZELAlgo::VadHandle_t fast;
    ZELAlgo::VadHandle_t scalar;
    for (int update = 0; update < 4; ++update) {
        const Content raw(bytes, ZELAlgo::kPowerBins);
        ZELAlgo::VadHandle_t::Bins power;
        for (size_t k = 0; k < power.size(); ++k) {  // over many magnitudes, never negative
            power[k] = std::ldexp(static_cast<float>(raw.data()[k] % 16), raw.data()[k] / 8 - 10);
        }
        const bool new_period = bytes.next() % 2 == 0;
        ZELAlgo::trackBins(fast, power.data(), new_period);
        ZELAlgo::trackBinsScalar(scalar, power.data(), new_period);
        MUST_HOLD(std::memcmp(&fast, &scalar, sizeof fast) == 0);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    constexpr void (*kKernels[])(Bytes&) = {&count, &compare, &findEdges, &track};
    static const std::vector<int64_t> targets = hwy::SupportedAndGeneratedTargets();
    for (const int64_t target : targets) {
        hwy::SetSupportedTargetsForTest(target);
        Bytes bytes(data, size);
        kKernels[bytes.next() % std::size(kKernels)](bytes);
    }
    hwy::SetSupportedTargetsForTest(0);
    return 0;
}
