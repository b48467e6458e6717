#include "app/qt/qt_main_queue.h"

#include <QCoreApplication>
#include <QThread>
#include <QTimer>
#include <algorithm>
#include <chrono>
#include <climits>
#include <cmath>

namespace tevra {
namespace {

int milliseconds(double seconds) {
    const double ms = std::ceil(std::max(seconds, 0.0) * 1000.0);
    return static_cast<int>(std::min(ms, static_cast<double>(INT_MAX)));
}

}  // namespace

QtMainQueue::QtMainQueue(QObject* context)
    : context_(context ? context : QCoreApplication::instance()) {}

void QtMainQueue::post(Task task) {
    // Dropped with the context object: nothing runs after the application ends.
    QMetaObject::invokeMethod(context_.data(), std::move(task), Qt::QueuedConnection);
}

TimerHandle QtMainQueue::after(double seconds, Task task) {
    return start(seconds, false, std::move(task));
}

TimerHandle QtMainQueue::every(double intervalSeconds, Task task) {
    return start(std::max(intervalSeconds, 0.001), true, std::move(task));
}

TimerHandle QtMainQueue::start(double seconds, bool repeating, Task task) {
    auto cancelled = std::make_shared<std::atomic<bool>>(false);
    auto* timer = new QTimer(context_.data());
    timer->setSingleShot(!repeating);
    timer->setTimerType(Qt::PreciseTimer);
    QObject::connect(timer, &QTimer::timeout, timer,
                     [timer, cancelled, repeating, task = std::move(task)] {
                         if (*cancelled) {
                             timer->stop();
                             timer->deleteLater();
                             return;
                         }
                         if (!repeating) {
                             timer->deleteLater();
                         }
                         task();
                     });
    timer->start(milliseconds(seconds));
    return TimerHandle(cancelled);
}

double QtMainQueue::now() const {
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch())
        .count();
}

bool QtMainQueue::isMainThread() const {
    return context_ && QThread::currentThread() == context_->thread();
}

}  // namespace tevra
