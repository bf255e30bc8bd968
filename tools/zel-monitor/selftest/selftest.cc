#include "selftest/selftest.h"

#include <zel/base/log.h>

#include <CLI/App.hpp>
#include <atomic>
#include <exception>
#include <filesystem>
#include <fmt/format.h>
#include <stdexcept>
#include <system_error>

extern "C" {
#include <libavutil/log.h>
}

#include "cli/exit_status.h"
#include "cli/standard_streams.h"
#include "cli/stop_signal.h"
#include "scan/scan_input.h"
#include "selftest/child_process.h"
#include "selftest/corpus.h"
#include "selftest/results.h"

namespace zel_monitor::selftest {
namespace {

namespace fs = std::filesystem;

constexpr const char* kStopped = "stopped before its end";

/// Where the clips are made; gone with the object unless they are to be kept.
class ClipFolder {
  public:
    explicit ClipFolder(const std::string& keep) : path_(keep), kept_(!keep.empty()) {
        if (kept_) {
            fs::create_directories(path_);
            return;
        }
        std::string pattern = (fs::temp_directory_path() / "zel-selftest-XXXXXX").string();
        if (mkdtemp(pattern.data()) == nullptr) {
            throw std::system_error(errno, std::generic_category(), pattern);
        }
        path_ = pattern;
    }
    ClipFolder(const ClipFolder&) = delete;
    ClipFolder& operator=(const ClipFolder&) = delete;
    ~ClipFolder() {
        if (!kept_) {
            std::error_code ignored;
            fs::remove_all(path_, ignored);
        }
    }

    std::string file(const std::string& name) const { return (path_ / name).string(); }
    void discard(const std::string& file) const {
        if (!kept_) {
            fs::remove(file);
        }
    }

  private:
    fs::path path_;
    bool kept_;
};

/// Makes the clip of a case and gives its file.
std::string make(const Case& wanted, const ClipFolder& folder) {
    std::string previous;
    for (size_t step = 0; step < wanted.recipes.size(); ++step) {
        const bool last = step + 1 == wanted.recipes.size();
        const std::string file = folder.file(wanted.name + (last ? ".mkv" : ".part.ts"));
        std::vector<std::string> words{"ffmpeg", "-nostdin", "-v", "error", "-y", "-fflags", "+bitexact"};
        for (const std::string& word : wanted.recipes[step]) {
            words.push_back(word == kPrevious ? previous : word);
        }
        words.push_back(file);
        outputOf(words);
        if (!previous.empty()) {
            folder.discard(previous);
        }
        previous = file;
    }
    return previous;
}

std::vector<ZEL::TimeSpan> eventsOf(const InputReport& report, ZEL::EventKind kind) {
    std::vector<ZEL::TimeSpan> spans;
    for (const ZEL::Event& event : report.events) {
        if (event.kind == kind) {
            spans.push_back(event.span);
        }
    }
    return spans;
}

Result test(const Case& tested, const ClipFolder& folder, const std::atomic<bool>& stop) {
    const std::string file = make(tested, folder);
    Progress::Slot unseen;
    const InputReport report =
        scanInput(
            file, ZEL::defaultEventRules(), false, unseen, [](const ZEL::Event&) {}, stop)
            .report;
    if (report.problem) {
        throw std::runtime_error(file + ": " + *report.problem);
    }
    Result result;
    result.tested = &tested;
    result.ours = scoreOf(tested.truth, eventsOf(report, tested.kind));
    if (tested.kind == ZEL::EventKind::kBlock) {
        result.blockiness = rivalBlockiness(file, report.length_s);
    } else if (!rivalOf(tested.kind).empty()) {
        result.rival = scoreOf(tested.truth, rivalEvents(tested.kind, file, report.length_s));
    }
    folder.discard(file);
    return result;
}

}  // namespace

void addSelftestOptions(CLI::App& command, SelftestOptions& options) {
    command.add_option("--only", options.only, "Only the cases whose name contains this")->type_name("TEXT");
    command.add_option("--keep", options.keep, "Keep the clips in this folder")->type_name("FOLDER");
    command.add_flag("-q,--quiet", options.quiet, "No progress on standard error");
}

int runSelftest(const SelftestOptions& options) {
    ZEL::setLogSink([](const char*, size_t, void*) {}, nullptr);
    av_log_set_level(AV_LOG_QUIET);
    const std::atomic<bool>& stop = watchStopSignals();
    try {
        const ClipFolder folder(options.keep);
        std::vector<Result> results;
        for (const Case& tested : corpus()) {
            if (tested.name.find(options.only) == std::string::npos) {
                continue;
            }
            if (!options.quiet) {
                writeError(fmt::format("{}: {}\n", tested.name, tested.about));
            }
            results.push_back(test(tested, folder, stop));
            if (stop) {
                throw std::runtime_error(kStopped);
            }
        }
        if (results.empty()) {
            complain(fmt::format("no case has '{}' in its name", options.only));
            return kExitUsage;
        }
        const auto threshold = scoreBlockiness(results);
        writeOutput(resultText(results, threshold));
        return kExitDone;
    } catch (const OutputError&) {
        throw;
    } catch (const std::exception& error) {
        complain(fmt::format("selftest: {}", stop ? kStopped : error.what()));
        return kExitFailed;
    }
}

}  // namespace zel_monitor::selftest
