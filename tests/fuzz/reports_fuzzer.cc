// A player's reports with any fields and values, and the assessments after them: a report is taken or refused
// with one of the two errors that are promised, and every answer is a list of plain numbers that counts
// itself.
#include <zel/monitor/data_monitor.h>
#include <zel/monitor/health_assessment.h>

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <stdexcept>
#include <string>

#include "base/clock.h"
#include "fuzz/bytes.h"

namespace {

using fuzz::Bytes;

constexpr const char* kKeys[] = {
    "recv_bytes", "zel_time_interval",          "play_scenario",      "quit_time", "error_code",
    "play_time",  "first_frame_rendering_time", "abnormal_total_time"};
constexpr const char* kValues[] = {"0",    "2",      "-1",         "1e309",       "nan",     "-inf",
                                   "0x1p", "1e-320", "2147483647", "-2147483649", " +5.5ms", "-110"};

double seconds = 0.0;

ReportMap report(Bytes& bytes) {
    ReportMap fields;
    for (int count = bytes.next() % 9; count > 0; --count) {
        const uint8_t choice = bytes.next();
        const std::string value =
            choice % 3 == 0 ? bytes.text(20) : kValues[bytes.next() % std::size(kValues)];
        fields[kKeys[choice / 3 % std::size(kKeys)]] = value;
    }
    return fields;
}

void assess() {
    for (const char* name : {"RecentPlayerFF", "RefNetSpeed", "PlayerErrorRate", "PlayerBufferRate"}) {
        ReportMap answer = ZEL::ZELHA::getInstance().evaluate(name);
        MUST_HOLD(answer.at("metric") == name && answer.at("version") == "1");
        const size_t count = std::stoul(answer.at("count"));
        for (const char* key : {"metric", "version", "count"}) {
            answer.erase(key);
        }
        MUST_HOLD(answer.size() == count);
        for (const auto& [key, value] : answer) {
            size_t read = 0;
            const double number = std::stod(value, &read);
            MUST_HOLD(read == value.size() && (std::abs(number) > 0.0 || std::isnan(number)));
            MUST_HOLD(key.find("rate") == std::string::npos || (number > 0.0 && number <= 1.0));
        }
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    ZEL::setClockForTesting([] { return seconds; });
    seconds += 2000.0;  // past the time to live of what the input before has left
    ZEL::ZELPlayerDataMonitor monitor;
    Bytes bytes(data, size);
    while (!bytes.empty()) {
        const uint8_t step = bytes.next();
        try {
            if (step % 4 == 0) {
                monitor.reportPeriodic(step, report(bytes));
            } else if (step % 4 == 1) {
                monitor.reportPlaybackEnd(step, report(bytes));
            } else if (step % 4 == 2) {
                seconds += bytes.next() * 10.0;
            } else {
                assess();
            }
        } catch (const std::invalid_argument&) {
        } catch (const std::out_of_range&) {
        }
    }
    assess();
    return 0;
}
