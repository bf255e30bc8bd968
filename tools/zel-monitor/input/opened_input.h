#ifndef ZEL_TOOLS_INPUT_OPENED_INPUT_H_
#define ZEL_TOOLS_INPUT_OPENED_INPUT_H_

#include <atomic>
#include <chrono>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "input/complaint.h"
#include "input/container/structure.h"
#include "input/ffmpeg_handles.h"
#include "input/media_error.h"
#include "input/polled_input.h"

namespace zel_monitor {

struct MediaOptions {
    std::string format = {};  ///< forces an FFmpeg input format, such as "lavfi"; empty: found out
    std::string label = {};   ///< name to show instead of the input; empty: the input itself
    double duration = 0;      ///< seconds, for inputs that do not say it themselves; 0: not known either
    bool video = true;
    bool audio = true;
    int threads = 0;  ///< of each decoder; 0: as many as there are processors
    /// Whether a damaged file is decoded from its beginning once more, without threads, so that the same
    /// comes out of it every time. What is shown as it plays cannot wait for that, and may have no end.
    bool begins_anew = true;
    bool live = false;  ///< frames come as they are made: a track waits for the other for a moment only
    /// Settings of the protocol and the demuxer, by FFmpeg's names. An opening fails if one is not known.
    std::map<std::string, std::string> settings = {};
    /// Once it is true, blocking reads end, an opening fails and the source ends. It outlives the source.
    const std::atomic<bool>* interrupted = nullptr;
    /// When that happens of its own accord.
    std::optional<std::chrono::steady_clock::time_point> deadline = {};
    /// Of the video, decodes key frames alone, each by itself and shown until the next one, or until frames
    /// are missing between the two.
    bool key_frames_only = false;
};

/// Whether an input is to be left where it is.
struct Cutoff {
    explicit Cutoff(const MediaOptions& options) : flag(options.interrupted), deadline(options.deadline) {}
    bool isDue() const {
        return (flag != nullptr && flag->load()) ||
               (deadline && std::chrono::steady_clock::now() >= *deadline);
    }

    const std::atomic<bool>* flag;
    std::optional<std::chrono::steady_clock::time_point> deadline;
};

/// A file, a pipe ("-") or a URL that libavformat has opened, its streams known.
class OpenedInput {
  public:
    /// Throws MediaError.
    OpenedInput(const std::string& input, const MediaOptions& options);

    AVFormatContext& format() const { return *format_; }
    /// How many bytes there are at least by the input's own header; see declaredSize().
    std::optional<int64_t> declaredBytes() const { return declared_bytes_; }
    /// What the demuxer complained of in the header.
    const std::vector<ComplaintReason>& complaints() const { return complaints_; }
    /// How many bytes it has; none if it is not a file, which can be read as often as one likes.
    std::optional<int64_t> fileBytes() const;
    /// See faultsOfStructure(); none are looked for in what is not a file. Leaves the input elsewhere.
    StructureFaults structureFaults() const;

    /// What to tell people of a failure, in better words than FFmpeg's where the input has them.
    MediaError errorFor(const FfmpegError& failure) const;

  private:
    void open(const MediaOptions& options);
    std::optional<Shortfall> betterReason(int code) const;

    std::string input_;
    std::string shown_;
    bool is_file_;
    std::unique_ptr<Cutoff> cutoff_;     // in one place, for format_ asks it
    std::optional<PolledInput> polled_;  // outlives format_
    FormatHandle format_;
    std::optional<int64_t> declared_bytes_;
    std::vector<ComplaintReason> complaints_;
};

}  // namespace zel_monitor

#endif  // ZEL_TOOLS_INPUT_OPENED_INPUT_H_
