#include "input/media_source.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "input/completeness.h"
#include "input/container/declared_length.h"
#include "input/container/encryption.h"
#include "input/demuxer.h"
#include "input/interleaver.h"
#include "input/item_placer.h"
#include "input/per_track.h"
#include "input/stream_damage.h"
#include "input/stream_facts.h"
#include "input/track.h"

namespace zel_monitor {

/// Packets from the demuxer to the tracks' decoders, from there to the interleaver, and from there to the
/// clock.
class MediaSource::Reader : public TrackListener {
  public:
    Reader(const std::string& input, const MediaOptions& options)
        : cutoff_(options),
          threads_(options.threads),
          key_frames_only_(options.key_frames_only),
          begins_anew_(options.begins_anew),
          input_(input, options),
          demuxer_(demuxerFor({options.video, options.audio})),
          origin_(statedStart(input_.format())),
          completeness_(input_),
          damage_(natureOf(input_.format()), options.begins_anew) {
        facts_.input = options.label.empty() ? input : options.label;
        if (options.live) {
            interleaver_.waitLess();
        }
        openTracks();
        gatherFacts(options);
        damage_.atEnd(input_.complaints());  // of nothing so far
    }

    const MediaFacts& facts() const { return facts_; }
    const std::optional<Shortfall>& shortfall() const { return completeness_.shortfall(); }
    bool mustBeginAnew() const { return state_ == State::kUnsteady; }

    std::vector<Complaint> complaints() const { return damage_.list(); }

    MediaCounts counts() const {
        MediaCounts counts = counts_;
        counts.damaged = damage_.count();
        counts.bytes_read = demuxer_.bytesRead();
        return counts;
    }

    /// None too where the input is to be decoded anew.
    std::optional<MediaItem> next() {
        while (true) {
            if (cutoff_.isDue()) {
                completeness_.stopped();
                return std::nullopt;
            }
            if (isUnsteady()) {
                state_ = State::kUnsteady;
                return std::nullopt;
            }
            if (auto item = placer_.next()) {
                ++(trackOf(*item) == StreamTrack::kVideo ? counts_.video_frames : counts_.audio_frames);
                damage_.saw(*item);
                return item;
            }
            if (state_ == State::kEnded) {
                return std::nullopt;
            }
            advance();
        }
    }

  private:
    /// How far all of the input has come.
    enum class State { kReading, kDecoded, kPlaced, kEnded, kUnsteady };

    Demuxer demuxerFor(PerTrack<bool> wanted) {
        try {
            return {input_.format(), wanted};
        } catch (const FfmpegError& error) {
            throw input_.errorFor(error);
        }
    }

    void openTracks() {
        bool all_encrypted = true;
        for (const StreamTrack track : kTracks) {
            const AVStream* const stream = demuxer_.streamOf(track);
            if (stream == nullptr) {
                continue;
            }
            try {
                tracks_[track].emplace(track, input_.format(), *stream, threads_, key_frames_only_, origin_,
                                       *this);
            } catch (const FfmpegError& error) {
                throw input_.errorFor(error);
            }
            interleaver_.expect(track);
            all_encrypted = all_encrypted && isEncrypted(input_.format(), *stream);
        }
        if (all_encrypted) {
            throw input_.errorFor(FfmpegError(AVERROR_INVALIDDATA));
        }
    }

    void gatherFacts(const MediaOptions& options) {
        const AVFormatContext& format = input_.format();
        facts_.container = format.iformat->name;
        if (options.duration > 0) {
            facts_.duration = options.duration;
        }
        std::vector<const AVStream*> chosen;
        for (const StreamTrack track : kTracks) {
            if (const AVStream* const stream = demuxer_.streamOf(track)) {
                chosen.push_back(stream);
            }
        }
        if (const auto length = declaredLength(format, statedStart(format).value_or(0.0), chosen)) {
            facts_.duration = length->seconds;
            facts_.duration_estimated = length->estimated;
        }
        if (tracks_.video) {
            facts_.video = videoFacts(*demuxer_.streamOf(StreamTrack::kVideo), tracks_.video->decoder());
        }
        if (tracks_.audio) {
            facts_.audio = audioFacts(tracks_.audio->decoder());
        }
    }

    /// Whether what comes from here on might be different the next time, and need not.
    bool isUnsteady() {
        const bool may_differ = std::any_of(kTracks.begin(), kTracks.end(), [this](StreamTrack track) {
            return tracks_[track] && tracks_[track]->isUnsteady();
        });
        return may_differ && begins_anew_ && input_.fileBytes();
    }

    /// One step on: an item from the interleaver to the clock, or a packet from the input to its decoder.
    void advance() {
        for (const StreamTrack track : kTracks) {
            interleaver_.setUndecided(track, demuxer_.isUndecided(track));
        }
        if (auto item = interleaver_.next()) {
            placer_.take(std::move(*item));
        } else if (state_ == State::kDecoded) {
            state_ = State::kPlaced;
            placer_.finish();
        } else if (state_ == State::kPlaced) {
            state_ = State::kEnded;
            conclude();
        } else if (const auto packet = demuxer_.next(interleaver_.empty())) {
            decode(*packet);
        } else {
            finishTracks();
        }
    }

    void decode(const Demuxer::Packet& packet) {
        if (packet.is_encrypted) {
            completeness_.sawEncrypted(packet.track);
        } else {
            tracks_[packet.track]->decode(*packet.packet, demuxer_.streamOf(*packet.packet),
                                          packet.complaints);
        }
    }

    void finishTracks() {
        for (const StreamTrack track : kTracks) {
            if (tracks_[track]) {
                tracks_[track]->finish();
            }
            if (demuxer_.missedAny(track)) {
                completeness_.streamMissed(track);
            }
        }
        interleaver_.end();
        state_ = State::kDecoded;
    }

    /// Everything was given. Throws if the input broke off or gave nothing.
    void conclude() {
        if (const int reason = demuxer_.endReason(); reason != AVERROR_EOF) {
            throw MediaError(facts_.input, {Incomplete::kReadError, FfmpegError(reason).what()}, reason);
        }
        const StructureFaults faults = input_.structureFaults();
        for (const StreamTrack track : kTracks) {
            if (tracks_[track]) {
                damage_.atEnd(track, tracks_[track]->rest());
                completeness_.streamBrokeOff(track, demuxer_.streamOf(track), tracks_[track]->unanswered(),
                                             damage_.furthest(track));
            } else if (const auto& reason = demuxer_.unusable(track)) {
                completeness_.streamUnusable(track, *reason);
            }
        }
        if (demuxer_.listsUnknown()) {
            completeness_.streamUnknown();
        }
        damage_.atEnd(demuxer_.lastComplaints());
        StreamDamage::Stated stated{.whole_s = facts_.duration_estimated ? std::nullopt : facts_.duration};
        for (const StreamTrack track : kTracks) {
            if (const AVStream* const stream = demuxer_.streamOf(track)) {
                stated.counted_s[track] = countedLength(input_.format(), *stream);
            }
        }
        damage_.conclude(faults, input_.fileBytes().value_or(0), stated);
        completeness_.inputEnded(demuxer_, faults, facts_, counts(), placer_.reached());
        if (counts_.video_frames + counts_.audio_frames > 0) {
            return;
        }
        const FfmpegError reason =
            last_refusal_.value_or(FfmpegError(AVERROR_INVALIDDATA, "nothing in it could be decoded"));
        const bool is_encrypted = shortfall() && shortfall()->kind == Incomplete::kEncrypted;
        throw MediaError(facts_.input,
                         is_encrypted ? Shortfall{Incomplete::kEncrypted, "it is encrypted"}
                                      : Shortfall{Incomplete::kNothingDecoded, reason.what()},
                         reason.code());
    }

    void onItem(StreamTrack track, MediaItem item) override { interleaver_.put(track, std::move(item)); }
    void onRefusal(const FfmpegError& reason) override { last_refusal_ = reason; }
    void onStreamEnd(StreamTrack track, bool gave_anything) override {
        completeness_.streamEnded(track, gave_anything);
    }
    void onStreamRefused(const FfmpegError& reason) override { completeness_.streamRefused(reason.what()); }

    Cutoff cutoff_;
    int threads_;
    bool key_frames_only_;
    bool begins_anew_;
    OpenedInput input_;
    Demuxer demuxer_;
    StreamOrigin origin_;
    PerTrack<std::optional<Track>> tracks_;
    Interleaver interleaver_;
    ItemPlacer placer_;
    Completeness completeness_;
    MediaFacts facts_;
    MediaCounts counts_;
    StreamDamage damage_;
    std::optional<FfmpegError> last_refusal_;  // why a packet or a frame was skipped last
    State state_ = State::kReading;
};

MediaSource::MediaSource(const std::string& input, const MediaOptions& options)
    : input_(input), options_(options), reader_(std::make_unique<Reader>(input, options)) {}
MediaSource::MediaSource(MediaSource&&) noexcept = default;
MediaSource& MediaSource::operator=(MediaSource&&) noexcept = default;
MediaSource::~MediaSource() = default;

const MediaFacts& MediaSource::facts() const {
    return reader_->facts();
}

MediaCounts MediaSource::counts() const {
    return reader_->counts();
}

std::vector<Complaint> MediaSource::complaints() const {
    return reader_->complaints();
}

std::optional<MediaItem> MediaSource::next() {
    while (auto item = reader_->next()) {
        uint64_t& skipped = to_skip_[trackOf(*item)];
        if (skipped == 0) {
            ++given_[trackOf(*item)];
            return item;
        }
        --skipped;
    }
    if (!reader_->mustBeginAnew()) {
        return std::nullopt;
    }
    options_.threads = 1;
    to_skip_ = given_;
    reader_ = std::make_unique<Reader>(input_, options_);
    return next();
}

const std::optional<Shortfall>& MediaSource::shortfall() const {
    return reader_->shortfall();
}

}  // namespace zel_monitor
