#include "cli/file_list.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <filesystem>
#include <fstream>
#include <istream>
#include <stdexcept>
#include <system_error>
#include <utility>

#include "cli/file_names.h"

namespace zel_monitor {
namespace {

namespace fs = std::filesystem;

constexpr auto kMediaExtensions = std::to_array<std::string_view>(
    {"3g2",  "3gp",  "aac", "ac3", "aif",  "aiff", "amr",  "asf", "avi", "caf", "dv",   "eac3",
     "f4v",  "flac", "flv", "gxf", "h264", "h265", "hevc", "ivf", "m1v", "m2a", "m2p",  "m2t",
     "m2ts", "m2v",  "m4a", "m4b", "m4v",  "mka",  "mkv",  "mov", "mp2", "mp3", "mp4",  "mpa",
     "mpe",  "mpeg", "mpg", "mpv", "mts",  "mxf",  "nut",  "oga", "ogg", "ogv", "opus", "qt",
     "rm",   "rmvb", "ts",  "vob", "w64",  "wav",  "webm", "wma", "wmv", "wtv", "y4m"});
static_assert(std::is_sorted(kMediaExtensions.begin(), kMediaExtensions.end()));

bool isUrl(const std::string& name) {
    return name.find("://") != std::string::npos && !namesFile(name);
}

void readNames(std::istream& stream, bool null_separated, std::vector<std::string>& names) {
    std::string name;
    while (std::getline(stream, name, null_separated ? '\0' : '\n')) {
        if (!null_separated && name.ends_with('\r')) {
            name.pop_back();
        }
        if (!name.empty()) {
            names.push_back(std::exchange(name, ""));
        }
    }
}

void readList(const FileList& list, std::vector<std::string>& names) {
    errno = 0;
    std::ifstream file(list.from == "-" ? "/dev/stdin" : list.from);
    const bool is_folder = fs::is_directory(list.from);
    if (file.is_open() && !is_folder) {
        readNames(file, list.null_separated, names);
    }
    if (!file.is_open() || file.bad() || is_folder) {
        throw std::runtime_error(list.from + ": " +
                                 std::generic_category().message(is_folder ? EISDIR : errno));
    }
}

/// Adds the media files in and below `folder`; itself if it cannot be read.
void walk(const fs::path& folder, std::vector<std::string>& found) {
    std::error_code error;
    std::vector<fs::directory_entry> entries;
    for (fs::directory_iterator it(folder, error), end; !error && it != end; it.increment(error)) {
        entries.push_back(*it);
    }
    if (error) {
        found.push_back(folder.string());
        return;
    }
    std::sort(entries.begin(), entries.end(),
              [](const auto& a, const auto& b) { return a.path().native() < b.path().native(); });
    for (const fs::directory_entry& entry : entries) {
        const std::string name = entry.path().filename().string();
        std::error_code ignored;
        if (name.starts_with('.')) {
            continue;
        }
        if (entry.is_directory(ignored) && !entry.is_symlink(ignored)) {
            walk(entry.path(), found);
        } else if (namesMediaFile(name) && (entry.is_regular_file(ignored) || entry.is_symlink(ignored)) &&
                   !entry.is_directory(ignored)) {  // not a pipe, which may be waited for without end
            found.push_back(entry.path().string());
        }
    }
}

}  // namespace

bool namesMediaFile(std::string_view name) {
    const size_t dot = name.rfind('.');
    if (dot == std::string_view::npos || name.find('/', dot) != std::string_view::npos) {
        return false;
    }
    std::string extension(name.substr(dot + 1));
    std::transform(extension.begin(), extension.end(), extension.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
    return std::binary_search(kMediaExtensions.begin(), kMediaExtensions.end(), std::string_view(extension));
}

std::vector<std::string> namesIn(const FileList& list) {
    std::vector<std::string> given = list.names;
    if (!list.from.empty()) {
        readList(list, given);
    }
    std::vector<std::string> names;
    for (std::string& name : given) {
        std::error_code ignored;
        if (namesMediaFile(name) || name == "-" || !fs::is_directory(name, ignored)) {
            names.push_back(std::move(name));
            continue;
        }
        const size_t before = names.size();
        walk(name, names);
        if (names.size() == before) {
            names.push_back(std::move(name));
        }
    }
    return names;
}

std::string absoluteName(const std::string& name) {
    if (name == "-" || isUrl(name)) {
        return name;
    }
    std::error_code ignored;
    const fs::path absolute = fs::absolute(name, ignored);
    fs::path clean = absolute.root_path();
    for (const fs::path& part : absolute.relative_path()) {
        if (part != "." && !part.empty()) {
            clean /= part;
        }
    }
    return clean.string();
}

}  // namespace zel_monitor
