#include "input/container/declared_size.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <span>
#include <string_view>
#include <utility>
#include <vector>

#include "input/container/flv_extent.h"
#include "input/container/matroska_extent.h"

extern "C" {
#include <libavutil/intreadwrite.h>
}

namespace zel_monitor {
namespace {

constexpr int64_t kLeastHeaderBytes = int64_t{4} << 10;  // some demuxers stop early
constexpr int64_t kMostHeaderBytes = int64_t{64} << 10;
using Header = std::span<const uint8_t>;

/// Some programs count the eight bytes before the size, or a last pad byte that they leave out. One that
/// writes into a pipe gives no size, or the most that fits.
std::optional<int64_t> riffSize(Header header) {
    constexpr uint32_t kLeastUnknown = 0x7fff0000;
    const uint32_t size = header.size() >= 8 ? AV_RL32(header.data() + 4) : 0;
    return size > 0 && size < kLeastUnknown ? std::optional(int64_t{size} - 1) : std::nullopt;
}

std::optional<int64_t> aiffSize(Header header) {
    const uint32_t size = header.size() >= 8 ? AV_RB32(header.data() + 4) : 0;
    return size > 0 ? std::optional(int64_t{size} + 8 - 1) : std::nullopt;  // some leave a last pad byte out
}

std::optional<int64_t> wave64Size(Header header) {
    constexpr int64_t kMostPadding = 7;
    const auto size = header.size() >= 24 ? static_cast<int64_t>(AV_RL64(header.data() + 16)) : 0;
    return size > 0 ? std::optional(size - kMostPadding) : std::nullopt;
}

std::optional<int64_t> asfSize(Header header) {
    constexpr std::array<uint8_t, 16> kFileProperties{0xa1, 0xdc, 0xab, 0x8c, 0x47, 0xa9, 0xcf, 0x11,
                                                      0x8e, 0xe4, 0x00, 0xc0, 0x0c, 0x20, 0x53, 0x65};
    constexpr std::ptrdiff_t kSize = 40;  // from the beginning of the properties
    constexpr std::ptrdiff_t kFlags = 88;
    constexpr uint32_t kBroadcast = 1;
    const auto found =
        std::search(header.begin(), header.end(), kFileProperties.begin(), kFileProperties.end());
    if (header.end() - found < kFlags + 4) {
        return std::nullopt;
    }
    const uint8_t* const properties = &*found;
    const auto size = static_cast<int64_t>(AV_RL64(properties + kSize));
    const bool is_known = (AV_RL32(properties + kFlags) & kBroadcast) == 0 && size > 0;
    return is_known ? std::optional(size) : std::nullopt;
}

std::optional<int64_t> cafSize(Header header) {
    constexpr size_t kChunkHead = 12;
    for (size_t at = 8; at + kChunkHead <= header.size();) {
        const auto size = static_cast<int64_t>(AV_RB64(header.data() + at + 4));
        if (size < 0) {
            return std::nullopt;
        }
        const auto end = static_cast<int64_t>(at + kChunkHead) + std::min(size, INT64_MAX / 2);
        if (std::memcmp(header.data() + at, "data", 4) == 0) {
            return end;
        }
        at = static_cast<size_t>(end);
    }
    return std::nullopt;
}

using SizeReader = std::optional<int64_t> (*)(Header);

/// For a container by libavformat's name; null if libavformat can be relied on.
SizeReader sizeReaderOf(std::string_view container) {
    constexpr std::array<std::pair<std::string_view, SizeReader>, 8> kReaders{
        {{"wav", &riffSize},
         {"avi", &riffSize},
         {"aiff", &aiffSize},
         {"w64", &wave64Size},
         {"asf", &asfSize},
         {"caf", &cafSize},
         {"flv", &flvSize},
         {"matroska,webm", &matroskaSize}}};
    const auto* const found = std::find_if(kReaders.begin(), kReaders.end(),
                                           [&](const auto& reader) { return reader.first == container; });
    return found != kReaders.end() ? found->second : nullptr;
}

/// The header of a file, through which libavformat has just gone.
std::vector<uint8_t> headerOf(AVIOContext& input) {
    const int64_t place = avio_tell(&input);
    std::vector<uint8_t> header(static_cast<size_t>(std::clamp(place, kLeastHeaderBytes, kMostHeaderBytes)));
    const bool begins = avio_seek(&input, 0, SEEK_SET) == 0;
    const int read = begins ? avio_read(&input, header.data(), static_cast<int>(header.size())) : 0;
    header.resize(static_cast<size_t>(std::max(read, 0)));
    avio_seek(&input, place, SEEK_SET);
    return header;
}

}  // namespace

std::optional<int64_t> declaredSize(std::string_view name, std::span<const uint8_t> beginning) {
    const SizeReader reader = sizeReaderOf(name);
    const auto size = reader != nullptr ? reader(beginning) : std::nullopt;
    return size ? std::optional(std::max(*size, int64_t{0}))
                : std::nullopt;  // some are less than their leeway
}

std::optional<int64_t> declaredSize(const AVFormatContext& format, std::span<const uint8_t> beginning) {
    const std::string_view name = format.iformat->name;
    if (sizeReaderOf(name) == nullptr || format.pb == nullptr) {
        return std::nullopt;
    }
    const bool can_return = (format.pb->seekable & AVIO_SEEKABLE_NORMAL) != 0;
    return declaredSize(name, can_return ? Header(headerOf(*format.pb)) : beginning);
}

bool endsBefore(AVIOContext& input, int64_t size) {
    const int64_t length = avio_size(&input);
    return length >= 0 ? length < size : avio_seek(&input, size, SEEK_SET) < 0;
}

}  // namespace zel_monitor
