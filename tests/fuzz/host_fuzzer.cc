// A host that breaks no rule, on three threads, with heartbeats a thousand times as fast: it starts, stops
// and feeds one stream from all of them, and its callbacks stop it, throw or take their time. Afterwards
// every frame that was taken in must be in exactly one heartbeat and in the final report, heartbeats must
// have come in the order of their numbers, and none may come once the stream is released.
#include <zel/base/log.h>
#include <zel/zel.h>

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <mutex>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "base/clock.h"
#include "fuzz/bytes.h"

namespace {

using fuzz::Bytes;

/// What became of one stream; the callbacks have no user data.
struct Outcome {
    std::mutex mutex;
    uint64_t frames_in_heartbeats = 0;
    uint64_t frames_in_final = 0;
    int64_t last_number = -1;
    bool in_order = true;
};
Outcome* outcome = nullptr;
ZELHandle* stream = nullptr;
std::atomic<bool> released{false};
std::atomic<uint8_t> mood{0};

void upload(const char*, int, const char*, const char*, const char*, ReportMap* fields) {
    MUST_HOLD(!released);
    {
        const std::lock_guard<std::mutex> lock(outcome->mutex);
        const uint64_t frames = std::stoull(fields->at("zel_vframes"));
        const auto number = fields->find("zel_heartbeat_seq");
        if (number == fields->end()) {
            MUST_HOLD(frames >= outcome->frames_in_final);
            outcome->frames_in_final = frames;
        } else {
            outcome->in_order = outcome->in_order && std::stoll(number->second) == outcome->last_number + 1;
            outcome->last_number = std::stoll(number->second);
            outcome->frames_in_heartbeats += frames;
        }
    }
    if (mood % 8 == 1) {
        throw std::runtime_error("upload");
    }
}

void heartbeat(ReportMap* extra) {
    MUST_HOLD(!released);
    (*extra)["zel_vframes"] = "mine";
    switch (mood % 8) {
        case 2:
            throw 2;
        case 3:
            stop_zel_session(stream);
            break;
        case 4:
            start_zel_session(stream);
            break;
        case 5:
            std::this_thread::yield();
            break;
        default:
            break;
    }
}

void host(Bytes bytes, std::atomic<uint64_t>& taken_in) {
    const std::array<uint8_t, 16 * 16 * 3 / 2> frame{};
    const std::array<uint8_t, 2 * 2 * 160> packet{};
    while (!bytes.empty()) {
        switch (bytes.next() % 8) {
            case 0:
                start_zel_session(stream);
                break;
            case 1:
                stop_zel_session(stream);
                break;
            case 2:
                mood = bytes.next();
                break;
            case 3:
                feed_audio_frame(stream, packet.data(), 160, 2, 16000, 2, 0);
                break;
            case 4:
                set_heart_beat_callback(stream, bytes.next() % 2 == 0 ? &heartbeat : nullptr);
                break;
            case 5:
                std::this_thread::yield();
                break;
            default:
                taken_in += feed_video_frame(stream, frame.data(), 16, 16, 0) ? 1U : 0U;
                break;
        }
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    ZEL::setLogSink([](const char*, size_t, void*) {}, nullptr);
    ZEL::setTimerSecondForTesting(std::chrono::milliseconds(1));
    set_cobalt_bool_callback([](const char* key) { return std::string(key) == "EnableAudioAlgo"; });
    set_tlm_upload_callback(&upload);
    Outcome result;
    outcome = &result;
    released = false;
    mood = 0;
    stream = init_handle_with_interval(1);
    set_heart_beat_timer_switch_listener(stream, [] { return mood % 8 != 6; });

    std::atomic<uint64_t> taken_in{0};
    Bytes bytes(data, size);
    std::vector<std::thread> threads;
    for (size_t left = 3; left > 0; --left) {
        threads.emplace_back(host, bytes.split(bytes.size() / left), std::ref(taken_in));
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    mood = 0;
    start_zel_session(stream);  // with a timer, so that the stop sends what no heartbeat has sent yet
    stop_zel_session(stream);
    release_handle(stream);
    released = true;
    MUST_HOLD(result.in_order);
    MUST_HOLD(result.frames_in_final == taken_in);
    MUST_HOLD(result.frames_in_heartbeats == taken_in);
    return 0;
}
