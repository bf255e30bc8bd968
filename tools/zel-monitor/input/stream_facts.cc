#include "input/stream_facts.h"

#include <string_view>

extern "C" {
#include <libavutil/pixdesc.h>
}

namespace zel_monitor {
namespace {

bool codesPictures(AVCodecID codec) {
    const AVCodecDescriptor* const descriptor = avcodec_descriptor_get(codec);
    return descriptor != nullptr && descriptor->mime_types != nullptr &&
           std::string_view(*descriptor->mime_types).starts_with("image/");
}

bool isStill(const AVStream& stream) {
    return stream.nb_frames == 1 || stream.avg_frame_rate.num <= 0 ||
           codesPictures(stream.codecpar->codec_id);
}

}  // namespace

std::optional<double> statedStart(const AVFormatContext& format) {
    return format.start_time != AV_NOPTS_VALUE
               ? std::optional(static_cast<double>(format.start_time) / AV_TIME_BASE)
               : std::nullopt;
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
