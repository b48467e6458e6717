#pragma once

#include <memory>
#include <string_view>

#include "capture/key_injector.h"
#include "capture/linux/x11_connection.h"

namespace tevra {

// Synthetic keys through the XTest extension. The paste chord is Ctrl+V, or
// Ctrl+Shift+V when the active window is a terminal, where Ctrl+V means
// something else, or Shift+Insert with the primary selection for the
// terminals that have no clipboard chord by default (xterm, rxvt). The copy
// chord is Ctrl+C, and Ctrl+Shift+C in every terminal.
class X11KeyInjector : public KeyInjector {
public:
    // x may be null: then nothing is available.
    explicit X11KeyInjector(std::shared_ptr<X11Connection> x);

    // An X display with the XTest and XInput extensions.
    bool isAvailable() override;
    std::optional<KeySequence> pasteSequence() override;
    bool pasteReadsPrimary() override;
    std::optional<KeySequence> copySequence() override;
    void post(const KeySequence& events) override;

    // Whether a WM_CLASS instance or class names a terminal emulator.
    static bool isTerminal(std::string_view wmClassPart);
    // Whether it names a terminal that pastes the primary selection on
    // Shift+Insert and the clipboard on no key at all.
    static bool pastesPrimary(std::string_view wmClassPart);

private:
    enum class Target { application, terminal, primaryTerminal };
    Target activeTarget() const;

    std::shared_ptr<X11Connection> x_;
};

}  // namespace tevra
