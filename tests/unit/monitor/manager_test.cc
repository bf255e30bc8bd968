#include <zel/player.h>

#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <gmock/gmock.h>

#include "support/log_capture.h"
#include "support/recent_health.h"

namespace {

using testing::ElementsAre;
using ZEL::ZELInfoCollector;
using ZEL::ZELManager;
using ZEL::ZELSession;

constexpr const char* kSums = "ZELAccumulativeInfoCollector";
constexpr const char* kSeries = "ZELSerialStatisticsInfoCollector";

class Switches : public ZEL::ConfigAdapter {
  public:
    explicit Switches(bool monitor_disabled) : monitor_disabled_(monitor_disabled) {}
    bool getBool(const std::string& key, bool default_value) override {
        return key == "DisableDataMonitor" ? monitor_disabled_ : default_value;
    }
    int32_t getInt(const std::string& /*key*/, int32_t default_value) override { return default_value; }

  private:
    bool monitor_disabled_;
};

std::shared_ptr<ZELSession> makeSession(ZELManager& manager) {
    return std::make_shared<ZELSession>(manager.getMessageCenter());
}

ReportMap heartbeat(ZELSession& session) {
    ReportMap report;
    session.getHeartbeatInfo(report);
    return report;
}

TEST(Manager, IsOnePerProcessWithOneMessageCentre) {
    ZELManager& manager = ZELManager::getInstance();
    EXPECT_EQ(&manager, &ZELManager::getInstance());
    ASSERT_NE(manager.getMessageCenter(), nullptr);
    EXPECT_EQ(manager.getMessageCenter(), manager.getMessageCenter());
    ZELManager own;
    EXPECT_NE(own.getMessageCenter(), manager.getMessageCenter());
}

TEST(Manager, StopsItsMessageCentreAtTheEnd) {
    std::shared_ptr<ZEL::MessageCenter> center;
    const auto owner = std::make_shared<ZEL::CObject>();
    {
        ZELManager manager;
        center = manager.getMessageCenter();
        center->registerListener("a", owner, [](const auto&) {});
    }
    EXPECT_EQ(owner.use_count(), 1);
    const auto message = std::make_shared<ZEL::Message>("a");
    center->publish(message);
    EXPECT_EQ(message.use_count(), 1);
}

TEST(Manager, StartWarnsAndAnswersTrueEachTime) {
    const support::LogCapture log;
    ZELManager manager;
    EXPECT_TRUE(manager.start());
    EXPECT_TRUE(manager.start());
    const std::string warning = "ZEL: WARN: stat_adapter_ not set before start()\n";
    EXPECT_THAT(log.messages(), ElementsAre(warning, warning));
}

// ---- reports ----

class ManagerReports : public testing::Test {
  protected:
    ~ManagerReports() override { ZEL::ZELHA::getInstance().setConfigAdapter(nullptr); }

    void report(const std::string& first_frame_ms, const std::string& bytes) {
        manager.reportPlaybackEnd(1, {{"first_frame_rendering_time", first_frame_ms}});
        manager.reportPeriodic(1, {{"recv_bytes", bytes}, {"zel_time_interval", "2"}});
    }

    ReportMap figures() {
        ReportMap all = health.figures();
        all.erase("recent_error_rate");
        return all;
    }

    support::RecentHealth health;
    ZELManager manager;
};

TEST_F(ManagerReports, ReachNobodyBeforeAnAdapterIsSet) {
    health.forget();
    manager.initDataMonitors();
    report("100", "1000");
    EXPECT_EQ(figures(), ReportMap());
}

TEST_F(ManagerReports, ReachEachMonitorWhole) {
    health.forget();
    manager.setConfigAdapter(std::make_shared<Switches>(false));
    manager.initDataMonitors();
    report("100", "1000");
    EXPECT_EQ(figures(), (ReportMap{{"recent_ff", "100.000000"}, {"recent_max", "500.000000"}}));
    manager.initDataMonitors();
    report("400", "3000");  // counted twice from here: (100 + 400 + 400) / 3
    EXPECT_EQ(figures(), (ReportMap{{"recent_ff", "300.000000"}, {"recent_max", "1500.000000"}}));
    EXPECT_THROW(manager.reportPeriodic(1, {{"play_scenario", "live"}}), std::invalid_argument);
}

TEST_F(ManagerReports, AreDroppedWhileMonitoringIsSwitchedOff) {
    health.forget();
    manager.setConfigAdapter(std::make_shared<Switches>(false));
    manager.initDataMonitors();
    manager.setConfigAdapter(std::make_shared<Switches>(true));
    manager.initDataMonitors();
    report("100", "1000");
    EXPECT_EQ(figures(), ReportMap());
    manager.setConfigAdapter(nullptr);
    manager.initDataMonitors();  // without an adapter the switch keeps its value
    report("100", "1000");
    EXPECT_EQ(figures(), ReportMap());
    manager.setConfigAdapter(std::make_shared<Switches>(false));
    manager.initDataMonitors();
    report("100", "1000");
    EXPECT_EQ(figures(), (ReportMap{{"recent_ff", "100.000000"}, {"recent_max", "500.000000"}}));
}

TEST_F(ManagerReports, TakeTheirTimeToLiveFromTheSameAdapter) {
    struct Asked : Switches {
        Asked() : Switches(false) {}
        int32_t getInt(const std::string& key, int32_t default_value) override {
            keys.push_back(key);
            return default_value;
        }
        std::vector<std::string> keys;
    };
    const auto adapter = std::make_shared<Asked>();
    manager.setConfigAdapter(adapter);
    static int metric = 0;
    ZEL::ZELHA::getInstance().record("new metric " + std::to_string(++metric), 1.0);
    EXPECT_THAT(adapter->keys, ElementsAre("DefaultMetricsTTL"));
}

// ---- sessions ----

TEST(ManagerSessions, AreFedByTheirIdWhileRegisteredAndAlive) {
    ZELManager manager;
    auto session = makeSession(manager);
    const int64_t id = session->getSessionId();
    const std::map<std::string, int64_t> values = {{"a", 5}};
    const auto feed = [&](const std::string& sums, const std::string& series) {
        return std::pair(manager.collectAccumulativeDataForSession(id, sums, &values),
                         manager.collectSerialDataForSession(id, series, "s", {2.0F}));
    };
    EXPECT_EQ(feed(kSums, kSeries), std::pair(false, false));
    manager.registerSession(session);
    manager.registerSession(nullptr);
    EXPECT_EQ(feed(kSums, kSeries), std::pair(true, true));
    EXPECT_EQ(feed("none", "none"), std::pair(false, false));
    EXPECT_FALSE(manager.collectAccumulativeDataForSession(id, kSums, nullptr));
    EXPECT_FALSE(manager.collectAccumulativeDataForSession(id + 1, kSums, &values));

    const ReportMap report = heartbeat(*session);
    EXPECT_EQ(report.at("zel_token"), std::to_string(id));
    EXPECT_EQ(report.at("a"), "5");
    EXPECT_EQ(report.at("s_cnt"), "1");
    EXPECT_EQ(report.at("s_mean"), "2.000000");

    manager.unregisterSession(id);
    manager.unregisterSession(id);
    EXPECT_EQ(feed(kSums, kSeries), std::pair(false, false));
    manager.registerSession(session);
    session.reset();
    EXPECT_EQ(feed(kSums, kSeries), std::pair(false, false));
}

TEST(ManagerSessions, AnswerToTheExportsByToken) {
    ZELManager& manager = ZELManager::getInstance();
    const auto session = makeSession(manager);
    const auto token = static_cast<uint64_t>(session->getSessionId());
    const std::map<std::string, int64_t> values = {{"a", 5}};
    const std::string key = "s";
    const std::vector<float> samples = {1.0F, 2.0F, 3.0F, 4.0F};
    EXPECT_FALSE(zel_collect_accumulative_data_for_session_v2(token, &values));
    EXPECT_FALSE(zel_collect_serial_data_for_session_v2(token, &key, samples.data(), samples.size()));
    manager.registerSession(session);
    EXPECT_TRUE(zel_collect_accumulative_data_for_session_v2(token, &values));
    EXPECT_TRUE(zel_collect_serial_data_for_session_v2(token, &key, samples.data(), samples.size()));
    const ReportMap report = heartbeat(*session);
    EXPECT_EQ(report.at("a"), "5");
    EXPECT_EQ(report.at("s_sd"), "1.118034");
}

// ---- collectors ----

TEST(ManagerCollectors, AreFedByKeyWithoutBeingKeptAlive) {
    ZELManager manager;
    auto sums = ZELInfoCollector::create(kSums);
    auto series = ZELInfoCollector::create(kSeries);
    const std::map<std::string, int64_t> values = {{"a", 5}};
    EXPECT_FALSE(manager.registerCollector(1, nullptr));
    EXPECT_TRUE(manager.registerCollector(1, sums));
    EXPECT_TRUE(manager.registerCollector(-2, series));
    EXPECT_FALSE(manager.collectAccumulativeDataByKey(1, &values));
    EXPECT_FALSE(manager.collectAccumulativeDataByKey(1, nullptr));
    EXPECT_FALSE(manager.collectSerialDataByKey(-2, "s", {2.0F}));
    EXPECT_FALSE(manager.collectSerialDataByKey(3, "s", {2.0F}));
    EXPECT_FALSE(manager.aliasCollector(4, 3));  // asking for key 3 has not made one
    EXPECT_EQ(sums->collect(), (ReportMap{{"a", "5"}}));
    EXPECT_EQ(series->collect().at("s_cnt"), "1");
    EXPECT_EQ(sums.use_count(), 1);
    sums.reset();
    EXPECT_FALSE(manager.collectAccumulativeDataByKey(1, &values));
}

TEST(ManagerCollectors, GoByTheNewestRegistrationAndByAliases) {
    ZELManager manager;
    const auto first = ZELInfoCollector::create(kSums);
    const auto second = ZELInfoCollector::create(kSums);
    const std::map<std::string, int64_t> values = {{"a", 5}};
    manager.registerCollector(1, first);
    EXPECT_TRUE(manager.aliasCollector(2, 1));
    manager.registerCollector(1, second);
    manager.collectAccumulativeDataByKey(1, &values);
    EXPECT_EQ(first->collect(), ReportMap());
    EXPECT_EQ(second->collect(), (ReportMap{{"a", "5"}}));
    manager.collectAccumulativeDataByKey(2, &values);
    EXPECT_EQ(first->collect(), (ReportMap{{"a", "5"}}));
    EXPECT_TRUE(manager.aliasCollector(2, 1));
    manager.collectAccumulativeDataByKey(2, &values);
    EXPECT_EQ(second->collect(), (ReportMap{{"a", "5"}}));
}

TEST(ManagerCollectors, LeaveTheRegistryOnlyWhenPurged) {
    ZELManager manager;
    auto expired = ZELInfoCollector::create(kSums);
    const auto alive = ZELInfoCollector::create(kSums);
    manager.registerCollector(1, expired);
    manager.registerCollector(2, alive);
    expired.reset();
    EXPECT_TRUE(manager.aliasCollector(3, 1));
    manager.purgeCollectors();
    EXPECT_FALSE(manager.aliasCollector(4, 1));
    EXPECT_FALSE(manager.aliasCollector(4, 3));
    EXPECT_TRUE(manager.aliasCollector(4, 2));
}

TEST(ManagerCollectors, OfASessionShowInItsHeartbeatUnderTheSessionsOwnKeys) {
    ZELManager& manager = ZELManager::getInstance();
    const auto session = makeSession(manager);
    session->setCollectorsDisabled(true);
    EXPECT_EQ(session->addCollector("none"), nullptr);
    ASSERT_TRUE(manager.registerCollector(1, session->addCollector(kSums)));
    const std::map<std::string, int64_t> values = {{"mine", 3}, {"zel_vframes", 99}};
    manager.collectAccumulativeDataByKey(1, &values);
    const ReportMap report = heartbeat(*session);
    EXPECT_EQ(report.at("mine"), "3");
    EXPECT_EQ(report.at("zel_vframes"), "0");
    EXPECT_FALSE(heartbeat(*session).contains("mine"));

    EXPECT_TRUE(manager.aliasCollector(2, 1));
    session->stop();  // drops its collectors and has the manager purge them
    EXPECT_FALSE(manager.aliasCollector(2, 1));
}

TEST(Manager, KeepsItsRegistriesWholeUnderManyThreads) {
    ZELManager& manager = ZELManager::getInstance();
    const auto lasting = makeSession(manager);
    manager.registerSession(lasting);
    const std::map<std::string, int64_t> values = {{"a", 1}};
    constexpr int kEach = 200;
    std::vector<std::thread> threads;
    for (int t = 0; t < 3; ++t) {
        threads.emplace_back([&, t] {
            for (int i = 0; i < kEach; ++i) {
                const auto session = makeSession(manager);
                manager.registerSession(session);
                manager.registerCollector(t, session->addCollector(kSums));
                EXPECT_TRUE(
                    manager.collectAccumulativeDataForSession(lasting->getSessionId(), kSums, &values));
                manager.collectAccumulativeDataByKey((t + 1) % 3, &values);
                session->stop();
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(heartbeat(*lasting).at("a"), std::to_string(3 * kEach));
}

}  // namespace
