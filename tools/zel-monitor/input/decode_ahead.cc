#include "input/decode_ahead.h"

#include <utility>

namespace zel_monitor {
namespace {

size_t bytesOf(const VideoFrame& frame) {
    return size_t{frame.planes.width} * frame.planes.height * 3 / 2;
}

size_t bytesOf(const AudioFrame& sound) {
    return static_cast<size_t>(sound.samples) * static_cast<size_t>(sound.channels) * sizeof(int16_t);
}

size_t bytesOf(const MediaItem& item) {
    return std::visit([](const auto& content) { return bytesOf(content); }, item);
}

}  // namespace

DecodeAhead::DecodeAhead(MediaSource& source, size_t most_bytes)
    : source_(source), most_bytes_(most_bytes), reader_([this] { run(); }) {}

DecodeAhead::~DecodeAhead() {
    {
        const std::lock_guard lock(mutex_);
        stopping_ = true;
    }
    changed_.notify_all();
    reader_.join();
}

std::optional<MediaItem> DecodeAhead::next() {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [this] { return ended_ || !items_.empty(); });
    if (items_.empty()) {
        if (failure_) {
            std::rethrow_exception(std::exchange(failure_, nullptr));
        }
        return std::nullopt;
    }
    MediaItem item = std::move(items_.front());
    items_.pop_front();
    bytes_ -= bytesOf(item);
    lock.unlock();
    changed_.notify_all();
    return item;
}

void DecodeAhead::run() {
    try {
        while (std::optional<MediaItem> item = source_.next()) {
            if (!push(std::move(*item))) {
                return;
            }
        }
        end(nullptr);
    } catch (...) {
        end(std::current_exception());
    }
}

/// Waits for room; one item has room always. False if nobody wants more.
bool DecodeAhead::push(MediaItem item) {
    const size_t bytes = bytesOf(item);
    {
        std::unique_lock lock(mutex_);
        changed_.wait(lock, [&] { return stopping_ || items_.empty() || bytes_ + bytes <= most_bytes_; });
        if (stopping_) {
            return false;
        }
        items_.push_back(std::move(item));
        bytes_ += bytes;
    }
    changed_.notify_all();
    return true;
}

void DecodeAhead::end(std::exception_ptr failure) {
    {
        const std::lock_guard lock(mutex_);
        ended_ = true;
        failure_ = std::move(failure);
    }
    changed_.notify_all();
}

}  // namespace zel_monitor
