#ifndef ZEL_PLUGINS_GSTREAMER_SETTINGS_H_
#define ZEL_PLUGINS_GSTREAMER_SETTINGS_H_

#include <zel/events/kinds.h>
#include <zel/events/stream_clock.h>

#include <glib-object.h>
#include <mutex>
#include <string>
#include <vector>

namespace ZELGst {

/// What the properties of an element say.
struct Settings {
    ZEL::EventRules rules = ZEL::defaultEventRules();
    ZEL::PerEventKind<bool> told{};
    guint heartbeat_s = 10;
};

/// The kinds that an element can tell of: those of its track and of timestamps, in the order of the table.
std::vector<ZEL::EventKind> kindsOf(ZEL::StreamTrack track);

/// The kinds' names, parted by commas.
std::string namesOf(const std::vector<ZEL::EventKind>& kinds);

/// The properties of an element: for each of its kinds whether it is told, its shortest event and the gap
/// that ends one. The names come from the kinds' table. Any thread.
class Properties {
  public:
    explicit Properties(ZEL::StreamTrack track);

    static void install(GObjectClass* object_class, ZEL::StreamTrack track);

    /// False for an id that `install` did not give.
    bool set(guint id, const GValue* value);
    bool get(guint id, GValue* value) const;

    /// Whether anything has changed since the last call, or never was asked for; `settings` is then what
    /// holds.
    bool takeChanged(Settings& settings);

  private:
    const std::vector<ZEL::EventKind> kinds_;
    mutable std::mutex mutex_;
    Settings settings_;
    bool changed_ = true;
};

}  // namespace ZELGst

#endif  // ZEL_PLUGINS_GSTREAMER_SETTINGS_H_
