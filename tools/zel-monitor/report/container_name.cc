#include "report/container_name.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

extern "C" {
#include <libavformat/avformat.h>
}

namespace zel_monitor {
namespace {

/// Where FFmpeg's description is not what one says, by the first word of the format's name.
constexpr std::array<std::pair<std::string_view, std::string_view>, 12> kSpoken{{
    {"mov", "MP4/MOV"},
    {"matroska", "Matroska/WebM"},
    {"wav", "WAV"},
    {"mp3", "MP3"},
    {"gif", "GIF"},
    {"hls", "HLS"},
    {"dash", "DASH"},
    {"rtsp", "RTSP"},
    {"aac", "AAC"},
    {"flac", "FLAC"},
    {"image2", "image"},
    {"lavfi", "generated"},
}};

}  // namespace

std::string containerName(const std::string& format) {
    constexpr std::string_view kPiped = "_pipe";  // one image, as in "png_pipe"
    const std::string name = format.substr(0, format.find(','));
    const auto* const spoken =
        std::find_if(kSpoken.begin(), kSpoken.end(), [&](const auto& row) { return row.first == name; });
    if (spoken != kSpoken.end()) {
        return std::string(spoken->second);
    }
    if (name.ends_with(kPiped)) {
        std::string image = name.substr(0, name.size() - kPiped.size());
        std::transform(image.begin(), image.end(), image.begin(),
                       [](char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; });
        return image + " image";
    }
    // What others are called stands before the explanation, "MPEG-TS (MPEG-2 Transport Stream)".
    const AVInputFormat* const known = av_find_input_format(name.c_str());
    const std::string described = known != nullptr && known->long_name != nullptr ? known->long_name : name;
    return described.substr(0, described.find(" ("));
}

}  // namespace zel_monitor
