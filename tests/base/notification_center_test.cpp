#include "base/notification_center.h"

#include <gtest/gtest.h>

#include <optional>
#include <thread>

#include "base/virtual_main_queue.h"
#include "core/weft_settings.h"

namespace tevra {
namespace {

TEST(NotificationCenter, DeliversEachPostLaterOnTheMainThreadToObserversOfThatName) {
    VirtualMainQueue queue;
    NotificationCenter center(queue);
    std::vector<std::string> calls;
    auto pill = center.observe(weftSettingsChanged, [&] {
        calls.push_back(queue.isMainThread() ? "pill" : "pill off the main thread");
    });
    auto app = center.observe("weft.settingsChanged", [&] { calls.push_back("app"); });
    auto other = center.observe("weft.somethingElse", [&] { calls.push_back("other"); });

    center.post(weftSettingsChanged);
    EXPECT_TRUE(calls.empty()) << "post must not run observers in place";
    queue.runPending();
    EXPECT_EQ(calls, (std::vector<std::string>{"pill", "app"}));

    std::thread saver([&] { center.post(weftSettingsChanged); });
    saver.join();
    center.post(weftSettingsChanged);
    EXPECT_EQ(calls.size(), 2u);
    EXPECT_TRUE(queue.waitForPosted(5.0));
    queue.runPending();
    EXPECT_EQ(calls, (std::vector<std::string>{"pill", "app", "pill", "app", "pill", "app"}));
}

TEST(NotificationCenter, AGoneObserverIsNeverCalledEvenWithADeliveryQueued) {
    VirtualMainQueue queue;
    NotificationCenter center(queue);
    int destroyed = 0, cancelled = 0, moved = 0;
    std::optional<NotificationObserver> scoped =
        center.observe(weftSettingsChanged, [&] { ++destroyed; });
    NotificationObserver cancelledToken = center.observe(weftSettingsChanged, [&] { ++cancelled; });
    NotificationObserver movedFrom = center.observe(weftSettingsChanged, [&] { ++moved; });
    NotificationObserver movedTo = std::move(movedFrom);

    center.post(weftSettingsChanged);
    scoped.reset();
    cancelledToken.cancel();
    movedFrom.cancel();  // the moved-from token no longer owns the observer
    queue.runPending();
    EXPECT_EQ(destroyed + cancelled, 0);
    EXPECT_EQ(moved, 1);

    // Assigning over a token removes the observer it held.
    movedTo = center.observe("weft.other", [] {});
    center.post(weftSettingsChanged);
    queue.runPending();
    EXPECT_EQ(moved, 1);

    // A token and a queued delivery may outlive their centre.
    int calls = 0;
    NotificationObserver token;
    {
        NotificationCenter shortLived(queue);
        token = shortLived.observe(weftSettingsChanged, [&] { ++calls; });
        shortLived.post(weftSettingsChanged);
    }
    queue.runPending();
    token.cancel();
    EXPECT_EQ(calls, 0);
}

TEST(NotificationCenter, ObserversMayCancelObserveAndPostFromACallback) {
    VirtualMainQueue queue;
    NotificationCenter center(queue);
    int second = 0, late = 0, firstCalls = 0;
    NotificationObserver secondToken, lateToken;
    auto first = center.observe(weftSettingsChanged, [&] {
        if (++firstCalls == 1) {
            secondToken.cancel();
            lateToken = center.observe(weftSettingsChanged, [&] { ++late; });
            center.post(weftSettingsChanged);
        }
    });
    secondToken = center.observe(weftSettingsChanged, [&] { ++second; });

    center.post(weftSettingsChanged);
    queue.runPending();  // also runs the post made inside the callback
    EXPECT_EQ(firstCalls, 2);
    EXPECT_EQ(second, 0);
    EXPECT_EQ(late, 1);
}

}  // namespace
}  // namespace tevra
