#ifndef ZEL_TOOLS_INPUT_MEDIA_SOURCE_H_
#define ZEL_TOOLS_INPUT_MEDIA_SOURCE_H_

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "cli/incomplete.h"
#include "cli/media_facts.h"
#include "input/complaint.h"
#include "input/media_error.h"
#include "input/media_item.h"
#include "input/opened_input.h"
#include "input/per_track.h"

namespace zel_monitor {

/// Decodes the best video and the best audio stream of a file, a pipe ("-") or a URL. What a decoder refuses
/// is counted and skipped. Display rotation is ignored. Where streams come and go, another one that takes
/// over from the chosen one is followed. One thread at a time.
///
/// The same file gives the same every time. Since a decoder's threads make this and that of the same damage,
/// a file in which there is some is decoded from its beginning once more without them, and what was given
/// before the damage is not given again. What cannot be read twice goes on as it is.
///
/// Items come in the order of their times as far as the input's interleaving allows. Their times are stream
/// time, which never runs backwards in a track, whatever the timestamps do: see ZEL::StreamClock.
class MediaSource {
  public:
    /// Opens `input`. Throws MediaError.
    explicit MediaSource(const std::string& input, const MediaOptions& options = {});
    MediaSource(MediaSource&&) noexcept;
    MediaSource& operator=(MediaSource&&) noexcept;
    ~MediaSource();

    const MediaFacts& facts() const;
    MediaCounts counts() const;

    /// What is wrong with what came out, and with what did not: complete at the end, but for what does not
    /// begin anew. Of that the items alone tell.
    std::vector<Complaint> complaints() const;

    /// The next frame or audio frame; none at the end and after an interruption. Throws MediaError, once
    /// and after everything that could be decoded, if the input broke off with an error or held nothing that
    /// could be decoded.
    std::optional<MediaItem> next();

    /// Why not all of the frames and the sound came out although nothing failed. None before the end.
    const std::optional<Shortfall>& shortfall() const;

  private:
    class Reader;

    std::optional<MediaItem> read();

    std::string input_;
    MediaOptions options_;
    std::unique_ptr<Reader> reader_;
    PerTrack<uint64_t> given_{};
    PerTrack<uint64_t> to_skip_{};  // that were given before the reader began anew
};

}  // namespace zel_monitor

#endif  // ZEL_TOOLS_INPUT_MEDIA_SOURCE_H_
