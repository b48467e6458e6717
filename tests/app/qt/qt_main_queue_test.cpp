#include "app/qt/qt_main_queue.h"

#include <gtest/gtest.h>

#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "support/desktop/event_wait.h"

namespace tevra {
namespace {

using testing::waitUntil;

TEST(QtMainQueue, RunsPostsFromAnyThreadAndTimersInDueOrderOnTheMainThread) {
    QtMainQueue queue;
    EXPECT_TRUE(queue.isMainThread());
    std::vector<std::string> log;
    bool allOnMain = true;
    const double start = queue.now();
    double restoredAt = 0;

    queue.after(0.12, [&] {
        log.push_back("restore");
        restoredAt = queue.now();
    });
    queue.after(0.03, [&] { log.push_back("paste"); });
    TimerHandle dropped = queue.after(0.06, [&] { log.push_back("never"); });
    dropped.cancel();
    EXPECT_TRUE(dropped.isCancelled());
    std::thread worker([&] {
        queue.post([&] {
            allOnMain = allOnMain && queue.isMainThread();
            log.push_back("posted");
        });
    });
    worker.join();
    EXPECT_TRUE(log.empty()) << "nothing runs until the event loop does";

    ASSERT_TRUE(waitUntil([&] { return log.size() == 3; }, 5.0));
    EXPECT_EQ(log, (std::vector<std::string>{"posted", "paste", "restore"}));
    EXPECT_TRUE(allOnMain);
    EXPECT_GE(restoredAt - start, 0.12);
    // By then the cancelled timer's time had passed without it.
}

TEST(QtMainQueue, RepeatsUntilCancelledFromWithinAndKeepsASteadyClock) {
    QtMainQueue queue;
    int ticks = 0;
    TimerHandle handle;
    handle = queue.every(0.01, [&] {
        if (++ticks == 3) {
            handle.cancel();
        }
    });
    ASSERT_TRUE(waitUntil([&] { return ticks == 3; }, 5.0));
    bool later = false;
    queue.after(0.05, [&] { later = true; });
    ASSERT_TRUE(waitUntil([&] { return later; }, 5.0));
    EXPECT_EQ(ticks, 3);

    const double a = queue.now();
    const double b = queue.now();
    EXPECT_LE(a, b);
}

}  // namespace
}  // namespace tevra
