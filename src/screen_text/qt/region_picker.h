#pragma once

#include <memory>

#include "screen_text/region_capture.h"
#include "screen_text/screen_source.h"

namespace tevra {

class RegionPickerWindow;

// Tevra's own interactive region capture: the screen under the pointer frozen
// in a frameless window over it, a rectangle dragged out with the mouse and
// written as a PNG; Escape, or a click without a drag, leaves no file.
// Main thread only.
class RegionPicker : public RegionCapture {
public:
    RegionPicker(std::shared_ptr<ScreenSource> screens, std::shared_ptr<ScreenGrabber> grabber);
    ~RegionPicker() override;

    void capture(const std::filesystem::path& png,
                 std::function<void(std::exception_ptr launchError)> done) override;

    // The picker that is up, for tests and benchmarks.
    static RegionPickerWindow* current();

private:
    std::shared_ptr<ScreenSource> screens_;
    std::shared_ptr<ScreenGrabber> grabber_;
};

}  // namespace tevra
