#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "screen_text/rect.h"
#include "screen_text/screen_image.h"

namespace tevra {

// One screen of the desktop, in the display's device pixels from the top left
// of the whole desktop.
struct ScreenArea {
    std::string name;
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;

    bool operator==(const ScreenArea&) const = default;
};

// The screens of the desktop and whether this program may capture them.
// Main thread only.
class ScreenSource {
public:
    virtual ~ScreenSource() = default;

    // Whether the desktop lets this program read the screen's pixels.
    virtual bool canCapture() = 0;
    // Asks the desktop for that permission, where it has such a thing.
    virtual void requestCapture() = 0;
    // The screen holding the mouse pointer, else the primary one; nullopt
    // when there is no screen at all.
    virtual std::optional<ScreenArea> screenUnderPointer() = 0;
};

// Takes the picture of a screen. Safe from any thread.
class ScreenGrabber {
public:
    virtual ~ScreenGrabber() = default;

    // Throws an Error that says what failed.
    virtual ScreenImage capture(const ScreenArea& screen) = 0;
};

// The desktop's ordinary application windows, front to back, as rectangles
// normalised to one screen (Y up). Main thread only.
class WindowList {
public:
    virtual ~WindowList() = default;

    virtual std::vector<Rect> windowRects(const ScreenArea& screen) = 0;
};

}  // namespace tevra
