#ifndef ZEL_SRC_C_REPORT_H_
#define ZEL_SRC_C_REPORT_H_

#include <zel/zel_c.h>

#include <map>
#include <string>

/// What a callback may look at.
struct zelc_report {
    std::map<std::string, std::string> fields;
    mutable std::string json;  ///< made when it is first asked for
};

#endif  // ZEL_SRC_C_REPORT_H_
