#include <algorithm>
#include <array>
#include <cstring>
#include <map>
#include <optional>
#include <span>

#include "input/container/byte_window.h"
#include "input/container/structure.h"

extern "C" {
#include <libavutil/bswap.h>
#include <libavutil/crc.h>
#include <libavutil/intreadwrite.h>
}

namespace zel_monitor {
namespace {

using Bytes = std::span<const uint8_t>;

constexpr size_t kHeadBytes = 27;
constexpr size_t kMostPageBytes = kHeadBytes + 255 + size_t{255} * 255;
constexpr size_t kChecksumAt = 22;
constexpr size_t kMostStreams = 1000;
constexpr int kMostAttempts = 10'000;  // to find a page again: each may look through the whole of it
constexpr std::array<uint8_t, 4> kCapture{'O', 'g', 'g', 'S'};

struct Page {
    uint32_t stream;
    uint32_t number;
    bool is_first;
    bool is_last;
    int64_t bytes;
};

/// The page that `bytes` begins with; none if it is not whole and right.
std::optional<Page> pageAt(std::span<uint8_t> bytes) {
    if (bytes.size() < kHeadBytes || std::memcmp(bytes.data(), kCapture.data(), kCapture.size()) != 0) {
        return std::nullopt;
    }
    size_t size = kHeadBytes + bytes[26];
    if (bytes.size() < size) {
        return std::nullopt;
    }
    for (const uint8_t lacing : bytes.subspan(kHeadBytes, bytes[26])) {
        size += lacing;
    }
    if (bytes.size() < size) {
        return std::nullopt;
    }
    const uint32_t stored = AV_RL32(&bytes[kChecksumAt]);
    AV_WL32(&bytes[kChecksumAt], 0U);
    const uint32_t checksum = av_bswap32(av_crc(av_crc_get_table(AV_CRC_32_IEEE), 0, bytes.data(), size));
    AV_WL32(&bytes[kChecksumAt], stored);
    if (checksum != stored) {
        return std::nullopt;
    }
    return Page{.stream = AV_RL32(&bytes[14]),
                .number = AV_RL32(&bytes[18]),
                .is_first = (bytes[5] & 2) != 0,
                .is_last = (bytes[5] & 4) != 0,
                .bytes = static_cast<int64_t>(size)};
}

/// How far it is to where the next page may begin, or to the end of what is known.
int64_t untilCapture(Bytes bytes) {
    return std::search(bytes.begin() + 1, bytes.end(), kCapture.begin(), kCapture.end()) - bytes.begin();
}

}  // namespace

StructureFaults faultsOfOgg(const ReadAt& read, int64_t bytes) {
    struct Stream {
        uint32_t next_number;
        bool ended;
    };
    StructureFaults faults;
    std::map<uint32_t, Stream> streams;
    ByteWindow window(read, kMostPageBytes);
    int attempts = 0;
    for (int64_t place = 0; place < bytes;) {
        const std::span<uint8_t> content = window.at(place);
        const auto page = pageAt(content);
        if (!page) {
            const bool gives_up = content.empty() || ++attempts > kMostAttempts;
            const int64_t next = gives_up ? bytes : place + untilCapture(content);
            faults.add(place, next - place);
            place = next;
            continue;
        }
        const auto known = streams.find(page->stream);
        // A stream may join others that run, or follow them under the same number.
        if (known != streams.end() && page->number != known->second.next_number && !page->is_first) {
            faults.add(place, 0);
        }
        if (known != streams.end() || streams.size() < kMostStreams) {
            streams[page->stream] = {page->number + 1, page->is_last};
        }
        place += page->bytes;
    }
    faults.ends_early =
        std::any_of(streams.begin(), streams.end(), [](const auto& stream) { return !stream.second.ended; });
    return faults;
}

}  // namespace zel_monitor
