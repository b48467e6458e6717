#pragma once

#include "screen_text/screen_source.h"

namespace tevra {

// The screens of the desktop as Qt knows them, in device pixels. On X11 any
// client may read the screen, so capture is always allowed.
class QtScreenSource : public ScreenSource {
public:
    bool canCapture() override { return true; }
    void requestCapture() override {}
    std::optional<ScreenArea> screenUnderPointer() override;
};

}  // namespace tevra
