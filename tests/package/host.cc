// The smallest whole host: one stream, its heartbeat, ten black frames. Built by strangers to the source
// tree.
#include <zel/zel.h>

#include <cstdio>
#include <vector>

static void upload(const char* page, int event_id, const char* name, const char*, const char*,
                   ReportMap* fields) {
    std::printf("%s %d %s\n", page, event_id, name);
    for (const auto& field : *fields) {
        std::printf("  %s = %s\n", field.first.c_str(), field.second.c_str());
    }
}

static bool allowHeartbeat() {
    return true;
}

int main() {
    set_tlm_upload_callback(&upload);
    ZELHandle* const stream = init_handle_with_interval(10);
    set_heart_beat_timer_switch_listener(stream, &allowHeartbeat);
    start_zel_session(stream);  // always false: not a failure

    const int width = 640;
    const int height = 360;
    std::vector<uint8_t> black(width * height * 3 / 2, 16);
    bool accepted = true;
    for (int index = 0; index < 10; ++index) {
        accepted = feed_video_frame(stream, black.data(), width, height, index) && accepted;
    }
    stop_zel_session(stream);  // the ending heartbeat and the final report reach upload()
    release_handle(stream);
    return accepted ? 0 : 1;
}
