// The flat C interface with every request for memory of its calls refused in turn: a code says so, nothing
// leaks, and what is made next works.
#include <zel/zel_c.h>

#include <array>
#include <cstdint>
#include <vector>

#include <gtest/gtest.h>

#include "support/allocations.h"

namespace {

constexpr uint32_t kWidth = 64;
constexpr uint32_t kHeight = 48;

/// Black frames, whose chroma must be taken apart, and stereo, which must be mixed down.
struct Fed {
    std::vector<uint8_t> luma = std::vector<uint8_t>(kWidth * kHeight, 16);
    std::vector<uint8_t> chroma = std::vector<uint8_t>(kWidth * kHeight / 2, 128);
    std::vector<int16_t> samples = std::vector<int16_t>(2 * 4800, 1000);
    zelc_frame frame = ZELC_INIT(zelc_frame);
    zelc_audio audio = ZELC_INIT(zelc_audio);

    Fed() {
        frame.format = ZELC_NV12;
        frame.width = kWidth;
        frame.height = kHeight;
        frame.data[0] = luma.data();
        frame.data[1] = chroma.data();
        frame.stride[0] = frame.stride[1] = kWidth;
        audio.sample_rate = 48000;
        audio.channels = 2;
        audio.samples = 4800;
        audio.data = samples.data();
    }
};

class WithoutMemory : public testing::Test {
  protected:
    WithoutMemory() { zelc_silence_log(); }
    ~WithoutMemory() override { zelc_set_log(nullptr, nullptr); }

    /// One request fails for each run of `use`, which must leave nothing behind.
    template <typename Use>
    void withEachFailing(Use use) {
        use();  // what is made once in a process
        const size_t alive = support::allocationsAlive();
        support::withEachAllocationFailing(use);
        EXPECT_EQ(support::allocationsAlive(), alive);
    }

    /// Whether the call went well; otherwise for no other reason than memory.
    static bool isDone(int code) {
        EXPECT_TRUE(code == ZELC_OK || code == ZELC_NO_MEMORY) << code << ": " << zelc_last_error();
        return code == ZELC_OK;
    }

    const Fed fed_;
};

TEST_F(WithoutMemory, ADetectorSaysSoAndTriesAgainWithTheNextFrame) {
    withEachFailing([&] {
        zelc_detector* detector = nullptr;
        const bool made = isDone(zelc_detector_new(nullptr, &detector));
        ASSERT_EQ(made, detector != nullptr);
        if (detector == nullptr) {
            return;
        }
        zelc_video_verdict seen = ZELC_INIT(zelc_video_verdict);
        zelc_audio_verdict heard = ZELC_INIT(zelc_audio_verdict);
        if (!isDone(zelc_detector_video(detector, &fed_.frame, &seen))) {
            EXPECT_EQ(zelc_detector_video(detector, &fed_.frame, &seen), ZELC_OK);
        }
        EXPECT_EQ(seen.screen, uint32_t{ZELC_SCREEN_BLACK});
        if (!isDone(zelc_detector_audio(detector, &fed_.audio, &heard))) {
            EXPECT_EQ(zelc_detector_audio(detector, &fed_.audio, &heard), ZELC_OK);
        }
        zelc_detector_free(detector);
    });
}

TEST_F(WithoutMemory, AnAnalyserSaysSoAndIsFedNoMoreOnceAFeedBrokeOff) {
    withEachFailing([&] {
        zelc_analyser* analyser = nullptr;
        const bool made = isDone(zelc_analyser_new(nullptr, nullptr, &analyser));
        ASSERT_EQ(made, analyser != nullptr);
        bool failed = false;
        for (int i = 0; i < 30 && analyser != nullptr; ++i) {
            for (const int code : {zelc_analyser_video(analyser, &fed_.frame, i * 0.1, 0.1),
                                   zelc_analyser_audio(analyser, &fed_.audio, i * 0.1)}) {
                EXPECT_TRUE(code == ZELC_OK || (code == ZELC_NO_MEMORY && !failed) ||
                            (code == ZELC_ENDED && failed))
                    << code;
                failed = failed || code != ZELC_OK;
            }
        }
        if (analyser != nullptr) {
            isDone(zelc_analyser_end(analyser, 10.0));
        }
        zelc_analyser_free(analyser);
    });
}

TEST_F(WithoutMemory, AStreamIsFreedAllTheSame) {
    support::withEachAllocationFailing([&] {
        zelc_stream_callbacks callbacks = ZELC_INIT(zelc_stream_callbacks);
        callbacks.on_report = [](void*, const zelc_report* report, int) { zelc_report_json(report); };
        zelc_stream* stream = nullptr;
        const int code = zelc_stream_new(nullptr, &callbacks, &stream);
        ASSERT_TRUE(code == ZELC_OK ? stream != nullptr : stream == nullptr && code == ZELC_NO_MEMORY)
            << code;
        if (stream != nullptr) {
            isDone(zelc_stream_video(stream, &fed_.frame, 0));
            isDone(zelc_stream_audio(stream, &fed_.audio, 0));
            isDone(zelc_stream_free(stream));
        }
    });
}

}  // namespace
