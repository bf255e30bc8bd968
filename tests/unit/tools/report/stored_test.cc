#include <chrono>
#include <cstddef>
#include <filesystem>
#include <stdexcept>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "cli/standard_streams.h"
#include "report/report_json.h"
#include "report/stored/store.h"
#include "support/clip.h"

namespace {

using namespace zel_monitor;
namespace fs = std::filesystem;

/// With something in every field.
InputReport fullReport() {
    InputReport report;
    report.facts = {.input = "/clips/a \"b\".mp4",
                    .container = "mov",
                    .duration = 12.345678,
                    .duration_estimated = true,
                    .video = VideoFacts{"h264", "yuv420p", 1920, 1080, 29.97002997, false},
                    .audio = AudioFacts{"aac", 48000, 6}};
    report.counts = {.video_frames = 123, .audio_frames = 456, .damaged = 7};
    report.length_s = 12.0000004;
    report.events = {{ZEL::EventKind::kBlack, {1.0 / 3, 2.0}, 0.75, true, ZEL::Evidence{0.98, 0.95}},
                     {ZEL::EventKind::kShort, {12.0, 12.345}, 1.0, false, {}}};
    report.damage = {{"lost", "video", {0.5, 0.6}, 3, 0.25}, {"broken", "", {0.0, 0.0}, 1, 1.0}};
    report.loudness = Loudness{-23.0, {}, -1.5};
    report.problem = "it is cut off";
    report.may_pass_later = true;
    report.survey = Survey{.key_frames = 6, .longest_distance_s = 2.0, .rules = {}, .deserves_scan = true};
    report.survey->rules[0] = {0.5, 0.1};
    return report;
}

StoredReport storedOf(const InputReport& report, const ScanSettings& settings) {
    return {.path = report.facts.input,
            .state = {.bytes = 1000, .modified_ns = 1'700'000'000'123'456'789, .sha256 = "00ff"},
            .tool_version = "1.2.3",
            .settings = settingsJson(settings),
            .made = {"2026-01-01T00:00:00.000Z", 1.5, "host"},
            .attempts = 2,
            .report = report};
}

ScanSettings someSettings() {
    ScanSettings settings;
    settings.policy[indexOf(ZEL::EventKind::kBlack)] = 1.25;
    return settings;
}

TEST(StoredReport, IsReadAsItWasWritten) {
    const ScanSettings settings = someSettings();
    for (const InputReport& report : {fullReport(), InputReport{}}) {
        const std::string text = storedText(storedOf(report, settings), settings);
        const auto stored = storedReportFrom(text);
        ASSERT_TRUE(stored);
        EXPECT_EQ(storedText(*stored, settings), text);
        EXPECT_EQ(stored->settings, settingsJson(settings));
        EXPECT_EQ(stored->state.modified_ns, 1'700'000'000'123'456'789);
    }
}

TEST(StoredReport, AnythingElseIsNone) {
    const ScanSettings settings = someSettings();
    const std::string text = storedText(storedOf(fullReport(), settings), settings);
    for (size_t length = 0; length + 1 < text.size(); length += 13) {
        EXPECT_FALSE(storedReportFrom(text.substr(0, length))) << length;
    }
    EXPECT_FALSE(storedReportFrom("[1]"));
    for (const auto& [from, to] :
         {std::pair{"\"version\":1", "\"version\":2"}, {"\"kind\":\"black\"", "\"kind\":\"blue\""}}) {
        std::string changed = text;
        changed.replace(changed.find(from), std::string(from).size(), to);
        EXPECT_FALSE(storedReportFrom(changed)) << to;
    }
}

TEST(StoredReport, HoldsForSettingsThatLeadToTheSameEvents) {
    const ScanSettings settings = someSettings();
    ScanSettings other = settings;
    const auto does_for = [&](const ScanSettings& stored, const ScanSettings& wanted) {
        return settingsDoFor(settingsJson(stored), settingsJson(wanted));
    };
    other.policy = {};
    EXPECT_TRUE(does_for(settings, other));
    other.survey = true;
    EXPECT_TRUE(does_for(settings, other));
    EXPECT_FALSE(does_for(other, settings));
    other = settings;
    other.rules[0].min_s = 0.75;
    EXPECT_FALSE(does_for(settings, other));
    other = settings;
    other.wanted.fill(true);
    EXPECT_FALSE(does_for(settings, other));
}

TEST(Store, KeepsOneReportForEachInputAndTidiesUpAfterTheKilled) {
    const support::ScratchDir dir;
    const std::string folder = dir.file("deep/store");
    EXPECT_THROW(Store::opened(folder), std::runtime_error);
    const ScanSettings settings;
    const std::string path = fullReport().facts.input;
    const std::string text = storedText(storedOf(fullReport(), settings), settings);
    const Store store = Store::writable(folder);
    store.put(path, text);
    store.put(path, text);
    ASSERT_TRUE(store.find(path));
    EXPECT_FALSE(store.find(path + "x"));
    EXPECT_THAT(store.files(), testing::ElementsAre(store.fileFor(path)));
    EXPECT_TRUE(fs::is_empty(folder + "/unfinished"));

    support::writeFile(folder + "/unfinished/zel-report-killed", {'{'});
    support::writeFile(folder + "/unfinished/zel-report-atwork", {'{'});
    support::writeFile(folder + "/unfinished/theirs", {'x'});
    fs::last_write_time(folder + "/unfinished/zel-report-killed",
                        fs::file_time_type::clock::now() - std::chrono::hours(2));
    fs::last_write_time(folder + "/unfinished/theirs",
                        fs::file_time_type::clock::now() - std::chrono::hours(2));
    Store::writable(folder);
    EXPECT_FALSE(fs::exists(folder + "/unfinished/zel-report-killed"));
    EXPECT_TRUE(fs::exists(folder + "/unfinished/theirs")) << "nothing of ours";
    EXPECT_TRUE(fs::exists(folder + "/unfinished/zel-report-atwork"));
    EXPECT_EQ(store.files().size(), 1U);

    fs::resize_file(store.fileFor(path), text.size() / 2);
    EXPECT_FALSE(store.find(path));
    fs::remove_all(folder + "/unfinished");
    EXPECT_THROW(store.put(path, text), OutputError);
}

TEST(FileState, HashesAreThoseOfTheStandard) {
    EXPECT_EQ(sha256("abc"), "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
    const support::ScratchDir dir;
    support::writeFile(dir.file("abc"), {'a', 'b', 'c'});
    EXPECT_EQ(sha256OfFile(dir.file("abc")), sha256("abc"));
    EXPECT_FALSE(sha256OfFile(dir.file("none")));
    EXPECT_FALSE(stateOf(dir.file(".")).bytes);
    EXPECT_EQ(stateOf(dir.file("abc")).bytes, 3U);
}

}  // namespace
