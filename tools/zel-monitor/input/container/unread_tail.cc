#include "input/container/unread_tail.h"

#include <string_view>

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

}  // namespace

bool hasUnreadTail(const AVFormatContext& format, AVMediaType type, int64_t place) {
    AVIOContext* const input = format.pb;
    if (std::string_view(format.iformat->name) != "mpegts" || input == nullptr ||
        (input->seekable & AVIO_SEEKABLE_NORMAL) == 0) {
        return false;
    }
    int beginnings = 0;
    const auto bytes = readBytes(readerOf(*input), place + TS_SIZE, kMostBytes);
    visitTransportPackets(bytes, [&](TransportPacket packet) {
        const auto pes = beginningOfPes(packet);
        beginnings += pes && isOfType(pes_get_streamid(pes->data()), type) ? 1 : 0;
    });
    return beginnings >= kMostBeginnings;
}

}  // namespace zel_monitor
