#include <array>
#include <cstring>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "input/container/declared_size.h"
#include "input/container/mp4_outline.h"
#include "input/container/transport_packets.h"

namespace {

using testing::ElementsAre;
using zel_monitor::declaredSize;
using zel_monitor::Mp4Outline;
using zel_monitor::TransportPacket;
using Bytes = std::vector<uint8_t>;

enum class Order { kBigEndian, kLittleEndian };

Bytes number(uint64_t value, size_t width, Order order = Order::kBigEndian) {
    Bytes bytes(width);
    for (size_t i = 0; i < width; ++i) {
        bytes[order == Order::kLittleEndian ? i : width - 1 - i] = static_cast<uint8_t>(value >> (8 * i));
    }
    return bytes;
}

Bytes text(const std::string& characters) {
    return {characters.begin(), characters.end()};
}

Bytes joined(const std::vector<Bytes>& pieces) {
    Bytes all;
    for (const Bytes& piece : pieces) {
        all.insert(all.end(), piece.begin(), piece.end());
    }
    return all;
}

TEST(DeclaredSize, IsReadFromEveryHeaderThatStatesIt) {
    const auto little = [](uint64_t value, size_t width) {
        return number(value, width, Order::kLittleEndian);
    };
    const auto riff = [&](uint64_t size) { return joined({text("RIFF"), little(size, 4), text("WAVE")}); };
    EXPECT_EQ(declaredSize("wav", riff(1000)), 999);
    EXPECT_EQ(declaredSize("avi", riff(1000)), 999);
    for (const uint64_t unknown : {0ULL, 0x7fff0000ULL, 0xffffffffULL}) {
        EXPECT_EQ(declaredSize("wav", riff(unknown)), std::nullopt);
    }
    EXPECT_EQ(declaredSize("w64", joined({Bytes(16), little(5000, 8)})), 4993);

    const Bytes properties{0xa1, 0xdc, 0xab, 0x8c, 0x47, 0xa9, 0xcf, 0x11,
                           0x8e, 0xe4, 0x00, 0xc0, 0x0c, 0x20, 0x53, 0x65};
    const auto asf = [&](uint64_t flags) {
        return joined({Bytes(30), properties, Bytes(24), little(7000, 8), Bytes(40), little(flags, 4)});
    };
    EXPECT_EQ(declaredSize("asf", asf(2)), 7000);
    EXPECT_EQ(declaredSize("asf", asf(1)), std::nullopt) << "a broadcast";

    const auto caf = [](uint64_t size) {
        return joined({text("caff0000desc"), number(4, 8), Bytes(4), text("data"), number(size, 8)});
    };
    EXPECT_EQ(declaredSize("caf", caf(900)), 8 + 12 + 4 + 12 + 900);
    EXPECT_EQ(declaredSize("caf", caf(~uint64_t{0})), std::nullopt);
    EXPECT_EQ(declaredSize("mp3", riff(1000)), std::nullopt) << "of no container that is known";
}

TEST(DeclaredSize, IsNotReadBehindAHeaderThatEndsEarly) {
    for (const std::string name : {"wav", "avi", "w64", "asf", "caf"}) {
        for (size_t size = 0; size < 8; ++size) {
            EXPECT_EQ(declaredSize(name, Bytes(size, 0x11)), std::nullopt) << name << ' ' << size;
        }
    }
}

Bytes box(const std::string& type, const Bytes& content) {
    return joined({number(content.size() + 8, 4), text(type), content});
}

Bytes indexWith(const std::string& sample_entry) {
    const Bytes entries =
        box("stsd", joined({Bytes(8), box("text", Bytes(20)), box(sample_entry, Bytes(20))}));
    const Bytes track =
        box("trak", box("mdia", joined({box("mdhd", Bytes(12)), box("minf", box("stbl", entries))})));
    return box("moov", joined({box("mvhd", Bytes(40)), track}));
}

Mp4Outline outlineOf(const Bytes& bytes) {
    return zel_monitor::outlineOfMp4(zel_monitor::readerOf(bytes)).value();
}

TEST(Mp4Outline, FindsTheIndexWhereverItLies) {
    const Bytes type = box("ftyp", text("isom"));
    EXPECT_TRUE(outlineOf(joined({type, indexWith("avc1")})).index_is_whole);
    EXPECT_TRUE(outlineOf(joined({type, box("mdat", Bytes(5000)), indexWith("avc1")})).index_is_whole);
    const Bytes large = joined({number(1, 4), text("mdat"), number(16 + 300, 8), Bytes(300)});
    EXPECT_TRUE(outlineOf(joined({type, large, indexWith("avc1")})).index_is_whole);

    EXPECT_FALSE(outlineOf(type).has_index);
    EXPECT_FALSE(outlineOf(joined({type, box("mdat", Bytes(5000))})).has_index);
    Bytes cut = joined({type, indexWith("avc1")});
    cut.pop_back();
    EXPECT_TRUE(outlineOf(cut).has_index);
    EXPECT_FALSE(outlineOf(cut).index_is_whole);
    EXPECT_EQ(zel_monitor::outlineOfMp4(zel_monitor::readerOf(text("RIFF1234AVI "))), std::nullopt);
}

TEST(Mp4Outline, TellsEncryptedStreams) {
    for (const std::string entry : {"encv", "enca", "drmi", "drms"}) {
        EXPECT_TRUE(outlineOf(indexWith(entry)).is_encrypted) << entry;
    }
    EXPECT_FALSE(outlineOf(indexWith("avc1")).is_encrypted);
}

TEST(Mp4Outline, BearsWithSizesThatLie) {
    const Bytes whole = joined({box("free", {}), indexWith("encv")});
    for (size_t at = 0; at < whole.size(); ++at) {
        for (const uint8_t value : Bytes{0x00, 0x01, 0x07, 0x7f, 0xff}) {
            Bytes bytes = whole;
            bytes[at] = value;
            zel_monitor::outlineOfMp4(zel_monitor::readerOf(bytes));  // the sanitizers watch
        }
    }
}

/// A packet that begins a piece of a video stream after `adaptation` bytes.
Bytes packet(uint8_t flags, uint8_t adaptation = 0) {
    Bytes bytes(TS_SIZE, 0xff);
    ts_init(bytes.data());
    bytes[1] = 0x40;
    bytes[3] = flags;
    const bool has_adaptation = (flags & 0x20) != 0;
    bytes[4] = adaptation;
    const size_t at = has_adaptation ? 5U + adaptation : 4U;
    if (at + 4 <= bytes.size()) {
        pes_init(&bytes[at]);
        pes_set_streamid(&bytes[at], PES_STREAM_ID_VIDEO_MPEG);
    }
    return bytes;
}

TEST(TransportPackets, AreFoundWithAndWithoutBytesBetweenThem) {
    for (const size_t between : {0U, 4U, 16U}) {
        std::vector<Bytes> pieces{Bytes(11, 0x47 + 1)};
        for (int i = 0; i < 5; ++i) {
            pieces.push_back(packet(0x10));
            pieces.emplace_back(between);
        }
        int found = 0;
        zel_monitor::visitTransportPackets(joined(pieces), [&](TransportPacket) { ++found; });
        EXPECT_EQ(found, 5) << between;
    }
}

TEST(TransportPackets, BeginAPieceOnlyWhereItsHeaderFits) {
    const auto begins = [](const Bytes& bytes) {
        return zel_monitor::beginningOfPes(TransportPacket(bytes.data(), bytes.size())).has_value();
    };
    EXPECT_TRUE(begins(packet(0x10)));
    EXPECT_FALSE(begins(packet(0x20))) << "no payload";
    EXPECT_TRUE(begins(packet(0x30, 177)));
    for (const uint8_t adaptation : Bytes{178, 183, 255}) {
        EXPECT_FALSE(begins(packet(0x30, adaptation)));
    }
    Bytes within = packet(0x10);
    within[1] = 0;
    EXPECT_FALSE(begins(within));
}

}  // namespace
