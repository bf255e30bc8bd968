#include <cstddef>
#include <cstdint>
#include <gst/video/gstvideofilter.h>
#include <optional>
#include <vector>

#include "debug.h"
#include "element_class.h"
#include "elements.h"

#define GST_CAT_DEFAULT zel_debug

namespace {

/// Planes as the library takes them.
class PlaneReader {
  public:
    /// Valid until the next call. Nothing for rows that run from bottom to top. An odd last column or row is
    /// left out.
    std::optional<ZELAlgo::ZELVideoPlanes> read(const GstVideoFrame& frame) {
        ZELAlgo::ZELVideoPlanes planes{};
        planes.width = static_cast<uint32_t>(GST_VIDEO_FRAME_WIDTH(&frame)) & ~1U;
        planes.height = static_cast<uint32_t>(GST_VIDEO_FRAME_HEIGHT(&frame)) & ~1U;
        for (guint part = 0; part < 3; ++part) {  // by component: formats differ in the order of planes
            const int stride = GST_VIDEO_FRAME_COMP_STRIDE(&frame, part);
            if (stride < 0) {
                return std::nullopt;
            }
            planes.data[part] = static_cast<const uint8_t*>(GST_VIDEO_FRAME_COMP_DATA(&frame, part));
            planes.stride[part] = static_cast<size_t>(stride);
        }
        if (GST_VIDEO_FRAME_COMP_PSTRIDE(&frame, 1) == 2) {
            takeChromaApart(planes);
        }
        return planes;
    }

  private:
    /// NV12 and NV21 hold Cb and Cr in turn.
    void takeChromaApart(ZELAlgo::ZELVideoPlanes& planes) {
        const size_t width = planes.width / 2;
        const size_t height = planes.height / 2;
        chroma_.resize(2 * width * height);
        uint8_t* out = chroma_.data();
        for (size_t part = 1; part < 3; ++part) {
            const uint8_t* row = planes.data[part];
            const size_t stride = planes.stride[part];
            planes.data[part] = out;
            planes.stride[part] = width;
            for (size_t y = 0; y < height; ++y, row += stride, out += width) {
                for (size_t x = 0; x < width; ++x) {
                    out[x] = row[2 * x];
                }
            }
        }
    }

    std::vector<uint8_t> chroma_;
};

struct VideoWatch {
    explicit VideoWatch(GstElement* element) : track(element, ZEL::StreamTrack::kVideo) {}

    ZELGst::TrackWatch track;
    PlaneReader reader;
};

struct ZelVideo {
    GstVideoFilter parent;
    VideoWatch* watch;
};

struct ZelVideoClass {
    GstVideoFilterClass parent;
};

G_DEFINE_TYPE(ZelVideo, zel_video_element, GST_TYPE_VIDEO_FILTER)

using Common = ZELGst::ElementClass<ZelVideo, &zel_video_element_parent_class>;

GstFlowReturn examine(GstVideoFilter* filter, GstVideoFrame* frame) {
    VideoWatch& watch = *reinterpret_cast<ZelVideo*>(filter)->watch;
    const GstVideoInfo& info = frame->info;
    const GstClockTime stated =
        info.fps_n > 0 ? gst_util_uint64_scale_int(GST_SECOND, info.fps_d, info.fps_n) : GST_CLOCK_TIME_NONE;
    std::optional<ZELAlgo::ZELVideoPlanes> planes;
    try {
        planes = watch.reader.read(*frame);
    } catch (const std::exception& error) {
        GST_WARNING_OBJECT(filter, "a frame was not examined: %s", error.what());
    }
    if (planes) {
        watch.track.video(*planes, frame->buffer, GST_BASE_TRANSFORM(filter)->segment, stated);
    } else {
        watch.track.skip();
    }
    return GST_FLOW_OK;
}

void zel_video_element_init(ZelVideo* self) {
    self->watch = new VideoWatch(GST_ELEMENT(self));
    Common::initInstance(self);
}

void zel_video_element_class_init(ZelVideoClass* element_class) {
    Common::init(element_class, ZEL::StreamTrack::kVideo, "Video quality watch", "Filter/Analyzer/Video");
    GstCaps* const caps = gst_caps_from_string(
        "video/x-raw, format=(string){ I420, NV12, YV12, NV21 }, width=(int)[2, max], height=(int)[2, max], "
        "framerate=(fraction)[0, max]");
    auto* const gst_class = GST_ELEMENT_CLASS(element_class);
    gst_element_class_add_pad_template(gst_class,
                                       gst_pad_template_new("sink", GST_PAD_SINK, GST_PAD_ALWAYS, caps));
    gst_element_class_add_pad_template(gst_class,
                                       gst_pad_template_new("src", GST_PAD_SRC, GST_PAD_ALWAYS, caps));
    gst_caps_unref(caps);
    GST_VIDEO_FILTER_CLASS(element_class)->transform_frame_ip = &examine;
}

}  // namespace

GType zel_video_get_type() {
    return zel_video_element_get_type();
}
