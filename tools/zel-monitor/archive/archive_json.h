#ifndef ZEL_TOOLS_ARCHIVE_ARCHIVE_JSON_H_
#define ZEL_TOOLS_ARCHIVE_ARCHIVE_JSON_H_

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "archive/archive.h"

namespace zel_monitor {

/// Grows when a reader of the report would go wrong.
inline constexpr int kArchiveVersion = 1;

/// The whole, as the schema describes it.
nlohmann::ordered_json archiveJson(const Archive& archive);

/// The JSON Schema of that.
nlohmann::ordered_json archiveSchema();

}  // namespace zel_monitor

#endif  // ZEL_TOOLS_ARCHIVE_ARCHIVE_JSON_H_
