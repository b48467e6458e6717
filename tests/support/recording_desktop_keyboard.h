#pragma once

#include <cstdint>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "base/main_queue.h"
#include "capture/desktop_keyboard.h"

namespace tevra::testing {

// A desktop keyboard that records what a monitor asked of it and delivers the
// events a test makes up. Keys listed in heldElsewhere are refused, as if
// another program had grabbed them first.
class RecordingDesktopKeyboard : public DesktopKeyboard {
public:
    using Grab = std::pair<uint32_t, Modifiers>;

    bool opens = true;
    bool inputControl = true;
    std::set<Grab> heldElsewhere;
    std::string talkKeyProblem;  // non-empty: the talk key cannot be watched
    // Stamps delivered events with its time, as the desktop stamps its own.
    MainQueue* clock = nullptr;
    std::vector<std::string> chordKeysHeldElsewhere;

    bool isOpen = false;
    int closeCount = 0;
    std::vector<uint32_t> watchedChordKeys;
    bool watchingTalkKey = false;
    std::set<Grab> grabs;        // held now
    std::vector<Grab> grabAsks;  // every grab asked for, refused ones too

    bool open(EventHandler onEvent) override {
        if (!opens) {
            return false;
        }
        onEvent_ = std::move(onEvent);
        isOpen = true;
        return true;
    }
    bool inputControlAvailable() override { return inputControl; }
    TalkKeyWatch watchTalkKey(const std::vector<uint32_t>& chordKeys) override {
        watchedChordKeys = chordKeys;
        watchingTalkKey = talkKeyProblem.empty();
        return {watchingTalkKey, talkKeyProblem, chordKeysHeldElsewhere};
    }
    bool grab(uint32_t keysym, Modifiers modifiers) override {
        grabAsks.emplace_back(keysym, modifiers);
        if (heldElsewhere.count({keysym, modifiers})) {
            return false;
        }
        grabs.emplace(keysym, modifiers);
        return true;
    }
    void ungrab(uint32_t keysym, Modifiers modifiers) override { grabs.erase({keysym, modifiers}); }
    void close() override {
        if (isOpen) {
            ++closeCount;
        }
        isOpen = false;
        watchingTalkKey = false;
        grabs.clear();
        onEvent_ = nullptr;
    }

    bool holds(uint32_t keysym, Modifiers modifiers) const {
        return grabs.count({keysym, modifiers}) > 0;
    }

    // Delivers an event as the platform would, through the handler given to open().
    void deliver(Event event) {
        if (clock) {
            event.time = clock->now();
        }
        if (onEvent_) {
            onEvent_(event);
        }
    }

private:
    EventHandler onEvent_;
};

}  // namespace tevra::testing
