#pragma once

#include <memory>
#include <string_view>

#include "capture/key_injector.h"
#include "capture/linux/x11_connection.h"
#include "capture/linux/x_synthetic_keys.h"

namespace tevra {

// Synthetic keys through the XTest extension. The paste chord depends on the
// application that has the focus, named by its WM_CLASS (see pasteChordFor).
// The copy chord is Ctrl+C, and Ctrl+Shift+C in every terminal.
class X11KeyInjector : public KeyInjector {
public:
    enum class PasteChord {
        ctrlV,
        ctrlShiftV,          // terminals, where Ctrl+V means something else
        shiftInsertPrimary,  // xterm and the like, Emacs, gVim: Shift+Insert,
                             // with the text in the primary selection too
    };

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

    // The paste chord of an application, by a WM_CLASS instance or class name.
    static PasteChord pasteChordFor(std::string_view wmClassPart);

private:
    PasteChord activeChord() const;

    std::shared_ptr<X11Connection> x_;
    std::shared_ptr<XSyntheticKeys> syntheticKeys_;
};

}  // namespace tevra
