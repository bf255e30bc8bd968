#include "algo/audio/audio_handle.h"

#include <memory>
#include <new>

namespace ZELAlgo {

AudioAlgoHandle_t* AudioAlgoCreate(const ZELAlgoConfig& config, uint32_t sample_rate) {
    std::unique_ptr<AudioAlgoHandle_t> handle(new (std::nothrow) AudioAlgoHandle_t);
    if (handle == nullptr || !handle->meter.create(sample_rate)) {
        return nullptr;
    }
    handle->period_chunks = periodChunks(config);
    return handle.release();
}

int32_t AudioAlgoExecute(AudioAlgoHandle_t* handle, const int16_t* samples, uint32_t count,
                         ZELAudioResult& result) {
    if (samples == nullptr) {
        return -1;
    }
    const uint32_t chunk = handle->meter.chunk();
    handle->ring.write(samples, count);  // a frame that does not fit is dropped without a word
    // A chunk too long for the ring never comes together. An empty one (below 100 Hz) counts as silence.
    while (handle->ring.available() >= chunk) {
        handle->ring.read(handle->chunk_buf.data(), chunk);
        const ChunkMeasurement measured = handle->meter.measure(handle->chunk_buf.data());
        handle->sums.add(measured);
        if (measured.silent) {
            break;  // intended: one silent chunk per frame, the rest of the ring waits for the next
        }
    }
    if (handle->sums.chunks < handle->period_chunks) {
        return 1;
    }
    handle->sums.close(result);
    return 0;
}

int32_t AudioAlgoDestroy(AudioAlgoHandle_t* handle) {
    delete handle;
    return 0;
}

}  // namespace ZELAlgo
