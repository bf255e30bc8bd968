#ifndef ZEL_SRC_PC_REMOTE_SWITCHES_H_
#define ZEL_SRC_PC_REMOTE_SWITCHES_H_

#include <zel/zel.h>

#include <atomic>
#include <cstdint>

namespace ZEL {

/// The host's remote switches, asked afresh at every use. The first registration of each kind wins. Any
/// thread.
class RemoteSwitches {
  public:
    void registerBool(CobaltBoolCallback callback);
    void registerInt(CobaltIntCallback callback);

    /// False while nobody is registered, and if the answer is an exception.
    bool readBool(const char* key) const;
    /// -1 while nobody is registered, and if the answer is an exception.
    int32_t readInt(const char* key) const;

  private:
    std::atomic<CobaltBoolCallback> bool_callback_{nullptr};
    std::atomic<CobaltIntCallback> int_callback_{nullptr};
};

}  // namespace ZEL

#endif  // ZEL_SRC_PC_REMOTE_SWITCHES_H_
