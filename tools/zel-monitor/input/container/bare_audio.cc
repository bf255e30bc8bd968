#include <algorithm>
#include <array>
#include <cstring>
#include <optional>
#include <span>
#include <string_view>

#include "input/container/byte_window.h"
#include "input/container/structure.h"

extern "C" {
#include <libavutil/intreadwrite.h>
}

namespace zel_monitor {
namespace {

using Bytes = std::span<const uint8_t>;

constexpr size_t kHeadBytes = 7;          // the longer one's, without its checksum
constexpr size_t kMostFrameBytes = 8191;  // with an ADTS head; the others are shorter

/// The head of a frame: how long it is with its content, and what all frames of a stream have in common.
struct Head {
    size_t bytes;
    uint32_t kind;
};

std::optional<Head> adtsHead(Bytes bytes) {
    constexpr uint32_t kCommon = 0xfffefdc0;  // all but what may differ from frame to frame
    const auto size = static_cast<size_t>(AV_RB24(&bytes[3]) >> 5 & 0x1fff);
    const bool is_right = (AV_RB16(bytes.data()) & 0xfff6) == 0xfff0 && (bytes[2] >> 2 & 15) < 13;
    return is_right && size >= kHeadBytes ? std::optional(Head{size, AV_RB32(bytes.data()) & kCommon})
                                          : std::nullopt;
}

/// None for frames of free format too, whose heads do not state their length.
std::optional<Head> mpegAudioHead(Bytes bytes) {
    constexpr std::array<std::array<uint16_t, 15>, 5> kBitRates{{
        // kbit/s
        {0, 32, 64, 96, 128, 160, 192, 224, 256, 288, 320, 352, 384, 416, 448},
        {0, 32, 48, 56, 64, 80, 96, 112, 128, 160, 192, 224, 256, 320, 384},
        {0, 32, 40, 48, 56, 64, 80, 96, 112, 128, 160, 192, 224, 256, 320},
        {0, 32, 48, 56, 64, 80, 96, 112, 128, 144, 160, 176, 192, 224, 256},
        {0, 8, 16, 24, 32, 40, 48, 56, 64, 80, 96, 112, 128, 144, 160},
    }};
    constexpr std::array<uint32_t, 3> kSampleRates{44100, 48000, 32000};
    constexpr uint32_t kCommon = 0xfffe0c00;  // all that neither bit rate nor channel mode changes
    const uint32_t head = AV_RB32(bytes.data());
    const uint32_t version = head >> 19 & 3;  // 0: MPEG-2.5, 2: MPEG-2, 3: MPEG-1
    const uint32_t layer = 4 - (head >> 17 & 3);
    const uint32_t bit_rate_index = head >> 12 & 15;
    const uint32_t sample_rate_index = head >> 10 & 3;
    if (head >> 21 != 0x7ff || version == 1 || layer == 4 || bit_rate_index == 0 || bit_rate_index == 15 ||
        sample_rate_index == 3) {
        return std::nullopt;
    }
    const bool is_first_version = version == 3;
    const uint32_t column = is_first_version ? layer - 1 : layer == 1 ? 3 : 4;
    const uint32_t bit_rate = kBitRates[column][bit_rate_index] * 1000U;
    const uint32_t sample_rate = kSampleRates[sample_rate_index] >> (is_first_version ? 0
                                                                     : version == 2   ? 1
                                                                                      : 2);
    const uint32_t padding = head >> 9 & 1;
    const uint32_t slots = (layer == 1                        ? 12
                            : layer == 3 && !is_first_version ? 72
                                                              : 144) *
                           bit_rate / sample_rate;
    const size_t slot_bytes = layer == 1 ? 4 : 1;
    return Head{(slots + padding) * slot_bytes, head & kCommon};
}

std::optional<Head> headAt(Bytes bytes) {
    if (bytes.size() < kHeadBytes) {
        return std::nullopt;
    }
    const auto adts = adtsHead(bytes);
    return adts ? adts : mpegAudioHead(bytes);
}

/// How many bytes of tags `bytes` begins with: ID3v2, APE.
size_t tagBytes(Bytes bytes) {
    constexpr size_t kId3Head = 10;
    constexpr size_t kApeHead = 32;
    if (bytes.size() >= kId3Head && std::memcmp(bytes.data(), "ID3", 3) == 0) {
        size_t size = 0;
        for (const uint8_t byte : bytes.subspan(6, 4)) {
            size = size << 7 | (byte & 0x7f);
        }
        const bool has_footer = (bytes[5] & 0x10) != 0;
        return kId3Head + size + (has_footer ? kId3Head : 0);
    }
    if (bytes.size() >= kApeHead && std::memcmp(bytes.data(), "APETAGEX", 8) == 0) {
        return kApeHead + AV_RL32(&bytes[12]);
    }
    if (bytes.size() >= 3 && std::memcmp(bytes.data(), "TAG", 3) == 0) {
        return 128;
    }
    return 0;
}

/// Whether a frame like it comes next, or nothing.
bool isFollowed(Bytes content, const Head& head) {
    const auto following = content.size() > head.bytes ? headAt(content.subspan(head.bytes)) : std::nullopt;
    return content.size() == head.bytes || (following && following->kind == head.kind);
}

/// How many frames the first one says that follow it, which some writers fill with that instead of sound.
std::optional<uint32_t> statedFrames(Bytes frame) {
    constexpr size_t kSearched = 64;
    constexpr std::array<std::string_view, 2> kMarks{"Xing", "Info"};
    const std::string_view text(reinterpret_cast<const char*>(frame.data()),
                                std::min(frame.size(), kSearched));
    for (const std::string_view mark : kMarks) {
        const size_t at = text.find(mark);
        if (at != std::string_view::npos && at + 12 <= frame.size() && (frame[at + 7] & 1) != 0) {
            return AV_RB32(&frame[at + 8]);
        }
    }
    return std::nullopt;
}

}  // namespace

StructureFaults faultsOfBareAudio(const ReadAt& read, int64_t bytes) {
    constexpr uint32_t kMostMissing = 2;  // writers differ in what they count
    StructureFaults faults;
    ByteWindow window(read, kMostFrameBytes + kHeadBytes);
    std::optional<uint32_t> kind;
    std::optional<uint32_t> stated_frames;
    size_t first_bytes = 0;
    uint32_t frames = 0;
    for (int64_t place = 0; place < bytes;) {
        const Bytes content = window.at(place);
        if (content.empty()) {  // there is less than the input says, or it cannot be read
            faults.add(place, bytes - place);
            break;
        }
        if (const size_t tag = tagBytes(content); tag > 0) {
            place += static_cast<int64_t>(tag);
            continue;
        }
        const auto head = headAt(content);
        const int64_t next = head ? place + static_cast<int64_t>(head->bytes) : 0;
        const bool goes_on = head && kind && head->kind == *kind;
        if (goes_on && next > bytes) {
            faults.ends_early = true;
            break;
        }
        // Anything may look like a head; it takes two in a row to begin, and to go on in another way.
        if (goes_on || (head && isFollowed(content, *head))) {
            if (!kind) {
                stated_frames = statedFrames(content);
                first_bytes = head->bytes;
            }
            kind = head->kind;
            place = next;
            ++frames;
            continue;
        }
        faults.add(place, 1);
        ++place;
    }
    // What was cut out of a longer one may begin in the middle of a frame.
    if (!faults.stretches.empty() && faults.stretches.front().place == 0 &&
        faults.stretches.front().bytes < static_cast<int64_t>(first_bytes)) {
        faults.bad_bytes -= faults.stretches.front().bytes;
        faults.stretches.erase(faults.stretches.begin());
    }
    // What was lost as whole frames leaves no other trace.
    if (faults.stretches.empty() && stated_frames && frames + kMostMissing < *stated_frames) {
        faults.ends_early = true;
    }
    return kind ? faults : StructureFaults{};
}

}  // namespace zel_monitor
