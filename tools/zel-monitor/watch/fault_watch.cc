#include "watch/fault_watch.h"

namespace zel_monitor {
namespace {

/// A track that has fallen behind the other by more is missing, and not only late.
constexpr double kLateS = 2.0;

/// Looks are told by who is asked for them.
bool isTold(ZEL::EventKind kind) {
    return infoOf(kind).tier == ZEL::EventTier::kFault;
}

ZEL::AnalyserOptions optionsFor(const MediaFacts& facts) {
    ZEL::AnalyserOptions options;
    options.tracks = {.video = facts.video.has_value(),
                      .audio = facts.audio.has_value(),
                      .still = facts.video && facts.video->still};
    options.late_after_s = kLateS;
    return options;
}

}  // namespace

FaultWatch::FaultWatch(const MediaFacts& facts, double begin_s, HeartbeatWriter& writer)
    : begin_s_(begin_s),
      writer_(writer),
      analyser_(*this, optionsFor(facts)),
      damage_(infoOf(ZEL::EventKind::kDamage).rule, *this) {}

void FaultWatch::feed(const MediaItem& item) {
    damage_.saw(item);
    std::visit([this](const auto& content) { feed(content); }, item);
}

void FaultWatch::feed(const VideoFrame& frame) {
    analyser_.feedVideo(frame.planes, frame.time, frame.duration, conditionOf(frame));
}

void FaultWatch::feed(const AudioFrame& sound) {
    analyser_.feedAudio({.sample_rate = static_cast<uint32_t>(sound.sample_rate),
                         .samples = static_cast<uint32_t>(sound.samples),
                         .channels = static_cast<uint32_t>(sound.channels),
                         .data = sound.data},
                        sound.time);
}

void FaultWatch::end() {
    damage_.end();
    analyser_.endOfStream();
}

void FaultWatch::onRaised(ZEL::EventKind kind, double start_s, double noticed_s) {
    if (!isTold(kind)) {
        return;
    }
    writer_.fault(
        {.kind = kind,
         .time = std::chrono::system_clock::now(),
         .position = begin_s_ + noticed_s,
         .start_s = begin_s_ + start_s,
         .length_s = {},
         .evidence = kind == ZEL::EventKind::kDamage ? damage_.evidence() : analyser_.evidence(kind)});
}

void FaultWatch::onCleared(const ZEL::Event& event) {
    if (!isTold(event.kind)) {
        return;
    }
    writer_.fault({.kind = event.kind,
                   .time = std::chrono::system_clock::now(),
                   .position = begin_s_ + analyser_.reached(),
                   .start_s = begin_s_ + event.span.start_s,
                   .length_s = event.span.length(),
                   .evidence = event.evidence});
}

}  // namespace zel_monitor
