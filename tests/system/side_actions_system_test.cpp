// The real tevra program's keys that need no recording, on the test desktop:
// the selection translated in place, the clipboard queue, and the screenshot
// voice reading a region of a terminal, with a loopback chat service behind
// the relay setting and a GTK application of another process as the editor.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QProcess>
#include <mutex>
#include <nlohmann/json.hpp>

#include "support/desktop/event_wait.h"
#include "support/desktop/peer_process.h"
#include "support/loopback_server.h"
#include "support/temp_dir.h"
#include "system/tevra_process.h"

namespace tevra {
namespace {

using ::testing::HasSubstr;
using testing::PeerProcess;
using testing::waitUntil;
using testing::xdotool;

constexpr const char* kScreenReply = "Quarterly numbers are up.";

void pause(double seconds) {
    waitUntil([] { return false; }, seconds);
}

// The talk key with a chord key struck while it is down.
void chord(const QString& key) {
    xdotool({"keydown", "Control_R", "key", key, "keyup", "Control_R"});
}

bool peerShows(PeerProcess& peer, const std::string& text) {
    return peer
        .waitFor("text", 30, [&](const nlohmann::json& event) { return event["text"] == text; })
        .has_value();
}

TEST(SideActionsSystemTest, TranslateInPlaceQueueTwoTextsAndReadARegionOffTheScreen) {
    testing::TempDir home;
    testing::LoopbackServer service;
    std::mutex mutex;
    std::vector<std::string> composed;  // what the voice's prompt was given
    service.server().Post("/v1/chat/completions", [&](const httplib::Request& req,
                                                      httplib::Response& res) {
        const auto body = nlohmann::json::parse(req.body);
        const std::string system = body["messages"][0]["content"];
        const std::string user = body["messages"].back()["content"];
        std::string reply = kScreenReply;
        if (system.starts_with("Translate the following into English")) {
            reply = user == "guten morgen" ? "good morning" : "(" + user + "?)";
        } else {
            std::lock_guard lock(mutex);
            composed.push_back(user);
        }
        res.set_content(nlohmann::json{{"choices", {{{"message", {{"content", reply}}}}}}}.dump(),
                        "application/json");
    });
    service.start();
    TevraProcess tevra(home.path());
    PeerProcess peer({.title = "Side actions peer", .text = "guten morgen", .textview = true});
    peer.activate();
    tevra.start(nlohmann::json::object(), service.baseURL() + "/v1");
    const auto report = [&] { return tevra.report(); };

    // The selection, translated where it stands.
    xdotool({"key", "ctrl+a"});
    chord("7");
    ASSERT_TRUE(peerShows(peer, "good morning")) << report();
    EXPECT_TRUE(tevra.waitForLog("translate selection \u2192 en: 12 chars", 5)) << report();
    pause(1.5);  // what the clipboard held before the paste comes back

    // Two copied texts queued, then pasted at once, one per line.
    xdotool({"key", "ctrl+a", "key", "ctrl+c"});
    chord("0");
    pause(1);
    xdotool({"key", "ctrl+a", "type", "second text"});
    xdotool({"key", "ctrl+a", "key", "ctrl+c"});
    chord("0");
    pause(1);
    xdotool({"key", "ctrl+a", "key", "BackSpace"});
    chord("period");
    ASSERT_TRUE(peerShows(peer, "good morning\nsecond text")) << report();

    // The screenshot voice: a region dragged over a terminal's large letters.
    QProcess xterm;
    xterm.start("xterm",
                {"-T", "Quarterly terminal", "-geometry", "40x3+40+420", "-fa", "DejaVu Sans Mono",
                 "-fs", "20", "-e", "sh", "-c", "printf 'QUARTERLY NUMBERS\\nARE UP'; sleep 120"});
    ASSERT_TRUE(xterm.waitForStarted(10000)) << "xterm is missing: run scripts/install-deps";
    ASSERT_TRUE(waitUntil(
        [] {
            return !xdotool({"search", "--name", "Quarterly terminal"}).empty();
        },
        10));
    pause(1);  // the terminal draws its text
    peer.activate();
    xdotool({"key", "ctrl+a", "key", "BackSpace"});
    chord("5");
    ASSERT_TRUE(tevra.waitForLog("Fn 5 \u2192 Screenshot \u2192 text", 10)) << report();
    pause(1.5);  // the region picker covers the screen
    xdotool(
        {"mousemove", "42", "422", "mousedown", "1", "mousemove", "700", "540", "mouseup", "1"});
    ASSERT_TRUE(peerShows(peer, kScreenReply)) << report();
    {
        std::lock_guard lock(mutex);
        ASSERT_EQ(composed.size(), 1u);
        EXPECT_THAT(composed[0], HasSubstr("QUARTERLY NUMBERS\nARE UP"));
    }
    xterm.kill();
    xterm.waitForFinished(5000);
}

}  // namespace
}  // namespace tevra
