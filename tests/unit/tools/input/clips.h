#ifndef ZEL_TESTS_UNIT_TOOLS_INPUT_CLIPS_H_
#define ZEL_TESTS_UNIT_TOOLS_INPUT_CLIPS_H_

#include <algorithm>
#include <string>
#include <vector>

#include "input/container/transport_packets.h"
#include "support/clip.h"

namespace clips {

inline const std::string kSmallVideo = "-f lavfi -i testsrc2=s=160x90:r=25:d=2 ";
inline const std::string kTone = "-f lavfi -i sine=440:r=44100:d=2 ";

/// Writes both files one after the other.
inline void join(const std::string& first, const std::string& second, const std::string& joined) {
    auto bytes = support::readFile(first);
    const auto more = support::readFile(second);
    bytes.insert(bytes.end(), more.begin(), more.end());
    support::writeFile(joined, bytes);
}

constexpr int kPartSeconds = 7;

/// Pictures and sound of a broadcast whose first stream has the identifier `pid`.
inline void broadcast(const std::string& codecs, int pid, const std::string& file) {
    const std::string seconds = std::to_string(kPartSeconds);
    support::ffmpeg("-f lavfi -i testsrc2=s=160x90:r=25:d=" + seconds + " -f lavfi -i sine=r=44100:d=" +
                        seconds + ' ' + codecs + " -mpegts_start_pid " + std::to_string(pid),
                    file);
}

/// Marks all of the streams with these identifiers as scrambled, and makes it unreadable.
inline void scramble(const std::string& clear, const std::vector<int>& pids, const std::string& scrambled) {
    auto bytes = support::readFile(clear);
    for (size_t at = 0; at + TS_SIZE <= bytes.size(); at += TS_SIZE) {
        auto* const packet = reinterpret_cast<uint8_t*>(&bytes[at]);
        if (ts_has_payload(packet) && std::find(pids.begin(), pids.end(), ts_get_pid(packet)) != pids.end()) {
            ts_set_scrambling(packet, 2);
            std::for_each(ts_payload(packet), packet + TS_SIZE, [](uint8_t& byte) { byte ^= 0xa5; });
        }
    }
    support::writeFile(scrambled, bytes);
}

}  // namespace clips

#endif  // ZEL_TESTS_UNIT_TOOLS_INPUT_CLIPS_H_
