#include "ui/microphone_watch.h"

namespace tevra {

MicrophoneWatch::MicrophoneWatch(MainQueue& queue, std::shared_ptr<WorkPool> work,
                                 std::shared_ptr<MicrophoneAccess> microphone, Answer answer)
    : queue_(queue),
      work_(std::move(work)),
      microphone_(std::move(microphone)),
      answer_(std::move(answer)) {}

std::shared_ptr<MicrophoneWatch> MicrophoneWatch::start(
    MainQueue& queue, std::shared_ptr<WorkPool> work, std::shared_ptr<MicrophoneAccess> microphone,
    Answer answer) {
    auto watch = std::shared_ptr<MicrophoneWatch>(
        new MicrophoneWatch(queue, std::move(work), std::move(microphone), std::move(answer)));
    std::weak_ptr<MicrophoneWatch> weak = watch;
    watch->timer_ = queue.every(intervalSeconds, [weak] {
        if (auto self = weak.lock()) {
            self->checkNow();
        }
    });
    watch->checkNow();
    return watch;
}

MicrophoneWatch::~MicrophoneWatch() {
    timer_.cancel();
}

void MicrophoneWatch::stop() {
    timer_.cancel();
    answer_ = nullptr;
}

void MicrophoneWatch::checkNow() {
    if (asking_ || !answer_) {
        return;
    }
    if (!microphone_) {
        answer_({MicrophoneAccess::Status::denied, {}, {}});
        return;
    }
    asking_ = true;
    std::weak_ptr<MicrophoneWatch> weak = weak_from_this();
    auto work = [microphone = microphone_, &queue = queue_, weak] {
        auto found = microphone->check();
        queue.post([weak, found = std::move(found)] {
            if (auto self = weak.lock()) {
                self->asking_ = false;
                if (self->answer_) {
                    self->answer_(found);
                }
            }
        });
    };
    if (work_) {
        work_->run(std::move(work));
    } else {
        work();
    }
}

}  // namespace tevra
