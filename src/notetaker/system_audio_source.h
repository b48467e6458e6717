#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>

#include "base/error.h"

namespace tevra {

// The system has no sound output at all, so there is nothing of the other
// side to record.
class NoSoundOutputError : public MessageError {
public:
    NoSoundOutputError() : MessageError("no sound output") {}
};

// What the system plays, the other side of a call: the platform seam under
// the session capture. A source records one session and is thrown away.
class SystemAudioSource {
public:
    // 16 kHz mono samples, from one thread of the source's own at a time.
    using SampleHandler = std::function<void(std::span<const int16_t> samples)>;
    // What became of the recording after it started, in a few words for the
    // log: it moved to another output, or it stopped and why.
    using NoticeHandler = std::function<void(const std::string& notice)>;

    // Stops the source if it still runs.
    virtual ~SystemAudioSource() = default;

    // Starts recording; blocking, so it runs off the main thread. Throws
    // NoSoundOutputError when the system has no output, another error with
    // the reason when the output cannot be recorded.
    virtual void start(SampleHandler onSamples, NoticeHandler onNotice) = 0;
    // No handler call runs after this returns. Safe to repeat.
    virtual void stop() = 0;
};

using SystemAudioFactory = std::function<std::unique_ptr<SystemAudioSource>()>;

}  // namespace tevra
