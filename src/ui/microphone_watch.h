#pragma once

#include <functional>
#include <memory>

#include "base/main_queue.h"
#include "base/work_pool.h"
#include "capture/microphone_access.h"

namespace tevra {

// Looks at the microphone now and then every second until stopped, for the
// windows of the first run. The check asks the sound server, which may take
// its time: it runs on the work pool, and each answer comes back on the main
// queue. Stops when it goes.
class MicrophoneWatch : public std::enable_shared_from_this<MicrophoneWatch> {
public:
    static constexpr double intervalSeconds = 1.0;
    using Answer = std::function<void(const MicrophoneAccess::Check&)>;

    // Without a microphone service every answer is "denied".
    static std::shared_ptr<MicrophoneWatch> start(MainQueue& queue, std::shared_ptr<WorkPool> work,
                                                  std::shared_ptr<MicrophoneAccess> microphone,
                                                  Answer answer);
    ~MicrophoneWatch();
    void stop();
    // One look now, outside the timer.
    void checkNow();

private:
    MicrophoneWatch(MainQueue& queue, std::shared_ptr<WorkPool> work,
                    std::shared_ptr<MicrophoneAccess> microphone, Answer answer);

    MainQueue& queue_;
    std::shared_ptr<WorkPool> work_;
    std::shared_ptr<MicrophoneAccess> microphone_;
    Answer answer_;
    TimerHandle timer_;
    bool asking_ = false;  // one check at a time
};

}  // namespace tevra
