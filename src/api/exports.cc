#include <zel/monitor/manager.h>
#include <zel/zel.h>

#include <memory>
#include <utility>
#include <vector>

#include "api/handle.h"
#include "api/manager_pc.h"
#include "base/log_format.h"

namespace {

/// A reference of the call's own, since a callback may release the handle meanwhile; null in a child of the
/// handle's process, where a lock may be held by a thread that is not there.
std::shared_ptr<ZELSessionPc> sessionOf(const ZELHandle* handle) {
    return handle->session->isInItsProcess() ? handle->session : nullptr;
}

/// As above, and null with a log line that has the export's name and `line` if there is no handle.
std::shared_ptr<ZELSessionPc> sessionOf(const ZELHandle* handle, const char* function, int line) {
    if (handle == nullptr) {
        ZEL_LOG_PC(function, line, "ERRO: please init handle\n");
        return nullptr;
    }
    return sessionOf(handle);
}

/// Exports do not call each other: another library of the process may have a function of the same name.
ZELHandle* newHandle() {
    return new ZELHandle{ZELManagerPc::getInstance().createSession()};
}

}  // namespace

ZELHandle* init_handle(void) {
    return newHandle();
}

ZELHandle* init_handle_with_interval(uint32_t interval) {
    ZELHandle* const handle = newHandle();
    handle->session->setInterval(static_cast<int32_t>(interval));
    return handle;
}

void release_handle(ZELHandle* handle) {
    if (handle == nullptr) {
        return;
    }
    if (auto session = sessionOf(handle)) {
        session->retire();
        delete handle;
        ZELManagerPc::getInstance().release_session(std::move(session));
    }
}

void set_heart_beat_callback(ZELHandle* handle, HeartBeatCallback callback) {
    if (const auto session = sessionOf(handle, "set_heart_beat_callback", 49)) {
        session->setHeartBeatCallback(callback);
    }
}

void set_heart_beat_detail_callback(ZELHandle* handle, HeartBeatDetailCallback callback) {
    if (const auto session = sessionOf(handle, "set_heart_beat_detail_callback", 59)) {
        session->setHeartBeatDetailCallback(callback);
    }
}

void set_heart_beat_timer_switch_listener(ZELHandle* handle, HeartBeatTimerSwitchListener listener) {
    if (const auto session = sessionOf(handle)) {
        session->setTimerSwitchListener(listener);
    }
}

void set_cobalt_bool_callback(CobaltBoolCallback callback) {
    ZELManagerPc::getInstance().host().switches.registerBool(callback);
}

void set_cobalt_int_callback(CobaltIntCallback callback) {
    ZELManagerPc::getInstance().host().switches.registerInt(callback);
}

void set_user_state_dir(ZELHandle* handle, ReportMap user_state) {
    if (const auto session = sessionOf(handle, "set_user_state_dir", 69)) {
        session->setUserState(std::move(user_state));
    }
}

void set_tlm_upload_callback(TlmUploadCallback callback) {
    ZELManagerPc::getInstance().host().upload.setCallback(callback);
}

bool start_zel_session(ZELHandle* handle) {
    const auto session = sessionOf(handle, "start_zel_session", 78);
    return session != nullptr && session->start();
}

void stop_zel_session(ZELHandle* handle) {
    if (const auto session = sessionOf(handle, "stop_zel_session", 121)) {
        ZELManagerPc::getInstance().stopSession(session);
    }
}

bool feed_audio_frame(ZELHandle* handle, const uint8_t* data, uint64_t samples, int32_t bytes_per_sample,
                      int32_t sample_rate, int32_t channels, int64_t index) {
    const auto session = sessionOf(handle, "feed_audio_frame", 111);
    return session != nullptr &&
           session->feed_audio_frame({data, samples, bytes_per_sample, sample_rate, channels, index});
}

bool feed_video_frame(ZELHandle* handle, const uint8_t* data, int32_t width, int32_t height, int64_t index) {
    const auto session = sessionOf(handle, "feed_video_frame", 93);
    return session != nullptr && session->feed_video_frame({data, width, height, index});
}

uint64_t get_session_id(ZELHandle* handle) {
    const std::shared_ptr<ZELSessionPc> session = handle->session;
    return session->get_session_id();  // needs no lock, so that a forked child may ask as well
}

bool zel_collect_accumulative_data_for_session_v2(uint64_t session_id,
                                                  const std::map<std::string, int64_t>* values) {
    return ZEL::ZELManager::getInstance().collectAccumulativeDataForSession(
        static_cast<int64_t>(session_id), "ZELAccumulativeInfoCollector", values);
}

bool zel_collect_serial_data_for_session_v2(uint64_t session_id, const std::string* key, const float* samples,
                                            uint64_t count) {
    if (key == nullptr || (samples == nullptr && count != 0)) {
        return false;
    }
    return ZEL::ZELManager::getInstance().collectSerialDataForSession(
        static_cast<int64_t>(session_id), "ZELSerialStatisticsInfoCollector", *key,
        std::vector<float>(samples, samples + count));
}
