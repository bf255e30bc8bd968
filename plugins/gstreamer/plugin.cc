#include <zel/base/log.h>

#include <cstddef>
#include <gst/gst.h>

#include "debug.h"
#include "elements.h"

GST_DEBUG_CATEGORY(zel_debug);

#define PACKAGE "zel"

namespace {

gboolean init(GstPlugin* plugin) {
    GST_DEBUG_CATEGORY_INIT(zel_debug, "zel", 0, "quality of video and audio");
    // Standard output is the application's.
    ZEL::setLogSink([](const char* text, size_t bytes,
                       void*) { GST_CAT_LOG(zel_debug, "%.*s", static_cast<int>(bytes), text); },
                    nullptr);
    return gst_element_register(plugin, "zelvideo", GST_RANK_NONE, zel_video_get_type()) != FALSE &&
                   gst_element_register(plugin, "zelaudio", GST_RANK_NONE, zel_audio_get_type()) != FALSE
               ? TRUE
               : FALSE;
}

}  // namespace

GST_PLUGIN_DEFINE(GST_VERSION_MAJOR, GST_VERSION_MINOR, zel, "Quality of video and audio streams", init,
                  ZEL_VERSION, "MIT/X11", "libzel", "libzel")
