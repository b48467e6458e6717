// The notetaker's step of start-up, and what the notetaker means for the rest
// of the program: the chime keeps quiet while a call is recorded, and the
// tray's menu starts and stops a session by hand.
#include "app/app_delegate.h"

namespace tevra {

void AppDelegate::startNotetaker() {
    if (!services_.makeNotetaker) {
        return;
    }
    notetaker_ = services_.makeNotetaker(*runtime_);
    std::weak_ptr<AppDelegate> weak = weak_from_this();
    notetaker_->observe([weak] {
        if (auto self = weak.lock()) {
            self->notetakerChanged();
        }
    });
    notetakerChanged();
    // A call that a crash or a quit cut short is made a session now.
    notetaker_->recoverSpooledSessions();
}

void AppDelegate::notetakerChanged() {
    const NotetakerState& state = notetaker_->state();
    // The system's sound is recorded for the other side: no cue of ours in it.
    services_.chime->setMuted(state.is(NotetakerState::Kind::recording));
    if (!statusItem_) {
        return;
    }
    std::weak_ptr<NotetakerController> notetaker = notetaker_;
    if (state.is(NotetakerState::Kind::recording)) {
        statusItem_->setNotesEntry("Stop notes", true, [notetaker] {
            if (auto controller = notetaker.lock()) {
                controller->stop();
            }
        });
        return;
    }
    statusItem_->setNotesEntry("Start notes", !state.is(NotetakerState::Kind::processing),
                               [notetaker] {
                                   if (auto controller = notetaker.lock()) {
                                       controller->startManual("Manual");
                                   }
                               });
}

}  // namespace tevra
