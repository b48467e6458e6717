#pragma once

// The inside of PulseClient, shared by its source files and by nothing else:
// the threaded main loop, the context, the one record stream, and the waits
// with a deadline that every blocking method is made of.
#include <pulse/pulseaudio.h>

#include <functional>
#include <optional>
#include <string>

#include "capture/linux/pulse_client.h"

namespace tevra {

// Holds the event loop's lock for a scope. Callbacks of the loop run with it
// held, so whatever is done under it cannot overlap them.
class LoopLock {
public:
    explicit LoopLock(pa_threaded_mainloop* mainloop) : mainloop_(mainloop) {
        pa_threaded_mainloop_lock(mainloop_);
    }
    ~LoopLock() { pa_threaded_mainloop_unlock(mainloop_); }
    LoopLock(const LoopLock&) = delete;
    LoopLock& operator=(const LoopLock&) = delete;

private:
    pa_threaded_mainloop* mainloop_;
};

struct PulseClient::Loop {
    std::string applicationName;
    std::optional<std::string> server;
    pa_threaded_mainloop* mainloop = nullptr;
    pa_context* context = nullptr;
    pa_stream* stream = nullptr;
    RecordHandler onData;
    std::function<void()> onStreamFailed;
    std::function<void()> onEvent;

    void signal() { pa_threaded_mainloop_signal(mainloop, 0); }
    bool ready() const { return context && pa_context_get_state(context) == PA_CONTEXT_READY; }

    // Waits, with the lock held, until done() or the deadline. The lock is
    // released while waiting, so the event thread can make progress.
    bool waitUntil(const std::function<bool()>& done, double seconds);
    // Waits for an operation whose callback signals; cancels it when late, so
    // that its callback never touches the caller's stack afterwards.
    bool finish(pa_operation* operation, double seconds);

    std::string lastError() const {
        return context ? pa_strerror(pa_context_errno(context)) : "no connection";
    }

    void closeStream();
    void closeContext();
};

}  // namespace tevra
