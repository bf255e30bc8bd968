#ifndef ZEL_TESTS_SUPPORT_CLIP_H_
#define ZEL_TESTS_SUPPORT_CLIP_H_

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <vector>

namespace support {

/// A directory of its own for one test; gone with the object.
class ScratchDir {
  public:
    ScratchDir() {
        std::string pattern = (std::filesystem::temp_directory_path() / "zel-test-XXXXXX").string();
        if (mkdtemp(pattern.data()) == nullptr) {
            throw std::runtime_error("no temporary directory");
        }
        path_ = pattern;
    }
    ~ScratchDir() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    ScratchDir(const ScratchDir&) = delete;
    ScratchDir& operator=(const ScratchDir&) = delete;

    std::string file(const std::string& name) const { return (path_ / name).string(); }

  private:
    std::filesystem::path path_;
};

/// Runs the ffmpeg command to make `output`, for example ffmpeg("-f lavfi -i testsrc2=d=1 -c:v mpeg4", path).
inline void ffmpeg(const std::string& arguments, const std::string& output) {
    const std::string command =
        "ffmpeg -nostdin -v error -y " + arguments + " '" + output + "'";  // NOLINTNEXTLINE
    if (std::system(command.c_str()) != 0) {
        throw std::runtime_error("failed: " + command);
    }
}

inline std::vector<char> readFile(const std::string& path) {
    std::ifstream stream(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

inline void writeFile(const std::string& path, const std::vector<char>& bytes) {
    std::ofstream(path, std::ios::binary).write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

}  // namespace support

#endif  // ZEL_TESTS_SUPPORT_CLIP_H_
