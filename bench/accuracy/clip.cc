#include "bench/accuracy/clip.h"

#include <cstdlib>
#include <fmt/format.h>
#include <fmt/ranges.h>
#include <fstream>
#include <iterator>
#include <random>
#include <system_error>
#include <utility>

#include "bench/accuracy/child_process.h"
#include "input/ffmpeg_handles.h"

namespace bench::accuracy {
namespace {

namespace fs = std::filesystem;

std::string contentOf(const std::string& file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

/// Where in a file the video of each of the two times begins.
std::pair<size_t, size_t> placesOf(const std::string& file, ZEL::TimeSpan times) {
    AVFormatContext* opened = nullptr;
    zel_monitor::checked(avformat_open_input(&opened, file.c_str(), nullptr, nullptr));
    const zel_monitor::FormatHandle format(opened);
    const zel_monitor::PacketHandle packet(zel_monitor::orOutOfMemory(av_packet_alloc()));
    std::optional<double> first_s;
    std::pair<size_t, size_t> places{0, 0};
    for (; av_read_frame(format.get(), packet.get()) >= 0; av_packet_unref(packet.get())) {
        const double at_s =
            static_cast<double>(packet->dts) * av_q2d(format->streams[packet->stream_index]->time_base);
        first_s = first_s.value_or(at_s);
        const auto place = static_cast<size_t>(packet->pos);
        places.first = at_s - *first_s < times.start_s ? place : places.first;
        places.second = at_s - *first_s < times.end_s ? place : places.second;
    }
    return places;
}

void losePackets(const std::string& file, ZEL::TimeSpan times) {
    constexpr size_t kPacketBytes = 188;
    constexpr double kShare = 0.02;
    const std::string all = contentOf(file);
    const auto [from, to] = placesOf(file, times);
    std::minstd_rand random(1);  // the same packets in every run
    std::bernoulli_distribution lost(kShare);
    std::ofstream out(file, std::ios::binary | std::ios::trunc);
    for (size_t at = 0; at < all.size(); at += kPacketBytes) {
        if (at < from || at >= to || !lost(random)) {
            out << all.substr(at, kPacketBytes);
        }
    }
}

}  // namespace

ClipFolder::ClipFolder(const std::string& keep) : path_(keep), kept_(!keep.empty()) {
    if (kept_) {
        fs::create_directories(path_);
        return;
    }
    std::string pattern = (fs::temp_directory_path() / "zel-accuracy-XXXXXX").string();
    if (mkdtemp(pattern.data()) == nullptr) {
        throw std::system_error(errno, std::generic_category(), pattern);
    }
    path_ = pattern;
}

ClipFolder::~ClipFolder() {
    if (!kept_) {
        std::error_code ignored;
        fs::remove_all(path_, ignored);
    }
}

std::string ClipFolder::texture() const {
    const std::string made = file("texture.mp4");
    if (!fs::exists(made)) {
        const std::string part = file("texture.part.mp4");
        runProgram({ZEL_BENCH_FOLDER "/make_clip", "1280x720", part});
        fs::rename(part, made);
    }
    return made;
}

std::string ClipFolder::make(const Clip& clip) const {
    const std::string made = file(clip.name + "." + clip.type);
    const std::string note = made + ".recipe";
    const std::string recipe =
        fmt::format("{}\n{}\n", fmt::join(clip.recipes, "\n"), clip.packets_lost ? "packets lost" : "");
    if (kept_ && fs::exists(made) && contentOf(note) == recipe) {
        return made;
    }
    std::string previous;
    for (size_t step = 0; step < clip.recipes.size(); ++step) {
        const bool last = step + 1 == clip.recipes.size();
        const std::string target = file(fmt::format("{}.{}.{}", clip.name, step, last ? clip.type : "ts"));
        std::vector<std::string> words{"ffmpeg", "-nostdin", "-v", "error", "-y", "-fflags", "+bitexact"};
        for (const std::string& word : clip.recipes[step]) {
            words.push_back(word == kPrevious ? previous : word == kTexture ? texture() : word);
        }
        words.push_back(target);
        runProgram(words);
        if (!previous.empty()) {
            fs::remove(previous);
        }
        previous = target;
    }
    if (clip.packets_lost) {
        losePackets(previous, *clip.packets_lost);
    }
    fs::rename(previous, made);
    if (kept_) {
        std::ofstream(note) << recipe;
    }
    return made;
}

void ClipFolder::discard(const std::string& file) const {
    if (!kept_) {
        fs::remove(file);
    }
}

}  // namespace bench::accuracy
