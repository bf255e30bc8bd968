#ifndef ZEL_TOOLS_SCAN_OUTPUT_FILE_H_
#define ZEL_TOOLS_SCAN_OUTPUT_FILE_H_

#include <cstdio>
#include <memory>
#include <string>
#include <string_view>

namespace zel_monitor::scan {

/// A file that is written from the start to the end, or standard output.
class OutputFile {
  public:
    /// An empty `path` is standard output. Throws std::runtime_error, with the way out, if the file exists
    /// and must not be overwritten or cannot be made.
    OutputFile(const std::string& path, bool overwrite);

    /// Hands the text to the operating system. Throws std::runtime_error if it does not take it.
    void write(std::string_view text);

  private:
    struct Close {
        void operator()(std::FILE* file) const {
            if (file != stdout) {
                std::fclose(file);
            }
        }
    };
    std::string name_;
    std::unique_ptr<std::FILE, Close> file_;
};

}  // namespace zel_monitor::scan

#endif  // ZEL_TOOLS_SCAN_OUTPUT_FILE_H_
