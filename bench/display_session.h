#pragma once

#include <unistd.h>

#include <QApplication>
#include <QProcess>
#include <QThread>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>

// A private X display of a given size with a window manager, and a Qt
// application on it, for the benchmarks that measure what the user sees.
// Made once per process and kept until it ends.
class DisplaySession {
public:
    static DisplaySession& at(int width, int height) {
        static DisplaySession session(width, height);
        return session;
    }

    bool ok() const { return ok_; }

    ~DisplaySession() {
        app_.reset();
        openbox_.kill();
        openbox_.waitForFinished(5000);
        xvfb_.kill();
        xvfb_.waitForFinished(5000);
    }

private:
    DisplaySession(int width, int height) {
        int fds[2];
        if (::pipe(fds) != 0) {
            return;
        }
        const std::string screen = std::to_string(width) + "x" + std::to_string(height) + "x24";
        xvfb_.start("Xvfb", {"-displayfd", QString::number(fds[1]), "-screen", "0",
                             QString::fromStdString(screen), "-nolisten", "tcp"});
        ::close(fds[1]);
        char number[16] = {};
        const auto read = ::read(fds[0], number, sizeof number - 1);
        ::close(fds[0]);
        if (read <= 0) {
            std::fprintf(stderr, "Xvfb did not start: run scripts/install-deps\n");
            return;
        }
        const std::string display = ":" + std::string(number, std::strcspn(number, "\n"));
        setenv("DISPLAY", display.c_str(), 1);
        setenv("QT_QPA_PLATFORM", "xcb", 1);
        openbox_.start("openbox", {"--sm-disable"});
        openbox_.waitForStarted(5000);
        QThread::msleep(500);  // openbox takes the screen
        static int argc = 1;
        static char name[] = "bench";
        static char* argv[] = {name, nullptr};
        app_ = std::make_unique<QApplication>(argc, argv);
        ok_ = true;
    }

    QProcess xvfb_;
    QProcess openbox_;
    std::unique_ptr<QApplication> app_;
    bool ok_ = false;
};
