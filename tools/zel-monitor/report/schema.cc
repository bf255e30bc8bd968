#include "report/schema.h"

#include <zel/events/kinds.h>

#include <string>
#include <utility>
#include <vector>

#include "cli/exit_status.h"
#include "report/report_json.h"
#include "report/schema_parts.h"

namespace zel_monitor {
namespace {

using namespace schema_parts;  // NOLINT(google-build-using-namespace): the words that schemas are made of

Json kindSchema() {
    Json names = Json::array();
    for (const ZEL::EventKindInfo& info : ZEL::eventKinds()) {
        names.push_back(info.name);
    }
    return {{"enum", std::move(names)}};
}

Json settingsSchema() {
    std::vector<Property> detectors;
    for (const char* const name :
         {"black_screen_ratio", "green_screen_ratio", "block_param", "staticframe_param", "mute_level",
          "low_voice_level", "high_voice_level", "novoice_scale", "silence_period_s", "voice_period_s"}) {
        detectors.push_back({name, ref("number")});
    }
    const Json policy = {
        {"type", "object"}, {"propertyNames", ref("kind")}, {"additionalProperties", ref("length")}};
    return object({{"survey", described(type("boolean"), "Of the video, key frames alone were judged.")},
                   {"kinds", described(arrayOf(ref("kind")), "Those that were looked for.")},
                   {"rules", perKind(ref("rule"))},
                   {"fail_on", described(policy, "From which length an event of a kind is a violation.")},
                   {"detectors", described(object(detectors), "What the detectors were given.")}});
}

/// A line of a survey says so.
Json markedLine(Json schema) {
    schema["properties"]["survey"] = described({{"const", true}}, "Only key frames were judged.");
    return schema;
}

/// What is said of every input, before `rest`.
Json statusSchema(std::vector<Property> properties, const std::vector<Property>& rest = {}) {
    properties.insert(
        properties.end(),
        {{"complete", described(type("boolean"), "It was analysed to its end.")},
         {"problem", described(orNull("string"), "Why not.")},
         {"verdict", described(anyOf({nullptr, "pass", "fail", "incomplete"}), "Null without --fail-on.")}});
    properties.insert(properties.end(), rest.begin(), rest.end());
    Json schema = object(properties);
    const auto holds = [](Json problem, Json verdict) -> Json {
        return {{"properties", {{"problem", std::move(problem)}, {"verdict", std::move(verdict)}}}};
    };
    schema["if"] = {{"properties", {{"complete", {{"const", true}}}}}};
    schema["then"] = holds(type("null"), anyOf({nullptr, "pass", "fail"}));
    schema["else"] = holds(type("string"), anyOf({nullptr, "incomplete"}));
    return schema;
}

Json eventSchema(bool as_line) {
    std::vector<Property> properties;
    if (as_line) {
        properties.push_back({"input", type("string")});
    }
    properties.insert(
        properties.end(),
        {{"kind", ref("kind")},
         {"start_s", ref("number")},
         {"end_s", ref("number")},
         {"duration_s", ref("number")},
         {"share", described(ref("share"), "Of the event, in which the fault was measured.")},
         {"open_at_end", described(type("boolean"), "The fault was still there when the stream ended.")},
         {"evidence", orNull(ref("evidence"))}});
    return object(properties);
}

Json streamSchema() {
    return object(
        {{"container", described(orNull("string"), "FFmpeg's name.")},
         {"declared_duration_s", ref("number")},
         {"declared_duration_is_estimate", type("boolean")},
         {"analysed_duration_s", ref("number")},
         {"damaged",
          described(ref("count"), "Packets, frames and stretches of bytes that are damaged, in all.")},
         {"damage", described(arrayOf(ref("damage")), "The first stretches with something damaged in them.")},
         {"video", orNull(ref("video"))},
         {"audio", orNull(ref("audio"))}});
}

Json definitions() {
    return {
        {"number", orNull("number")},
        {"length", {{"type", "number"}, {"minimum", 0}}},
        {"share", {{"type", Json::array({"number", "null"})}, {"minimum", 0}, {"maximum", 1}}},
        {"count", {{"type", "integer"}, {"minimum", 0}}},
        {"kind", kindSchema()},
        {"rule", object({{"min_s", described(ref("length"), "Shortest stretch that is an event.")},
                         {"gap_s", described(ref("length"), "Time without the fault that ends an event.")}})},
        {"totals", object({{"events", ref("count")},
                           {"total_s", ref("number")},
                           {"share", described(ref("share"), "Of the stream.")},
                           {"longest_s", ref("number")},
                           {"first_at_s", ref("number")}})},
        {"settings", settingsSchema()},
        {"evidence",
         described(object({{"value", ref("number")},
                           {"limit", described(ref("number"), "That the value was held against.")},
                           {"unit", type("string")}}),
                   "What was measured: the mean over the time in which the fault was there.")},
        {"loudness",
         described(object({{"integrated_lufs", ref("number")},
                           {"short_term_max_lufs", described(ref("number"), "The loudest three seconds.")},
                           {"true_peak_dbtp", ref("number")}}),
                   "By EBU R 128; null for what is silent, or too short to be measured.")},
        {"event", eventSchema(false)},
        {"event_line", described(markedLine(eventSchema(true)), "A line of --jsonl, for each event.")},
        {"status_line",
         described(markedLine(statusSchema({{"input", type("string")}, {"kind", {{"const", "status"}}}})),
                   "A line of --jsonl, for each input.")},
        {"video", object({{"codec", type("string")},
                          {"pixel_format", described(type("string"), "As decoded.")},
                          {"width", ref("count")},
                          {"height", ref("count")},
                          {"frame_rate", ref("number")},
                          {"frames", ref("count")}})},
        {"audio", object({{"codec", type("string")},
                          {"sample_rate", ref("count")},
                          {"channels", ref("count")},
                          {"frames", ref("count")}})},
        {"damage",
         object({{"what", type("string")},
                 {"track", described(anyOf({nullptr, "video", "audio"}), "Null: either.")},
                 {"start_s", ref("number")},
                 {"end_s", ref("number")},
                 {"count", ref("count")},
                 {"share", described(ref("share"), "Of the frame that is hit worst, or of the input.")}})},
        {"survey",
         object({{"key_frames", ref("count")},
                 {"longest_distance_s", described(ref("number"), "Between two key frames.")},
                 {"rules", described(perKind(ref("rule")), "As they were fitted to that distance.")},
                 {"deserves_scan", described(type("boolean"), "A full scan would tell more.")}})},
        {"stream", streamSchema()},
        {"input",
         statusSchema({{"input", type("string")}},
                      {{"may_pass_later",
                        described(type("boolean"), "The problem may be gone when it is tried again.")},
                       {"violations", arrayOf(type("string"))},
                       {"survey", described(orNull(ref("survey")), "Null for a full scan.")},
                       {"stream", ref("stream")},
                       {"loudness", described(orNull(ref("loudness")), "Null without sound.")},
                       {"totals", described(perKind(orNull(ref("totals"))),
                                            "Null for a kind that was not looked for.")},
                       {"events", arrayOf(ref("event"))}})},
    };
}

}  // namespace

Json reportSchema() {
    Json inputs = described(arrayOf(ref("input")), "None where none fell to this --shard.");
    Json schema = {
        {"$schema", "https://json-schema.org/draft/2020-12/schema"},
        {"title", "Report of zel-monitor scan --json"},
        {"description",
         "Times are seconds of stream time from the first timestamp of the stream. Shares are 0 to 1. "
         "Numbers are finite, or null where there is none."}};
    schema.update(object(
        {{"format", {{"const", "zel-scan-report"}}},
         {"version",
          described({{"const", kReportVersion}}, "Grows when a reader of this version would go wrong.")},
         {"tool", object({{"name", {{"const", "zel-monitor"}}},
                          {"version", {{"type", "string"}, {"pattern", "^[0-9]+\\.[0-9]+\\.[0-9]+"}}}})},
         {"settings", ref("settings")},
         {"exit_status",
          described(anyOf({kExitDone, kExitViolated, kExitFailed, kExitTryAgain}),
                    "0 clean, 1 an input violates fail_on, 3 an input could not be analysed to its end, or "
                    "another output not be written, 75 the same for reasons that may be gone later.")},
         {"inputs", std::move(inputs)}}));
    schema["$defs"] = definitions();
    return schema;
}

}  // namespace zel_monitor
