#ifndef ZEL_SESSION_SESSION_H_
#define ZEL_SESSION_SESSION_H_

#include <zel/algo/algo_types.h>
#include <zel/base/c_object.h>
#include <zel/collector/info_collector.h>
#include <zel/message/message_center.h>
#include <zel/session/frames.h>
#include <zel/zel.h>

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace ZEL {

/// Frames that a session took in and did not examine: the oldest ones, which made room while the worker was
/// behind, those that a restart found still queued, and those that there was no memory for.
struct QueueDrops {
    uint64_t video = 0;
    uint64_t audio = 0;

    bool operator==(const QueueDrops&) const = default;
};

/// What getQueueDrops of the living session with this id would answer; nothing if there is none. The id is
/// the session's "zel_token", also for one that was opened through the C interface (whose get_session_id does
/// not tell it). Any thread.
std::optional<QueueDrops> queueDropsOfSession(int64_t session_id);

/// Hears that a session has a new frame result. Called on the message centre's thread, for which the
/// session's worker may be waiting: it must not start, stop, feed or configure the session, nor drop the last
/// reference to it.
class IZELSessionListener {
  public:
    virtual ~IZELSessionListener() = default;
    virtual void onSessionEvent(uint32_t code, uint64_t a, uint64_t b, std::string text) = 0;
};

/// Hears what the detectors say of each frame, on the session's worker thread, which waits meanwhile, in the
/// order of the feeds of either kind. Frames that were dropped are left out. It must not throw, nor start or
/// stop the session or drop the last reference to it.
class IZELResultListener {
  public:
    virtual ~IZELResultListener() = default;
    /// `index` is the one that was fed with the frame.
    virtual void onVideoResult(int64_t index, const ZELAlgo::ZELVideoResult& result) = 0;
    virtual void onAudioResult(int64_t index, const ZELAlgo::ZELAudioResult& result) = 0;
};

/// Monitors one stream: queues what it is fed, runs the detectors on a worker thread of its own, counts what
/// they find and reports it. Held by a shared_ptr. Any thread may call any operation, but a child of fork()
/// may not touch the sessions of its parent, not even to destroy them: their workers are not there.
class ZELSession : public CObject {
  public:
    /// `center` takes the frame results if they are published; the session does not keep it alive.
    explicit ZELSession(std::shared_ptr<MessageCenter> center);
    /// Ends the worker if it still runs.
    ~ZELSession() override;

    /// Starts the worker; always true. After a stop this is a fresh run: detectors and named collectors are
    /// made anew and frames that were still queued are dropped, while counters and totals run on. Throws
    /// std::system_error if no thread is to be had.
    bool start();

    /// Waits for the frame in work, ends the worker, drops the detectors and all collectors and releases the
    /// listener. Frames that are still queued are not examined. Not from a message callback: the worker may
    /// be waiting for it to end. The same goes for the feeds, which wait for a stop.
    void stop();

    /// Subscribes the session to its frame results, which its listener then hears about. The centre keeps the
    /// session alive until it is unsubscribed. Throws std::bad_weak_ptr if no shared_ptr holds the session.
    void registerMessageListeners();
    void unregisterMessageListeners();

    /// Queue a frame and return; the oldest queued one is dropped beyond 10 video or 50 audio frames.
    /// `index` is handed to the result listener. True, or false for a null frame and for sizes that are not
    /// positive.
    bool feedVideoFrame(std::shared_ptr<VideoFrame> frame, int64_t index);
    bool feedAudioFrame(std::shared_ptr<AudioFrame> frame, int64_t index);

    /// Frames dropped so far in the session's life, by kind: audio that shares the video queue counts as
    /// audio. No report carries these numbers.
    QueueDrops getQueueDrops() const;

    /// The session's address: unique among living sessions, reported as "zel_token".
    int64_t getSessionId() const;

    /// The detectors' configuration from the next start on.
    void setAlgoConfig(const ZELAlgo::ZELAlgoConfig& config);
    /// Who hears each frame's verdicts from the next start on; null for nobody.
    void setResultListener(std::shared_ptr<IZELResultListener> listener);
    /// Keeps the named collectors out of the heartbeat report.
    void setCollectorsDisabled(bool disabled);
    /// Publishes every frame's verdicts as "ZELMsgVideoFrameResult" and "ZELMsgAudioFrameResult". Before
    /// start.
    void setPublishFrameResults(bool publish);
    /// Gives audio a queue of its own (the default) or lets it share the video queue. Before start.
    void setSeparateAudioQueue(bool separate);
    /// Replaces the listener; null for none.
    void setListener(std::shared_ptr<IZELSessionListener> listener);

    /// Hand data to the named collector: "ZELAccumulativeInfoCollector" or
    /// "ZELSerialStatisticsInfoCollector". False for any other name, for null values and after a stop.
    bool collectAccumulativeData(const std::string& name, const std::map<std::string, int64_t>* values);
    bool collectSerialData(const std::string& name, const std::string& key,
                           const std::vector<float>& samples);

    /// Adds a collector of the named kind whose data every heartbeat carries. Null for an unknown name.
    std::shared_ptr<ZELInfoCollector> addCollector(const std::string& name);

    /// Adds the report of the period since the last call to `report` and begins the next period.
    void getHeartbeatInfo(ReportMap& report);

    /// The report over the session's whole life. Changes nothing.
    ReportMap getAccumulativeInfo();

  private:
    struct Parts;

    void onFrameResult(const Message& message);

    const std::unique_ptr<Parts> parts_;
};

}  // namespace ZEL

#endif  // ZEL_SESSION_SESSION_H_
