// Command lines of anything: each is accepted, or refused with an exit status and a text of printable
// characters.
#include <CLI/App.hpp>
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "archive/archive_options.h"
#include "cli/command_line.h"
#include "cli/exit_status.h"
#include "fuzz/bytes.h"
#include "scan/scan_options.h"
#include "watch/watch_options.h"

namespace {

using fuzz::Bytes;
using namespace zel_monitor;  // NOLINT(google-build-using-namespace): as in main()

/// What is worth trying, beside what the input makes up.
constexpr const char* kWords[] = {
    "scan",   "watch",  "demo",    "--fail-on", "--min",         "--gap",      "--only",   "--format",
    "--html", "--json", "--csv",   "-o",        "--speed",       "--interval", "--help",   "--version",
    "--",     "-",      "mute=1s", "black",     "freeze=2s,any", "=",          ",",        "1e999",
    "nan",    "-1",     "[a,b]",   "report",    "--store",       "--shard",    "--survey", "--time-limit"};

std::vector<std::string> argumentsOf(Bytes& bytes) {
    std::vector<std::string> arguments;
    while (!bytes.empty() && arguments.size() < 24) {
        const uint8_t choice = bytes.next();
        std::string word = choice < std::size(kWords) ? kWords[choice] : bytes.text(20);
        if (choice % 5 == 4 && !arguments.empty()) {
            arguments.back() += word;
        } else {
            arguments.push_back(std::move(word));
        }
    }
    return arguments;
}

bool isPrintable(const std::string& text) {
    return std::all_of(text.begin(), text.end(), [](char character) {
        const auto byte = static_cast<unsigned char>(character);
        return byte == '\n' || (byte >= 0x20 && byte != 0x7F);
    });
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const Command commands[] = {
        command(
            "demo", "", &addDemoOptions, +[](const WatchOptions&) { return 0; }),
        command(
            "watch", "", &addWatchOptions, +[](const WatchOptions&) { return 0; }),
        command(
            "scan", "", &addScanOptions, +[](const ScanOptions&) { return 0; }),
        command(
            "report", "", &addArchiveReportOptions, +[](const ArchiveOptions&) { return 0; }),
    };
    const auto app = makeCommandLine();
    std::vector<std::function<int()>> prepared;  // they own the options
    for (const Command& each : commands) {
        prepared.push_back(each.prepare(*app->add_subcommand(each.name, each.summary)));
    }
    Bytes bytes(data, size);
    if (const auto answer = parseArguments(*app, argumentsOf(bytes))) {
        MUST_HOLD(answer->status == kExitUsage || answer->status == kExitDone);
        MUST_HOLD(isPrintable(answer->error));
        MUST_HOLD((answer->status == kExitDone) == answer->error.empty());
    }
    return 0;
}
