#include "cli/file_names.h"

#include <filesystem>
#include <fmt/format.h>
#include <optional>
#include <sys/stat.h>
#include <unistd.h>

namespace zel_monitor {
namespace {

namespace fs = std::filesystem;

fs::path localPath(std::string_view name) {
    constexpr std::string_view kProtocol = "file:";
    if (name == "-") {
        return "/dev/stdin";
    }
    return name.starts_with(kProtocol) ? name.substr(kProtocol.size()) : name;
}

/// The type of the file that `name` and the descriptor are both of, if they are. A device that is no terminal
/// serves everybody and is nobody's.
std::optional<mode_t> sharedType(const fs::path& name, int descriptor) {
    struct stat named = {};
    struct stat opened = {};
    if (stat(name.c_str(), &named) != 0 || fstat(descriptor, &opened) != 0 || named.st_dev != opened.st_dev ||
        named.st_ino != opened.st_ino || (S_ISCHR(opened.st_mode) && isatty(descriptor) == 0)) {
        return std::nullopt;
    }
    return opened.st_mode & S_IFMT;
}

}  // namespace

bool namesFile(const std::string& name) {
    std::error_code ignored;
    return fs::exists(name, ignored) && !fs::is_directory(name, ignored);
}

bool namesStandardInput(const std::string& name) {
    return name == "-" || name == "pipe:" || name == "pipe:0" ||
           sharedType(localPath(name), STDIN_FILENO).value_or(S_IFREG) != S_IFREG;
}

bool namesStandardOutput(const std::string& name) {
    return name == "-" || sharedType(name, STDOUT_FILENO);
}

std::string followed(const std::string& name) {
    constexpr int kMostLinks = 40;  // as the system's own limit
    std::error_code ignored;
    fs::path path = name;
    for (int i = 0; i < kMostLinks && fs::is_symlink(fs::symlink_status(path, ignored)); ++i) {
        path = path.parent_path() / fs::read_symlink(path, ignored);
    }
    return path.string();
}

bool writesOver(const std::string& output, const std::string& other) {
    std::error_code ignored;
    const fs::path path = localPath(other);
    if (fs::exists(output, ignored) || fs::exists(path, ignored)) {
        return fs::is_regular_file(output, ignored) && fs::equivalent(output, path, ignored);
    }
    return fs::weakly_canonical(fs::absolute(followed(output), ignored), ignored) ==
           fs::weakly_canonical(fs::absolute(followed(path.string()), ignored), ignored);
}

std::string printable(std::string_view text) {
    std::string shown;
    unsigned char previous = 0;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        // Terminals also obey U+0080 to U+009F, in UTF-8 two bytes of which 0xc2 is the first.
        const bool ends_long_control = previous == 0xc2 && byte >= 0x80 && byte < 0xa0;
        if (byte < 0x20 || byte == 0x7f || ends_long_control) {
            shown += fmt::format("\\x{:02x}", byte);
        } else {
            shown += c;
        }
        previous = byte;
    }
    return shown;
}

}  // namespace zel_monitor
