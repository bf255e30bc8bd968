#ifndef ZEL_TOOLS_SELFTEST_SELFTEST_H_
#define ZEL_TOOLS_SELFTEST_SELFTEST_H_

#include <string>

namespace CLI {
class App;
}

namespace zel_monitor::selftest {

struct SelftestOptions {
    std::string only;  ///< cases whose name contains this; empty: all
    std::string keep;  ///< where the clips stay; empty: they are removed
    bool quiet = false;
};

/// Adds the options to a command; `options` outlives the parsing.
void addSelftestOptions(CLI::App& command, SelftestOptions& options);

/// Makes the corpus, scans it, prints how right the detectors are and gives the program's exit status.
int runSelftest(const SelftestOptions& options);

}  // namespace zel_monitor::selftest

#endif  // ZEL_TOOLS_SELFTEST_SELFTEST_H_
