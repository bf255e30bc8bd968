#ifndef ZEL_TOOLS_INPUT_CONTAINER_TRANSPORT_PACKETS_H_
#define ZEL_TOOLS_INPUT_CONTAINER_TRANSPORT_PACKETS_H_

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>

extern "C" {
#include <bitstream/mpeg/pes.h>
#include <bitstream/mpeg/ts.h>
}

namespace zel_monitor {

/// One packet of a transport stream, from its sync byte on.
using TransportPacket = std::span<const uint8_t, TS_SIZE>;

/// Visits the packets that lie anywhere in `bytes`; they may have a few bytes between them.
void visitTransportPackets(std::span<const uint8_t> bytes, const std::function<void(TransportPacket)>& visit);

/// The first bytes of a piece of a stream, with its own header, if the packet begins one.
std::optional<std::span<const uint8_t>> beginningOfPes(TransportPacket packet);

}  // namespace zel_monitor

#endif  // ZEL_TOOLS_INPUT_CONTAINER_TRANSPORT_PACKETS_H_
