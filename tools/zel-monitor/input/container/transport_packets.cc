#include "input/container/transport_packets.h"

#include <algorithm>
#include <array>

namespace zel_monitor {
namespace {

/// Whether another packet, or the end, comes where one must after the packet at `at`.
bool isFollowed(std::span<const uint8_t> bytes, size_t at) {
    constexpr std::array<size_t, 3> kSteps{TS_SIZE, 192, 204};  // packets are all the same step apart
    return std::any_of(kSteps.begin(), kSteps.end(), [&](size_t step) {
        return at + step == bytes.size() || (at + step < bytes.size() && ts_validate(&bytes[at + step]));
    });
}

}  // namespace

void visitTransportPackets(std::span<const uint8_t> bytes,
                           const std::function<void(TransportPacket)>& visit) {
    for (size_t at = 0; at + TS_SIZE <= bytes.size(); ++at) {
        if (ts_validate(&bytes[at]) && isFollowed(bytes, at)) {
            visit(bytes.subspan(at).first<TS_SIZE>());
            at += TS_SIZE - 1;
        }
    }
}

std::optional<std::span<const uint8_t>> beginningOfPes(TransportPacket packet) {
    const uint8_t* const header = packet.data();
    if (!ts_get_unitstart(header) || !ts_has_payload(header)) {
        return std::nullopt;
    }
    const size_t adaptation = ts_has_adaptation(header) ? size_t{1} + ts_get_adaptation(header) : 0;
    const size_t at = TS_HEADER_SIZE + adaptation;
    const bool begins = at + PES_HEADER_SIZE <= TS_SIZE && pes_validate(header + at);
    return begins ? std::optional<std::span<const uint8_t>>(packet.subspan(at)) : std::nullopt;
}

}  // namespace zel_monitor
