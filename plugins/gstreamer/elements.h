#ifndef ZEL_PLUGINS_GSTREAMER_ELEMENTS_H_
#define ZEL_PLUGINS_GSTREAMER_ELEMENTS_H_

#include <glib-object.h>

// The types of the two elements. Both let every buffer through as it is.

GType zel_video_get_type();
GType zel_audio_get_type();

#endif  // ZEL_PLUGINS_GSTREAMER_ELEMENTS_H_
