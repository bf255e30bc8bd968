#include "input/opened_input.h"

#include <span>
#include <string_view>

#include "cli/file_names.h"
#include "input/container/declared_size.h"
#include "input/container/encryption.h"
#include "input/container/library_log.h"
#include "input/container/unopened.h"

extern "C" {
#include <libavdevice/avdevice.h>
#include <libavutil/dict.h>
}

namespace zel_monitor {
namespace {

int isInterrupted(void* cutoff) {
    return static_cast<const Cutoff*>(cutoff)->isDue() ? 1 : 0;
}

const AVInputFormat* forcedFormat(const std::string& name) {
    if (name.empty()) {
        return nullptr;
    }
    avdevice_register_all();
    const AVInputFormat* const format = av_find_input_format(name.c_str());
    if (format == nullptr) {
        throw FfmpegError(AVERROR_DEMUXER_NOT_FOUND, "unknown input format " + name);
    }
    return format;
}

Incomplete kindOf(int code) {
    switch (code) {
        case AVERROR_EXIT:
            return Incomplete::kStopped;
        case AVERROR_STREAM_NOT_FOUND:
            return Incomplete::kNoStream;
        case AVERROR_DECODER_NOT_FOUND:
            return Incomplete::kNoDecoder;
        case AVERROR(ENOENT):
        case AVERROR(EACCES):
        case AVERROR(EISDIR):
            return Incomplete::kUnreachable;
        default:
            return Incomplete::kReadError;
    }
}

/// The first of the caller's settings that FFmpeg left in `left`, those that it did not know; else empty.
std::string unknownSetting(const AVDictionary* left, const MediaOptions& options) {
    for (const auto& [name, value] : options.settings) {
        if (av_dict_get(left, name.c_str(), nullptr, AV_DICT_MATCH_CASE) != nullptr) {
            return name;
        }
    }
    return "";
}

struct CloseInput {
    void operator()(AVIOContext* input) const { avio_close(input); }
};

}  // namespace

OpenedInput::OpenedInput(const std::string& input, const MediaOptions& options)
    : input_(input),
      shown_(options.label.empty() ? input : options.label),
      // A name is that of a file whatever colons and patterns are in it.
      is_file_(options.format.empty() && input != "-" && namesFile(input)),
      cutoff_(std::make_unique<Cutoff>(options)) {
    try {
        open(options);
    } catch (const FfmpegError& failure) {
        throw errorFor(failure);
    }
    constexpr std::string_view kTextRenderer = "tty";  // shows any text as video
    if (options.format.empty() && kTextRenderer == format_->iformat->name) {
        throw MediaError(shown_, {Incomplete::kNotMedia, "it is a text file, not media"},
                         AVERROR_INVALIDDATA);
    }
}

void OpenedInput::open(const MediaOptions& options) {
    const AVInputFormat* const forced = forcedFormat(options.format);
    if (input_ == "-") {
        polled_.emplace(PolledInput::standardInput(options.interrupted));
    } else if (is_file_ && mustBePolled(input_)) {
        polled_.emplace(PolledInput::file(input_, options.interrupted));
    }
    AVFormatContext* format = orOutOfMemory(avformat_alloc_context());
    format->interrupt_callback = {.callback = &isInterrupted, .opaque = cutoff_.get()};
    format->error_recognition |= AV_EF_CRCCHECK;
    format->correct_ts_overflow = 0;  // it takes a jump back for a wrap; the tracks tell the two apart
    if (polled_) {
        format->pb = polled_->context();
    }
    AVDictionary* settings = nullptr;
    for (const auto& [name, value] : options.settings) {
        checked(av_dict_set(&settings, name.c_str(), value.c_str(), 0));
    }
    if (is_file_) {
        checked(av_dict_set(&settings, "pattern_type", "none", 0));
    }
    const std::string url = (is_file_ ? "file:" : "") + (input_ == "-" ? "pipe:0" : input_);
    // On failure the context is freed and the pointer cleared.
    const int result = [&] {
        const DemuxerLog log(complaints_);
        return avformat_open_input(&format, url.c_str(), forced, &settings);
    }();
    const std::string unknown = unknownSetting(settings, options);
    av_dict_free(&settings);
    format_.reset(format);
    checked(result);
    if (!unknown.empty()) {
        throw FfmpegError(AVERROR_OPTION_NOT_FOUND, "it takes no setting " + unknown);
    }
    declared_bytes_ = declaredSize(*format_, polled_ ? polled_->beginning() : std::span<const uint8_t>());
    checked(avformat_find_stream_info(format_.get(), nullptr));
}

std::optional<int64_t> OpenedInput::fileBytes() const {
    const AVIOContext* const file = format_->pb;
    const bool is_there =
        is_file_ && !polled_ && file != nullptr && (file->seekable & AVIO_SEEKABLE_NORMAL) != 0;
    const int64_t bytes = is_there ? avio_size(format_->pb) : -1;
    return bytes >= 0 ? std::optional(bytes) : std::nullopt;
}

StructureFaults OpenedInput::structureFaults() const {
    const auto bytes = fileBytes();
    return bytes ? faultsOfStructure(format_->iformat->name, readerOf(*format_->pb), *bytes)
                 : StructureFaults{};
}

MediaError OpenedInput::errorFor(const FfmpegError& failure) const {
    const auto better = betterReason(failure.code());
    return {shown_, better.value_or(Shortfall{kindOf(failure.code()), failure.what()}), failure.code()};
}

std::optional<Shortfall> OpenedInput::betterReason(int code) const {
    for (unsigned i = 0; format_ && i < format_->nb_streams; ++i) {
        if (isEncrypted(*format_, *format_->streams[i])) {
            return Shortfall{Incomplete::kEncrypted, "it is encrypted"};
        }
    }
    if (code == AVERROR_EXIT) {
        return std::nullopt;
    }
    if (polled_) {
        const auto beginning = polled_->beginning();
        UnopenedInput pipe{.read = readerOf(beginning)};
        if (beginning.size() < PolledInput::kBeginningBytes) {
            pipe.bytes = static_cast<int64_t>(beginning.size());
        }
        return whyUnopened(pipe, code);
    }
    AVIOContext* opened = nullptr;
    if (!is_file_ || mustBePolled(input_) ||
        avio_open(&opened, ("file:" + input_).c_str(), AVIO_FLAG_READ) < 0) {
        return std::nullopt;
    }
    const std::unique_ptr<AVIOContext, CloseInput> file(opened);
    const int64_t bytes = avio_size(opened);
    return whyUnopened({.read = readerOf(*opened), .bytes = bytes >= 0 ? std::optional(bytes) : std::nullopt},
                       code);
}

}  // namespace zel_monitor
