#include "c/fed.h"

#include <zel/events/analyser.h>

#include <limits>

#include "c/calls.h"

namespace ZELC {
namespace {

constexpr uint64_t kMostBytes = std::numeric_limits<int32_t>::max();

const char* faultOf(const zelc_frame& frame) {
    if (frame.format != ZELC_I420 && frame.format != ZELC_NV12) {
        return "no such format of a frame";
    }
    if (frame.width == 0 || frame.height == 0 || frame.width % 2 != 0 || frame.height % 2 != 0) {
        return "a frame's width and height must be even and above 0";
    }
    if (uint64_t{frame.width} * frame.height > kMostBytes * 2 / 3) {
        return "a frame must have less than 2^31 bytes";
    }
    const size_t planes = frame.format == ZELC_NV12 ? 2 : 3;
    for (size_t plane = 0; plane < planes; ++plane) {
        const size_t row = plane > 0 && planes == 3 ? frame.width / 2 : frame.width;
        if (frame.data[plane] == nullptr) {
            return "a frame lacks a plane";
        }
        if (frame.stride[plane] < row) {
            return "a frame's stride is less than a row";
        }
    }
    return nullptr;
}

/// Every second byte, from the first on.
void takeApart(const uint8_t* pairs, size_t stride, size_t width, size_t height, uint8_t* plane) {
    for (size_t y = 0; y < height; ++y, pairs += stride, plane += width) {
        for (size_t x = 0; x < width; ++x) {
            plane[x] = pairs[2 * x];
        }
    }
}

void copyPlane(const uint8_t* rows, size_t stride, size_t width, size_t height, uint8_t* plane) {
    for (size_t y = 0; y < height; ++y, rows += stride, plane += width) {
        std::memcpy(plane, rows, width);
    }
}

int writeConfig(const ZELAlgo::ZELAlgoConfig& detectors, zelc_config* config) {
    if (!isReadable(config)) {
        return failed(ZELC_INVALID, "no configuration, or one without its size");
    }
    write(configOf(detectors), *config);
    return ZELC_OK;
}

/// Both planes of chroma, one behind the other.
void packChroma(const zelc_frame& frame, uint8_t* packed) {
    const size_t width = frame.width / 2;
    const size_t height = frame.height / 2;
    for (size_t part = 0; part < 2; ++part, packed += width * height) {
        if (frame.format == ZELC_NV12) {
            takeApart(frame.data[1] + part, frame.stride[1], width, height, packed);
        } else {
            copyPlane(frame.data[1 + part], frame.stride[1 + part], width, height, packed);
        }
    }
}

}  // namespace

std::optional<zelc_frame> readFrame(const zelc_frame* frame) {
    if (!isReadable(frame)) {
        failed(ZELC_INVALID, "no frame, or one without its size");
        return std::nullopt;
    }
    zelc_frame own{};
    ZELC::read(*frame, own);
    if (const char* const fault = faultOf(own)) {
        failed(ZELC_INVALID, fault);
        return std::nullopt;
    }
    return own;
}

void pack(const zelc_frame& frame, uint8_t* packed) {
    copyPlane(frame.data[0], frame.stride[0], frame.width, frame.height, packed);
    packChroma(frame, packed + size_t{frame.width} * frame.height);
}

std::optional<FedFrame> FrameReader::read(const zelc_frame* frame) {
    const auto own = readFrame(frame);
    if (!own) {
        return std::nullopt;
    }
    ZELAlgo::ZELVideoPlanes planes{.width = own->width,
                                   .height = own->height,
                                   .data = {own->data[0], own->data[1], own->data[2]},
                                   .stride = {own->stride[0], own->stride[1], own->stride[2]}};
    if (own->format == ZELC_NV12) {
        const size_t plane = size_t{own->width / 2} * (own->height / 2);
        chroma_.resize(2 * plane);
        packChroma(*own, chroma_.data());
        planes.data[1] = chroma_.data();
        planes.data[2] = chroma_.data() + plane;
        planes.stride[1] = planes.stride[2] = own->width / 2;
    }
    return FedFrame{planes, own->is_damaged != 0};
}

std::optional<ZELAlgo::ZELAudioFrame> readAudio(const zelc_audio* audio) {
    if (!isReadable(audio)) {
        failed(ZELC_INVALID, "no audio, or one without its size");
        return std::nullopt;
    }
    zelc_audio own{};
    read(*audio, own);
    const auto is_count = [](uint32_t number) { return number > 0 && number <= kMostBytes; };
    if (own.data == nullptr || !is_count(own.sample_rate) || !is_count(own.channels)) {
        failed(ZELC_INVALID, "audio needs data, a sample rate and channels");
        return std::nullopt;
    }
    if (uint64_t{own.samples} * own.channels > kMostBytes / sizeof(int16_t)) {
        failed(ZELC_INVALID, "a piece of audio must have less than 2^31 bytes");
        return std::nullopt;
    }
    return ZELAlgo::ZELAudioFrame{own.sample_rate, own.samples, own.channels, own.data};
}

zelc_config configOf(const ZELAlgo::ZELAlgoConfig& detectors) {
    const auto flag = [](bool on) { return on ? uint8_t{1} : uint8_t{0}; };
    return {.struct_size = sizeof(zelc_config),
            .look_for_black = flag(detectors.enable_black_screen),
            .look_for_green = flag(detectors.enable_green_screen),
            .look_for_exposure = flag(detectors.enable_exposure),
            .look_for_block = flag(detectors.enable_block),
            .look_for_freeze = flag(detectors.enable_staticframe),
            .reserved = {},
            .black_ratio = detectors.black_screen_ratio,
            .green_ratio = detectors.green_screen_ratio,
            .block_corners = detectors.block_param,
            .freeze_frames = detectors.staticframe_param,
            .mute_level = detectors.mute_level,
            .low_voice_level = detectors.low_voice_level,
            .high_voice_level = detectors.high_voice_level,
            .no_voice_share = detectors.novoice_scale,
            .audio_period_s = detectors.longtime_period_s,
            .heartbeat_s = 0};
}

std::optional<zelc_config> readConfig(const zelc_config* config) {
    zelc_config own = configOf({});
    if (config == nullptr) {
        return own;
    }
    if (!isReadable(config)) {
        failed(ZELC_INVALID, "a configuration without its size");
        return std::nullopt;
    }
    read(*config, own);
    if (own.heartbeat_s > static_cast<uint32_t>(std::numeric_limits<int32_t>::max())) {
        failed(ZELC_INVALID, "too long between heartbeats");
        return std::nullopt;
    }
    return own;
}

ZELAlgo::ZELAlgoConfig detectorsOf(const zelc_config& config) {
    return {.enable_black_screen = config.look_for_black != 0,
            .enable_block = config.look_for_block != 0,
            .enable_exposure = config.look_for_exposure != 0,
            .enable_green_screen = config.look_for_green != 0,
            .enable_staticframe = config.look_for_freeze != 0,
            .black_screen_ratio = config.black_ratio,
            .green_screen_ratio = config.green_ratio,
            .block_param = config.block_corners,
            .staticframe_param = config.freeze_frames,
            .mute_level = config.mute_level,
            .low_voice_level = config.low_voice_level,
            .high_voice_level = config.high_voice_level,
            .novoice_scale = config.no_voice_share,
            .longtime_period_s = config.audio_period_s};
}

zelc_video_verdict verdictOf(const ZELAlgo::ZELVideoResult& result) {
    return {.struct_size = sizeof(zelc_video_verdict),
            .screen = result.screen_type,
            .exposure = result.exposure_type,
            .is_block = result.is_block ? 1U : 0U,
            .is_freeze = result.is_staticframe ? 1U : 0U};
}

zelc_audio_verdict verdictOf(const ZELAlgo::ZELAudioResult& result) {
    zelc_audio_verdict verdict{};
    verdict.struct_size = sizeof verdict;
    if (result.status == ZELAlgo::kAudioComplete) {
        verdict.is_complete = 1;
        verdict.level = result.audio_level;
        verdict.voice_level = result.voice_level_longtime;
        verdict.voice_share = result.voice_scale_longtime;
        verdict.is_mute = result.is_mute;
        verdict.is_low_voice = result.is_low_voicelevel;
        verdict.is_high_voice = result.is_high_voicelevel;
        verdict.is_no_voice = result.is_novoice_longtime;
    }
    return verdict;
}

}  // namespace ZELC

int zelc_config_default(zelc_config* config) {
    return ZELC::writeConfig({}, config);
}

int zelc_config_of_analyser(zelc_config* config) {
    return ZELC::writeConfig(ZEL::EventAnalyser::detectorConfig(), config);
}
