#include "input/container/mp4_samples.h"

#include <algorithm>

#include "input/container/mp4_boxes.h"

namespace zel_monitor {
namespace {

using Bytes = std::span<const uint8_t>;

constexpr size_t kMostRuns = size_t{4} << 20;
constexpr size_t kMostTracks = 1000;

/// The rows of a table whose number stands before them, as far as they are there.
class Table {
  public:
    Table(Bytes box, size_t rows_at, size_t row_bytes) : row_bytes_(row_bytes) {
        if (box.size() >= rows_at) {
            rows_ = box.subspan(rows_at);
            count_ = std::min<size_t>(AV_RB32(&box[rows_at - 4]), rows_.size() / row_bytes);
        }
    }
    size_t size() const { return count_; }
    Bytes operator[](size_t row) const { return rows_.subspan(row * row_bytes_, row_bytes_); }

  private:
    size_t row_bytes_;
    Bytes rows_;
    size_t count_ = 0;
};

int64_t bounded(uint64_t place) {
    return static_cast<int64_t>(std::min<uint64_t>(place, kMostMp4Bytes));
}

/// Takes numbers off the front of a box; beyond its end there are only zeros.
class Fields {
  public:
    explicit Fields(Bytes bytes) : bytes_(bytes) {}

    uint32_t next() {
        const bool is_there = bytes_.size() >= 4;
        const uint32_t value = is_there ? AV_RB32(bytes_.data()) : 0;
        bytes_ = bytes_.subspan(std::min<size_t>(bytes_.size(), 4));
        return value;
    }
    uint32_t nextIf(bool present) { return present ? next() : 0; }
    bool empty() const { return bytes_.empty(); }

  private:
    Bytes bytes_;
};

}  // namespace

void Mp4Samples::add(int64_t place, int64_t bytes) {
    if (bytes <= 0) {
        return;
    }
    if (!runs_.empty() && runs_.back().to == place) {
        runs_.back().to = std::min(place + bytes, kMostMp4Bytes);
    } else if (runs_.size() < kMostRuns) {
        runs_.push_back({place, std::min(place + bytes, kMostMp4Bytes)});
    } else {
        is_known_ = false;
    }
}

std::vector<Mp4Samples::Range> Mp4Samples::ranges() const {
    std::vector<Range> runs = runs_;
    std::sort(runs.begin(), runs.end(), [](const Range& a, const Range& b) { return a.from < b.from; });
    std::vector<Range> merged;
    for (const Range& run : runs) {
        if (!merged.empty() && run.from <= merged.back().to) {
            merged.back().to = std::max(merged.back().to, run.to);
        } else {
            merged.push_back(run);
        }
    }
    return merged;
}

bool Mp4Samples::addIndex(Bytes moov) {
    bool is_right = true;
    forMp4Boxes(moov, [&](uint32_t type, Bytes content) {
        if (type == fourCc("trak")) {
            is_right = addTrack(content) && is_right;
        } else if (type == fourCc("mvex")) {
            forMp4Boxes(content, [&](uint32_t inner, Bytes trex) {
                if (inner == fourCc("trex") && trex.size() >= 20 && usual_size_.size() < kMostTracks) {
                    usual_size_[AV_RB32(&trex[4])] = AV_RB32(&trex[16]);
                }
            });
        } else if (type == fourCc("cmov")) {  // a compressed index
            is_known_ = false;
        } else if (!mp4BoxIn(content, fourCc("tkhd")).empty()) {  // a track by another name
            is_right = false;
        }
    });
    return is_right;
}

bool Mp4Samples::addTrack(Bytes trak) {
    const Bytes mdia = mp4BoxIn(trak, fourCc("mdia"));
    const Bytes hdlr = mp4BoxIn(mdia, fourCc("hdlr"));
    const Bytes minf = mp4BoxIn(mdia, fourCc("minf"));
    const Bytes stbl = mp4BoxIn(minf, fourCc("stbl"));
    const auto has = [&](uint32_t type) { return !mp4BoxIn(stbl, type).empty(); };
    if (hdlr.size() < 12 || !has(fourCc("stsd")) || !has(fourCc("stts")) || !has(fourCc("stsc")) ||
        !(has(fourCc("stsz")) || has(fourCc("stz2"))) || !(has(fourCc("stco")) || has(fourCc("co64")))) {
        return false;
    }
    const uint32_t kind = AV_RB32(&hdlr[8]);
    const bool is_video = !mp4BoxIn(minf, fourCc("vmhd")).empty();
    const bool is_audio = !mp4BoxIn(minf, fourCc("smhd")).empty();
    if ((is_video && kind != fourCc("vide")) || (is_audio && kind != fourCc("soun"))) {
        return false;
    }
    addTables(stbl);
    return true;
}

void Mp4Samples::addTables(Bytes stbl) {
    const Bytes size_box = mp4BoxIn(stbl, fourCc("stsz"));
    const Table runs(mp4BoxIn(stbl, fourCc("stsc")), 8, 12);
    const Table short_chunks(mp4BoxIn(stbl, fourCc("stco")), 8, 4);
    const Table long_chunks(mp4BoxIn(stbl, fourCc("co64")), 8, 8);
    const bool is_long = long_chunks.size() > 0;
    const size_t chunks = is_long ? long_chunks.size() : short_chunks.size();
    if (chunks == 0) {
        return;
    }
    const int64_t one_size = size_box.size() >= 12 ? AV_RB32(&size_box[4]) : 0;
    const Table sizes(size_box, 12, 4);
    // Old sound has samples of one byte, by which something larger is meant.
    if (size_box.size() < 12 || one_size == 1 || runs.size() == 0) {
        is_known_ = false;
        return;
    }
    size_t left = one_size > 0 ? AV_RB32(&size_box[8]) : sizes.size();
    size_t sample = 0;
    for (size_t chunk = 0, run = 0; chunk < chunks && left > 0; ++chunk) {
        while (run + 1 < runs.size() && AV_RB32(runs[run + 1].data()) <= chunk + 1) {
            ++run;
        }
        int64_t place =
            is_long ? bounded(AV_RB64(long_chunks[chunk].data())) : AV_RB32(short_chunks[chunk].data());
        const size_t count = std::min<size_t>(AV_RB32(&runs[run][4]), left);
        left -= count;
        if (one_size > 0) {
            add(place, bounded(static_cast<uint64_t>(one_size) * count));
            continue;
        }
        for (const size_t end = sample + count; sample < end; ++sample) {
            const int64_t bytes = AV_RB32(sizes[sample].data());
            add(place, bytes);
            place += bytes;
        }
    }
}

void Mp4Samples::addFragment(Bytes moof, int64_t place) {
    constexpr uint32_t kHasBase = 1;
    constexpr uint32_t kHasDescription = 2;
    constexpr uint32_t kHasDuration = 8;
    constexpr uint32_t kHasSize = 0x10;
    constexpr uint32_t kFromFragment = 0x20000;
    int64_t next = place;
    forMp4Boxes(moof, [&](uint32_t type, Bytes traf) {
        const Bytes tfhd = mp4BoxIn(traf, fourCc("tfhd"));
        if (type != fourCc("traf") || tfhd.size() < 8) {
            return;
        }
        Fields fields(tfhd);
        const uint32_t flags = fields.next();
        const auto usual = usual_size_.find(fields.next());
        const uint64_t high = fields.nextIf((flags & kHasBase) != 0);
        const uint64_t low = fields.nextIf((flags & kHasBase) != 0);
        fields.nextIf((flags & kHasDescription) != 0);
        fields.nextIf((flags & kHasDuration) != 0);
        const uint32_t size = (flags & kHasSize) != 0      ? fields.next()
                              : usual != usual_size_.end() ? usual->second
                                                           : 0;
        const int64_t base = (flags & kHasBase) != 0        ? bounded(high << 32 | low)
                             : (flags & kFromFragment) != 0 ? place
                                                            : next;
        next = base;
        forMp4Boxes(traf, [&](uint32_t inner, Bytes trun) {
            if (inner == fourCc("trun")) {
                next = addRun(trun, base, next, size);
            }
        });
    });
}

/// Where the run ends. Without a place of its own it begins at `next`.
int64_t Mp4Samples::addRun(Bytes trun, int64_t base, int64_t next, uint32_t usual_size) {
    constexpr uint32_t kHasPlace = 1;
    constexpr uint32_t kHasFirstFlags = 4;
    constexpr uint32_t kHasDuration = 0x100;
    constexpr uint32_t kHasSize = 0x200;
    constexpr uint32_t kHasFlags = 0x400;
    constexpr uint32_t kHasOffset = 0x800;
    Fields fields(trun);
    const uint32_t flags = fields.next();
    const uint32_t count = fields.next();
    int64_t place = next;
    if ((flags & kHasPlace) != 0) {
        place = std::clamp<int64_t>(base + static_cast<int32_t>(fields.next()), 0, kMostMp4Bytes);
    }
    fields.nextIf((flags & kHasFirstFlags) != 0);
    const bool has_rows = (flags & (kHasDuration | kHasSize | kHasFlags | kHasOffset)) != 0;
    if (!has_rows) {
        const int64_t bytes = bounded(uint64_t{count} * usual_size);
        add(place, bytes);
        return std::min(place + bytes, kMostMp4Bytes);
    }
    for (uint32_t i = 0; i < count && !fields.empty(); ++i) {
        fields.nextIf((flags & kHasDuration) != 0);
        const uint32_t size = (flags & kHasSize) != 0 ? fields.next() : usual_size;
        fields.nextIf((flags & kHasFlags) != 0);
        fields.nextIf((flags & kHasOffset) != 0);
        add(place, size);
        place += size;
    }
    return std::min(place, kMostMp4Bytes);
}

}  // namespace zel_monitor
