#include "input/container/unread_tail.h"

#include <algorithm>
#include <array>
#include <span>
#include <string_view>
#include <vector>

namespace zel_monitor {
namespace {

constexpr size_t kPacketBytes = 188;
constexpr uint8_t kSync = 0x47;
constexpr int kMostBeginnings = 10;  // a whole stream may leave one or two behind at its end
constexpr size_t kMostBytes = size_t{16} << 20;

/// Whether a transport packet holds the first bytes of a piece of a stream of that type.
bool beginsPiece(std::span<const uint8_t, kPacketBytes> packet, AVMediaType type) {
    const bool begins_unit = (packet[1] & 0x40) != 0;
    const bool has_adaptation = (packet[3] & 0x20) != 0;
    const bool has_payload = (packet[3] & 0x10) != 0;
    const size_t at = has_adaptation ? size_t{5} + packet[4] : size_t{4};
    if (packet[0] != kSync || !begins_unit || !has_payload || at + 4 > packet.size()) {
        return false;
    }
    const int kind = packet[at + 3] & (type == AVMEDIA_TYPE_VIDEO ? 0xf0 : 0xe0);
    return packet[at] == 0 && packet[at + 1] == 0 && packet[at + 2] == 1 &&
           kind == (type == AVMEDIA_TYPE_VIDEO ? 0xe0 : 0xc0);
}

/// Packets may have a few bytes between them, by which they are then all apart.
bool isFollowed(std::span<const uint8_t> bytes, size_t at) {
    constexpr std::array<size_t, 3> kSteps{kPacketBytes, 192, 204};
    return std::any_of(kSteps.begin(), kSteps.end(), [&](size_t step) {
        return at + step == bytes.size() || (at + step < bytes.size() && bytes[at + step] == kSync);
    });
}

int beginningsIn(std::span<const uint8_t> bytes, AVMediaType type) {
    int count = 0;
    for (size_t at = 0; at + kPacketBytes <= bytes.size(); ++at) {
        if (isFollowed(bytes, at) && beginsPiece(bytes.subspan(at).first<kPacketBytes>(), type)) {
            ++count;
            at += kPacketBytes - 1;
        }
    }
    return count;
}

}  // namespace

bool hasUnreadTail(const AVFormatContext& format, AVMediaType type, int64_t place) {
    AVIOContext* const input = format.pb;
    if (std::string_view(format.iformat->name) != "mpegts" || input == nullptr ||
        (input->seekable & AVIO_SEEKABLE_NORMAL) == 0) {
        return false;
    }
    const int64_t from = place + static_cast<int64_t>(kPacketBytes);
    const int64_t length = avio_size(input) - from;
    if (length <= 0 || avio_seek(input, from, SEEK_SET) < 0) {
        return false;
    }
    std::vector<uint8_t> bytes(std::min(static_cast<size_t>(length), kMostBytes));
    const int read = avio_read(input, bytes.data(), static_cast<int>(bytes.size()));
    return read > 0 &&
           beginningsIn(std::span(bytes).first(static_cast<size_t>(read)), type) >= kMostBeginnings;
}

}  // namespace zel_monitor
