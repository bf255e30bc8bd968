#include "pc/telemetry_upload.h"

#include "pc/host_call.h"

namespace {

constexpr const char* kPage = "Page_zel";
constexpr int kEventId = 2101;
constexpr const char* kEventName = "zel_algorithm_heartbeat";

}  // namespace

void TlmAdapterPc::setCallback(TlmUploadCallback callback) {
    callback_ = callback;
}

void TlmAdapterPc::upload(ReportMap report) const {
    if (const TlmUploadCallback send = callback_.load()) {
        ZEL::callHost("upload", [&] { send(kPage, kEventId, kEventName, "", "", &report); });
    }
}
