#include "archive/archive_report.h"

#include <algorithm>
#include <filesystem>
#include <fmt/format.h>
#include <map>
#include <set>
#include <stdexcept>

#include "archive/archive.h"
#include "archive/archive_json.h"
#include "archive/archive_text.h"
#include "archive/index_page.h"
#include "cli/exit_status.h"
#include "cli/file_list.h"
#include "cli/output_file.h"
#include "cli/standard_streams.h"
#include "report/page.h"
#include "report/report_json.h"

namespace zel_monitor {
namespace {

namespace fs = std::filesystem;

std::string textOf(const Archive& archive, ArchiveFormat format) {
    switch (format) {
        case ArchiveFormat::kJson:
            return jsonText(archiveJson(archive), true);
        case ArchiveFormat::kJsonLines:
            return archiveJsonLines(archive);
        case ArchiveFormat::kCsv:
            return archiveCsv(archive);
        case ArchiveFormat::kTable:
            break;
    }
    return archiveTable(archive);
}

/// The numbers of the inputs that get a page: the worst, and those that are named.
std::set<size_t> inputsWithPages(const Archive& archive, const ArchiveOptions& options) {
    std::set<size_t> numbers;
    if (!hasPage()) {
        return numbers;
    }
    for (size_t i = 0; i < archive.inputs.size() && numbers.size() < options.pages; ++i) {
        const ArchivedInput& input = archive.inputs[i];
        if (!input.missing && (input.report.problem || !input.report.events.empty())) {
            numbers.insert(i);
        }
    }
    for (const std::string& name : options.pages_of) {
        const auto named = std::find_if(
            archive.inputs.begin(), archive.inputs.end(),
            [path = absoluteName(name)](const ArchivedInput& input) { return input.path == path; });
        if (named == archive.inputs.end() || named->missing) {
            throw std::runtime_error(fmt::format("--page {}: nothing is stored of it", name));
        }
        numbers.insert(static_cast<size_t>(named - archive.inputs.begin()));
    }
    return numbers;
}

/// The index, and beside it a folder with the pages.
void writeHtml(const Archive& archive, const ArchiveOptions& options) {
    const fs::path folder = fs::path(options.html).replace_extension("").string() + "-pages";
    OutputFile index(options.html, options.overwrite, Appears::kWhenComplete);
    std::map<size_t, std::string> pages;
    for (const size_t number : inputsWithPages(archive, options)) {
        const ArchivedInput& input = archive.inputs[number];
        fs::create_directories(folder);
        constexpr size_t kEnough = 24;  // digits, to tell the archive's files apart
        const fs::path page = folder / (sha256(input.path).substr(0, kEnough) + ".html");
        OutputFile file(page.string(), true, Appears::kWhenComplete);
        file.write(filePageHtml(archive, input));
        file.complete();
        pages[number] = fmt::format("{}/{}", folder.filename().string(), page.filename().string());
    }
    index.write(indexHtml(archive, options.store, pages));
    index.complete();
}

}  // namespace

int runArchiveReport(const ArchiveOptions& options) {
    if (options.schema) {
        writeOutput(jsonText(archiveSchema(), true));
        return kExitDone;
    }
    try {
        const auto list = options.list.from.empty() ? std::nullopt : std::optional(options.list);
        const Archive archive = readArchive(Store::opened(options.store), list, options.policy);
        if (archive.unreadable > 0) {
            complain(fmt::format("{}: {} files hold no report, and were passed over", options.store,
                                 archive.unreadable));
        }
        if (archive.inputs.empty()) {
            complain(options.store + ": nothing is stored in it");
            return kExitFailed;
        }
        OutputFile output(options.output, options.overwrite, Appears::kWhenComplete);
        if (!options.html.empty()) {
            writeHtml(archive, options);
        }
        output.write(textOf(archive, options.format));
        output.complete();
        const int status = exitStatusOf(summaryOf(archive));
        return status == kExitDone && archive.unreadable > 0 ? kExitFailed : status;
    } catch (const OutputError&) {
        throw;
    } catch (const std::runtime_error& error) {
        complain(error.what());
        return kExitUsage;
    }
}

}  // namespace zel_monitor
