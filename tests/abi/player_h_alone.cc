// The in-process interface as a player meets it: one header, every name in it, nothing from inside the tree.
#include <zel/player.h>

#include <cstdio>
#include <type_traits>

namespace {

template <typename Base, typename Class>
constexpr bool kIsA = std::is_convertible_v<Class*, Base*>;

static_assert(kIsA<ZEL::CObject, ZEL::Message> && kIsA<ZEL::CObject, ZEL::ZELSession>);
static_assert(kIsA<ZEL::CObject, ZEL::ZELManager> && kIsA<ZEL::ZELDataMonitor, ZEL::ZELManager>);
static_assert(kIsA<ZEL::CObject, ZEL::ZELHA> && kIsA<ZEL::ZELDataMonitor, ZEL::ZELPlayerDataMonitor>);
static_assert(kIsA<ZEL::ZELInfoCollector, ZEL::ZELAccumulativeInfoCollector>);
static_assert(kIsA<ZEL::ZELInfoCollector, ZEL::ZELSerialStatisticsInfoCollector>);
static_assert(std::has_virtual_destructor_v<ZEL::CObject> &&
              !std::has_virtual_destructor_v<ZEL::ZELDataMonitor>);

/// An adapter overrides these two and no more.
struct Switches : ZEL::ConfigAdapter {
    bool getBool(const std::string& /*key*/, bool default_value) override { return default_value; }
    int32_t getInt(const std::string& /*key*/, int32_t default_value) override { return default_value; }
};

struct Listener : ZEL::IZELSessionListener {
    void onSessionEvent(uint32_t /*code*/, uint64_t /*a*/, uint64_t /*b*/, std::string /*text*/) override {}
};

int failures = 0;

void expect(bool holds, const char* what) {
    if (!holds) {
        std::fprintf(stderr, "does not hold: %s\n", what);
        ++failures;
    }
}
#define EXPECT(condition) expect(condition, #condition)

void useDetectors() {
    ZELAlgo::ZELAlgoConfig config;
    config.enable_block = false;
    ZELAlgo::AlgoFacade facade(config);
    facade.setConfig(config);
    const std::vector<uint8_t> black(16 * 16 * 3 / 2, 16);
    const std::vector<int16_t> silence(480);
    ZELAlgo::ZELVideoResult picture{};
    ZELAlgo::ZELAudioResult sound{};
    EXPECT(facade.detectVideo({16, 16, 0, black.data()}, picture));
    EXPECT(picture.screen_type == ZELAlgo::kScreenBlack);
    EXPECT(facade.detectAudio({48000, 480, 1, silence.data()}, sound));
}

/// Half a second of black frames and a second of silence.
void useAnalyser() {
    struct : ZEL::EventListener {
        void onRaised(ZEL::EventKind kind, double start_s, double noticed_s) override {
            raised += kind == ZEL::EventKind::kBlack && start_s == 0.0 && noticed_s < 0.5 ? 1 : 0;
        }
        void onCleared(const ZEL::Event& event) override { cleared += event.counts() ? 1 : 0; }
        int raised = 0;
        int cleared = 0;
    } listener;
    const std::vector<uint8_t> luma(16 * 16, 16);
    const std::vector<uint8_t> chroma(8 * 8, 128);
    const std::vector<int16_t> silence(16'000);
    ZEL::EventAnalyser analyser(listener, {.tracks = {.still = false}, .late_after_s = 5.0});
    EXPECT(analyser.setRule(ZEL::EventKind::kBlack, {.min_s = 0.4, .gap_s = 0.1}));
    for (int i = 0; i < 13; ++i) {
        EXPECT(analyser.feedVideo({16, 16, {luma.data(), chroma.data(), chroma.data()}, {16, 8, 8}}, 0.04 * i,
                                  0.04));
    }
    EXPECT(analyser.feedAudio({8000, 8000, 2, silence.data()}, 0.0));
    EXPECT(!analyser.feedAudio({0, 8000, 2, silence.data()}, 1.0));
    analyser.endOfStream(1.0);
    EXPECT(analyser.reached() == 1.0);
    EXPECT(listener.raised == 1);
    EXPECT(listener.cleared == 2);
    EXPECT(infoOf(ZEL::EventKind::kMute).unit == "mean absolute sample value");
    ZEL::StreamClock clock;
    clock.take(ZEL::StreamTrack::kAudio, ZEL::StreamClock::unwrapped(1.0, 9.0, 8.0), 1.0, {});
    clock.finish([](ZEL::StreamTrack track, double start_s) {
        EXPECT(track == ZEL::StreamTrack::kAudio && start_s == 9.0);
    });
}

void useSession(ZEL::ZELManager& manager) {
    const auto session = std::make_shared<ZEL::ZELSession>(manager.getMessageCenter());
    session->setAlgoConfig(ZELAlgo::ZELAlgoConfig{});
    session->setPublishFrameResults(true);
    session->setSeparateAudioQueue(true);
    session->setCollectorsDisabled(false);
    session->setListener(std::make_shared<Listener>());
    session->registerMessageListeners();
    EXPECT(session->start());
    EXPECT(session->feedVideoFrame(
        std::make_shared<ZEL::VideoFrame>(2, std::make_unique<uint8_t[]>(384), 16, 16), 0));
    EXPECT(session->feedAudioFrame(
        std::make_shared<ZEL::AudioFrame>(0, std::make_unique<int16_t[]>(480), 480, 48000, 1), 0));

    const std::map<std::string, int64_t> values = {{"a", 1}};
    manager.registerSession(session);
    EXPECT(zel_collect_accumulative_data_for_session_v2(static_cast<uint64_t>(session->getSessionId()),
                                                        &values));
    EXPECT(session->collectSerialData("ZELSerialStatisticsInfoCollector", "s", {1.0F}));
    EXPECT(manager.registerCollector(1, session->addCollector("ZELAccumulativeInfoCollector")));
    EXPECT(manager.aliasCollector(2, 1));
    EXPECT(!manager.collectAccumulativeDataByKey(2, &values));
    EXPECT(!manager.collectSerialDataByKey(2, "s", {1.0F}));
    ReportMap report;
    session->getHeartbeatInfo(report);
    EXPECT(ZEL::getInt(report, "a", 0) == 1);
    EXPECT(ZEL::getDouble(report, "s_mean", 0.0) == 1.0);

    EXPECT(session->getQueueDrops() == ZEL::QueueDrops());
    EXPECT(ZEL::queueDropsOfSession(session->getSessionId()) == ZEL::QueueDrops());
    session->unregisterMessageListeners();
    session->stop();
    manager.purgeCollectors();
    manager.unregisterSession(session->getSessionId());
    EXPECT(session->getAccumulativeInfo().at("zel_vframes") == "1");
}

}  // namespace

int main() {
    ZEL::setLogSink([](const char* /*text*/, size_t /*length*/, void* /*context*/) {}, nullptr);
    ZEL::ZELManager& manager = ZEL::ZELManager::getInstance();
    manager.setConfigAdapter(std::make_shared<Switches>());
    manager.initDataMonitors();
    EXPECT(manager.start());
    manager.reportPlaybackEnd(1, {{"error_code", "-110"}});
    EXPECT(ZEL::ZELHA::getInstance().evaluate("PlayerErrorRate").at("count") == "2");
    ZEL::MetricRecorder recorder(900);
    recorder.record(1.5);
    EXPECT(recorder.truncatingAverage() == 1.0);
    useDetectors();
    useAnalyser();
    useSession(manager);
    return failures;
}
