#include "input/stream_facts.h"

#include <algorithm>
#include <array>
#include <string_view>

extern "C" {
#include <libavutil/pixdesc.h>
}

namespace zel_monitor {
namespace {

bool codesFrames(AVCodecID codec) {
    const AVCodecDescriptor* const descriptor = avcodec_descriptor_get(codec);
    return descriptor != nullptr && descriptor->mime_types != nullptr &&
           std::string_view(*descriptor->mime_types).starts_with("image/");
}

bool isStill(const AVStream& stream) {
    return stream.nb_frames == 1 || stream.avg_frame_rate.num <= 0 || codesFrames(stream.codecpar->codec_id);
}

}  // namespace

std::optional<double> statedStart(const AVFormatContext& format) {
    return format.start_time != AV_NOPTS_VALUE
               ? std::optional(static_cast<double>(format.start_time) / AV_TIME_BASE)
               : std::nullopt;
}

StreamNature natureOf(const AVFormatContext& format) {
    constexpr std::array<std::string_view, 6> kCutAnywhere{"mpegts", "mpeg", "hls", "rtsp", "rtp", "sdp"};
    constexpr std::array<std::string_view, 6> kBareVideo{"h264", "hevc", "mpegvideo", "m4v", "vc1", "obu"};
    constexpr std::array<std::string_view, 5> kBareAudio{"aac", "mp3", "ac3", "eac3", "dts"};
    const std::string_view name = format.iformat->name;
    const auto is_one_of = [&](const auto& names) {
        return std::find(names.begin(), names.end(), name) != names.end();
    };
    const bool has_timestamps = !is_one_of(kBareVideo) && !is_one_of(kBareAudio) && name != "avi";
    return {.begins_anywhere = is_one_of(kBareAudio) || is_one_of(kCutAnywhere),
            .has_timestamps = has_timestamps,
            .is_uneven = !has_timestamps || name == "matroska,webm"};
}

double frameRateOf(const AVStream& stream) {
    const AVRational rate = stream.avg_frame_rate;
    return rate.num > 0 && rate.den > 0 ? av_q2d(rate) : 0.0;
}

VideoFacts videoFacts(const AVStream& stream, const AVCodecContext& decoder) {
    const char* const pixels = av_get_pix_fmt_name(decoder.pix_fmt);
    return {.codec = avcodec_get_name(decoder.codec_id),
            .pixel_format = pixels != nullptr ? pixels : "unknown",
            .width = decoder.width,
            .height = decoder.height,
            .frame_rate = frameRateOf(stream),
            .still = isStill(stream)};
}

AudioFacts audioFacts(const AVCodecContext& decoder) {
    return {.codec = avcodec_get_name(decoder.codec_id),
            .sample_rate = decoder.sample_rate,
            .channels = decoder.ch_layout.nb_channels};
}

}  // namespace zel_monitor
