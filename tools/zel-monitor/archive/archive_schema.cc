#include <string>
#include <vector>

#include "archive/archive_json.h"
#include "cli/exit_status.h"
#include "report/schema_parts.h"

namespace zel_monitor {
namespace {

using namespace schema_parts;  // NOLINT(google-build-using-namespace): the words that schemas are made of

/// Only the kinds of which something was found.
Json foundKinds(const Json& found) {
    Json kinds = perKind(found);
    kinds.erase("required");
    return kinds;
}

/// What is said of several inputs, after `first`.
Json summarySchema(std::vector<Property> first) {
    const auto count = [](const char* description) { return described(ref("count"), description); };
    first.insert(first.end(), {{"inputs", ref("count")},
                               {"missing", count("Of which nothing is stored.")},
                               {"incomplete", count("Not analysed to their end, and not missing.")},
                               {"passed", ref("count")},
                               {"failed", ref("count")},
                               {"surveyed", count("Of their video, key frames alone were judged.")},
                               {"deserve_scan", count("Surveyed, and a full scan would tell more.")},
                               {"analysed_s", ref("length")},
                               {"fault_s", described(ref("length"), "Sum over all kinds of faults.")},
                               {"kinds", ref("found_kinds")}});
    return object(first);
}

Json inputSchema() {
    return object(
        {{"input", type("string")},
         {"missing", described(type("boolean"), "Nothing is stored of it.")},
         {"complete", described(type("boolean"), "It was analysed to its end.")},
         {"problem", described(orNull("string"), "Why not.")},
         {"verdict", described(anyOf({nullptr, "pass", "fail", "incomplete"}), "Null without a policy.")},
         {"violations", arrayOf(type("string"))},
         {"survey", described(type("boolean"), "Of the video, key frames alone were judged.")},
         {"deserves_scan", described(type("boolean"), "A full scan would tell more.")},
         {"settings", described(orNull(ref("count")), "Which of the settings it was scanned with, from 0.")},
         {"analysed_s", ref("length")},
         {"fault_s", ref("length")},
         {"kinds", ref("found_kinds_in_input")}});
}

}  // namespace

Json archiveSchema() {
    Json schema = {
        {"$schema", "https://json-schema.org/draft/2020-12/schema"},
        {"title", "Report of zel-monitor report --json"},
        {"description",
         "What is stored of many inputs: the worst first, which are those that were not analysed to "
         "their end, and then those that are faulty for the longest time."}};
    const Json used = object({{"tool_version", type("string")},
                              {"inputs", described(ref("count"), "That were scanned with these.")},
                              {"settings", described(type("object"), "As in the report of scan --json.")}});
    schema.update(
        object({{"format", {{"const", "zel-archive-report"}}},
                {"version", described({{"const", kArchiveVersion}},
                                      "Grows when a reader of this version would go wrong.")},
                {"tool", object({{"name", {{"const", "zel-monitor"}}}, {"version", type("string")}})},
                {"settings", arrayOf(used)},
                {"exit_status",
                 described(anyOf({kExitDone, kExitViolated, kExitFailed}),
                           "0 clean, 1 an input violates the policy, 3 an input is missing or was not "
                           "analysed to its end.")},
                {"totals", summarySchema({})},
                {"folders", arrayOf(summarySchema({{"folder", type("string")}}))},
                {"inputs", arrayOf(ref("input"))}}));
    schema["$defs"] = {
        {"count", {{"type", "integer"}, {"minimum", 0}}},
        {"length", {{"type", "number"}, {"minimum", 0}}},
        {"found", object({{"inputs", ref("count")},
                          {"events", ref("count")},
                          {"total_s", ref("length")},
                          {"longest_s", ref("length")}})},
        {"found_kinds", described(foundKinds(ref("found")), "Those of which something was found.")},
        {"found_in_input", object({{"events", ref("count")},
                                   {"total_s", ref("length")},
                                   {"longest_s", ref("length")},
                                   {"first_at_s", type("number")}})},
        {"found_kinds_in_input", foundKinds(ref("found_in_input"))},
        {"input", inputSchema()}};
    return schema;
}

}  // namespace zel_monitor
