// Files of anything through all that looks into containers itself. What is said of them stays within them,
// and a file that is longer, as one sent piece by piece may be, is no harder to read.
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <span>
#include <string_view>

#include "fuzz/bytes.h"
#include "input/container/declared_size.h"
#include "input/container/mp4_outline.h"
#include "input/container/structure.h"
#include "input/container/transport_packets.h"
#include "input/container/unopened.h"

extern "C" {
#include <libavutil/error.h>
}

namespace {

using namespace zel_monitor;  // NOLINT(google-build-using-namespace): as in main()

void lookThrough(std::string_view format, const ReadAt& read, int64_t bytes) {
    const StructureFaults faults = faultsOfStructure(format, read, bytes);
    MUST_HOLD(faults.bad_bytes >= 0);
    int64_t reached = 0;
    for (const BadStretch& stretch : faults.stretches) {
        MUST_HOLD(stretch.place >= reached && stretch.bytes >= 0);
        reached = stretch.place;
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size == 0) {
        return 0;
    }
    const std::span<const uint8_t> file(data + 1, size - 1);
    const ReadAt read = readerOf(file);
    const int64_t missing = data[0] < 128 ? 0 : int64_t{data[0]} << (data[0] % 48U);
    constexpr std::string_view kFormats[] = {"mov,mp4,m4a,3gp,3g2,mj2", "ogg", "aac", "h264"};
    lookThrough(kFormats[data[0] % std::size(kFormats)], read, static_cast<int64_t>(file.size()) + missing);
    for (const std::string_view format : {"wav", "avi", "w64", "asf", "caf", "flv", "matroska,webm"}) {
        MUST_HOLD(declaredSize(format, file).value_or(0) >= 0);
    }
    outlineOfMp4(read);
    visitTransportPackets(file, [](TransportPacket packet) { beginningOfPes(packet); });
    whyUnopened({.read = read, .bytes = static_cast<int64_t>(file.size()) + missing}, AVERROR_INVALIDDATA);
    return 0;
}
