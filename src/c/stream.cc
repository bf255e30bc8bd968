#include <zel/message/message_center.h>
#include <zel/session/frames.h>
#include <zel/session/session.h>
#include <zel/zel_c.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <memory>
#include <new>
#include <optional>
#include <thread>
#include <utility>

#include "base/turn.h"
#include "c/calls.h"
#include "c/fed.h"
#include "c/report.h"
#include "pc/timer_pc.h"
#include "session/frame_pool.h"
#include "session/task_queue.h"

namespace {

constexpr uint32_t kFormatI420 = 2;
/// The queued video frames, the one in work and the one being fed.
constexpr size_t kPooledBuffers = ZEL::TaskQueue::kSharedBound + 2;

/// Marks the calling thread as being in a callback of a stream's.
class Calling {
  public:
    explicit Calling(const zelc_stream& stream) : stream_(&stream), before_(std::exchange(innermost, this)) {}
    ~Calling() { innermost = before_; }
    Calling(const Calling&) = delete;
    Calling& operator=(const Calling&) = delete;

    static bool isFor(const zelc_stream* stream) {
        const Calling* calling = innermost;
        while (calling != nullptr && calling->stream_ != stream) {
            calling = calling->before_;
        }
        return calling != nullptr;
    }

  private:
    static thread_local const Calling* innermost;

    const zelc_stream* const stream_;
    const Calling* const before_;
};

thread_local const Calling* Calling::innermost = nullptr;

}  // namespace

/// A session with a timer for its heartbeats.
struct zelc_stream {
    zelc_stream(const zelc_config& config, const zelc_stream_callbacks& callbacks);
    ~zelc_stream();

    void stop();
    void report(const ReportMap& fields, bool is_final) const;

    class Verdicts;

    const zelc_stream_callbacks callbacks;
    const std::shared_ptr<ZEL::FramePool> pool = std::make_shared<ZEL::FramePool>(kPooledBuffers);
    const std::shared_ptr<ZEL::ZELSession> session = std::make_shared<ZEL::ZELSession>(nullptr);
    const std::shared_ptr<ZEL::Turn> heartbeats = std::make_shared<ZEL::Turn>();
    const std::shared_ptr<ZELPCTimer::RunningFlag> running = std::make_shared<ZELPCTimer::RunningFlag>();
};

class zelc_stream::Verdicts : public ZEL::IZELResultListener {
  public:
    explicit Verdicts(const zelc_stream& stream) : stream_(stream) {}

    void onVideoResult(int64_t index, const ZELAlgo::ZELVideoResult& result) override {
        if (stream_.callbacks.on_video != nullptr) {
            const Calling calling(stream_);
            const zelc_video_verdict verdict = ZELC::verdictOf(result);
            stream_.callbacks.on_video(stream_.callbacks.user, index, &verdict);
        }
    }

    void onAudioResult(int64_t index, const ZELAlgo::ZELAudioResult& result) override {
        if (stream_.callbacks.on_audio != nullptr && result.status == ZELAlgo::kAudioComplete) {
            const Calling calling(stream_);
            const zelc_audio_verdict verdict = ZELC::verdictOf(result);
            stream_.callbacks.on_audio(stream_.callbacks.user, index, &verdict);
        }
    }

  private:
    const zelc_stream& stream_;
};

zelc_stream::zelc_stream(const zelc_config& config, const zelc_stream_callbacks& own_callbacks)
    : callbacks(own_callbacks) {
    session->setAlgoConfig(ZELC::detectorsOf(config));
    session->setPublishFrameResults(false);
    session->setResultListener(std::make_shared<Verdicts>(*this));
    session->start();
    if (config.heartbeat_s > 0 && callbacks.on_report != nullptr) {
        const ZELPCTimer timer(
            static_cast<int32_t>(config.heartbeat_s), ZELPCTimer::Mode::kDetached,
            [this, turn = heartbeats, flag = running] {
                const ZEL::Turn::Held held(*turn);
                if (flag->isSet()) {  // else the stream may be gone
                    ReportMap fields;
                    session->getHeartbeatInfo(fields);
                    report(fields, false);
                }
            },
            running);
    }
}

zelc_stream::~zelc_stream() {
    stop();
}

/// No verdict and no heartbeat comes any more when it returns.
void zelc_stream::stop() {
    running->clear();
    { const ZEL::Turn::Held held(*heartbeats); }  // one that is under way ends first
    session->stop();
}

void zelc_stream::report(const ReportMap& fields, bool is_final) const {
    const Calling calling(*this);
    const zelc_report own{fields, {}};
    callbacks.on_report(callbacks.user, &own, is_final ? 1 : 0);
}

int zelc_stream_new(const zelc_config* config, const zelc_stream_callbacks* callbacks, zelc_stream** stream) {
    return ZELC::guarded([&] {
        if (stream == nullptr) {
            return ZELC::failed(ZELC_INVALID, "nowhere to put the stream");
        }
        *stream = nullptr;
        const auto own_config = ZELC::readConfig(config);
        if (!own_config) {
            return int{ZELC_INVALID};
        }
        zelc_stream_callbacks own_callbacks{};
        if (callbacks != nullptr) {
            if (!ZELC::isReadable(callbacks)) {
                return ZELC::failed(ZELC_INVALID, "callbacks without their size");
            }
            ZELC::read(*callbacks, own_callbacks);
        }
        *stream = new zelc_stream(*own_config, own_callbacks);
        return int{ZELC_OK};
    });
}

int zelc_stream_video(zelc_stream* stream, const zelc_frame* frame, int64_t index) {
    return ZELC::guarded([&] {
        if (stream == nullptr) {
            return ZELC::failed(ZELC_INVALID, "no stream");
        }
        const auto own = ZELC::readFrame(frame);
        if (!own) {
            return int{ZELC_INVALID};
        }
        const auto width = static_cast<int32_t>(own->width);
        const auto height = static_cast<int32_t>(own->height);
        std::unique_ptr<uint8_t[]> copy = stream->pool->take(ZEL::i420Bytes(width, height));
        if (copy == nullptr) {
            throw std::bad_alloc();
        }
        ZELC::pack(*own, copy.get());
        stream->session->feedVideoFrame(
            std::make_shared<ZEL::VideoFrame>(kFormatI420, std::move(copy), width, height, stream->pool),
            index);
        return int{ZELC_OK};
    });
}

int zelc_stream_audio(zelc_stream* stream, const zelc_audio* audio, int64_t index) {
    return ZELC::guarded([&] {
        if (stream == nullptr) {
            return ZELC::failed(ZELC_INVALID, "no stream");
        }
        const auto own = ZELC::readAudio(audio);
        if (!own) {
            return int{ZELC_INVALID};
        }
        ZELC::inSteps(*own, [&](const ZELAlgo::ZELAudioFrame& step) {
            const size_t values = size_t{step.samples} * step.channels;
            auto copy = std::make_unique_for_overwrite<int16_t[]>(values);
            std::copy_n(step.data, values, copy.get());
            stream->session->feedAudioFrame(
                std::make_shared<ZEL::AudioFrame>(0, std::move(copy), step.samples,
                                                  static_cast<int32_t>(step.sample_rate),
                                                  static_cast<int32_t>(step.channels)),
                index);
        });
        return int{ZELC_OK};
    });
}

int zelc_stream_drops(const zelc_stream* stream, uint64_t* video, uint64_t* audio) {
    return ZELC::guarded([&] {
        if (stream == nullptr) {
            return ZELC::failed(ZELC_INVALID, "no stream");
        }
        const ZEL::QueueDrops drops = stream->session->getQueueDrops();
        if (video != nullptr) {
            *video = drops.video;
        }
        if (audio != nullptr) {
            *audio = drops.audio;
        }
        return int{ZELC_OK};
    });
}

int zelc_stream_free(zelc_stream* stream) {
    return ZELC::guarded([&] {
        if (stream != nullptr && Calling::isFor(stream)) {
            return ZELC::failed(ZELC_BUSY, "a stream cannot be freed by its own callback");
        }
        const std::unique_ptr<zelc_stream> owner(stream);
        if (stream != nullptr && stream->callbacks.on_report != nullptr) {
            stream->stop();
            stream->report(stream->session->getAccumulativeInfo(), true);
        }
        return int{ZELC_OK};
    });
}
