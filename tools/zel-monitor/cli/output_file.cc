#include "cli/output_file.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fmt/format.h>
#include <stdexcept>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>
#include <utility>

#include "cli/file_names.h"
#include "cli/standard_streams.h"

namespace zel_monitor {
namespace {

namespace fs = std::filesystem;

/// Renames a file unless the new name is taken.
bool moveToFreeName(const std::string& from, const std::string& to) {
    if (renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0) {
        return true;
    }
    if (errno != EINVAL) {
        return false;
    }
    // Not every file system can do that, so the name is taken first.
    const int placeholder = open(to.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, S_IRUSR | S_IWUSR);
    if (placeholder < 0) {
        return false;
    }
    close(placeholder);
    if (std::rename(from.c_str(), to.c_str()) == 0) {
        return true;
    }
    const int error = errno;
    unlink(to.c_str());
    errno = error;
    return false;
}

/// The permissions of the file that is replaced, or those of any new file.
mode_t permissionsFor(const std::string& path) {
    struct stat state = {};
    if (stat(path.c_str(), &state) == 0) {
        return state.st_mode & 07777U;
    }
    const mode_t mask = umask(0);
    umask(mask);
    return 0666U & ~mask;
}

}  // namespace

OutputFile::OutputFile(const std::string& path, bool overwrite, Appears appears)
    : OutputFile(path, overwrite) {
    if (appears == Appears::kAtOnce) {
        if (const int error = publish(); error != 0) {
            throw OutputError(error, name_);
        }
    }
}

OutputFile::OutputFile(const std::string& path, bool overwrite)
    : name_(path.empty() ? "standard output" : path),
      path_(path),
      overwrite_(overwrite),
      descriptor_(STDOUT_FILENO) {
    if (path.empty()) {
        return;
    }
    std::error_code ignored;
    const fs::file_status status = fs::status(path, ignored);
    const bool replaceable =
        !fs::is_character_file(status) && !fs::is_fifo(status) && !fs::is_directory(status);
    if (replaceable && !overwrite && fs::exists(fs::symlink_status(path, ignored))) {
        throw std::runtime_error(path + " exists already; give -y to overwrite it");
    }
    if (fs::exists(status) && !fs::is_regular_file(status)) {
        descriptor_ = open(path.c_str(), O_WRONLY | O_CLOEXEC);
    } else {
        create();
    }
    if (descriptor_ < 0) {
        throw std::runtime_error(path + ": " + std::generic_category().message(errno));
    }
}

OutputFile::~OutputFile() {
    if (!pending_.empty()) {
        unlink(pending_.c_str());
    }
    if (descriptor_ != STDOUT_FILENO) {
        close(descriptor_);
    }
}

void OutputFile::write(std::string_view text) {
    if (const int error = writeAll(descriptor_, text); error != 0) {
        throw OutputError(error, name_);
    }
    if (published_) {
        pending_.clear();
    }
}

void OutputFile::complete() {
    const int error = publish();
    removal_.reset();
    const std::string file = std::exchange(pending_, "");
    if (error != 0) {
        throw OutputError(error, fmt::format("all is in {}, which cannot be named {}", file, name_));
    }
}

void OutputFile::create() {
    path_ = followed(path_);
    std::string file = (fs::path(path_).parent_path() / ".zel-monitor-XXXXXX").string();
    descriptor_ = mkostemp(file.data(), O_CLOEXEC);
    if (descriptor_ >= 0) {
        pending_ = file;
        removal_.emplace(pending_);
        fchmod(descriptor_, permissionsFor(path_));
    }
}

int OutputFile::publish() {
    if (pending_.empty() || published_) {
        return 0;
    }
    if (overwrite_ ? std::rename(pending_.c_str(), path_.c_str()) != 0 : !moveToFreeName(pending_, path_)) {
        return errno;
    }
    removal_.reset();
    published_ = true;
    pending_ = path_;
    return 0;
}

}  // namespace zel_monitor
