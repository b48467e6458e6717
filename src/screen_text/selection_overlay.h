#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "screen_text/screen_source.h"
#include "screen_text/word_selection.h"

namespace tevra {

// The selection tool's window: the frozen picture over the whole screen,
// holding the pointer and the keyboard while it is up. It shows at once; the
// words become selectable when they arrive. Main thread only.
class SelectionOverlay {
public:
    virtual ~SelectionOverlay() = default;

    // Called once by the overlay: the text to copy on Return, nullopt on
    // Escape. Not called for close().
    std::function<void(std::optional<std::string>)> onFinish;

    virtual void show() = 0;
    virtual void setWords(const std::vector<OCRWord>& words) = 0;
    // Takes the window away and lets go of the pointer and the keyboard.
    virtual void close() = 0;
};

using SelectionOverlayFactory = std::function<std::unique_ptr<SelectionOverlay>(
    std::shared_ptr<const ScreenImage> image, const ScreenArea& screen,
    const std::vector<Rect>& windows)>;

}  // namespace tevra
