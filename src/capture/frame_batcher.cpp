#include "capture/frame_batcher.h"

#include <algorithm>

namespace tevra {

FrameBatcher::FrameBatcher(std::size_t channels, std::size_t minFrames, std::size_t maxFrames,
                           Sink sink)
    : channels_(std::max<std::size_t>(channels, 1)),
      minFrames_(std::max<std::size_t>(minFrames, 1)),
      maxFrames_(std::max(maxFrames, minFrames_)),
      sink_(std::move(sink)) {}

void FrameBatcher::add(const float* interleaved, std::size_t frames) {
    if (pending_.empty() && frames >= minFrames_) {
        deliver(interleaved, frames);
        return;
    }
    pending_.insert(pending_.end(), interleaved, interleaved + frames * channels_);
    if (pending_.size() >= minFrames_ * channels_) {
        deliver(pending_.data(), pending_.size() / channels_);
        pending_.clear();
    }
}

void FrameBatcher::flush() {
    if (!pending_.empty()) {
        deliver(pending_.data(), pending_.size() / channels_);
        pending_.clear();
    }
}

void FrameBatcher::deliver(const float* interleaved, std::size_t frames) {
    while (frames > 0) {
        const std::size_t count = std::min(frames, maxFrames_);
        sink_(interleaved, count);
        interleaved += count * channels_;
        frames -= count;
    }
}

}  // namespace tevra
