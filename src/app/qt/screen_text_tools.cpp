#include "app/qt/screen_text_tools.h"

#include "screen_text/linux/x11_screen_grabber.h"
#include "screen_text/linux/x11_window_activator.h"
#include "screen_text/linux/x11_window_list.h"
#include "screen_text/ocr/tesseract_line_recognizer.h"
#include "screen_text/ocr/tesseract_word_recognizer.h"
#include "screen_text/qt/qt_screen_source.h"
#include "screen_text/qt/region_picker.h"
#include "screen_text/qt/selection_overlay_window.h"

namespace tevra {

ScreenTextTools ScreenTextTools::make(MainQueue& queue, std::shared_ptr<WorkPool> work,
                                      std::shared_ptr<X11Connection> x,
                                      std::shared_ptr<Clipboard> clipboard,
                                      std::shared_ptr<KeyInjector> keys,
                                      std::shared_ptr<SecureInput> secureInput,
                                      std::shared_ptr<FocusProbe> focus, LogLine log) {
    auto screens = std::make_shared<QtScreenSource>();
    auto grabber = std::make_shared<X11ScreenGrabber>();

    SelectionServices services;
    services.queue = &queue;
    services.work = work;
    services.screens = screens;
    services.windows = std::make_shared<X11WindowList>(x);
    services.grabber = grabber;
    services.recognizer = std::make_shared<TesseractWordRecognizer>();
    services.makeOverlay = qtSelectionOverlays();
    services.clipboard = clipboard;
    services.focus = std::move(focus);
    services.activator = std::make_shared<X11WindowActivator>(x);
    services.log = log;

    ScreenTextTools tools;
    tools.selection = SelectionCaptureController::create(std::move(services));
    tools.screenReader = std::make_shared<ScreenOCR>(
        queue, std::move(work), std::make_shared<RegionPicker>(screens, grabber),
        std::make_shared<TesseractLineRecognizer>(), std::move(log));
    tools.focusedSelection = std::make_shared<FocusedSelection>(
        queue, std::move(clipboard), std::move(keys), std::move(secureInput));
    return tools;
}

}  // namespace tevra
