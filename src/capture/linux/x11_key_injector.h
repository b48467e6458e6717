#pragma once

#include <memory>

#include "capture/key_injector.h"
#include "capture/linux/x11_connection.h"
#include "capture/linux/x_synthetic_keys.h"
#include "capture/paste_chords.h"

namespace tevra {

// Synthetic keys through the XTest extension. The paste chord depends on the
// application that has the focus, named by its WM_CLASS (see pasteChordFor).
// The copy chord is Ctrl+C, and Ctrl+Shift+C in every terminal.
class X11KeyInjector : public KeyInjector {
public:
    // x may be null: then nothing is available. syntheticKeys hears of every
    // stroke before it is sent, so that Tevra's keyboards can tell it apart.
    explicit X11KeyInjector(std::shared_ptr<X11Connection> x,
                            std::shared_ptr<XSyntheticKeys> syntheticKeys = {});

    // An X display with the XTest and XInput extensions.
    bool isAvailable() override;
    std::optional<KeySequence> pasteSequence() override;
    bool pasteReadsPrimary() override;
    // Any modifier down on the core keyboard but those of the chord itself
    // and the locks.
    bool modifiersHeld() override;
    std::optional<KeySequence> copySequence() override;
    void post(const KeySequence& events) override;

private:
    PasteChord activeChord() const;
    ChordKeyCodes chordKeys() const;

    std::shared_ptr<X11Connection> x_;
    std::shared_ptr<XSyntheticKeys> syntheticKeys_;
};

}  // namespace tevra
