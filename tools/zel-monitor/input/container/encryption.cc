#include "input/container/encryption.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "input/container/byte_source.h"
#include "input/container/mp4_outline.h"
#include "input/container/transport_packets.h"

extern "C" {
#include <libavutil/dict.h>
}

namespace zel_monitor {
namespace {

constexpr size_t kMostTransportBytes = size_t{16} << 20;
constexpr int kTellingPackets = 10;  // a bit may be wrong in a damaged one

bool hasTag(const AVDictionary* tags, const char* name) {
    return av_dict_get(tags, name, nullptr, 0) != nullptr;
}

/// Whether either the transport packet says that its content is scrambled, or the piece that begins in it.
bool isScrambled(TransportPacket packet) {
    constexpr size_t kFlags = PES_HEADER_SIZE;
    constexpr uint8_t kPesScrambling = 0x30;
    if (ts_get_scrambling(packet.data()) != 0) {
        return true;
    }
    const auto pes = beginningOfPes(packet);
    return pes && pes->size() > kFlags && pes_validate_header(pes->data()) &&
           ((*pes)[kFlags] & kPesScrambling) != 0;
}

bool isScrambled(const ReadAt& read, int pid) {
    int scrambled = 0;
    visitTransportPackets(readBytes(read, 0, kMostTransportBytes), [&](TransportPacket packet) {
        scrambled += ts_get_pid(packet.data()) == pid && isScrambled(packet) ? 1 : 0;
    });
    return scrambled >= kTellingPackets;
}

}  // namespace

bool isEncrypted(const AVFormatContext& format, const AVStream& stream) {
    constexpr std::array<uint32_t, 4> kProtected{MKTAG('e', 'n', 'c', 'v'), MKTAG('e', 'n', 'c', 'a'),
                                                 MKTAG('d', 'r', 'm', 'i'), MKTAG('d', 'r', 'm', 's')};
    const bool is_asf = std::string_view(format.iformat->name) == "asf";
    return std::find(kProtected.begin(), kProtected.end(), stream.codecpar->codec_tag) != kProtected.end() ||
           hasTag(stream.metadata, "enc_key_id") ||
           (is_asf &&
            (hasTag(format.metadata, "ASF_Protection_Type") || hasTag(format.metadata, "encryption")));
}

bool isEncrypted(const AVPacket& packet) {
    return av_packet_get_side_data(&packet, AV_PKT_DATA_ENCRYPTION_INFO, nullptr) != nullptr;
}

bool provesEncrypted(const AVFormatContext& format, const AVStream& stream) {
    if (format.pb == nullptr || (format.pb->seekable & AVIO_SEEKABLE_NORMAL) == 0) {
        return false;
    }
    const std::string_view name = format.iformat->name;
    if (name == "mpegts") {
        return isScrambled(readerOf(*format.pb), stream.id);
    }
    if (name.starts_with("mov,")) {
        const auto outline = outlineOfMp4(readerOf(*format.pb));
        return outline && outline->is_encrypted;
    }
    return false;
}

}  // namespace zel_monitor
