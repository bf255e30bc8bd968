// usage: soak [LIVES [STREAMS]]
// Lives of sessions, STREAMS of them at once, each fed faster than it can examine, with a heartbeat timer and
// an ending. Says what the process holds after a tenth of them and at the end, and fails if it has grown, if
// a frame is missing from a report, or if a thread or a descriptor is left.
#include <zel/base/log.h>
#include <zel/zel.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <malloc.h>
#include <string>
#include <thread>
#include <unistd.h>
#include <utility>
#include <vector>

#include "support/fast_timers.h"
#include "support/frames.h"

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool kMemoryTells = false;  // the sanitizer keeps what is freed
#else
constexpr bool kMemoryTells = true;
#endif

namespace {

constexpr int kFramesPerLife = 20;
constexpr int kPacketsPerLife = 60;

std::atomic<uint64_t> reported_frames{0};
std::atomic<uint64_t> heartbeat_frames{0};

struct Figures {
    long allocated_kib = 0;  ///< what the program has asked for and not given back
    long resident_kib = 0;   ///< what the system has given for it
    long threads = 0;
    long descriptors = 0;
};

long entriesOf(const char* folder) {
    return std::distance(std::filesystem::directory_iterator(folder), std::filesystem::directory_iterator());
}

Figures look() {
    malloc_trim(0);
    Figures figures;
    figures.allocated_kib = static_cast<long>(mallinfo2().uordblks / 1024);
    long pages = 0;
    std::ifstream("/proc/self/statm") >> pages >> figures.resident_kib;
    figures.resident_kib *= sysconf(_SC_PAGESIZE) / 1024;
    figures.threads = entriesOf("/proc/self/task");
    figures.descriptors = entriesOf("/proc/self/fd");
    return figures;
}

/// Detached timers end soon after their streams, not with them.
Figures settled(long threads) {
    while (entriesOf("/proc/self/task") > threads) {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return look();
}

void upload(const char*, int, const char*, const char*, const char*, ReportMap* fields) {
    const uint64_t frames = std::stoull(fields->at("zel_vframes"));
    (fields->count("zel_heartbeat_seq") != 0 ? heartbeat_frames : reported_frames) += frames;
}

void liveTogether(int streams) {
    static const std::vector<uint8_t> frame = support::flatFrame(320, 180, support::kVideoBlack);
    static const std::vector<uint8_t> packet(480 * 2 * 2);
    std::vector<ZELHandle*> handles;
    for (int i = 0; i < streams; ++i) {
        handles.push_back(init_handle_with_interval(1));
        set_heart_beat_timer_switch_listener(handles.back(), [] { return true; });
        start_zel_session(handles.back());
    }
    for (int index = 0; index < kPacketsPerLife; ++index) {
        for (ZELHandle* const handle : handles) {
            if (index < kFramesPerLife) {
                feed_video_frame(handle, frame.data(), 320, 180, index);
            }
            feed_audio_frame(handle, packet.data(), 480, 2, 48000, 2, index);
        }
    }
    for (ZELHandle* const handle : handles) {
        stop_zel_session(handle);
        release_handle(handle);
    }
}

int numberOr(const char* text, int otherwise) {
    const int number = text != nullptr ? std::atoi(text) : otherwise;
    return number > 0 ? number : otherwise;
}

}  // namespace

int main(int count, char** arguments) {
    const int lives = numberOr(count > 1 ? arguments[1] : nullptr, 10'000);
    const int streams = numberOr(count > 2 ? arguments[2] : nullptr, 64);
    const int rounds = (lives + streams - 1) / streams;
    const support::FastTimers timers(std::chrono::milliseconds(20));
    ZEL::setLogSink([](const char*, size_t, void*) {}, nullptr);
    set_cobalt_bool_callback([](const char* key) { return std::string(key) == "EnableAudioAlgo"; });
    set_tlm_upload_callback(&upload);

    release_handle(init_handle());  // starts the message centre's thread, which stays
    const long threads = entriesOf("/proc/self/task");
    liveTogether(streams);
    Figures early = settled(threads);
    for (int round = 1; round < rounds; ++round) {
        liveTogether(streams);
        if (round == rounds / 10) {
            early = settled(threads);
        }
    }
    const Figures late = settled(threads);
    std::printf("%d lives, %d at once; after a tenth of them and at the end:\n", rounds * streams, streams);
    for (const auto& [what, field] :
         {std::pair{"KiB allocated", &Figures::allocated_kib},
          std::pair{"KiB resident", &Figures::resident_kib}, std::pair{"threads", &Figures::threads},
          std::pair{"descriptors", &Figures::descriptors}}) {
        std::printf("%8ld %8ld %s\n", early.*field, late.*field, what);
    }
    const auto expected = static_cast<uint64_t>(rounds) * static_cast<uint64_t>(streams) * kFramesPerLife;
    std::printf("%llu frames fed, %llu in heartbeats, %llu in final reports\n",
                static_cast<unsigned long long>(expected),
                static_cast<unsigned long long>(heartbeat_frames.load()),
                static_cast<unsigned long long>(reported_frames.load()));
    constexpr long kPlayKib = 64;  // the host's own strings, streams and the like
    const bool flat = !kMemoryTells || (late.allocated_kib <= early.allocated_kib + kPlayKib &&
                                        late.resident_kib <= early.resident_kib + 4096);
    return flat && late.threads == early.threads && late.descriptors == early.descriptors &&
                   heartbeat_frames == expected && reported_frames == expected
               ? 0
               : 1;
}
