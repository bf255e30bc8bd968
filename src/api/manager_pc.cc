#include "api/manager_pc.h"

#include <zel/monitor/manager.h>

#include <utility>

#include "base/log_format.h"

ZELManagerPc& ZELManagerPc::getInstance() {
    static auto* const instance = new ZELManagerPc;
    return *instance;
}

ZELManagerPc::~ZELManagerPc() {
    ZEL::zel_log("destruct ZELManagerPc\n");
}

std::shared_ptr<ZELSessionPc> ZELManagerPc::createSession() {
    auto session = std::make_shared<ZELSessionPc>(host_);
    session->attachCore(std::make_shared<ZEL::ZELSession>(ZEL::ZELManager::getInstance().getMessageCenter()));
    return session;
}

void ZELManagerPc::release_session(std::shared_ptr<ZELSessionPc> session) {
    if (session != nullptr) {
        ZEL_LOG_PC("ZELManagerPc::release_session", 100, "do release something\n");
    }
    session.reset();
}

void ZELManagerPc::stopSession(const std::shared_ptr<ZELSessionPc>& session) {
    if (session == nullptr) {
        return;
    }
    const ZEL::Turn::Held turn(session->turn());
    session->stop();
    ReportMap report = session->endReport();
    report.insert(host_.common_fields.begin(), host_.common_fields.end());
    host_.upload.upload(std::move(report));
}
