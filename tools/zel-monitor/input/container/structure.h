#ifndef ZEL_TOOLS_INPUT_CONTAINER_STRUCTURE_H_
#define ZEL_TOOLS_INPUT_CONTAINER_STRUCTURE_H_

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "input/container/byte_source.h"

namespace zel_monitor {

/// A stretch of an input's bytes that its container cannot account for. None of its bytes are there if
/// something that should have been in that place is missing.
struct BadStretch {
    int64_t place;
    int64_t bytes;
};

/// What is wrong with the structure of a container, whatever is in its frames.
struct StructureFaults {
    std::vector<BadStretch> stretches = {};  ///< the first of them, by their place
    int64_t bad_bytes = 0;                   ///< in all of them
    bool ends_early = false;        ///< it breaks off within something, or before it says that it ends
    bool unreadable_track = false;  ///< its index lists a track that cannot be read

    void add(int64_t place, int64_t bytes);
    bool any() const { return ends_early || unreadable_track || !stretches.empty(); }
};

/// Looks through the structure of an input of `bytes` bytes in a format, by libavformat's name, in which much
/// can be wrong without libavformat saying so: MP4, Ogg, bare audio and bare video. Nothing is wrong with
/// other formats. Reads little more than the heads of the parts of an MP4, and all of the others.
StructureFaults faultsOfStructure(std::string_view format, const ReadAt& read, int64_t bytes);

StructureFaults faultsOfMp4(const ReadAt& read, int64_t bytes);
StructureFaults faultsOfOgg(const ReadAt& read, int64_t bytes);
/// MPEG audio of all layers, or AAC with ADTS headers, between the tags that such files may begin and end
/// with.
StructureFaults faultsOfBareAudio(const ReadAt& read, int64_t bytes);

/// H.264 or HEVC without a container, in which long runs of zeros mean nothing, and decoders take no offence.
StructureFaults faultsOfBareVideo(const ReadAt& read, int64_t bytes);

}  // namespace zel_monitor

#endif  // ZEL_TOOLS_INPUT_CONTAINER_STRUCTURE_H_
