#include "input/container/unopened.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <vector>

#include "input/container/declared_size.h"
#include "input/container/mp4_outline.h"

namespace zel_monitor {
namespace {

constexpr size_t kBeginningBytes = size_t{64} << 10;

/// The format that libavformat takes the input for; empty if it knows none.
std::string_view formatOf(std::vector<uint8_t> beginning) {
    const auto size = static_cast<int>(beginning.size());
    beginning.resize(beginning.size() + AVPROBE_PADDING_SIZE);
    const AVProbeData data{.filename = "", .buf = beginning.data(), .buf_size = size, .mime_type = nullptr};
    int score = AVPROBE_SCORE_RETRY;
    const AVInputFormat* const format = av_probe_input_format2(&data, 1, &score);
    return format != nullptr ? format->name : "";
}

/// Texts have no control characters but for those that lay them out, and media soon have others.
bool isText(std::span<const uint8_t> beginning) {
    constexpr std::array<uint8_t, 2> kUtf16Marks{0xff, 0xfe};  // in either order
    if (beginning.size() >= 2 &&
        std::is_permutation(beginning.begin(), beginning.begin() + 2, kUtf16Marks.begin())) {
        return true;
    }
    return std::all_of(beginning.begin(), beginning.end(), [](uint8_t c) {
        constexpr std::string_view kLayout = "\t\n\v\f\r\x1b";
        return (c >= 0x20 && c != 0x7f) || kLayout.find(static_cast<char>(c)) != std::string_view::npos;
    });
}

bool isPlaylist(std::string_view format) {
    constexpr std::array<std::string_view, 5> kPlaylists{"hls", "dash", "concat", "sdp", "imf"};
    return std::find(kPlaylists.begin(), kPlaylists.end(), format) != kPlaylists.end();
}

}  // namespace

std::optional<Shortfall> whyUnopened(const UnopenedInput& input, int code) {
    const auto beginning = readBytes(input.read, 0, kBeginningBytes);
    if (beginning.empty()) {
        return input.bytes.value_or(0) > 0 ? std::nullopt
                                           : std::optional(Shortfall{Incomplete::kEmpty, "it is empty"});
    }
    if (const auto outline = outlineOfMp4(input.read)) {
        if (!outline->index_is_whole) {
            return Shortfall{Incomplete::kCutOff, outline->has_index ? "it is cut off: its index is not whole"
                                                                     : "it is cut off: its index is missing"};
        }
        return std::nullopt;
    }
    const std::string_view format = formatOf(beginning);
    if (isPlaylist(format)) {  // what it lists may be missing
        return std::nullopt;
    }
    if (isText(beginning)) {
        return Shortfall{Incomplete::kNotMedia, "it is a text file, not media"};
    }
    if (format.empty()) {
        return Shortfall{Incomplete::kNotMedia, "it begins like no known media format"};
    }
    const auto declared = declaredSize(format, beginning);
    const bool is_short = declared && input.bytes && *input.bytes < *declared;
    // A header that reaches beyond the end counts as a failed read for some demuxers.
    const bool ends_in_header = (code == AVERROR_EOF || code == AVERROR(EIO)) && input.bytes &&
                                *input.bytes <= static_cast<int64_t>(kBeginningBytes);
    if (is_short || ends_in_header) {
        return Shortfall{Incomplete::kCutOff, is_short ? "it is cut off before its end"
                                                       : "it is cut off: its header is not whole"};
    }
    return std::nullopt;
}

}  // namespace zel_monitor
