#ifndef ZEL_TOOLS_CLI_FILE_LIST_H_
#define ZEL_TOOLS_CLI_FILE_LIST_H_

#include <string>
#include <string_view>
#include <vector>

namespace zel_monitor {

/// Where the names of many files come from.
struct FileList {
    std::vector<std::string> names;  ///< of the command line; a folder stands for the media files in it
    std::string from;             ///< a file with more of them, one per line, "-": standard input; or empty
    bool null_separated = false;  ///< in that file a zero byte ends each, as `find -print0` has it
};

/// Whether a file of that name is taken for media when a folder is walked.
bool namesMediaFile(std::string_view name);

/// All the names, in their order, folders replaced by the media files in and below them by the bytes of their
/// names: the same on every machine. Hidden files are left out, links to folders are not followed. A folder
/// that cannot be read, and one without media files, stands for itself. Nothing is looked at that is named
/// like media. Throws std::runtime_error if the list cannot be read.
std::vector<std::string> namesIn(const FileList& list);

/// By what a file is known wherever it is named: made absolute, without following links and without "." and
/// double slashes. ".." stays, because what it leads to depends on links. URLs stay as they are.
std::string absoluteName(const std::string& name);

}  // namespace zel_monitor

#endif  // ZEL_TOOLS_CLI_FILE_LIST_H_
