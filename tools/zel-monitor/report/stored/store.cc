#include "report/stored/store.h"

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fmt/format.h>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>
#include <utility>

#include "cli/standard_streams.h"

namespace zel_monitor {
namespace {

namespace fs = std::filesystem;

constexpr const char* kExtension = ".json";
constexpr std::string_view kUnfinished = "zel-report-";  // and six characters of chance
constexpr size_t kFolderName = 2;                        // of the hash's beginning
constexpr auto kOld = std::chrono::hours(1);             // a file is written within seconds
constexpr int kMostTries = 5;

/// A new file, and the name that it has for now.
std::pair<int, std::string> newFileIn(const std::string& folder) {
    std::string name = fmt::format("{}/{}XXXXXX", folder, kUnfinished);
    const int descriptor = mkostemp(name.data(), O_CLOEXEC);
    return {descriptor, name};
}

/// 0, or the system's error number.
int fill(int descriptor, std::string_view text, mode_t permissions) {
    int error = writeAll(descriptor, text);
    // The name must not outlive the content if the machine stops. Some file systems tell only here that the
    // text does not fit.
    if (error == 0 && (fchmod(descriptor, permissions) != 0 || fsync(descriptor) != 0)) {
        error = errno;
    }
    if (close(descriptor) != 0 && error == 0) {
        error = errno;
    }
    return error;
}

std::optional<std::string> contentOf(const std::string& name) {
    // On network file systems a file may be gone, because it was replaced, while it is read.
    for (int i = 0; i < kMostTries; ++i) {
        std::ifstream file(name, std::ios::binary);
        if (!file.is_open()) {
            return std::nullopt;
        }
        std::ostringstream text;
        text << file.rdbuf();  // an error ends it, where an iterator would throw
        if (std::string content = std::move(text).str(); content.ends_with('\n')) {
            return content;
        }
    }
    return std::nullopt;
}

}  // namespace

Store Store::opened(const std::string& folder) {
    if (!fs::is_directory(folder)) {
        throw std::runtime_error(folder + ": there is no such folder");
    }
    return Store(folder);
}

Store Store::writable(const std::string& folder) {
    Store store(folder);
    const mode_t mask = umask(0);
    umask(mask);
    store.permissions_ = 0666U & ~mask;
    std::error_code error;
    fs::create_directories(store.unfinishedFolder(), error);
    const auto [descriptor, name] = newFileIn(store.unfinishedFolder());
    if (descriptor < 0) {
        throw std::runtime_error(
            fmt::format("--store {}: {}", folder, std::generic_category().message(errno)));
    }
    close(descriptor);
    store.removeLeftovers(name);
    unlink(name.c_str());
    return store;
}

std::optional<StoredReport> Store::find(const std::string& path) const {
    return read(fileFor(path));
}

std::optional<StoredReport> Store::read(const std::string& file) {
    const auto text = contentOf(file);
    return text ? storedReportFrom(*text) : std::nullopt;
}

std::vector<std::string> Store::files() const {
    std::vector<std::string> files;
    for (const fs::directory_entry& folder : fs::directory_iterator(folder_)) {
        if (folder.path().filename().string().size() != kFolderName || !folder.is_directory()) {
            continue;  // of somebody else, such as lost+found
        }
        for (const fs::directory_entry& file : fs::directory_iterator(folder)) {
            if (file.path().extension() == kExtension) {
                files.push_back(file.path().string());
            }
        }
    }
    return files;
}

void Store::put(const std::string& path, std::string_view text) const {
    const std::string name = fileFor(path);
    int error = 0;
    for (int i = 0; i < kMostTries; ++i) {
        const auto [descriptor, unfinished] = newFileIn(unfinishedFolder());
        error = descriptor < 0 ? errno : fill(descriptor, text, permissions_);
        if (error == 0) {
            std::error_code failed;
            fs::create_directory(fs::path(name).parent_path(), failed);
            error = failed ? failed.value() : std::rename(unfinished.c_str(), name.c_str()) == 0 ? 0 : errno;
        }
        if (error == 0) {
            return;
        }
        if (descriptor >= 0) {
            unlink(unfinished.c_str());
        }
        if (error != ENOENT) {  // taken for a leftover by another process, because this one was held up
            break;
        }
    }
    throw OutputError(error, name);
}

std::string Store::fileFor(const std::string& path) const {
    const std::string hash = sha256(path);
    return fmt::format("{}/{}/{}{}", folder_, hash.substr(0, kFolderName), hash, kExtension);
}

std::string Store::unfinishedFolder() const {
    return folder_ + "/unfinished";
}

/// Removes what is much older than `fresh`, a file that was made just now: so all times are of the machine
/// that keeps the files.
void Store::removeLeftovers(const std::string& fresh) const {
    std::error_code error;
    const auto now = fs::last_write_time(fresh, error);
    for (fs::directory_iterator it(unfinishedFolder(), error), end; !error && it != end;
         it.increment(error)) {
        std::error_code gone;
        const auto written = fs::last_write_time(it->path(), gone);
        const bool is_ours = it->path().filename().string().starts_with(kUnfinished);
        if (!gone && is_ours && now - written > kOld) {
            fs::remove(it->path(), gone);
        }
    }
}

}  // namespace zel_monitor
