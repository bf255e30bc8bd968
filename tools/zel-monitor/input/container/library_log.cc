#include "input/container/library_log.h"

#include <algorithm>
#include <array>
#include <cstdarg>
#include <cstdio>
#include <mutex>
#include <optional>
#include <string_view>

extern "C" {
#include <libavutil/log.h>
}

namespace zel_monitor {
namespace {

thread_local std::vector<ComplaintReason>* heard_from_demuxers = nullptr;

/// What counts although it is no error to FFmpeg, by how the message begins.
struct Message {
    std::string_view begins;
    ComplaintReason reason;
};
constexpr std::array<Message, 2> kFromDecoders{{
    {"concealing ", ComplaintReason::kConcealed},
    {"Frame num gap", ComplaintReason::kMissingFrame},
}};
constexpr std::array<Message, 3> kFromDemuxers{{
    {"edit unit sync lost", ComplaintReason::kContainer},
    {"No stream associated to TrackNumber", ComplaintReason::kUnaccounted},
    {"sample/frame number mismatch", ComplaintReason::kMissingFrame},
}};

template <size_t size>
std::optional<ComplaintReason> reasonFor(int level, std::string_view format, ComplaintReason usual,
                                         const std::array<Message, size>& others) {
    const auto found = std::find_if(others.begin(), others.end(), [&](const Message& message) {
        return format.starts_with(message.begins);
    });
    if (found != others.end()) {
        return found->reason;
    }
    if (level > AV_LOG_ERROR) {
        return std::nullopt;
    }
    return format.find("CRC") != std::string_view::npos ? ComplaintReason::kChecksum : usual;
}

/// Share of a frame's blocks that had to be concealed, by the numbers in the message.
double concealedShare(const AVCodecContext& decoder, const char* format, va_list arguments) {
    constexpr int kBlock = 16;
    std::array<char, 128> text{};
    std::vsnprintf(text.data(), text.size(), format, arguments);
    std::array<int, 3> errors{};
    const int read =
        std::sscanf(text.data(), "concealing %d DC, %d AC, %d MV", &errors[0], &errors[1], &errors[2]);
    const int64_t rows = (decoder.height + kBlock - 1) / kBlock;
    const int64_t blocks = rows * ((decoder.width + kBlock - 1) / kBlock);
    if (read < 3 || blocks < 1) {
        return 1.0;
    }
    const double most = *std::max_element(errors.begin(), errors.end());
    return std::clamp(most / static_cast<double>(blocks), 0.0, 1.0);
}

void hearDecoder(const AVCodecContext& decoder, int level, const char* format, va_list arguments) {
    const auto reason = reasonFor(level, format, ComplaintReason::kDecodingError, kFromDecoders);
    if (reason) {
        const double share =
            *reason == ComplaintReason::kConcealed ? concealedShare(decoder, format, arguments) : 1.0;
        static_cast<LogListener*>(decoder.opaque)->onLogged(*reason, decoder.reordered_opaque, share);
    }
}

/// Takes FFmpeg's place in hearing its messages, and hands them on to it.
void hear(void* context, int level, const char* format, va_list arguments) {
    const AVClass* const kind = context != nullptr ? *static_cast<const AVClass**>(context) : nullptr;
    const bool is_codec = kind != nullptr && kind == avcodec_get_class();
    const bool is_format = kind != nullptr && kind == avformat_get_class();
    va_list copy;
    va_copy(copy, arguments);
    if (is_codec && static_cast<AVCodecContext*>(context)->opaque != nullptr) {
        hearDecoder(*static_cast<AVCodecContext*>(context), level, format, copy);
    } else if ((is_codec || is_format) && heard_from_demuxers != nullptr) {
        // What parsers run into the decoder will run into as well, so only some of their warnings count.
        const int counted = is_format ? level : std::max(level, AV_LOG_WARNING);
        const auto reason = reasonFor(counted, format, ComplaintReason::kContainer, kFromDemuxers);
        std::vector<ComplaintReason>& heard = *heard_from_demuxers;
        if (reason && std::find(heard.begin(), heard.end(), *reason) == heard.end()) {
            heard.push_back(*reason);
        }
    }
    va_end(copy);
    av_log_default_callback(context, level, format, arguments);
}

void hearFfmpeg() {
    static std::once_flag once;
    std::call_once(once, [] { av_log_set_callback(&hear); });
}

}  // namespace

void listenTo(AVCodecContext& decoder, LogListener& listener) {
    hearFfmpeg();
    decoder.opaque = &listener;
}

DemuxerLog::DemuxerLog(std::vector<ComplaintReason>& heard) : before_(heard_from_demuxers) {
    hearFfmpeg();
    heard_from_demuxers = &heard;
}

DemuxerLog::~DemuxerLog() {
    heard_from_demuxers = before_;
}

}  // namespace zel_monitor
