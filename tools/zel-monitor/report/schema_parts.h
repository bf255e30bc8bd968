#ifndef ZEL_TOOLS_REPORT_SCHEMA_PARTS_H_
#define ZEL_TOOLS_REPORT_SCHEMA_PARTS_H_

#include <zel/events/kinds.h>

#include <initializer_list>
#include <nlohmann/json.hpp>
#include <string>
#include <utility>
#include <vector>

/// What JSON Schemas are put together from.
namespace zel_monitor::schema_parts {

using Json = nlohmann::ordered_json;

struct Property {
    std::string name;
    Json schema;
};

inline Json described(Json schema, const char* description) {
    schema["description"] = description;
    return schema;
}

inline Json ref(const char* definition) {
    return {{"$ref", std::string("#/$defs/") + definition}};
}

inline Json type(const char* name) {
    return {{"type", name}};
}

inline Json anyOf(const std::vector<Json>& values) {
    return {{"enum", values}};
}

inline Json orNull(const char* name) {
    return {{"type", Json::array({name, "null"})}};
}

inline Json orNull(Json schema) {
    return {{"oneOf", Json::array({type("null"), std::move(schema)})}};
}

inline Json arrayOf(Json items) {
    return {{"type", "array"}, {"items", std::move(items)}};
}

/// An object that has all of these properties and no others.
template <typename Properties = std::initializer_list<Property>>
Json object(const Properties& properties) {
    Json schema = {{"type", "object"},
                   {"properties", Json::object()},
                   {"required", Json::array()},
                   {"additionalProperties", false}};
    for (const Property& property : properties) {
        schema["properties"][property.name] = property.schema;
        schema["required"].push_back(property.name);
    }
    return schema;
}

inline Json perKind(const Json& schema) {
    std::vector<Property> properties;
    for (const ZEL::EventKindInfo& info : ZEL::eventKinds()) {
        properties.push_back({std::string(info.name), schema});
    }
    return object(properties);
}

}  // namespace zel_monitor::schema_parts

#endif  // ZEL_TOOLS_REPORT_SCHEMA_PARTS_H_
