// The call detector on virtual time, fed by scripted signals: when the
// microphone goes live or quiet and which windows exist, moment by moment.
#include "notetaker/call_detector.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdio>

#include "base/virtual_main_queue.h"
#include "support/recording_call_signals.h"

namespace tevra {
namespace {

using testing::ScriptedApplications;
using testing::ScriptedMicrophoneUse;

// At a moment the microphone is live or not, these windows exist (and one is
// in front), and auto-detection may be switched.
struct Moment {
    double at;
    bool hot;
    std::vector<std::string> windows = {"zoom"};
    std::optional<std::string> front = {};
    std::optional<bool> enable = {};
};

struct Case {
    const char* name;
    std::vector<Moment> moments;
    double until;
    std::vector<std::string> reported;  // the callbacks, with the virtual time they came at
};

std::string at(const std::string& what, double time) {
    char stamp[32];
    std::snprintf(stamp, sizeof stamp, " at %.1f", time);
    return what + stamp;
}

TEST(CallDetector, DebouncesStartsAndEndsAsTheMomentsCome) {
    const Case cases[] = {
        {"a call starts the first evaluation 2.5 s after the condition began",
         {{0.5, true}},
         6,
         {"started Zoom at 3.0"}},
        {"2.4 s of microphone starts nothing", {{0.5, true}, {2.9, false}}, 10, {}},
        {"a break makes the debounce count again",
         {{0.5, true}, {2.0, false}, {2.2, true}},
         6,
         {"started Zoom at 5.0"}},
        {"a drop of 5 s changes nothing; 6 s of it end the call",
         {{0.5, true}, {4.5, false}, {9.5, true}, {11.0, false}},
         20,
         {"started Zoom at 3.0", "ended at 17.0"}},
        {"a call moving from Zoom to Slack stays one call; quitting both ends it",
         {{0.5, true}, {5.0, true, {"slack"}}, {8.0, true, {}}},
         20,
         {"started Zoom at 3.0", "ended at 14.0"}},
        {"a dictation into an editor is no call", {{0.5, true, {"gedit"}, "gedit"}}, 10, {}},
        {"a browser counts only in front, as Google Meet",
         {{0.5, true, {"firefox"}}, {4.0, true, {"firefox"}, "firefox"}},
         8,
         {"started Google Meet at 7.0"}},
        {"switching off clears the dates, so the debounce starts again",
         {{0.5, true}, {1.5, true, {"zoom"}, {}, false}, {2.0, true, {"zoom"}, {}, true}},
         6,
         {"started Zoom at 5.0"}},
        {"off during a call leaves it in progress; the end comes once it is on again",
         {{0.5, true}, {4.0, false, {"zoom"}, {}, false}, {21.0, false, {"zoom"}, {}, true}},
         30,
         {"started Zoom at 3.0", "ended at 27.0"}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        VirtualMainQueue queue;
        auto mic = std::make_shared<ScriptedMicrophoneUse>();
        auto apps = std::make_shared<ScriptedApplications>();
        std::vector<std::string> logs;
        std::vector<std::string> reported;
        auto detector = CallDetector::create(
            queue, mic, apps, [&](const std::string& line) { logs.push_back(line); });
        detector->onCallStarted = [&](const std::string& app) {
            reported.push_back(at("started " + app, queue.now()));
        };
        detector->onCallEnded = [&] { reported.push_back(at("ended", queue.now())); };
        detector->setEnabled(true);
        detector->start();
        for (const Moment& moment : c.moments) {
            queue.advance(moment.at - queue.now());
            apps->windows = moment.windows;
            apps->front = moment.front;
            if (moment.enable) {
                detector->setEnabled(*moment.enable);
            }
            mic->set(moment.hot);
            queue.runPending();
        }
        queue.advance(c.until - queue.now());
        EXPECT_EQ(reported, c.reported);
        // Each report is logged as it is decided.
        for (const std::string& line : logs) {
            EXPECT_THAT(line,
                        ::testing::MatchesRegex("callDetector: (autoDetect=(true|false)|START "
                                                "[A-Za-z ]+ \\(micHot=true\\)|END)"));
        }
    }
}

TEST(CallDetector, AsksLittleWhileOffOrQuietAndLeavesNothingBehindWhenStopped) {
    VirtualMainQueue queue;
    auto mic = std::make_shared<ScriptedMicrophoneUse>();
    auto apps = std::make_shared<ScriptedApplications>();
    auto detector = CallDetector::create(queue, mic, apps, [](const std::string&) {});
    detector->start();
    queue.advance(10);
    EXPECT_EQ(mic->questions, 0) << "switched off, the poll costs one comparison";

    detector->setEnabled(true);
    queue.advance(10);
    EXPECT_EQ(mic->questions, 10);
    EXPECT_EQ(apps->listings, 0) << "without the microphone no window needs listing";

    detector->stop();
    detector->stop();
    EXPECT_FALSE(mic->onChange) << "the listener is gone";
    EXPECT_EQ(queue.pendingCount(), 0) << "the poll is gone";
}

}  // namespace
}  // namespace tevra
