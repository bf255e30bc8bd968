#ifndef ZEL_SRC_PC_TELEMETRY_UPLOAD_H_
#define ZEL_SRC_PC_TELEMETRY_UPLOAD_H_

#include <zel/zel.h>

#include <atomic>

/// Sends a report to the host's analytics as one event. Any thread.
class TlmAdapterPc {
  public:
    /// Replaces the callback; it holds from the next report on.
    void setCallback(TlmUploadCallback callback);

    /// Without a callback the report is dropped.
    void upload(ReportMap report) const;

  private:
    std::atomic<TlmUploadCallback> callback_{nullptr};
};

#endif  // ZEL_SRC_PC_TELEMETRY_UPLOAD_H_
