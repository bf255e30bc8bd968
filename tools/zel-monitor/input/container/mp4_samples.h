#ifndef ZEL_TOOLS_INPUT_CONTAINER_MP4_SAMPLES_H_
#define ZEL_TOOLS_INPUT_CONTAINER_MP4_SAMPLES_H_

#include <cstddef>
#include <cstdint>
#include <map>
#include <span>
#include <vector>

namespace zel_monitor {

/// Where the samples of an MP4 lie, by its index and its fragments' heads. Damaged ones may state anything;
/// what is kept of them is bounded.
class Mp4Samples {
  public:
    struct Range {
        int64_t from;
        int64_t to;
    };

    /// Takes in the content of the index. False if one of its tracks cannot be read.
    bool addIndex(std::span<const uint8_t> moov);
    /// Takes in the content of the head of a fragment that begins at `place`.
    void addFragment(std::span<const uint8_t> moof, int64_t place);

    /// Whether what was found is all there is to find.
    bool isKnown() const { return is_known_ && !runs_.empty(); }
    /// In order, without overlaps.
    std::vector<Range> ranges() const;

  private:
    bool addTrack(std::span<const uint8_t> trak);
    void addTables(std::span<const uint8_t> stbl);
    int64_t addRun(std::span<const uint8_t> trun, int64_t base, int64_t next, uint32_t usual_size);
    void add(int64_t place, int64_t bytes);

    std::vector<Range> runs_;                  // of samples that lie one after another
    std::map<uint32_t, uint32_t> usual_size_;  // of a track's samples in fragments
    bool is_known_ = true;
};

}  // namespace zel_monitor

#endif  // ZEL_TOOLS_INPUT_CONTAINER_MP4_SAMPLES_H_
