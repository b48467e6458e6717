#pragma once

#include <memory>

#include "base/main_queue.h"
#include "base/work_pool.h"
#include "capture/clipboard.h"
#include "capture/focus_probe.h"
#include "capture/key_injector.h"
#include "capture/linux/x11_connection.h"
#include "capture/secure_input.h"
#include "screen_text/focused_selection.h"
#include "screen_text/screen_ocr.h"
#include "screen_text/selection_capture_controller.h"

namespace tevra {

// The screen-text tools as the desktop program makes them on X11: the
// selection tool (Qt overlay, X11 capture and window list, Tesseract words on
// two engine threads), the screenshot voice's reader (Tevra's region picker,
// Tesseract lines) and the focused-selection reader (the copy chord and the
// clipboard). All on the main thread; blocking work goes to `work`.
struct ScreenTextTools {
    std::shared_ptr<SelectionCaptureController> selection;
    std::shared_ptr<ScreenOCR> screenReader;
    std::shared_ptr<FocusedSelection> focusedSelection;

    static ScreenTextTools make(MainQueue& queue, std::shared_ptr<WorkPool> work,
                                std::shared_ptr<X11Connection> x,
                                std::shared_ptr<Clipboard> clipboard,
                                std::shared_ptr<KeyInjector> keys,
                                std::shared_ptr<SecureInput> secureInput,
                                std::shared_ptr<FocusProbe> focus, LogLine log);
};

}  // namespace tevra
