#include <zel/algo/algo_facade.h>
#include <zel/zel_c.h>

#include <cstdint>
#include <vector>

#include "algo/mix_down.h"
#include "c/calls.h"
#include "c/fed.h"

struct zelc_detector {
    explicit zelc_detector(const zelc_config& config) : detectors(ZELC::detectorsOf(config)) {}

    ZELAlgo::AlgoFacade detectors;
    ZELC::FrameReader frames;
    std::vector<int16_t> mono;
};

int zelc_detector_new(const zelc_config* config, zelc_detector** detector) {
    return ZELC::guarded([&] {
        if (detector == nullptr) {
            return ZELC::failed(ZELC_INVALID, "nowhere to put the detector");
        }
        *detector = nullptr;
        const auto own = ZELC::readConfig(config);
        if (!own) {
            return int{ZELC_INVALID};
        }
        *detector = new zelc_detector(*own);
        return int{ZELC_OK};
    });
}

void zelc_detector_free(zelc_detector* detector) {
    delete detector;
}

int zelc_detector_video(zelc_detector* detector, const zelc_frame* frame, zelc_video_verdict* verdict) {
    return ZELC::guarded([&] {
        if (detector == nullptr || !ZELC::isReadable(verdict)) {
            return ZELC::failed(ZELC_INVALID, "no detector, or no verdict that knows its size");
        }
        const auto fed = detector->frames.read(frame);
        if (!fed) {
            return int{ZELC_INVALID};
        }
        ZELAlgo::ZELVideoResult result{};
        if (!detector->detectors.detectPlanes(fed->planes, result)) {  // nothing else is left to be refused
            return ZELC::failed(ZELC_NO_MEMORY, "no memory for the detectors");
        }
        ZELC::write(ZELC::verdictOf(result), *verdict);
        return int{ZELC_OK};
    });
}

int zelc_detector_audio(zelc_detector* detector, const zelc_audio* audio, zelc_audio_verdict* verdict) {
    return ZELC::guarded([&] {
        if (detector == nullptr || !ZELC::isReadable(verdict)) {
            return ZELC::failed(ZELC_INVALID, "no detector, or no verdict that knows its size");
        }
        const auto heard = ZELC::readAudio(audio);
        if (!heard) {
            return int{ZELC_INVALID};
        }
        zelc_audio_verdict told = ZELC::verdictOf(ZELAlgo::ZELAudioResult{});
        bool has_memory = true;
        ZELC::inSteps(*heard, [&](ZELAlgo::ZELAudioFrame step) {
            step.data = ZELAlgo::mixedDown(step.data, step.samples, step.channels, detector->mono);
            ZELAlgo::ZELAudioResult result{};
            has_memory = detector->detectors.detectAudio(step, result) && has_memory;
            if (result.status == ZELAlgo::kAudioComplete) {
                told = ZELC::verdictOf(result);
            }
        });
        if (!has_memory) {
            return ZELC::failed(ZELC_NO_MEMORY, "no memory for the detectors");
        }
        ZELC::write(told, *verdict);
        return int{ZELC_OK};
    });
}
