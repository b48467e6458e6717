#pragma once

#include <memory>

#include "screen_text/qt/screen_grab_window.h"
#include "screen_text/qt/selection_view.h"
#include "screen_text/selection_overlay.h"

namespace tevra {

// The selection tool's window: the SelectionView over the whole screen.
class SelectionOverlayWindow : public ScreenGrabWindow {
public:
    SelectionOverlayWindow(std::shared_ptr<const ScreenImage> image, const ScreenArea& screen,
                           std::vector<Rect> windows);

    SelectionView* view() const { return view_; }

private:
    SelectionView* view_;
};

// The overlays as the selection controller makes them. The window lives
// until the event loop is back from the event that closed it.
SelectionOverlayFactory qtSelectionOverlays();

// The overlay made last and still up, for tests and benchmarks.
SelectionOverlayWindow* currentSelectionOverlay();

}  // namespace tevra
