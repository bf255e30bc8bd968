// Built as C++11 with nothing but the header: what a host of the oldest kind does.
#include <zel/zel.h>

int main() {
    ZELHandle* const handle = init_handle();
    const bool accepted = feed_video_frame(handle, nullptr, 16, 16, 0);
    release_handle(handle);
    return accepted ? 1 : 0;
}
