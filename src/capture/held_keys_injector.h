#pragma once

#include <functional>
#include <memory>
#include <utility>

#include "capture/key_injector.h"

namespace tevra {

// A KeyInjector that also counts keys it learns of elsewhere as held: where
// the desktop tells Tevra only of its shortcuts (the Global Shortcuts
// portal), the Alt of Alt+8 is held as long as the shortcut is, and a chord
// sent meanwhile would become another one.
class HeldKeysInjector : public KeyInjector {
public:
    HeldKeysInjector(std::shared_ptr<KeyInjector> inner, std::function<bool()> held)
        : inner_(std::move(inner)), held_(std::move(held)) {}

    bool isAvailable() override { return inner_->isAvailable(); }
    std::optional<KeySequence> pasteSequence() override { return inner_->pasteSequence(); }
    bool pasteReadsPrimary() override { return inner_->pasteReadsPrimary(); }
    bool modifiersHeld() override { return inner_->modifiersHeld() || held_(); }
    std::optional<KeySequence> copySequence() override { return inner_->copySequence(); }
    void post(const KeySequence& events) override { inner_->post(events); }

private:
    std::shared_ptr<KeyInjector> inner_;
    std::function<bool()> held_;
};

}  // namespace tevra
