#ifndef ZEL_PLUGINS_GSTREAMER_DEBUG_H_
#define ZEL_PLUGINS_GSTREAMER_DEBUG_H_

#include <gst/gst.h>

/// What the plug-in logs; also the library's own lines, at the level "log".
GST_DEBUG_CATEGORY_EXTERN(zel_debug);

#endif  // ZEL_PLUGINS_GSTREAMER_DEBUG_H_
