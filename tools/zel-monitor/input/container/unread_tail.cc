#include "input/container/unread_tail.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <vector>

#include "input/container/byte_source.h"
#include "input/container/transport_packets.h"

namespace zel_monitor {
namespace {

constexpr int kMostBeginnings = 10;  // a whole stream may leave one or two behind at its end
constexpr size_t kMostBytes = size_t{16} << 20;

bool isOfType(uint8_t stream_id, AVMediaType type) {
    return type == AVMEDIA_TYPE_VIDEO ? (stream_id & 0xf0) == PES_STREAM_ID_VIDEO_MPEG
                                      : (stream_id & 0xe0) == PES_STREAM_ID_AUDIO_MPEG;
}

/// What lies from `place` on, some of it; nothing in an input that cannot be read again.
std::vector<uint8_t> tailOf(const AVFormatContext& format, int64_t place) {
    AVIOContext* const input = format.pb;
    const bool can_return = input != nullptr && (input->seekable & AVIO_SEEKABLE_NORMAL) != 0;
    return can_return ? readBytes(readerOf(*input), place, kMostBytes) : std::vector<uint8_t>();
}

int beginningsInTransportStream(std::span<const uint8_t> bytes, int pid) {
    int beginnings = 0;
    visitTransportPackets(bytes, [&](TransportPacket packet) {
        beginnings += ts_get_pid(packet.data()) == pid && beginningOfPes(packet) ? 1 : 0;
    });
    return beginnings;
}

/// Of the streams of video and of MPEG audio, whose content holds no such codes.
int beginningsInProgramStream(std::span<const uint8_t> bytes, int code) {
    const std::array<uint8_t, 4> start{0, 0, 1, static_cast<uint8_t>(code)};
    int beginnings = 0;
    for (auto it = bytes.begin();; ++it, ++beginnings) {
        it = std::search(it, bytes.end(), start.begin(), start.end());
        if (it == bytes.end()) {
            return beginnings;
        }
    }
}

}  // namespace

bool goesOnUndecoded(const AVFormatContext& format, const AVStream& stream, int64_t place) {
    constexpr int kMostFrames = 25;
    const std::string_view name = format.iformat->name;
    const bool is_video = stream.codecpar->codec_type == AVMEDIA_TYPE_VIDEO;
    int beginnings = 0;
    if (name == "mpegts") {
        beginnings = beginningsInTransportStream(tailOf(format, place + TS_SIZE), stream.id);
    } else if (name == "mpeg" && stream.id >= 0x1c0 && stream.id <= 0x1ef) {
        constexpr int64_t kCodeBytes = 4;
        beginnings = beginningsInProgramStream(tailOf(format, place + kCodeBytes), stream.id & 0xff);
    }
    return beginnings >= (is_video ? kMostFrames : kMostBeginnings);
}

bool hasUnreadTail(const AVFormatContext& format, AVMediaType type, int64_t place) {
    if (std::string_view(format.iformat->name) != "mpegts") {
        return false;
    }
    int beginnings = 0;
    const auto bytes = tailOf(format, place + TS_SIZE);
    visitTransportPackets(bytes, [&](TransportPacket packet) {
        const auto pes = beginningOfPes(packet);
        beginnings += pes && isOfType(pes_get_streamid(pes->data()), type) ? 1 : 0;
    });
    return beginnings >= kMostBeginnings;
}

}  // namespace zel_monitor
