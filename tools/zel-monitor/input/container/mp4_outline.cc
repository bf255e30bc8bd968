#include "input/container/mp4_outline.h"

#include <algorithm>
#include <array>
#include <limits>

#include "input/container/mp4_boxes.h"

namespace zel_monitor {
namespace {

using Bytes = std::span<const uint8_t>;

constexpr size_t kLongHeadBytes = 16;
constexpr int kMostBoxes = 100'000;  // before the index
constexpr size_t kMostIndexBytes = size_t{64} << 20;
constexpr int64_t kToTheEnd = std::numeric_limits<int64_t>::max() / 2;

bool beginsFile(uint32_t type) {
    constexpr std::array kFirst{fourCc("ftyp"), fourCc("styp"), fourCc("moov"), fourCc("moof"),
                                fourCc("mdat"), fourCc("free"), fourCc("skip"), fourCc("wide"),
                                fourCc("pnot"), fourCc("sidx")};
    return std::find(kFirst.begin(), kFirst.end(), type) != kFirst.end();
}

bool isOfEncryptedStream(uint32_t sample_entry) {
    constexpr std::array kEntries{fourCc("encv"), fourCc("enca"), fourCc("drmi"), fourCc("drms")};
    return std::find(kEntries.begin(), kEntries.end(), sample_entry) != kEntries.end();
}

/// Whether the boxes in `bytes` lead, by the boxes of `path` one in another, to an encrypted stream's entry.
bool leadsToEncryptedStream(Bytes bytes, std::span<const uint32_t> path) {
    constexpr size_t kEntriesAt = 8;  // in the last box of the path, after its version and their number
    bool found = false;
    forMp4Boxes(bytes, [&](uint32_t type, Bytes content) {
        if (path.empty()) {
            found = found || isOfEncryptedStream(type);
        } else if (type == path.front()) {
            const size_t skipped = path.size() == 1 ? std::min(kEntriesAt, content.size()) : 0;
            found = found || leadsToEncryptedStream(content.subspan(skipped), path.subspan(1));
        }
    });
    return found;
}

}  // namespace

std::optional<Mp4Outline> outlineOfMp4(const ReadAt& read) {
    constexpr std::array kToEntries{fourCc("trak"), fourCc("mdia"), fourCc("minf"), fourCc("stbl"),
                                    fourCc("stsd")};
    int64_t place = 0;
    for (int i = 0; i < kMostBoxes; ++i) {
        const auto head = readBytes(read, place, kLongHeadBytes);
        const auto box = mp4BoxAt(head, kToTheEnd);
        if (i == 0 && (!box || !beginsFile(box->type))) {
            return std::nullopt;
        }
        if (box && box->type == fourCc("moov")) {
            const auto wanted = std::min(kMostIndexBytes, static_cast<size_t>(box->bytes));
            const auto index = readBytes(read, place, wanted);
            const Bytes boxes =
                Bytes(index).subspan(std::min(static_cast<size_t>(box->head_bytes), index.size()));
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
