#include "input/container/declared_length.h"

#include <algorithm>
#include <string_view>

extern "C" {
#include <libavutil/dict.h>
#include <libavutil/parseutils.h>
}

namespace zel_monitor {
namespace {

/// Matroska states the time of the last end, not how long it is from the first start.
bool countsFromZero(const AVFormatContext& format) {
    return std::string_view(format.iformat->name).starts_with("matroska");
}

/// In microseconds, 0 if there is none that can be read. Some writers add a language to the tag's name, which
/// a later copy leaves behind beside its own tag.
int64_t taggedDuration(const AVStream& stream) {
    for (const int flags : {0, AV_DICT_IGNORE_SUFFIX}) {
        const AVDictionaryEntry* const entry = av_dict_get(stream.metadata, "DURATION", nullptr, flags);
        int64_t microseconds = 0;
        if (entry != nullptr && av_parse_time(&microseconds, entry->value, 1) >= 0 && microseconds > 0) {
            return microseconds;
        }
    }
    return 0;
}

/// Where the stream is said to end, in seconds on the input's own clock.
std::optional<double> declaredEnd(const AVStream& stream, bool from_zero) {
    const double start = stream.start_time != AV_NOPTS_VALUE
                             ? static_cast<double>(stream.start_time) * av_q2d(stream.time_base)
                             : 0.0;
    if (stream.duration != AV_NOPTS_VALUE && stream.duration > 0) {
        return start + static_cast<double>(stream.duration) * av_q2d(stream.time_base);
    }
    const double length = static_cast<double>(taggedDuration(stream)) / AV_TIME_BASE;
    if (length <= 0) {
        return std::nullopt;
    }
    return from_zero && length > start ? length : start + length;
}

}  // namespace

std::optional<DeclaredLength> declaredLength(const AVFormatContext& format, double start,
                                             const std::vector<const AVStream*>& chosen) {
    if (format.duration == AV_NOPTS_VALUE || format.duration <= 0) {
        return std::nullopt;
    }
    // Where the container does not say, the last timestamps, or size and bit rate, have been asked.
    const bool estimated = format.duration_estimation_method != AVFMT_DURATION_FROM_STREAM;
    const bool from_zero = countsFromZero(format);
    const double stated = static_cast<double>(format.duration) / AV_TIME_BASE;
    const double whole = from_zero && stated > start ? stated - start : stated;
    // The container speaks for streams too that are left out here; then the chosen ones are asked, if all of
    // them have an answer.
    double end = 0.0;
    bool all_known = format.nb_streams > chosen.size();
    for (const AVStream* const stream : chosen) {
        const auto stream_end = declaredEnd(*stream, from_zero);
        all_known = all_known && stream_end;
        end = std::max(end, stream_end.value_or(0.0));
    }
    return DeclaredLength{all_known && end > start ? std::min(end - start, whole) : whole, estimated};
}

std::optional<double> countedLength(const AVFormatContext& format, const AVStream& stream) {
    const std::string_view name = format.iformat->name;
    const bool is_video = stream.codecpar->codec_type == AVMEDIA_TYPE_VIDEO;
    const bool is_counted = name == "flac" || name == "mxf" || (name == "avi" && is_video);
    if (!is_counted || format.duration_estimation_method != AVFMT_DURATION_FROM_STREAM ||
        stream.duration == AV_NOPTS_VALUE || stream.duration <= 0) {
        return std::nullopt;
    }
    return static_cast<double>(stream.duration) * av_q2d(stream.time_base);
}

}  // namespace zel_monitor
