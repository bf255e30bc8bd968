#include "input/container/mp4_outline.h"

#include <algorithm>
#include <array>
#include <limits>
#include <string_view>

extern "C" {
#include <libavutil/intreadwrite.h>
}

namespace zel_monitor {
namespace {

using Bytes = std::span<const uint8_t>;

constexpr size_t kHeadBytes = 8;
constexpr size_t kLongHeadBytes = 16;
constexpr int kMostBoxes = 100'000;  // before the index
constexpr size_t kMostIndexBytes = size_t{64} << 20;
constexpr int64_t kToTheEnd = std::numeric_limits<int64_t>::max() / 2;

/// A box with its head, which may claim more bytes than there are.
struct Box {
    std::string_view type;
    size_t head_bytes;
    int64_t bytes;
};

/// The box whose head `bytes` begins with; none if there is none.
std::optional<Box> boxAt(Bytes bytes) {
    if (bytes.size() < kHeadBytes) {
        return std::nullopt;
    }
    Box box{.type = {reinterpret_cast<const char*>(bytes.data()) + 4, 4},
            .head_bytes = kHeadBytes,
            .bytes = AV_RB32(bytes.data())};
    if (box.bytes == 0) {
        box.bytes = kToTheEnd;
    } else if (box.bytes == 1 && bytes.size() >= kLongHeadBytes) {
        box.head_bytes = kLongHeadBytes;
        box.bytes = static_cast<int64_t>(AV_RB64(bytes.data() + kHeadBytes));
    }
    return box.bytes >= static_cast<int64_t>(box.head_bytes) ? std::optional(box) : std::nullopt;
}

bool beginsFile(std::string_view type) {
    constexpr std::array<std::string_view, 10> kFirst{"ftyp", "styp", "moov", "moof", "mdat",
                                                      "free", "skip", "wide", "pnot", "sidx"};
    return std::find(kFirst.begin(), kFirst.end(), type) != kFirst.end();
}

bool isOfEncryptedStream(std::string_view sample_entry) {
    constexpr std::array<std::string_view, 4> kEntries{"encv", "enca", "drmi", "drms"};
    return std::find(kEntries.begin(), kEntries.end(), sample_entry) != kEntries.end();
}

/// Whether the boxes in `bytes` lead, by the boxes of `path` one in another, to an encrypted stream's entry.
bool leadsToEncryptedStream(Bytes bytes, std::span<const std::string_view> path) {
    constexpr size_t kEntriesAt = 8;  // in the last box of the path, after its version and their number
    while (const auto box = boxAt(bytes)) {
        const size_t size = std::min(bytes.size(), static_cast<size_t>(box->bytes));
        if (path.empty() && isOfEncryptedStream(box->type)) {
            return true;
        }
        if (!path.empty() && box->type == path.front()) {
            const size_t skipped = box->head_bytes + (path.size() == 1 ? kEntriesAt : 0);
            const Bytes content = bytes.subspan(std::min(skipped, size), size - std::min(skipped, size));
            if (leadsToEncryptedStream(content, path.subspan(1))) {
                return true;
            }
        }
        bytes = bytes.subspan(size);
    }
    return false;
}

}  // namespace

std::optional<Mp4Outline> outlineOfMp4(const ReadAt& read) {
    constexpr std::array<std::string_view, 5> kToEntries{"trak", "mdia", "minf", "stbl", "stsd"};
    int64_t place = 0;
    for (int i = 0; i < kMostBoxes; ++i) {
        const auto head = readBytes(read, place, kLongHeadBytes);
        const auto box = boxAt(head);
        if (i == 0 && (!box || !beginsFile(box->type))) {
            return std::nullopt;
        }
        if (box && box->type == "moov") {
            const auto wanted = std::min(kMostIndexBytes, static_cast<size_t>(box->bytes));
            const auto index = readBytes(read, place, wanted);
            const Bytes boxes = Bytes(index).subspan(std::min(box->head_bytes, index.size()));
            return Mp4Outline{.has_index = true,
                              .index_is_whole = index.size() == wanted || box->bytes == kToTheEnd,
                              .is_encrypted = leadsToEncryptedStream(boxes, kToEntries)};
        }
        if (!box || box->bytes > kToTheEnd - place) {
            break;
        }
        place += box->bytes;
    }
    return Mp4Outline{};
}

}  // namespace zel_monitor
