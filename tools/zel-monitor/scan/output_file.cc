#include "scan/output_file.h"

#include <cerrno>
#include <filesystem>
#include <stdexcept>
#include <system_error>

namespace zel_monitor::scan {
namespace {

std::string systemReason() {
    return std::generic_category().message(errno);
}

}  // namespace

OutputFile::OutputFile(const std::string& path, bool overwrite)
    : name_(path.empty() ? "standard output" : path), file_(path.empty() ? stdout : nullptr) {
    if (file_) {
        return;
    }
    std::error_code ignored;
    const bool may_replace = overwrite || std::filesystem::is_character_file(path, ignored) ||
                             std::filesystem::is_fifo(path, ignored);
    file_.reset(std::fopen(path.c_str(), may_replace ? "wb" : "wbx"));
    if (!file_) {
        throw std::runtime_error(errno == EEXIST ? path + " exists already; give -y to overwrite it"
                                                 : path + ": " + systemReason());
    }
}

void OutputFile::write(std::string_view text) {
    if (std::fwrite(text.data(), 1, text.size(), file_.get()) != text.size() ||
        std::fflush(file_.get()) != 0) {
        throw std::runtime_error(name_ + ": " + systemReason());
    }
}

}  // namespace zel_monitor::scan
