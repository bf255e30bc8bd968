#include "input/container/structure.h"

#include <algorithm>
#include <array>

#include "input/container/byte_window.h"

namespace zel_monitor {
namespace {

constexpr size_t kMostStretches = 1000;

struct Format {
    std::string_view name;
    StructureFaults (*faults)(const ReadAt&, int64_t);
};
constexpr std::array<Format, 6> kFormats{{
    {"mov,mp4,m4a,3gp,3g2,mj2", &faultsOfMp4},
    {"ogg", &faultsOfOgg},
    {"mp3", &faultsOfBareAudio},
    {"aac", &faultsOfBareAudio},
    {"h264", &faultsOfBareVideo},
    {"hevc", &faultsOfBareVideo},
}};

}  // namespace

StructureFaults faultsOfBareVideo(const ReadAt& read, int64_t bytes) {
    constexpr int64_t kMostZeros = 256;
    StructureFaults faults;
    ByteWindow window(read, 1);
    int64_t zeros = 0;
    int64_t place = 0;
    while (place < bytes) {
        const auto content = window.at(place);
        if (content.empty()) {
            break;
        }
        for (const uint8_t byte : content) {
            if (byte != 0 && zeros > kMostZeros) {
                faults.add(place - zeros, zeros);
            }
            zeros = byte == 0 ? zeros + 1 : 0;
            ++place;
        }
    }
    if (zeros > kMostZeros) {
        faults.add(place - zeros, zeros);
    }
    return faults;
}

void StructureFaults::add(int64_t place, int64_t bytes) {
    bad_bytes += bytes;
    if (!stretches.empty() && stretches.back().place + stretches.back().bytes == place) {
        stretches.back().bytes += bytes;
    } else if (stretches.size() < kMostStretches) {
        stretches.push_back({place, bytes});
    }
}

StructureFaults faultsOfStructure(std::string_view format, const ReadAt& read, int64_t bytes) {
    const auto* const found = std::find_if(kFormats.begin(), kFormats.end(),
                                           [&](const Format& candidate) { return candidate.name == format; });
    return found != kFormats.end() ? found->faults(read, bytes) : StructureFaults{};
}

}  // namespace zel_monitor
