#ifndef ZEL_BENCH_ACCURACY_CLIP_H_
#define ZEL_BENCH_ACCURACY_CLIP_H_

#include <zel/events/event.h>

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace bench::accuracy {

/// Arguments of one run of ffmpeg, without the name of the file to make.
using Recipe = std::vector<std::string>;

/// Stands in a recipe for the file that the recipe before it has made.
inline constexpr std::string_view kPrevious = "{previous}";

/// Stands in a recipe for two seconds with the texture of filmed frames, 1280x720, of bench/make_clip.
inline constexpr std::string_view kTexture = "{texture}";

/// A file to be made.
struct Clip {
    std::string name;
    std::string about;  ///< what is seen or heard, for people
    std::vector<Recipe> recipes;
    std::string type = "mkv";  ///< of the last recipe's file
    /// Of a transport stream: here 2 % of its packets are lost.
    std::optional<ZEL::TimeSpan> packets_lost = {};
};

/// Where clips are made; gone with the object unless they are to be kept.
class ClipFolder {
  public:
    /// An empty `keep` stands for a temporary folder. In a kept one, a clip that was made by the same recipes
    /// is not made again. Throws std::system_error.
    explicit ClipFolder(const std::string& keep);
    ClipFolder(const ClipFolder&) = delete;
    ClipFolder& operator=(const ClipFolder&) = delete;
    ~ClipFolder();

    /// Makes the clip and gives its file. Throws std::runtime_error if ffmpeg cannot be run or fails.
    std::string make(const Clip& clip) const;

    /// Removes a clip's file, unless clips are kept.
    void discard(const std::string& file) const;

  private:
    std::string file(const std::string& name) const { return (path_ / name).string(); }
    std::string texture() const;

    std::filesystem::path path_;
    bool kept_;
};

}  // namespace bench::accuracy

#endif  // ZEL_BENCH_ACCURACY_CLIP_H_
