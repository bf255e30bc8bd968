#include <zel/base/log.h>

#include <CLI/App.hpp>
#include <CLI/Config.hpp>
#include <CLI/Error.hpp>
#include <CLI/Formatter.hpp>
#include <CLI/Validators.hpp>
#include <algorithm>
#include <atomic>
#include <exception>
#include <fmt/format.h>
#include <map>
#include <stdexcept>
#include <string>
#include <variant>

extern "C" {
#include <libavutil/log.h>
}

#include "bench/accuracy/corpus.h"
#include "bench/accuracy/file_frames.h"
#include "bench/accuracy/frame_verdicts.h"
#include "bench/accuracy/real_clips.h"
#include "bench/accuracy/real_results.h"
#include "bench/accuracy/results.h"
#include "cli/standard_streams.h"
#include "cli/stop_signal.h"

// Measures how right the events of `zel-monitor scan` are, beside FFmpeg's own detectors, and prints the
// tables of docs/accuracy.md.

namespace {

using namespace bench::accuracy;  // NOLINT(google-build-using-namespace): the program is the namespace
using zel_monitor::writeError;
using zel_monitor::writeOutput;

struct Options {
    std::string only;
    std::string keep;
    std::string make;
    std::string real;
    Half half = Half::kTune;
    bool frames = false;
    bool list = false;
    bool no_rivals = false;
    bool quiet = false;
};

class Stopped : public std::runtime_error {
  public:
    Stopped() : std::runtime_error("stopped before its end") {}
};

/// What every mode needs: which clips are wanted, where they are made, whether to go on.
class Run {
  public:
    Run(const Options& options, const std::atomic<bool>& stop)
        : options_(options), stop_(stop), folder_(options.make.empty() ? options.keep : options.make) {}

    bool wants(const std::string& name) const { return name.find(options_.only) != std::string::npos; }

    /// Tells of a clip, then goes on with it unless the program was told to stop.
    void begin(const std::string& name, const std::string& about) {
        if (stop_) {
            throw Stopped();
        }
        ++begun_;
        if (!options_.quiet) {
            writeError(fmt::format("{}: {}\n", name, about));
        }
    }

    std::string make(const Clip& clip) const {
        try {
            return folder_.make(clip);
        } catch (const std::runtime_error&) {
            if (stop_) {
                throw Stopped();  // the terminal's Ctrl-C ends ffmpeg too
            }
            throw;
        }
    }

    Scanned scan(const std::string& file) const {
        Scanned scanned = scanFile(file, stop_);
        if (stop_) {
            throw Stopped();
        }
        return scanned;
    }

    std::vector<Findings> ask(const std::string& file, const std::vector<const Rival*>& asked,
                              bool all_settings) const {
        if (options_.no_rivals || asked.empty()) {
            return {};
        }
        const bool sound = asked.front()->source == ZEL::EventSource::kAudio;
        return findWithRivals(sound ? soundFrames(file) : videoFrames(file), asked, all_settings);
    }

    void discard(const std::string& file) const { folder_.discard(file); }
    bool begunAny() const { return begun_ > 0; }

  private:
    const Options& options_;
    const std::atomic<bool>& stop_;
    ClipFolder folder_;
    size_t begun_ = 0;
};

void measureCorpus(Run& run) {
    std::vector<Result> results;
    for (const Case& tested : corpus()) {
        if (!run.wants(tested.clip.name)) {
            continue;
        }
        run.begin(tested.clip.name, tested.clip.about);
        const std::string file = run.make(tested.clip);
        const Scanned scanned = run.scan(file);
        if (!scanned.problem.empty()) {
            throw std::runtime_error(file + ": " + scanned.problem);
        }
        const std::string_view kind = ZEL::infoOf(tested.kind).name;
        Result result{&tested, scoreOf(tested.truth, scanned.spansOf({{kind}})), {}, {}};
        if (const Rival* const rival = rivalOf(kind)) {
            for (Findings& findings : run.ask(file, {rival}, false)) {
                result.blockiness = std::move(findings.blockiness);
                if (!findings.by_setting.empty()) {
                    result.rival = scoreOf(tested.truth, findings.by_setting.front());
                }
            }
        }
        results.push_back(std::move(result));
        run.discard(file);
    }
    const auto threshold = scoreBlockiness(results);
    if (run.begunAny()) {
        writeOutput(resultText(results, threshold));
    }
}

void measureFrames(Run& run) {
    std::string table = kFrameVerdictsHead;
    for (const Clip& clip : textureClips()) {
        if (run.wants(clip.name)) {
            run.begin(clip.name, clip.about);
            const std::string file = run.make(clip);
            table += frameVerdicts(clip.name, file);
            run.discard(file);
        }
    }
    if (run.begunAny()) {
        writeOutput(table);
    }
}

/// Those of one source that are asked about a case.
std::vector<const Rival*> rivalsFor(const RealCase& tested, ZEL::EventSource source) {
    std::vector<const Rival*> asked;
    for (const Rival& rival : rivals()) {
        const bool fits = tested.good() || std::find(tested.kinds.begin(), tested.kinds.end(), rival.kind) !=
                                               tested.kinds.end();
        if (rival.source == source && fits) {
            asked.push_back(&rival);
        }
    }
    return asked;
}

RealResult measureRealCase(Run& run, const RealCase& tested) {
    run.begin(tested.name(), tested.about);
    const std::string file = tested.clip ? run.make(*tested.clip) : tested.material->file;
    RealResult result{&tested, run.scan(file), {}};
    for (const auto& [source, has] : {std::pair(ZEL::EventSource::kVideo, result.ours.video),
                                      std::pair(ZEL::EventSource::kAudio, result.ours.sound)}) {
        if (has) {
            auto findings = run.ask(file, rivalsFor(tested, source), true);
            std::move(findings.begin(), findings.end(), std::back_inserter(result.rivals));
        }
    }
    if (tested.clip) {
        run.discard(file);
    }
    return result;
}

/// The halves one after another, so that neither's figures touch the other's.
void measureReal(Run& run, const Options& options) {
    for (const auto& [half, name] :
         {std::pair(Half::kTune, "tuned on"), std::pair(Half::kKept, "kept aside")}) {
        if (options.half != Half::kAll && options.half != half) {
            continue;
        }
        const std::vector<Material> material = readMaterial(options.real, half);
        const std::vector<RealCase> cases = realCases(material);
        std::vector<RealResult> results;
        for (const RealCase& tested : cases) {
            if (run.wants(tested.name())) {
                results.push_back(measureRealCase(run, tested));
            }
        }
        if (!results.empty()) {
            writeOutput(fmt::format("Clips that were {}:\n\n{}\n", name, realResultText(results)));
        }
    }
}

/// All that can be made: of the real clips, if there are any, otherwise the corpus.
std::vector<Clip> clipsToMake(const Options& options) {
    std::vector<Clip> clips;
    if (!options.real.empty()) {
        const std::vector<Material> material = readMaterial(options.real, options.half);
        for (const RealCase& one : realCases(material)) {
            if (one.clip) {
                clips.push_back(*one.clip);
            }
        }
        return clips;
    }
    clips = textureClips();
    for (const Case& one : corpus()) {
        clips.push_back(one.clip);
    }
    return clips;
}

void makeAll(Run& run, const Options& options) {
    for (const Clip& clip : clipsToMake(options)) {
        if (run.wants(clip.name)) {
            run.begin(clip.name, clip.about);
            writeOutput(run.make(clip) + "\n");
        }
    }
}

int run(const Options& options) {
    if (options.list) {
        for (const Clip& clip : clipsToMake(options)) {
            writeOutput(fmt::format("{}: {}\n", clip.name, clip.about));
        }
        return 0;
    }
    Run run(options, zel_monitor::watchStopSignals());
    if (!options.make.empty()) {
        makeAll(run, options);
    } else if (options.frames) {
        measureFrames(run);
    } else if (!options.real.empty()) {
        measureReal(run, options);
    } else {
        measureCorpus(run);
    }
    if (!run.begunAny()) {
        writeError(fmt::format("accuracy: no clip has '{}' in its name\n", options.only));
        return 2;
    }
    return 0;
}

/// What was asked for; the exit status if there is nothing left to do.
std::variant<Options, int> parse(int argc, char** argv) {
    Options options;
    CLI::App app(
        "Measures how right the events of zel-monitor scan are, beside FFmpeg's detectors. Clips with known "
        "faults are made with the ffmpeg program; the tables come as Markdown.",
        "accuracy");
    app.add_option("--only", options.only, "Only clips whose name contains this")->type_name("TEXT");
    auto* const keep = app.add_option("--keep", options.keep,
                                      "Keep the clips in this folder; what is there is not made again")
                           ->type_name("DIR");
    auto* const frames =
        app.add_flag("--frames", options.frames,
                     "Count the frames with each verdict of the detectors, on two-second clips");
    app.add_option("--make", options.make, "Only make the clips, in this folder")
        ->type_name("DIR")
        ->excludes(keep, frames);
    auto* const real =
        app.add_option("--real", options.real, "Use the clips that bench/real_clips has put into this folder")
            ->type_name("DIR")
            ->excludes(frames);
    app.add_option("--half", options.half, "Which real clips; tune if not told")
        ->transform(CLI::CheckedTransformer(
            std::map<std::string, Half>{{"tune", Half::kTune}, {"kept", Half::kKept}, {"all", Half::kAll}}))
        ->option_text("tune|kept|all")
        ->needs(real);
    app.add_flag("--list", options.list, "Only name the clips that can be made");
    app.add_flag("--no-rivals", options.no_rivals,
                 "Do not ask FFmpeg's detectors, which take most of the time");
    app.add_flag("-q,--quiet", options.quiet, "No progress on standard error");
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? 0 : 2;
    }
    return options;
}

}  // namespace

int main(int argc, char** argv) {
    try {
        const std::variant<Options, int> asked = parse(argc, argv);
        if (const int* const status = std::get_if<int>(&asked)) {
            return *status;
        }
        ZEL::setLogSink([](const char*, size_t, void*) {}, nullptr);
        av_log_set_level(AV_LOG_QUIET);
        return run(std::get<Options>(asked));
    } catch (const std::exception& error) {
        writeError(fmt::format("accuracy: {}\n", error.what()));
        return 3;
    }
}
