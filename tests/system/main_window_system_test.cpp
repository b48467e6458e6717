// The main window of the real tevra program on the test desktop, driven
// through the accessibility bus as a screen reader drives it: a phrase into
// the dictionary, a voice switched off, a setting saved; and the first start's
// wizard, closed by its window's button.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <nlohmann/json.hpp>

#include "core/weft_settings.h"
#include "store/history_store.h"
#include "support/desktop/event_wait.h"
#include "support/desktop/peer_process.h"
#include "support/loopback_server.h"
#include "support/subprocess.h"
#include "support/temp_dir.h"
#include "system/tevra_process.h"
// Xlib last: its macros clash with Qt's names.
#include <X11/Xlib.h>

namespace tevra {
namespace {

// What the close button of a title bar does: the window manager asks the
// window to close with WM_DELETE_WINDOW.
void askToClose(const std::string& title) {
    const std::string found =
        testing::xdotool({"search", "--name", QString::fromStdString("^" + title + "$")});
    ASSERT_FALSE(found.empty()) << "no window " << title;
    Display* display = XOpenDisplay(nullptr);
    ASSERT_NE(display, nullptr);
    const ::Window window = std::stoul(found.substr(0, found.find('\n')));
    XEvent event{};
    event.xclient.type = ClientMessage;
    event.xclient.window = window;
    event.xclient.message_type = XInternAtom(display, "WM_PROTOCOLS", False);
    event.xclient.format = 32;
    event.xclient.data.l[0] = static_cast<long>(XInternAtom(display, "WM_DELETE_WINDOW", False));
    event.xclient.data.l[1] = CurrentTime;
    XSendEvent(display, window, False, NoEventMask, &event);
    XFlush(display);
    XCloseDisplay(display);
}

class MainWindowSystemTest : public ::testing::Test {
protected:
    testing::TempDir home;
    testing::LoopbackServer service;
    TevraProcess tevra{home.path()};

    void SetUp() override { service.start(); }
    void TearDown() override {
        tevra.stop();
        if (HasFailure()) {
            std::cerr << tevra.report();
        }
    }
    void startTevra(nlohmann::json settings = nlohmann::json::object()) {
        // Qt speaks to the accessibility bus only when asked to.
        tevra.start(std::move(settings), service.baseURL() + "/v1",
                    {{"QT_LINUX_ACCESSIBILITY_ALWAYS_ON", "1"}});
    }
    // One step of the driver; its complaint when it fails.
    static std::string drive(const std::vector<std::string>& step) {
        std::vector<std::string> argv = {
            "/usr/bin/python3", TEVRA_TEST_SUPPORT_DIR "/desktop/atspi_driver.py", "tevra"};
        argv.insert(argv.end(), step.begin(), step.end());
        const auto run = testing::runProcess(argv);
        return run.exitCode == 0 ? std::string() : run.out + run.err;
    }
    WeftSettings settings() const { return WeftSettings::load(tevra.dataDir()); }
};

TEST_F(MainWindowSystemTest, TheWindowWritesThroughToTheStoreAndTheSettings) {
    startTevra();
    const auto opened = testing::runProcess({TEVRACTL_PATH, "window"});
    ASSERT_EQ(opened.exitCode, 0) << opened.err;
    ASSERT_EQ(drive({"window", "Tevra"}), "");

    EXPECT_EQ(drive({"select", "Sections", "Dictionary"}), "");
    EXPECT_EQ(drive({"type", "Phrase", "Kestrum Cloud"}), "");
    EXPECT_EQ(drive({"press", "Add phrase"}), "");

    EXPECT_EQ(drive({"select", "Sections", "Modes"}), "");
    EXPECT_EQ(drive({"press", "Command on"}), "");

    EXPECT_EQ(drive({"select", "Sections", "Settings"}), "");
    EXPECT_EQ(drive({"type", "Language hint (empty = auto-detect)", "pl"}), "");
    EXPECT_EQ(drive({"press", "Save settings"}), "");

    EXPECT_TRUE(testing::waitUntil([&] { return settings().languageHint == "pl"; }, 10));
    HistoryStore store((tevra.dataDir() / "weft.sqlite").string());
    const auto dictionary = store.dictionary();
    EXPECT_THAT(dictionary, ::testing::Contains("Kestrum Cloud"));
    const auto modes = store.modes();
    const auto command = std::ranges::find(modes, 1, &Mode::slot);
    ASSERT_NE(command, modes.end());
    EXPECT_EQ(command->name, "Command");
    EXPECT_FALSE(command->enabled);
    // The keys follow the switch without a restart.
    EXPECT_TRUE(tevra.waitForLog("hotkeys: 5 modes", 10));
}

TEST_F(MainWindowSystemTest, TheFirstStartShowsTheWizardAndClosingItEndsTheFirstRun) {
    startTevra({{"onboarded", false}});
    ASSERT_EQ(drive({"window", "Welcome to Tevra"}), "");
    EXPECT_EQ(drive({"press", "Continue"}), "");
    EXPECT_EQ(drive({"type", "First name", "Ann"}), "");
    askToClose("Welcome to Tevra");
    EXPECT_TRUE(testing::waitUntil([&] { return settings().onboarded; }, 10));
    EXPECT_EQ(settings().userFirstName, "");
}

}  // namespace
}  // namespace tevra
