#include "archive/archive.h"

#include <algorithm>
#include <atomic>
#include <filesystem>
#include <fmt/format.h>
#include <map>
#include <set>
#include <stdexcept>
#include <thread>
#include <tuple>
#include <utility>

#include "cli/exit_status.h"
#include "report/report_reader.h"

namespace zel_monitor {
namespace {

constexpr unsigned kMostReaders = 8;

/// What each file of the store holds. Mostly waits for the disk or the network, so several threads read.
std::vector<std::optional<StoredReport>> readAll(const std::vector<std::string>& files) {
    std::vector<std::optional<StoredReport>> stored(files.size());
    std::atomic<size_t> next{0};
    const auto read = [&] {
        for (size_t i = next++; i < files.size(); i = next++) {
            stored[i] = Store::read(files[i]);
        }
    };
    {
        std::vector<std::jthread> readers;
        for (unsigned i = 1; i < std::min(std::thread::hardware_concurrency(), kMostReaders); ++i) {
            readers.emplace_back(read);
        }
        read();
    }
    return stored;
}

class Merger {
  public:
    explicit Merger(const std::optional<Policy>& policy) : policy_(policy) {}

    void add(StoredReport stored, const std::string& name) {
        ArchivedInput input{
            .report = std::move(stored.report), .path = stored.path, .settings = settingsOf(stored)};
        input.report.facts.input = name;
        requireJudgeable(input);
        input.policy = policy_.value_or(archive_.settings[input.settings].settings.policy);
        input.totals = totalsOf(input.report);
        for (const ZEL::EventKindInfo& info : ZEL::eventKinds()) {
            input.fault_s +=
                info.tier == ZEL::EventTier::kFault ? input.totals[indexOf(info.kind)].total_s : 0.0;
        }
        archive_.inputs.push_back(std::move(input));
    }

    void addMissing(const std::string& name, const std::string& path) {
        ArchivedInput input{
            .report = {}, .missing = true, .path = path, .policy = policy_.value_or(Policy{})};
        input.report.facts.input = name;
        input.report.problem = "nothing is stored of it";
        archive_.inputs.push_back(std::move(input));
    }

    Archive take() {
        const auto rank = [](const ArchivedInput& input) {
            return std::tuple(!input.report.problem, input.missing, -input.fault_s);
        };
        std::stable_sort(archive_.inputs.begin(), archive_.inputs.end(),
                         [&](const auto& a, const auto& b) { return rank(a) < rank(b); });
        return std::move(archive_);
    }

  private:
    /// Throws std::runtime_error where the policy asks for what the scan did not look for.
    void requireJudgeable(const ArchivedInput& input) const {
        const ScanSettings& settings = archive_.settings[input.settings].settings;
        const ZEL::EventRules& rules = input.report.survey ? input.report.survey->rules : settings.rules;
        for (const ZEL::EventKindInfo& info : ZEL::eventKinds()) {
            const size_t kind = indexOf(info.kind);
            const auto limit = policy_ ? (*policy_)[kind] : std::nullopt;
            if (limit && (!settings.wanted[kind] || (*limit > 0.0 && rules[kind].min_s > *limit))) {
                throw std::runtime_error(
                    fmt::format("--fail-on {}: {} was not scanned for that; scan it with this --fail-on",
                                info.name, input.report.facts.input));
            }
        }
    }

    size_t settingsOf(const StoredReport& stored) {
        const auto known =
            std::find_if(archive_.settings.begin(), archive_.settings.end(), [&](const UsedSettings& used) {
                return used.tool_version == stored.tool_version && used.json == stored.settings;
            });
        const auto index = known - archive_.settings.begin();
        if (known == archive_.settings.end()) {
            archive_.settings.push_back({.json = stored.settings,
                                         .tool_version = stored.tool_version,
                                         .settings = settingsFrom(stored.settings)});
        }
        ++archive_.settings[static_cast<size_t>(index)].inputs;
        return static_cast<size_t>(index);
    }

    const std::optional<Policy>& policy_;
    Archive archive_;
};

}  // namespace

Archive readArchive(const Store& store, const std::optional<FileList>& list,
                    const std::optional<Policy>& policy) {
    std::vector<std::string> names;
    std::vector<std::string> paths;
    std::vector<std::string> files;
    if (list) {
        std::set<std::string> known;
        for (std::string& name : namesIn(*list)) {
            std::string path = absoluteName(name);
            if (known.insert(path).second) {
                files.push_back(store.fileFor(path));
                names.push_back(std::move(name));
                paths.push_back(std::move(path));
            }
        }
    } else {
        files = store.files();
    }
    std::vector<std::optional<StoredReport>> stored = readAll(files);
    size_t unreadable = 0;
    if (!list) {
        unreadable = std::erase_if(stored, [](const auto& report) { return !report; });
        std::sort(stored.begin(), stored.end(),
                  [](const auto& a, const auto& b) { return a->path < b->path; });
    }
    Merger merger(policy);
    for (size_t i = 0; i < stored.size(); ++i) {
        if (stored[i]) {
            const std::string name = list ? names[i] : stored[i]->path;
            merger.add(std::move(*stored[i]), name);
        } else {
            merger.addMissing(names[i], paths[i]);
        }
    }
    Archive archive = merger.take();
    archive.unreadable = unreadable;
    return archive;
}

void Summary::add(const ArchivedInput& input) {
    ++inputs;
    if (input.missing) {
        ++missing;
        return;
    }
    const Verdict verdict = verdictOn(input.report, input.policy);
    incomplete += input.report.problem ? size_t{1} : size_t{0};
    passed += verdict == Verdict::kPass ? size_t{1} : size_t{0};
    failed += verdict == Verdict::kFail ? size_t{1} : size_t{0};
    surveyed += input.report.survey ? size_t{1} : size_t{0};
    deserve_scan += deservesScan(input.report) ? size_t{1} : size_t{0};
    analysed_s += input.report.length_s;
    fault_s += input.fault_s;
    for (size_t i = 0; i < ZEL::kEventKinds; ++i) {
        const Totals& mine = input.totals[i];
        kinds[i].inputs += mine.events > 0 ? size_t{1} : size_t{0};
        kinds[i].events += mine.events;
        kinds[i].total_s += mine.total_s;
        kinds[i].longest_s = std::max(kinds[i].longest_s, mine.longest_s);
    }
}

Summary summaryOf(const Archive& archive) {
    Summary summary;
    for (const ArchivedInput& input : archive.inputs) {
        summary.add(input);
    }
    return summary;
}

std::vector<Folder> foldersOf(const Archive& archive) {
    std::map<std::string, Summary> by_name;
    for (const ArchivedInput& input : archive.inputs) {
        by_name[std::filesystem::path(input.report.facts.input).parent_path().string()].add(input);
    }
    std::vector<Folder> folders;
    folders.reserve(by_name.size());
    for (auto& [name, summary] : by_name) {
        folders.push_back({name, summary});
    }
    std::stable_sort(folders.begin(), folders.end(),
                     [](const Folder& a, const Folder& b) { return a.summary.fault_s > b.summary.fault_s; });
    return folders;
}

int exitStatusOf(const Summary& summary) {
    if (summary.missing + summary.incomplete > 0) {
        return kExitFailed;
    }
    return summary.failed > 0 ? kExitViolated : kExitDone;
}

}  // namespace zel_monitor
