#include "watch/host.h"

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <mutex>
#include <string_view>
#include <utility>

#include "watch/packed_frame.h"

namespace zel_monitor {
namespace {

/// What the callbacks know of the host that lives now.
struct Receiver {
    std::mutex mutex;
    Host::ReportHandler handler;  ///< guarded by `mutex`; empty while there is no host
    std::atomic<bool> audio{false};
};

/// Never destroyed: a heartbeat thread may still run while the process ends.
Receiver& receiver() {
    static auto* const instance = new Receiver;
    return *instance;
}

bool answerSwitch(const char* key) {
    return std::string_view(key) == "EnableAudioAlgo" && receiver().audio.load();
}

void takeReport(const char* /*page*/, int /*event_id*/, const char* /*arg1*/, const char* /*arg2*/,
                const char* /*arg3*/, ReportMap* fields) {
    const std::lock_guard<std::mutex> lock(receiver().mutex);
    if (receiver().handler) {
        receiver().handler(*fields);
    }
}

void setHandler(Host::ReportHandler handler) {
    const std::lock_guard<std::mutex> lock(receiver().mutex);
    receiver().handler = std::move(handler);
}

}  // namespace

Host::Host(const HostSettings& settings, ReportHandler handler)
    : handler_(std::move(handler)), handle_(init_handle_with_interval(settings.interval)) {
    receiver().audio.store(settings.audio);
    setHandler([this](const ReportMap& report) { take(report); });
    set_cobalt_bool_callback(&answerSwitch);
    set_tlm_upload_callback(&takeReport);
    set_heart_beat_timer_switch_listener(
        handle_, +[] { return true; });
}

Host::~Host() {
    setHandler(nullptr);
    release_handle(handle_);
}

void Host::start() {
    start_zel_session(handle_);
}

void Host::stop() {
    stop_zel_session(handle_);
}

bool Host::feed(const Picture& frame) {
    packPlanes(frame.planes, packed_);
    return feed_video_frame(handle_, packed_.data(), static_cast<int>(frame.planes.width),
                            static_cast<int>(frame.planes.height), static_cast<int64_t>(fed_.video++));
}

bool Host::feed(const Sound& audio) {
    // In packets of 10 ms, since the library takes one such step of digital silence per packet.
    const int packet = std::max(audio.sample_rate / 100, 1);
    bool accepted = true;
    for (int begin = 0; begin < audio.samples; begin += packet) {
        const int16_t* const data = audio.data + static_cast<ptrdiff_t>(begin) * audio.channels;
        const auto samples = static_cast<uint64_t>(std::min(packet, audio.samples - begin));
        accepted = feed_audio_frame(handle_, reinterpret_cast<const uint8_t*>(data), samples, sizeof(int16_t),
                                    audio.sample_rate, audio.channels, static_cast<int64_t>(fed_.audio++)) &&
                   accepted;
    }
    return accepted;
}

std::optional<ZEL::QueueDrops> Host::drops() const {
    return ZEL::queueDropsOfSession(session_id_.load());
}

void Host::take(const ReportMap& report) {
    if (const auto id = report.find("zel_token"); id != report.end()) {
        session_id_.store(std::stoll(id->second));
    }
    handler_(report);
}

}  // namespace zel_monitor
