#ifndef ZEL_TOOLS_ARCHIVE_INDEX_PAGE_H_
#define ZEL_TOOLS_ARCHIVE_INDEX_PAGE_H_

#include <cstddef>
#include <map>
#include <string>
#include <string_view>

#include "archive/archive.h"

namespace zel_monitor {

/// The index as it is in the source, with a mark where its data goes.
std::string_view indexTemplate();
inline constexpr std::string_view kArchiveDataMark = "@ZEL_ARCHIVE_DATA@";

/// The self-contained index of an archive in the folder `store`. `pages` tells, by the inputs' numbers, the
/// addresses of the pages that there are.
std::string indexHtml(const Archive& archive, const std::string& store,
                      const std::map<size_t, std::string>& pages);

/// The page of one input, without its curves: as of `scan --html`. Only if hasPage().
std::string filePageHtml(const Archive& archive, const ArchivedInput& input);

}  // namespace zel_monitor

#endif  // ZEL_TOOLS_ARCHIVE_INDEX_PAGE_H_
