#include "input/demuxer.h"

#include <algorithm>
#include <iterator>
#include <string>
#include <string_view>
#include <utility>

#include "input/container/encryption.h"
#include "input/container/library_log.h"
#include "input/media_type.h"

namespace zel_monitor {
namespace {

/// Whether streams may come and go within the input. Elsewhere all are known from the beginning, and those
/// that are not chosen need not be read.
bool streamsChange(const AVFormatContext& format) {
    const std::string_view name = format.iformat->name;
    return name == "mpegts" || name == "mpeg" || name == "flv";
}

/// Whether two streams, by their indices, are of one program, or either is of none.
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

/// What a stream lacks that nothing can be decoded without.
std::string lackOf(const AVCodecParameters& stream) {
    if (stream.codec_id == AV_CODEC_ID_NONE) {
        return "it does not say how it is coded";
    }
    if (stream.codec_type == AVMEDIA_TYPE_VIDEO) {
        return "it states no size of its frames";
    }
    return stream.sample_rate > 0 ? "it states no channels" : "it states no sample rate";
}

/// When a packet is due, in seconds on the input's own clock.
std::optional<double> dueTime(const AVPacket& packet, const AVStream& stream) {
    const int64_t stamp = packet.dts != AV_NOPTS_VALUE ? packet.dts : packet.pts;
    return stamp != AV_NOPTS_VALUE ? std::optional(static_cast<double>(stamp) * av_q2d(stream.time_base))
                                   : std::nullopt;
}

}  // namespace

Demuxer::Demuxer(AVFormatContext& format, PerTrack<bool> wanted)
    : format_(format),
      lanes_{.video = {.wanted = wanted.video}, .audio = {.wanted = wanted.audio}},
      streams_change_(streamsChange(format)) {
    for (unsigned i = 0; i < format.nb_streams; ++i) {
        AVStream& stream = *format.streams[i];
        stream.discard = streams_change_ && trackOf(stream) ? AVDISCARD_DEFAULT : AVDISCARD_ALL;
    }
    for (const StreamTrack track : kTracks) {
        if (lanes_[track].wanted) {
            choose(track);
        }
    }
    if (lanes_.video.stream == nullptr && lanes_.audio.stream == nullptr) {
        throw FfmpegError(AVERROR_STREAM_NOT_FOUND, "no video or audio stream to decode");
    }
}

/// Takes up the best stream, but none of a program to which the sibling's stream does not belong.
void Demuxer::choose(StreamTrack track) {
    const AVStream* const sibling = lanes_[siblingOf(track)].stream;
    const int related = sibling != nullptr ? sibling->index : -1;
    const AVCodec* decoder = nullptr;
    const int index = av_find_best_stream(&format_, mediaTypeOf(track), -1, related, &decoder, 0);
    if (index == AVERROR_DECODER_NOT_FOUND) {
        throw noDecoderFor(track);
    }
    if (index < 0) {
        lanes_[track].unusable = whyUnusable(track, related);
        return;
    }
    if (related >= 0 && !belongTogether(format_, index, related)) {
        return;
    }
    AVStream* const stream = format_.streams[index];
    if ((stream->disposition & AV_DISPOSITION_ATTACHED_PIC) == 0) {  // the cover of a song
        lanes_[track].stream = stream;
        stream->discard = AVDISCARD_DEFAULT;
    }
}

bool Demuxer::listsUnknown() const {
    const bool states_kinds = std::string_view(format_.iformat->name) == "avi";
    return states_kinds &&
           std::any_of(format_.streams, format_.streams + format_.nb_streams, [](const AVStream* stream) {
               return stream->codecpar->codec_type == AVMEDIA_TYPE_UNKNOWN;
           });
}

/// Of the streams that would do if they could be decoded, what the first one lacks.
std::optional<std::string> Demuxer::whyUnusable(StreamTrack track, int related) const {
    for (unsigned i = 0; i < format_.nb_streams; ++i) {
        const AVStream& stream = *format_.streams[i];
        const bool is_cover = (stream.disposition & AV_DISPOSITION_ATTACHED_PIC) != 0;
        if (trackOf(stream) == track && !is_cover &&
            (related < 0 || belongTogether(format_, stream.index, related))) {
            return lackOf(*stream.codecpar);
        }
    }
    return std::nullopt;
}

std::optional<Demuxer::Packet> Demuxer::next(PerTrack<bool> hungry) {
    while (true) {
        for (const StreamTrack track : kTracks) {
            if (hungry[track] || end_reason_) {
                if (auto packet = waiting(track)) {
                    return packet;
                }
            }
        }
        if (end_reason_) {
            return std::nullopt;
        }
        if (auto packet = read()) {
            return packet;
        }
    }
}

/// Reads one packet. None if it is of no chosen stream, or has to wait, and at the end.
std::optional<Demuxer::Packet> Demuxer::read() {
    PacketHandle packet(orOutOfMemory(av_packet_alloc()));
    const int result = [&] {
        const DemuxerLog log(complaints_);
        return av_read_frame(&format_, packet.get());
    }();
    if (result < 0) {
        end_reason_ = result;
        for (const StreamTrack track : kTracks) {
            follow(track, true);
        }
        return std::nullopt;
    }
    packet_bytes_ += static_cast<uint64_t>(packet->size);
    const AVStream& stream = streamOf(*packet);
    const auto track = trackOf(stream);
    if (!track) {
        return std::nullopt;
    }
    Lane& lane = lanes_[*track];
    lane.furthest = std::max(lane.furthest, packet->pos);
    if (lane.stream == &stream) {
        lane.stream_switch.goesOn(*packet, dueTime(*packet, stream));
        if (lane.waiting.empty()) {
            return handOut(*track, std::move(packet));
        }
        lane.waiting.push_back(std::move(packet));
    } else if (streams_change_ && concerns(*track, stream)) {
        lane.stream_switch.runs(*packet, dueTime(*packet, stream));
        follow(*track, false);
    }
    return std::nullopt;
}

std::optional<Demuxer::Packet> Demuxer::waiting(StreamTrack track) {
    std::deque<PacketHandle>& queue = lanes_[track].waiting;
    if (queue.empty()) {
        return std::nullopt;
    }
    PacketHandle packet = std::move(queue.front());
    queue.pop_front();
    return handOut(track, std::move(packet));
}

Demuxer::Packet Demuxer::handOut(StreamTrack track, PacketHandle packet) {
    const bool is_corrupt = (packet->flags & AV_PKT_FLAG_CORRUPT) != 0;
    lanes_[track].corrupt_last = is_corrupt;
    const bool is_encrypted = isEncrypted(*packet) || isEncrypted(format_, streamOf(*packet));
    auto complaints = std::exchange(complaints_, {});
    // Whether the input ends too early is told by its container, which may not know its end.
    const bool is_last = format_.pb != nullptr && format_.pb->eof_reached != 0;
    if (is_corrupt && !is_last) {
        complaints.push_back(ComplaintReason::kBrokenPacket);
    }
    return {.track = track,
            .packet = std::move(packet),
            .is_encrypted = is_encrypted,
            .complaints = std::move(complaints)};
}

/// The track that wants a stream's type.
std::optional<StreamTrack> Demuxer::trackOf(const AVStream& stream) const {
    for (const StreamTrack track : kTracks) {
        if (lanes_[track].wanted && mediaTypeOf(track) == stream.codecpar->codec_type) {
            return track;
        }
    }
    return std::nullopt;
}

/// Whether `stream` might have been chosen for the track. What runs beside the chosen one is told later.
bool Demuxer::concerns(StreamTrack track, const AVStream& stream) const {
    const AVStream* const sibling = lanes_[siblingOf(track)].stream;
    return lanes_[track].stream != nullptr || belongTogether(format_, stream.index, sibling->index);
}

std::vector<const AVStream*> Demuxer::candidates(StreamTrack track) const {
    if (lanes_[track].stream != nullptr) {
        return {lanes_[track].stream};
    }
    std::vector<const AVStream*> streams;
    for (unsigned i = 0; i < format_.nb_streams; ++i) {
        const AVStream& stream = *format_.streams[i];
        if (trackOf(stream) == track && concerns(track, stream)) {
            streams.push_back(&stream);
        }
    }
    return streams;
}

/// Goes on with another stream where that one has taken over from the chosen one.
void Demuxer::follow(StreamTrack track, bool at_end) {
    Lane& lane = lanes_[track];
    while (const auto successor = lane.stream_switch.successor(at_end)) {
        auto kept = lane.stream_switch.choose(*successor, lane.stream->index);
        lane.waiting.insert(lane.waiting.end(), std::make_move_iterator(kept.begin()),
                            std::make_move_iterator(kept.end()));
        lane.stream = format_.streams[*successor];
    }
}

uint64_t Demuxer::bytesRead() const {
    // Formats that open what they read themselves, such as playlists, leave only the packets to count.
    const int64_t bytes = format_.pb != nullptr ? format_.pb->bytes_read : 0;
    return std::max(packet_bytes_, static_cast<uint64_t>(std::max<int64_t>(bytes, 0)));
}

int Demuxer::endReason() const {
    // Demuxers take a read that failed for the end.
    const bool failed = end_reason_ == AVERROR_EOF && format_.pb != nullptr && format_.pb->error < 0;
    return failed ? format_.pb->error : end_reason_.value_or(AVERROR_EOF);
}

}  // namespace zel_monitor
