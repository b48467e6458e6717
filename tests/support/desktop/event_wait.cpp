#include "support/desktop/event_wait.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QTimer>

namespace tevra::testing {

bool waitUntil(const std::function<bool()>& done, double seconds) {
    QElapsedTimer clock;
    clock.start();
    // Wakes the loop now and then, so that a condition set by another process
    // is seen without a busy loop.
    QTimer tick;
    tick.start(10);
    while (!done()) {
        if (clock.elapsed() > static_cast<qint64>(seconds * 1000)) {
            return false;
        }
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
    return true;
}

}  // namespace tevra::testing
