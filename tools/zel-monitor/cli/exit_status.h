#ifndef ZEL_TOOLS_CLI_EXIT_STATUS_H_
#define ZEL_TOOLS_CLI_EXIT_STATUS_H_

namespace zel_monitor {

// The exit statuses of every command; scripts rely on them.
inline constexpr int kExitDone = 0;      ///< done to the end, or a stream without one was left by the user
inline constexpr int kExitViolated = 1;  ///< an input violates the policy
inline constexpr int kExitUsage = 2;     ///< wrong usage
inline constexpr int kExitFailed = 3;    ///< an input was not analysed to its end, or an output took no more
/// Nothing is wrong but what may be gone when the same is done again. The number is that of EX_TEMPFAIL,
/// which job engines know.
inline constexpr int kExitTryAgain = 75;

/// Whether what failed with this error number of the system may succeed when it is tried again: of devices,
/// networks and shared file systems, and for lack of room; not for what an input is.
bool mayPassLater(int error);

}  // namespace zel_monitor

#endif  // ZEL_TOOLS_CLI_EXIT_STATUS_H_
