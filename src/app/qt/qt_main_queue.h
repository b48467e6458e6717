#pragma once

#include <QObject>
#include <QPointer>

#include "base/main_queue.h"

namespace tevra {

// The main queue of the running application: tasks and timers on the Qt event
// loop of the thread that owns the context object (the application object by
// default). A cancelled timer never runs its task; it goes away at its next
// due time.
class QtMainQueue : public MainQueue {
public:
    explicit QtMainQueue(QObject* context = nullptr);

    void post(Task task) override;
    TimerHandle after(double seconds, Task task) override;
    TimerHandle every(double intervalSeconds, Task task) override;
    double now() const override;
    bool isMainThread() const override;

private:
    TimerHandle start(double seconds, bool repeating, Task task);

    QPointer<QObject> context_;
};

}  // namespace tevra
