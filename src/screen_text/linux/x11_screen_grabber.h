#pragma once

#include "screen_text/screen_source.h"

namespace tevra {

// The picture of a screen, read from the X server's root window with
// XGetImage over a connection of its own, so that any thread may take it.
class X11ScreenGrabber : public ScreenGrabber {
public:
    ScreenImage capture(const ScreenArea& screen) override;
};

}  // namespace tevra
