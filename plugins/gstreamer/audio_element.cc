#include <cmath>
#include <cstddef>
#include <cstdint>
#include <gst/audio/gstaudiofilter.h>
#include <vector>

#include "debug.h"
#include "element_class.h"
#include "elements.h"

#define GST_CAT_DEFAULT zel_debug

namespace {

/// Full scale is 1; what lies beyond is cut off, as a device would, and what is no number is silence.
int16_t toInt16(float sample) {
    using Limits = std::numeric_limits<int16_t>;
    const float scaled = std::isnan(sample) ? 0.0F : sample * 32768.0F;
    if (scaled <= Limits::min()) {
        return Limits::min();
    }
    return scaled >= Limits::max() ? Limits::max() : static_cast<int16_t>(std::lrintf(scaled));
}

struct AudioWatch {
    explicit AudioWatch(GstElement* element) : track(element, ZEL::StreamTrack::kAudio) {}

    ZELGst::TrackWatch track;
    std::vector<int16_t> converted;  // of floating-point samples
};

struct ZelAudio {
    GstAudioFilter parent;
    AudioWatch* watch;
};

struct ZelAudioClass {
    GstAudioFilterClass parent;
};

G_DEFINE_TYPE(ZelAudio, zel_audio_element, GST_TYPE_AUDIO_FILTER)

using Common = ZELGst::ElementClass<ZelAudio, &zel_audio_element_parent_class>;

/// The samples of a mapped buffer as the library takes them.
const int16_t* samplesOf(const GstMapInfo& map, const GstAudioInfo& info, std::vector<int16_t>& converted) {
    if (GST_AUDIO_INFO_IS_INTEGER(&info)) {
        return reinterpret_cast<const int16_t*>(map.data);
    }
    const auto* const samples = reinterpret_cast<const float*>(map.data);
    converted.resize(map.size / sizeof(float));
    for (size_t i = 0; i < converted.size(); ++i) {
        converted[i] = toInt16(samples[i]);
    }
    return converted.data();
}

GstFlowReturn examine(GstBaseTransform* transform, GstBuffer* buffer) {
    AudioWatch& watch = *reinterpret_cast<ZelAudio*>(transform)->watch;
    const GstAudioInfo& info = GST_AUDIO_FILTER(transform)->info;
    GstMapInfo map;
    if (gst_buffer_map(buffer, &map, GST_MAP_READ) == FALSE) {
        watch.track.skip();
        return GST_FLOW_OK;
    }
    try {
        const ZELAlgo::ZELAudioFrame audio{
            .sample_rate = static_cast<uint32_t>(GST_AUDIO_INFO_RATE(&info)),
            .samples = static_cast<uint32_t>(map.size / static_cast<size_t>(GST_AUDIO_INFO_BPF(&info))),
            .channels = static_cast<uint32_t>(GST_AUDIO_INFO_CHANNELS(&info)),
            .data = samplesOf(map, info, watch.converted)};
        watch.track.audio(audio, buffer, transform->segment);
    } catch (const std::exception& error) {
        GST_WARNING_OBJECT(transform, "a buffer was not examined: %s", error.what());
        watch.track.skip();
    }
    gst_buffer_unmap(buffer, &map);
    return GST_FLOW_OK;
}

void zel_audio_element_init(ZelAudio* self) {
    self->watch = new AudioWatch(GST_ELEMENT(self));
    Common::initInstance(self);
}

void zel_audio_element_class_init(ZelAudioClass* element_class) {
    Common::init(element_class, ZEL::StreamTrack::kAudio, "Audio quality watch", "Filter/Analyzer/Audio");
    GstCaps* const caps = gst_caps_from_string("audio/x-raw, format=(string){ " GST_AUDIO_NE(
        S16) ", " GST_AUDIO_NE(F32) " }, "
                                    "layout=(string)interleaved, rate=(int)[1, max], channels=(int)[1, max]");
    gst_audio_filter_class_add_pad_templates(GST_AUDIO_FILTER_CLASS(element_class), caps);
    gst_caps_unref(caps);
    GST_BASE_TRANSFORM_CLASS(element_class)->transform_ip = &examine;
}

}  // namespace

GType zel_audio_get_type() {
    return zel_audio_element_get_type();
}
