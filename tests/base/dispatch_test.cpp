#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

#include "base/serial_queue.h"
#include "base/virtual_main_queue.h"

namespace tevra {
namespace {

TEST(VirtualMainQueue, FiresTimersInTimeOrderOnVirtualTime) {
    VirtualMainQueue q;
    std::vector<std::string> log;
    q.after(1.2, [&] { log.push_back("restore@" + std::to_string(q.now())); });
    q.after(0.03, [&] { log.push_back("paste"); });
    auto cancelled = q.after(0.5, [&] { log.push_back("never"); });
    q.post([&] { log.push_back("posted"); });
    cancelled.cancel();

    q.runPending();
    EXPECT_EQ(log, std::vector<std::string>{"posted"});
    q.advance(180.0);
    ASSERT_EQ(log.size(), 3u);
    EXPECT_EQ(log[1], "paste");
    EXPECT_EQ(log[2].substr(0, 11), "restore@1.2");
    EXPECT_DOUBLE_EQ(q.now(), 180.0);
    EXPECT_EQ(q.pendingCount(), 0);
}

TEST(VirtualMainQueue, RepeatingTimersRunUntilCancelledEvenFromWithin) {
    VirtualMainQueue q;
    int ticks = 0;
    TimerHandle handle;
    handle = q.every(2.0, [&] {
        if (++ticks == 30) {
            handle.cancel();
        }
    });
    q.advance(100.0);
    EXPECT_EQ(ticks, 30);
    // A task scheduled by a task at the same moment still runs in that advance.
    bool chained = false;
    q.after(1.0, [&] { q.after(0, [&] { chained = true; }); });
    q.advance(1.0);
    EXPECT_TRUE(chained);
}

TEST(VirtualMainQueue, TakesWorkPostedFromOtherThreads) {
    VirtualMainQueue q;
    std::atomic<bool> ranOnMain{false};
    std::thread worker([&] { q.post([&] { ranOnMain = q.isMainThread(); }); });
    EXPECT_TRUE(q.waitForPosted(5.0));
    worker.join();
    EXPECT_TRUE(ranOnMain);
    EXPECT_FALSE(q.waitForPosted(0.01));
}

TEST(SerialQueue, RunsTasksInOrderOnOneThreadAndSyncWaits) {
    std::vector<int> order;
    std::thread::id first;
    bool sameThread = true;
    {
        SerialQueue q("tevra.test");
        for (int i = 0; i < 100; ++i) {
            q.async([&, i] {
                if (i == 0) {
                    first = std::this_thread::get_id();
                }
                sameThread = sameThread && std::this_thread::get_id() == first;
                order.push_back(i);
            });
        }
        EXPECT_EQ(q.sync([&] { return static_cast<int>(order.size()); }), 100);
        // Re-entrant sync runs in place instead of waiting on itself.
        EXPECT_EQ(q.sync([&] { return q.sync([] { return 7; }); }), 7);
        q.async([] { throw std::runtime_error("dropped"); });
        q.async([&] { order.push_back(100); });
    }
    EXPECT_TRUE(sameThread);
    ASSERT_EQ(order.size(), 101u);
    for (int i = 0; i <= 100; ++i) {
        EXPECT_EQ(order[static_cast<size_t>(i)], i);
    }
}

}  // namespace
}  // namespace tevra
