#include <algorithm>
#include <array>
#include <span>
#include <vector>

#include "input/container/mp4_boxes.h"
#include "input/container/mp4_samples.h"
#include "input/container/structure.h"

namespace zel_monitor {
namespace {

using Range = Mp4Samples::Range;

constexpr size_t kMostIndexBytes = size_t{256} << 20;
constexpr int kMostBoxes = 1'000'000;
constexpr int kMostAttempts = 10'000;  // to find a box again
constexpr size_t kSearchBytes = size_t{64} << 10;
constexpr double kLeastUnclaimed = 0.02;  // of the media data: writers leave holes

/// What MP4 files consist of. Others that are made of letters may be there too, and are let alone.
constexpr std::array<uint32_t, 4> kMain{fourCc("moof"), fourCc("mdat"), fourCc("moov"), fourCc("mfra")};

bool isMain(uint32_t type) {
    return std::find(kMain.begin(), kMain.end(), type) != kMain.end();
}

bool isName(uint32_t type) {
    for (int shift = 0; shift < 32; shift += 8) {
        const uint32_t byte = type >> shift & 0xff;
        if (byte < 0x20 || byte > 0x7e) {
            return false;
        }
    }
    return true;
}

/// How far it is to where the next of the main boxes may begin, or to the end of what is known. At least one.
int64_t untilBox(std::span<const uint8_t> bytes, int64_t left) {
    size_t at = 1;
    for (; at + 8 <= bytes.size(); ++at) {
        const auto box = mp4BoxAt(bytes.subspan(at), left - static_cast<int64_t>(at));
        if (box && isMain(box->type) && box->bytes <= left - static_cast<int64_t>(at)) {
            return static_cast<int64_t>(at);
        }
    }
    return static_cast<int64_t>(std::max(at, bytes.size() - std::min<size_t>(bytes.size(), 7)));
}

/// The parts of `range` that are in none of `claimed`, which are in order.
std::vector<Range> unclaimed(const Range& range, const std::vector<Range>& claimed) {
    std::vector<Range> left;
    int64_t reached = range.from;
    auto it = std::lower_bound(claimed.begin(), claimed.end(), range.from,
                               [](const Range& a, int64_t place) { return a.to <= place; });
    for (; it != claimed.end() && it->from < range.to; ++it) {
        if (it->from > reached) {
            left.push_back({reached, it->from});
        }
        reached = std::max(reached, it->to);
    }
    if (reached < range.to) {
        left.push_back({reached, range.to});
    }
    return left;
}

/// Media data that belongs to no sample, if it is more than a hole here and there.
void addUnclaimed(const std::vector<Range>& media, const std::vector<Range>& claimed,
                  StructureFaults& faults) {
    int64_t all = 0;
    int64_t lost = 0;
    std::vector<Range> holes;
    for (const Range& range : media) {
        all += range.to - range.from;
        for (const Range& hole : unclaimed(range, claimed)) {
            lost += hole.to - hole.from;
            holes.push_back(hole);
        }
    }
    if (static_cast<double>(lost) >= kLeastUnclaimed * static_cast<double>(all)) {
        for (const Range& hole : holes) {
            faults.add(hole.from, hole.to - hole.from);
        }
    }
}

}  // namespace

StructureFaults faultsOfMp4(const ReadAt& read, int64_t bytes) {
    StructureFaults faults;
    Mp4Samples samples;
    std::vector<Range> media;
    bool has_items = false;  // of pictures, which other tables tell
    int attempts = 0;
    int64_t place = 0;
    for (int i = 0; i < kMostBoxes && place < bytes; ++i) {
        const auto head = readBytes(read, place, 16);
        const auto box = mp4BoxAt(head, bytes - place);
        const bool goes_beyond = box && box->bytes > bytes - place;
        if (!box || !isName(box->type) || (goes_beyond && !isMain(box->type))) {
            const int64_t left = bytes - place;
            const auto content = readBytes(read, place, kSearchBytes);
            const bool gives_up = content.empty() || ++attempts > kMostAttempts;
            const int64_t skipped = gives_up ? left : std::min(untilBox(content, left), left);
            faults.add(place, skipped);
            place += skipped;
            continue;
        }
        faults.ends_early = faults.ends_early || goes_beyond;
        const int64_t end = std::min(place + box->bytes, bytes);
        if (box->type == fourCc("mdat")) {
            media.push_back({place + box->head_bytes, end});
        } else if (box->type == fourCc("moov") || box->type == fourCc("moof")) {
            const auto content =
                readBytes(read, place + box->head_bytes,
                          std::min(kMostIndexBytes, static_cast<size_t>(box->bytes - box->head_bytes)));
            if (box->type == fourCc("moof")) {
                samples.addFragment(content, place);
            } else {
                faults.unreadable_track = !samples.addIndex(content) || faults.unreadable_track;
            }
        }
        has_items = has_items || box->type == fourCc("meta");
        place = end;
    }
    const auto claimed = samples.ranges();
    if (!claimed.empty() && claimed.back().to > bytes) {
        faults.ends_early = true;
    }
    if (samples.isKnown() && !has_items) {
        addUnclaimed(media, claimed, faults);
    }
    std::sort(faults.stretches.begin(), faults.stretches.end(),
              [](const BadStretch& a, const BadStretch& b) { return a.place < b.place; });
    return faults;
}

}  // namespace zel_monitor
