#include "bench/accuracy/rivals.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <fmt/format.h>
#include <memory>
#include <optional>
#include <stdexcept>

#include "bench/filter_chain.h"
#include "events/event_tracker.h"

extern "C" {
#include <libavutil/dict.h>
}

namespace bench::accuracy {
namespace {

using ZEL::EventSource;
using ZEL::TimeSpan;

constexpr double kBlockinessStepS = 0.5;
constexpr const char* kPlanes = "format=yuv420p,";  // what our detectors look at

std::optional<double> number(const AVFrame& frame, std::string_view key) {
    const AVDictionaryEntry* const entry =
        av_dict_get(frame.metadata, std::string(key).c_str(), nullptr, AV_DICT_MATCH_CASE);
    return entry != nullptr ? std::optional(std::strtod(entry->value, nullptr)) : std::nullopt;
}

/// One rival with one setting, fed with the frames of a file.
class Watcher {
  public:
    virtual ~Watcher() = default;
    virtual void see(AVFrame& frame, double at_s) = 0;
    /// Puts what was found until `end_s`, with the frames' times counted from `start_s`.
    virtual void finish(double start_s, double end_s, Findings& findings) = 0;
};

/// Reads where a fault begins and ends.
class SpanWatcher : public Watcher {
  public:
    SpanWatcher(const Rival& rival, double least_s, std::string_view setting, const AVFrame& first,
                AVRational time_base)
        : rival_(rival),
          least_s_(least_s),
          chain_(fmt::format("{}{}=d={}{}", rival.source == EventSource::kVideo ? kPlanes : "", rival.filter,
                             least_s, setting),
                 first, time_base) {}

    void see(AVFrame& frame, double /*at_s*/) override {
        const AVFrame* const seen = chain_.pass(frame);
        if (seen == nullptr) {
            return;
        }
        if (const auto end = number(*seen, rival_.end_key)) {
            add(*end);
        }
        if (const auto start = number(*seen, rival_.start_key)) {
            open_ = start;
        }
    }

    void finish(double start_s, double end_s, Findings& findings) override {
        add(end_s);
        for (TimeSpan& span : spans_) {
            span = {span.start_s - start_s, span.end_s - start_s};
        }
        findings.by_setting.push_back(std::move(spans_));
    }

  private:
    void add(double end_s) {
        // blackdetect tells the start and the end of shorter stretches too.
        if (open_ && end_s - *open_ + ZEL::kSlackS >= least_s_) {
            spans_.push_back({*open_, end_s});
        }
        open_.reset();
    }

    const Rival& rival_;
    double least_s_;
    FilterChain chain_;
    std::optional<double> open_;
    std::vector<TimeSpan> spans_;
};

/// Asks about each half second by itself, because blockdetect adds up all frames that it has seen.
class BlockinessWatcher : public Watcher {
  public:
    explicit BlockinessWatcher(AVRational time_base) : time_base_(time_base) {}

    void see(AVFrame& frame, double at_s) override {
        if (!first_s_) {
            first_s_ = at_s;
        }
        const double step = std::floor((at_s - *first_s_) / kBlockinessStepS);
        if (values_.empty() || step * kBlockinessStepS > values_.back().start_s) {
            chain_ = std::make_unique<FilterChain>(std::string(kPlanes) + "blockdetect", frame, time_base_);
            values_.push_back({step * kBlockinessStepS, 0.0});
        }
        if (const AVFrame* const seen = chain_->pass(frame)) {
            values_.back().value = number(*seen, "lavfi.block").value_or(0.0);
        }
    }

    void finish(double /*start_s*/, double /*end_s*/, Findings& findings) override {
        findings.blockiness = std::move(values_);
    }

  private:
    AVRational time_base_;
    std::unique_ptr<FilterChain> chain_;
    std::optional<double> first_s_;
    std::vector<Blockiness> values_;
};

/// All that was asked for, on the frames of one file.
class Watch {
  public:
    Watch(const std::vector<const Rival*>& asked, bool all_settings, const AVFrame& first,
          AVRational time_base) {
        for (const Rival* const rival : asked) {
            Part part{rival, {}};
            if (rival->start_key.empty()) {
                part.watchers.push_back(std::make_unique<BlockinessWatcher>(time_base));
            } else {
                const auto kind = ZEL::eventKindByName(rival->kind);
                const double least_s = kind ? ZEL::infoOf(*kind).rule.min_s : 1.0;
                const size_t count = all_settings ? rival->settings.size() : 1;
                for (size_t i = 0; i < count; ++i) {
                    part.watchers.push_back(
                        std::make_unique<SpanWatcher>(*rival, least_s, rival->settings[i], first, time_base));
                }
            }
            parts_.push_back(std::move(part));
        }
    }

    void see(AVFrame& frame, double at_s) {
        for (Part& part : parts_) {
            for (const auto& watcher : part.watchers) {
                watcher->see(frame, at_s);
            }
        }
    }

    std::vector<Findings> finish(double start_s, double end_s) {
        std::vector<Findings> all;
        for (Part& part : parts_) {
            Findings findings{part.rival, {}, {}};
            for (const auto& watcher : part.watchers) {
                watcher->finish(start_s, end_s, findings);
            }
            all.push_back(std::move(findings));
        }
        return all;
    }

  private:
    struct Part {
        const Rival* rival;
        std::vector<std::unique_ptr<Watcher>> watchers;
    };
    std::vector<Part> parts_;
};

}  // namespace

std::span<const Rival> rivals() {
    static const std::vector<Rival> all{
        {"black",
         "blackdetect",
         EventSource::kVideo,
         "lavfi.black_start",
         "lavfi.black_end",
         {"", ":pic_th=0.95", ":pic_th=0.9", ":pic_th=0.8", ":pix_th=0.05", ":pix_th=0.15", ":pix_th=0.2",
          ":pic_th=0.9:pix_th=0.05", ":pic_th=0.9:pix_th=0.15"}},
        {"block", "blockdetect", EventSource::kVideo, "", "", {}},
        {"freeze",
         "freezedetect",
         EventSource::kVideo,
         "lavfi.freezedetect.freeze_start",
         "lavfi.freezedetect.freeze_end",
         {"", ":n=-55dB", ":n=-50dB", ":n=-45dB", ":n=-40dB", ":n=-35dB", ":n=-30dB"}},
        {"mute",
         "silencedetect",
         EventSource::kAudio,
         "lavfi.silence_start",
         "lavfi.silence_end",
         {"", ":n=-90dB", ":n=-80dB", ":n=-70dB", ":n=-50dB", ":n=-40dB"}},
        {"dead-channel",  // the second one, which is dead in our clips
         "silencedetect",
         EventSource::kAudio,
         "lavfi.silence_start.2",
         "lavfi.silence_end.2",
         {":mono=1", ":mono=1:n=-90dB", ":mono=1:n=-80dB", ":mono=1:n=-70dB", ":mono=1:n=-50dB",
          ":mono=1:n=-40dB"}},
        {"antiphase",
         "aphasemeter",
         EventSource::kAudio,
         "lavfi.aphasemeter.out_phase_start",
         "lavfi.aphasemeter.out_phase_end",
         {":video=0:phasing=1", ":video=0:phasing=1:angle=160", ":video=0:phasing=1:angle=135",
          ":video=0:phasing=1:angle=100"}},
    };
    return all;
}

const Rival* rivalOf(std::string_view kind) {
    const auto all = rivals();
    const auto found =
        std::find_if(all.begin(), all.end(), [kind](const Rival& rival) { return rival.kind == kind; });
    return found != all.end() ? &*found : nullptr;
}

std::vector<Findings> findWithRivals(const FrameStream& frames, const std::vector<const Rival*>& asked,
                                     bool all_settings) {
    const AVRational time_base = frames.time_base;
    std::unique_ptr<Watch> watch;
    std::array<int, 3> first{};
    double start_s = 0.0;
    double last_s = 0.0;
    double length_s = 0.0;  // of the last frame
    while (AVFrame* const next = frames.next()) {
        AVFrame& frame = *next;
        const std::array properties{frame.format, frame.width, frame.height};
        if (frame.pts == AV_NOPTS_VALUE || (watch && properties != first)) {
            continue;  // damage may break a header, and filters that run do not bear other frames
        }
        const double at_s = static_cast<double>(frame.pts) * av_q2d(time_base);
        if (!watch) {
            watch = std::make_unique<Watch>(asked, all_settings, frame, time_base);
            first = properties;
            start_s = last_s = at_s;
        }
        length_s =
            frame.nb_samples > 0 ? static_cast<double>(frame.nb_samples) / frame.sample_rate : at_s - last_s;
        watch->see(frame, at_s);
        last_s = at_s;
    }
    if (!watch) {
        throw std::runtime_error("no frames for FFmpeg's detectors");
    }
    return watch->finish(start_s, last_s + length_s);
}

std::vector<TimeSpan> blockEvents(const std::vector<Blockiness>& values, double threshold) {
    std::vector<TimeSpan> spans;
    const auto add = [&spans](const std::optional<ZEL::Event>& event) {
        if (event && event->counts()) {
            spans.push_back(event->span);
        }
    };
    ZEL::EventTracker tracker(ZEL::EventKind::kBlock, infoOf(ZEL::EventKind::kBlock).rule);
    double end_s = 0.0;
    for (const Blockiness& part : values) {
        end_s = part.start_s + kBlockinessStepS;
        add(tracker
                .see({part.start_s, end_s},
                     part.value >= threshold ? ZEL::Sight::kPresent : ZEL::Sight::kAbsent)
                .ended);
    }
    add(tracker.finish(end_s));
    return spans;
}

std::vector<double> blockThresholds(std::vector<double> values) {
    constexpr size_t kTried = 200;
    std::vector<double> tried;
    std::sort(values.begin(), values.end());
    for (size_t i = 0; i <= kTried && !values.empty(); ++i) {
        tried.push_back(values[(values.size() - 1) * i / kTried]);
    }
    return tried;
}

}  // namespace bench::accuracy
