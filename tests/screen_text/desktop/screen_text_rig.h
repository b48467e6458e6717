#pragma once

#include <gtest/gtest.h>

#include <QGuiApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QWidget>
#include <QWindow>
#include <memory>

#include "app/qt/qt_main_queue.h"
#include "capture/linux/atspi_focus.h"
#include "capture/linux/x11_connection.h"
#include "capture/linux/x11_focus_probe.h"
#include "capture/qt/qt_clipboard.h"
#include "screen_text/linux/x11_screen_grabber.h"
#include "screen_text/linux/x11_window_activator.h"
#include "screen_text/linux/x11_window_list.h"
#include "screen_text/ocr/tesseract_word_recognizer.h"
#include "screen_text/qt/qt_screen_source.h"
#include "screen_text/qt/selection_overlay_window.h"
#include "screen_text/selection_capture_controller.h"
#include "support/desktop/event_wait.h"
#include "support/desktop/peer_process.h"

namespace tevra::testing {

// A window of this test process that shows columns of text, black on white,
// at a place on the screen.
class TextWindow {
public:
    TextWindow(const QString& title, const QStringList& columns, const QRect& geometry,
               int pixelSize = 17, const QString& family = "DejaVu Sans") {
        window_.setWindowTitle(title);
        window_.setStyleSheet("background: white; color: black;");
        auto* layout = new QHBoxLayout(&window_);
        layout->setSpacing(60);
        layout->setContentsMargins(24, 24, 24, 24);
        QFont font(family);
        font.setPixelSize(pixelSize);
        for (const QString& text : columns) {
            auto* label = new QLabel(text);
            label->setFont(font);
            label->setWordWrap(true);
            label->setAlignment(Qt::AlignLeft | Qt::AlignTop);
            layout->addWidget(label, 1);
        }
        window_.setGeometry(geometry);
        window_.show();
        EXPECT_TRUE(waitUntil(
            [this] { return window_.windowHandle() && window_.windowHandle()->isExposed(); }, 10))
            << title.toStdString() << " never showed";
        // Let it paint and the window manager settle.
        waitUntil([] { return false; }, 0.3);
    }

    QWidget& widget() { return window_; }

private:
    QWidget window_;
};

// The selection tool as the program makes it, on the test display.
struct SelectionRig {
    std::shared_ptr<X11Connection> x = X11Connection::open();
    QObject timers;
    QtMainQueue queue{&timers};
    std::shared_ptr<QtClipboard> clipboard = std::make_shared<QtClipboard>();
    std::shared_ptr<QtScreenSource> screens = std::make_shared<QtScreenSource>();
    std::shared_ptr<SelectionCaptureController> controller;
    std::vector<std::string> messages;
    std::vector<std::string> copied;

    SelectionRig() {
        auto recognizer = std::make_shared<TesseractWordRecognizer>();
        recognizer->warmUp();
        SelectionServices services;
        services.queue = &queue;
        services.work = std::make_shared<WorkPool>(2);
        services.screens = screens;
        services.windows = std::make_shared<X11WindowList>(x);
        services.grabber = std::make_shared<X11ScreenGrabber>();
        services.recognizer = recognizer;
        services.makeOverlay = qtSelectionOverlays();
        services.clipboard = clipboard;
        services.focus = std::make_shared<X11FocusProbe>(x, std::make_shared<AtspiFocus>());
        services.activator = std::make_shared<X11WindowActivator>(x);
        controller = SelectionCaptureController::create(std::move(services));
        controller->onMessage = [this](const std::string& m) { messages.push_back(m); };
        controller->onCopied = [this](const std::string& text) { copied.push_back(text); };
    }

    // Starts the tool and waits until its words can be picked.
    SelectionView* startAndWaitForWords() {
        controller->toggle();
        const bool ready = waitUntil(
            [] {
                return currentSelectionOverlay() && currentSelectionOverlay()->view()->hasWords();
            },
            60);
        EXPECT_TRUE(ready) << "no words became selectable; messages: "
                           << (messages.empty() ? "" : messages.back());
        return ready ? currentSelectionOverlay()->view() : nullptr;
    }
};

// Where a word of the overlay is on the screen, in root pixels.
inline QPoint onScreen(const SelectionView& view, const std::string& text) {
    const SelectionState& state = *view.state();
    for (std::size_t i = 0; i < state.words().size(); ++i) {
        if (state.words()[i].text == text) {
            const Rect box = state.viewBox(i);
            return view.mapToGlobal(
                QPoint(static_cast<int>(box.midX()), static_cast<int>(view.height() - box.midY())));
        }
    }
    ADD_FAILURE() << "\"" << text << "\" was not read; the lines:\n" << state.debugLinesDump();
    return {};
}

inline QStringList at(const QPoint& p) {
    return {QString::number(p.x()), QString::number(p.y())};
}

// Writes a picture of the view where TEVRA_TEST_SCREENSHOTS points, if it does.
inline void keepScreenshot(SelectionView& view, const QString& name) {
    const QByteArray dir = qgetenv("TEVRA_TEST_SCREENSHOTS");
    if (!dir.isEmpty()) {
        view.debugRenderPNG(QString::fromUtf8(dir) + "/" + name + ".png");
    }
}

}  // namespace tevra::testing
