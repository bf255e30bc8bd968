#include "settings.h"

#include <gst/gst.h>
#include <string>
#include <utility>

namespace ZELGst {
namespace {

/// The ids of properties: one of its own, and then three for each kind.
enum Field : guint { kTold, kMin, kGap, kFields };
constexpr guint kHeartbeat = 1;
constexpr guint kFirstOfKinds = 2;

constexpr auto kFlags = static_cast<GParamFlags>(G_PARAM_READWRITE | GST_PARAM_MUTABLE_PLAYING);

/// A rule that lasts longer than anything would never be seen.
constexpr double kLongestS = 86400.0;

void installSeconds(GObjectClass* object_class, guint id, const std::string& name, const std::string& blurb,
                    double standard) {
    g_object_class_install_property(
        object_class, id,
        g_param_spec_double(name.c_str(), name.c_str(), blurb.c_str(), 0.0, kLongestS, standard, kFlags));
}

}  // namespace

std::vector<ZEL::EventKind> kindsOf(ZEL::StreamTrack track) {
    const auto own = track == ZEL::StreamTrack::kVideo ? ZEL::EventSource::kVideo : ZEL::EventSource::kAudio;
    std::vector<ZEL::EventKind> kinds;
    for (const ZEL::EventKindInfo& info : ZEL::eventKinds()) {
        const bool from_timestamps = info.source == ZEL::EventSource::kTimestamps;
        // A pipeline declares no end that a stream could miss.
        if (info.source == own || (from_timestamps && info.kind != ZEL::EventKind::kShort)) {
            kinds.push_back(info.kind);
        }
    }
    return kinds;
}

std::string namesOf(const std::vector<ZEL::EventKind>& kinds) {
    std::string names;
    for (const ZEL::EventKind kind : kinds) {
        names.append(names.empty() ? "" : ", ").append(ZEL::infoOf(kind).name);
    }
    return names;
}

Properties::Properties(ZEL::StreamTrack track) : kinds_(kindsOf(track)) {
    for (const ZEL::EventKind kind : kinds_) {
        settings_.told[ZEL::indexOf(kind)] = ZEL::infoOf(kind).tier == ZEL::EventTier::kFault;
    }
}

void Properties::install(GObjectClass* object_class, ZEL::StreamTrack track) {
    g_object_class_install_property(object_class, kHeartbeat,
                                    g_param_spec_uint("heartbeat-interval", "Heartbeat interval",
                                                      "Seconds of running time between heartbeats (0: none)",
                                                      0, G_MAXUINT, Settings().heartbeat_s, kFlags));
    guint id = kFirstOfKinds;
    for (const ZEL::EventKind kind : kindsOf(track)) {
        const ZEL::EventKindInfo& info = ZEL::infoOf(kind);
        const std::string name(info.name);
        const std::string blurb = "Tell of it: " + std::string(info.meaning);
        g_object_class_install_property(
            object_class, id + kTold,
            g_param_spec_boolean(name.c_str(), name.c_str(), blurb.c_str(),
                                 info.tier == ZEL::EventTier::kFault ? TRUE : FALSE, kFlags));
        installSeconds(object_class, id + kMin, name + "-min", "Seconds that the shortest event lasts",
                       info.rule.min_s);
        installSeconds(object_class, id + kGap, name + "-gap", "Seconds without the fault that end an event",
                       info.rule.gap_s);
        id += kFields;
    }
}

bool Properties::set(guint id, const GValue* value) {
    const std::lock_guard lock(mutex_);
    changed_ = true;
    if (id == kHeartbeat) {
        settings_.heartbeat_s = g_value_get_uint(value);
        return true;
    }
    if (id < kFirstOfKinds || (id - kFirstOfKinds) / kFields >= kinds_.size()) {
        return false;
    }
    const size_t kind = ZEL::indexOf(kinds_[(id - kFirstOfKinds) / kFields]);
    const guint field = (id - kFirstOfKinds) % kFields;
    if (field == kTold) {
        settings_.told[kind] = g_value_get_boolean(value) != FALSE;
    } else {
        (field == kMin ? settings_.rules[kind].min_s : settings_.rules[kind].gap_s) =
            g_value_get_double(value);
    }
    return true;
}

bool Properties::get(guint id, GValue* value) const {
    const std::lock_guard lock(mutex_);
    if (id == kHeartbeat) {
        g_value_set_uint(value, settings_.heartbeat_s);
        return true;
    }
    if (id < kFirstOfKinds || (id - kFirstOfKinds) / kFields >= kinds_.size()) {
        return false;
    }
    const size_t kind = ZEL::indexOf(kinds_[(id - kFirstOfKinds) / kFields]);
    const guint field = (id - kFirstOfKinds) % kFields;
    if (field == kTold) {
        g_value_set_boolean(value, settings_.told[kind] ? TRUE : FALSE);
    } else {
        g_value_set_double(value, field == kMin ? settings_.rules[kind].min_s : settings_.rules[kind].gap_s);
    }
    return true;
}

bool Properties::takeChanged(Settings& settings) {
    const std::lock_guard lock(mutex_);
    if (changed_) {
        settings = settings_;
    }
    return std::exchange(changed_, false);
}

}  // namespace ZELGst
