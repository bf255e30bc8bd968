// The exports under arbitrary orders and arguments. Every byte string is a host's life: an operation, its
// arguments, the next operation. Buffers have exactly the size that their frame claims, so that a sanitizer
// sees every read past it.
#include <zel/base/log.h>
#include <zel/zel.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace {

class Bytes {
  public:
    Bytes(const uint8_t* data, size_t size) : data_(data), size_(size) {}

    bool empty() const { return size_ == 0; }

    uint8_t next() {
        if (size_ == 0) {
            return 0;
        }
        --size_;
        return *data_++;
    }

    /// Small numbers of either sign.
    int32_t number() { return static_cast<int8_t>(next()); }

    std::vector<uint8_t> fill(size_t count) {
        std::vector<uint8_t> bytes(count);
        const uint8_t seed = next();
        const uint8_t step = next();
        for (size_t i = 0; i < count; ++i) {
            bytes[i] = static_cast<uint8_t>(seed + step * (i % 97));
        }
        return bytes;
    }

  private:
    const uint8_t* data_;
    size_t size_;
};

void feedVideo(ZELHandle* handle, Bytes& bytes) {
    const int32_t width = bytes.number();
    const int32_t height = bytes.number();
    const int64_t index = bytes.number();
    const bool sized = width > 0 && height > 0;
    const std::vector<uint8_t> frame = bytes.fill(sized ? static_cast<size_t>(width * height * 3 / 2) : 0);
    feed_video_frame(handle, sized ? frame.data() : nullptr, width, height, index);
}

void feedAudio(ZELHandle* handle, Bytes& bytes) {
    constexpr int32_t kRates[] = {1, 99, 100, 7999, 8000, 11025, 44100, 48000, 96001, 2'147'483'647, 0, -1};
    const int32_t rate = kRates[bytes.next() % std::size(kRates)];
    const int32_t channels = bytes.number() % 9;
    const uint64_t samples = static_cast<uint64_t>(bytes.next()) * (1U + bytes.next() % 8U);
    const int32_t width = bytes.next() % 8 == 0 ? 4 : 2;
    const bool sized = channels > 0;
    const std::vector<uint8_t> sound = bytes.fill(sized ? samples * static_cast<uint64_t>(channels) * 2 : 0);
    feed_audio_frame(handle, sized ? sound.data() : nullptr, samples, width, rate, channels, bytes.number());
}

void collect(Bytes& bytes) {
    const std::map<std::string, int64_t> values{{"a", bytes.number()}};
    const std::string key(bytes.next() % 4, 'k');
    const float samples[] = {static_cast<float>(bytes.number()), 1.0F};
    zel_collect_accumulative_data_for_session_v2(bytes.next(), bytes.next() % 2 == 0 ? &values : nullptr);
    zel_collect_serial_data_for_session_v2(bytes.next(), &key, samples, bytes.next() % 3U);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    ZEL::setLogSink([](const char*, size_t, void*) {}, nullptr);
    set_cobalt_bool_callback([](const char* key) { return std::string(key) == "EnableAudioAlgo"; });
    Bytes bytes(data, size);
    ZELHandle* handle = init_handle_with_interval(bytes.next());
    set_heart_beat_timer_switch_listener(handle, [] { return true; });
    while (!bytes.empty()) {
        switch (bytes.next() % 8) {
            case 0:
                start_zel_session(handle);
                break;
            case 1:
                stop_zel_session(handle);
                break;
            case 2:
                collect(bytes);
                break;
            case 3:
                set_user_state_dir(handle, {{"k", "v"}});
                set_heart_beat_callback(handle, [](ReportMap* extra) { (*extra)["zel_token"] = "mine"; });
                break;
            case 4:
                feedAudio(handle, bytes);
                break;
            default:
                feedVideo(handle, bytes);
                break;
        }
    }
    stop_zel_session(handle);
    release_handle(handle);
    return 0;
}
