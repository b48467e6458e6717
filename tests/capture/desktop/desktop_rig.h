#pragma once

#include <gtest/gtest.h>

#include <QBuffer>
#include <QClipboard>
#include <QGuiApplication>
#include <QImage>
#include <QMimeData>
#include <memory>

#include "app/qt/qt_main_queue.h"
#include "capture/context_reader.h"
#include "capture/linux/atspi_focus.h"
#include "capture/linux/x11_clipboard_reader.h"
#include "capture/linux/x11_connection.h"
#include "capture/linux/x11_focus_probe.h"
#include "capture/linux/x11_key_injector.h"
#include "capture/linux/x11_secure_input.h"
#include "capture/qt/qt_clipboard.h"
#include "capture/text_inserter.h"
#include "support/desktop/event_wait.h"
#include "support/desktop/peer_process.h"

namespace tevra::testing {

// The program's capture services as the application wires them, on the test
// display, starting from an empty clipboard.
struct DesktopRig {
    // Owns the queue's timers: a restore still due when a test ends dies with it.
    QObject timers;
    QtMainQueue queue{&timers};
    std::shared_ptr<X11Connection> x = X11Connection::open();
    std::shared_ptr<AtspiFocus> focus = std::make_shared<AtspiFocus>();
    std::shared_ptr<QtClipboard> clipboard =
        std::make_shared<QtClipboard>(std::make_shared<X11ClipboardReader>(queue));
    std::shared_ptr<X11KeyInjector> keys = std::make_shared<X11KeyInjector>(x);
    std::shared_ptr<X11SecureInput> secure = std::make_shared<X11SecureInput>(x, focus);
    std::shared_ptr<X11FocusProbe> probe = std::make_shared<X11FocusProbe>(x, focus);
    TextInserter inserter{queue, clipboard, keys, secure};
    ContextReader reader{probe};

    DesktopRig() {
        if (!x) {
            ADD_FAILURE() << "no X display could be opened";
            return;
        }
        QGuiApplication::clipboard()->clear();
        EXPECT_TRUE(waitUntil([this] { return clipboard->snapshot().empty(); }, 5.0))
            << "the clipboard does not empty";
    }

    // Runs the event loop until a moment seconds from now has come, seen by a
    // main-queue timer: the way to be sure that a timer due before it has run.
    bool passMoment(double seconds) {
        bool reached = false;
        queue.after(seconds, [&reached] { reached = true; });
        return waitUntil([&reached] { return reached; }, seconds + 10.0);
    }
};

inline std::string smallPng() {
    QImage image(8, 8, QImage::Format_RGB32);
    image.fill(QColor(200, 40, 90));
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "PNG");
    return bytes.toStdString();
}

}  // namespace tevra::testing
