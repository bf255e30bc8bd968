#include "input/track.h"

#include <algorithm>
#include <string_view>
#include <utility>

namespace zel_monitor {
namespace {

constexpr double kLeastJumpBackSeconds = 0.5;

CodecHandle openDecoder(const AVStream& stream, const AVCodec* decoder) {
    CodecHandle codec(orOutOfMemory(avcodec_alloc_context3(decoder)));
    codec->pkt_timebase = stream.time_base;
    codec->thread_count = 0;  // as many as there are processors
    checked(avcodec_parameters_to_context(codec.get(), stream.codecpar));
    checked(avcodec_open2(codec.get(), decoder, nullptr));
    return codec;
}

FfmpegError noDecoder(AVMediaType type) {
    return {AVERROR_DECODER_NOT_FOUND, type == AVMEDIA_TYPE_VIDEO ? "no decoder for the video stream"
                                                                  : "no decoder for the audio stream"};
}

bool codesPictures(AVCodecID codec) {
    const AVCodecDescriptor* const descriptor = avcodec_descriptor_get(codec);
    return descriptor != nullptr && descriptor->mime_types != nullptr &&
           std::string_view(*descriptor->mime_types).starts_with("image/");
}

}  // namespace

bool Track::jumpsBack() const {
    return given_to && timeOf(ready.front()) + kLeastJumpBackSeconds < *given_to;
}

void openBestStream(Track& track, AVFormatContext& format, int related) {
    const AVCodec* decoder = nullptr;
    const int index = av_find_best_stream(&format, track.type, -1, related, &decoder, 0);
    if (index == AVERROR_DECODER_NOT_FOUND) {
        throw noDecoder(track.type);
    }
    if (index < 0 || (related >= 0 && !belongTogether(format, index, related))) {
        return;
    }
    AVStream* const stream = format.streams[index];
    if ((stream->disposition & AV_DISPOSITION_ATTACHED_PIC) != 0) {  // the cover of a sound file
        return;
    }
    track.codec = openDecoder(*stream, decoder);
    track.stream = stream;
    stream->discard = AVDISCARD_DEFAULT;
}

bool belongTogether(AVFormatContext& format, int a, int b) {
    AVProgram* program = nullptr;
    bool in_another = false;
    while ((program = av_find_program_from_stream(&format, program, a)) != nullptr) {
        const auto* const begin = program->stream_index;
        const auto* const end = begin + program->nb_stream_indexes;
        if (std::find(begin, end, static_cast<unsigned>(b)) != end) {
            return true;
        }
        in_another = true;
    }
    return !in_another || av_find_program_from_stream(&format, nullptr, b) == nullptr;
}

void changeStream(Track& track, AVStream& stream) {
    const AVCodec* const decoder = avcodec_find_decoder(stream.codecpar->codec_id);
    if (decoder == nullptr) {
        throw noDecoder(track.type);
    }
    track.codec = openDecoder(stream, decoder);
    track.stream = &stream;
    track.frames = 0;
    track.corrupt_last = false;
}

bool isStill(const AVStream& stream) {
    return stream.nb_frames == 1 || stream.avg_frame_rate.num <= 0 ||
           codesPictures(stream.codecpar->codec_id);
}

}  // namespace zel_monitor
