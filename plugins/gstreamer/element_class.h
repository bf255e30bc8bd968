#ifndef ZEL_PLUGINS_GSTREAMER_ELEMENT_CLASS_H_
#define ZEL_PLUGINS_GSTREAMER_ELEMENT_CLASS_H_

#include <gst/base/gstbasetransform.h>
#include <gst/gst.h>
#include <string>

#include "track_watch.h"

namespace ZELGst {

/// What the two elements have in common. `Element` begins with its parent's instance, and holds in `watch` a
/// pointer to something with a TrackWatch named `track`, which GObject, that runs no constructors, can keep.
/// `parent_class` is the parent's class.
template <typename Element, gpointer* parent_class>
struct ElementClass {
    static TrackWatch& trackOf(gpointer object) { return static_cast<Element*>(object)->watch->track; }

    static void finalize(GObject* object) {
        delete reinterpret_cast<Element*>(object)->watch;
        G_OBJECT_CLASS(*parent_class)->finalize(object);
    }

    static void setProperty(GObject* object, guint id, const GValue* value, GParamSpec* spec) {
        if (!trackOf(object).properties().set(id, value)) {
            G_OBJECT_WARN_INVALID_PROPERTY_ID(object, id, spec);
        }
    }

    static void getProperty(GObject* object, guint id, GValue* value, GParamSpec* spec) {
        if (!trackOf(object).properties().get(id, value)) {
            G_OBJECT_WARN_INVALID_PROPERTY_ID(object, id, spec);
        }
    }

    /// The end is told before the event goes on, so that who waits for the end has heard everything.
    static gboolean sinkEvent(GstBaseTransform* transform, GstEvent* event) {
        if (GST_EVENT_TYPE(event) == GST_EVENT_EOS || GST_EVENT_TYPE(event) == GST_EVENT_FLUSH_STOP) {
            trackOf(transform).end();
        }
        return GST_BASE_TRANSFORM_CLASS(*parent_class)->sink_event(transform, event);
    }

    static gboolean stop(GstBaseTransform* transform) {
        trackOf(transform).end();
        const auto parent_stop = GST_BASE_TRANSFORM_CLASS(*parent_class)->stop;
        return parent_stop == nullptr || parent_stop(transform);
    }

    static void init(gpointer element_class, ZEL::StreamTrack track, const char* name, const char* classes) {
        auto* const object_class = G_OBJECT_CLASS(element_class);
        object_class->finalize = &finalize;
        object_class->set_property = &setProperty;
        object_class->get_property = &getProperty;
        Properties::install(object_class, track);
        const std::string description =
            "Examines what passes and tells events on the bus: " + namesOf(kindsOf(track));
        gst_element_class_set_metadata(GST_ELEMENT_CLASS(element_class), name, classes, description.c_str(),
                                       "libzel");
        auto* const transform_class = GST_BASE_TRANSFORM_CLASS(element_class);
        transform_class->sink_event = &sinkEvent;
        transform_class->stop = &stop;
        transform_class->transform_ip_on_passthrough = TRUE;
    }

    /// Nothing is ever held back, dropped for being late or left out as silence.
    static void initInstance(Element* element) {
        auto* const transform = GST_BASE_TRANSFORM(element);
        gst_base_transform_set_passthrough(transform, TRUE);
        gst_base_transform_set_qos_enabled(transform, FALSE);
        gst_base_transform_set_gap_aware(transform, TRUE);
    }
};

}  // namespace ZELGst

#endif  // ZEL_PLUGINS_GSTREAMER_ELEMENT_CLASS_H_
