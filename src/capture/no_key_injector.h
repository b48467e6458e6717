#pragma once

#include "capture/key_injector.h"

namespace tevra {

// Where the session offers no way to type into another application: every
// dictation stays on the clipboard for the user to paste.
class NoKeyInjector : public KeyInjector {
public:
    bool isAvailable() override { return false; }
    std::optional<KeySequence> pasteSequence() override { return std::nullopt; }
    bool pasteReadsPrimary() override { return false; }
    bool modifiersHeld() override { return false; }
    std::optional<KeySequence> copySequence() override { return std::nullopt; }
    void post(const KeySequence&) override {}
};

}  // namespace tevra
