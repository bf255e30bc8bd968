#include "bench/accuracy/file_frames.h"

#include <new>

extern "C" {
#include <libavutil/avstring.h>
#include <libavutil/mem.h>
}

namespace bench::accuracy {
namespace {

/// A file's name as a value in a filter graph: guarded once for the option, once for the graph.
std::string quoted(const std::string& name) {
    std::string text = name;
    for (const char* const special : {":", "[],;"}) {
        char* escaped = nullptr;
        if (av_escape(&escaped, text.c_str(), special, AV_ESCAPE_MODE_BACKSLASH, 0) < 0) {
            throw std::bad_alloc();
        }
        text = escaped;
        av_free(escaped);
    }
    return text;
}

}  // namespace

support::FilterSource videoFrames(const std::string& file) {
    return {"movie=" + quoted(file) + ",format=yuv420p", "buffersink"};
}

support::FilterSource soundFrames(const std::string& file) {
    return {"amovie=" + quoted(file), "abuffersink"};
}

}  // namespace bench::accuracy
