// The real tevra program in a Wayland session of its own: a headless sway
// with no XWayland, whose bindings run tevractl as the README shows, and
// native Wayland windows (Qt 6, GTK 3, the foot terminal) that receive the
// dictation through data control and the virtual keyboard.
#include <QApplication>
#include <QObject>
#include <fstream>

#include "app/qt/qt_main_queue.h"
#include "capture/qt/portal_remote_desktop.h"
#include "capture/wayland/data_control_clipboard.h"
#include "support/desktop/kwin_session.h"
#include "support/desktop/sway_session.h"
#include "support/subprocess.h"
#include "system/dictation_system_fixture.h"

namespace tevra {
namespace {

using ::testing::HasSubstr;
using testing::PeerProcess;
using testing::waitUntil;

// What another application left on the clipboard: several formats, one of
// them binary.
const ClipboardData kBefore{{{"text/html", "<b>kept</b> across the dictation"},
                             {"text/plain", "kept across the dictation"},
                             {"image/png", std::string("\x89PNG\r\n\x1a\n\0\0 binary", 18)}}};

class WaylandSystemTest : public DictationSystemTest {
protected:
    testing::SwaySession sway{{"bindsym Ctrl+F9 exec " TEVRACTL_PATH " record toggle",
                               "bindsym Ctrl+F10 exec " TEVRACTL_PATH " record cancel"}};
    QObject timers;
    QtMainQueue queue{&timers};
    std::shared_ptr<WaylandConnection> wayland;
    std::shared_ptr<DataControlClipboard> clipboard;

    void SetUp() override {
        DictationSystemTest::SetUp();
        ASSERT_TRUE(sway.running());
        wayland = WaylandConnection::open(sway.socket());
        ASSERT_TRUE(wayland);
        clipboard = DataControlClipboard::create(queue, wayland);
        ASSERT_TRUE(clipboard);
    }

    void TearDown() override {
        DictationSystemTest::TearDown();
        if (HasFailure()) {
            std::cerr << "--- sway ---\n" << sway.log();
        }
    }

    std::map<std::string, std::optional<std::string>> clientEnvironment() const {
        // The compositor's bus, which has no accessibility bus: the desktop
        // tests that watch the focus there are not disturbed.
        return {{"WAYLAND_DISPLAY", sway.socket()},
                {"DBUS_SESSION_BUS_ADDRESS", sway.busAddress()},
                {"DISPLAY", std::nullopt},
                {"GDK_BACKEND", "wayland"},
                {"QT_QPA_PLATFORM", "wayland"}};
    }

    void startOnSway() {
        startTevra(nlohmann::json::object(),
                   {{"WAYLAND_DISPLAY", QString::fromStdString(sway.socket())},
                    {"DISPLAY", QString()},
                    {"XDG_SESSION_TYPE", "wayland"},
                    {"DBUS_SESSION_BUS_ADDRESS", QString::fromStdString(sway.busAddress())}});
    }

    // The clipboard as wl-paste, another data-control client, reads it.
    std::map<std::string, std::string> clipboardNow() const {
        std::map<std::string, std::string> formats;
        const auto types =
            testing::runProcess({"wl-paste", "--list-types"}, {{"WAYLAND_DISPLAY", sway.socket()}});
        std::istringstream lines(types.out);
        for (std::string type; std::getline(lines, type);) {
            formats[type] = testing::runProcess({"wl-paste", "--no-newline", "--type", type},
                                                {{"WAYLAND_DISPLAY", sway.socket()}})
                                .out;
        }
        return formats;
    }

    std::size_t captures() const { return occurrences("Fn \u2192 Dictate"); }

    // The binding pressed, the microphone speaking, the binding pressed again.
    void dictateThroughTheBinding() {
        const auto speech = testing::spokenSamples(kTranscript, 48000, 2);
        const std::size_t before = captures();
        VirtualMicrophone microphone;
        sway.press({"ctrl"}, "F9");
        ASSERT_TRUE(waitUntil([&] { return captures() > before; }, 10)) << "no capture started";
        pause(0.3);  // the record stream opens
        microphone.speak(speech);
        ASSERT_TRUE(waitUntil([&] { return microphone.finished(); }, 20));
        pause(0.3);
        sway.press({"ctrl"}, "F9");
    }
};

TEST_F(WaylandSystemTest, ABindingOfTevractlDictatesIntoNativeWaylandWindows) {
    startOnSway();
    EXPECT_TRUE(waitForLog("Wayland (wlroots) session \u2014 keys: session bus", 5)) << log();
    EXPECT_THAT(log(), HasSubstr("paste: virtual keyboard; clipboard: data control"));
    EXPECT_THAT(testing::runProcess({TEVRACTL_PATH, "status"},
                                    {{"DBUS_SESSION_BUS_ADDRESS", sway.busAddress()}})
                    .out,
                HasSubstr("session: Wayland (wlroots) session \u2014 keys: session bus"));

    std::map<std::string, std::string> before;
    for (const auto& [type, bytes] : kBefore.formats) {
        before[type] = bytes;
    }
    for (const bool qt : {true, false}) {
        PeerProcess peer(
            {.title = qt ? "Qt peer" : "GTK peer", .qt = qt, .environment = clientEnvironment()});
        ASSERT_TRUE(peer.waitFor("ready", 20)) << (qt ? "Qt" : "GTK");
        clipboard->restore({kBefore});
        ASSERT_TRUE(waitUntil([&] { return clipboardNow() == before; }, 5));

        dictateThroughTheBinding();
        EXPECT_TRUE(peer.waitFor("text", 30, [](const nlohmann::json& event) {
            return event["text"] == kPolished;
        })) << (qt ? "Qt" : "GTK");
        pause(1.5);  // the restore comes 1.2 s after the paste
        EXPECT_EQ(clipboardNow(), before) << "every format is back";
    }

    // A terminal pastes with Ctrl+Shift+V; the compositor names it by its app id.
    testing::TempDir out;
    QProcess foot;
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert("WAYLAND_DISPLAY", QString::fromStdString(sway.socket()));
    env.remove("DISPLAY");
    foot.setProcessEnvironment(env);
    foot.start("foot", {"--app-id=foot", "sh", "-c",
                        QString::fromStdString("stty -icanon -echo; exec cat > " +
                                               (out / "typed").string())});
    ASSERT_TRUE(waitUntil(
        [&] {
            return sway.message({"-t", "get_tree"}).find("\"app_id\": \"foot\"") !=
                   std::string::npos;
        },
        10));
    pause(0.5);
    dictateThroughTheBinding();
    EXPECT_TRUE(waitUntil([&] { return testing::readFile(out / "typed") == kPolished; }, 30))
        << testing::readFile(out / "typed");

    // The cancel binding ends a capture with nothing pasted.
    const std::size_t started = captures();
    sway.press({"ctrl"}, "F9");
    ASSERT_TRUE(waitUntil([&] { return captures() > started; }, 10));
    sway.press({"ctrl"}, "F10");
    EXPECT_TRUE(waitForLog("cancelled (Esc)", 5));
    pause(1.0);
    EXPECT_EQ(testing::readFile(out / "typed"), kPolished);
    foot.terminate();
    foot.waitForFinished(5000);
}

// KWin: the keys through the Global Shortcuts portal, the clipboard through
// data control, the paste chord through the Remote Desktop portal; KDE's
// backend grants both without a dialog here.
class KdeSystemTest : public DictationSystemTest {
protected:
    testing::KwinSession kwin;
};

TEST_F(KdeSystemTest, TheTalkShortcutHeldDictatesIntoQtAndGtkWindowsThroughThePortals) {
    ASSERT_TRUE(kwin.running());
    QObject timers;
    QtMainQueue queue{&timers};
    auto wayland = WaylandConnection::open(kwin.socket());
    ASSERT_TRUE(wayland);
    auto clipboard = DataControlClipboard::create(queue, wayland);
    ASSERT_TRUE(clipboard) << "KWin offers data control";
    // The keyboard the user holds: the test's own Remote Desktop session,
    // whose keys KWin's shortcuts see as a real keyboard's.
    const QDBusConnection testBus =
        QDBusConnection::connectToBus(QString::fromStdString(kwin.busAddress()), "kwin-test");
    testing::TempDir tokens;
    PortalRemoteDesktop keyboard(
        tokens / "token", [](const std::string&) {}, testBus);
    keyboard.start();

    const std::map<std::string, std::optional<std::string>> bus = {
        {"DBUS_SESSION_BUS_ADDRESS", kwin.busAddress()}};
    const std::map<QString, QString> session = {
        {"WAYLAND_DISPLAY", QString::fromStdString(kwin.socket())},
        {"DISPLAY", QString()},
        {"XDG_SESSION_TYPE", "wayland"},
        {"XDG_CURRENT_DESKTOP", "KDE"},
        {"DBUS_SESSION_BUS_ADDRESS", QString::fromStdString(kwin.busAddress())}};
    startTevra(nlohmann::json::object(), session);
    ASSERT_TRUE(waitForLog("remote desktop portal: keyboard granted", 15)) << kwin.log();
    ASSERT_TRUE(waitForLog("global shortcuts portal: bound talk=Alt+1", 15)) << kwin.log();
    ASSERT_TRUE(waitUntil([&] { return keyboard.isAvailable(); }, 15));
    EXPECT_THAT(
        testing::runProcess({TEVRACTL_PATH, "status"}, bus).out,
        HasSubstr("keys: global shortcuts portal; paste: remote desktop portal; clipboard: data "
                  "control"));

    // evdev numbers plus the X offset, as KeyStroke counts them.
    constexpr unsigned kAlt = 56 + 8;
    constexpr unsigned kOne = 2 + 8;
    constexpr unsigned kEight = 9 + 8;
    constexpr unsigned kCtrl = 29 + 8;
    constexpr unsigned kA = 30 + 8;
    const auto speech = testing::spokenSamples(kTranscript, 48000, 2);
    for (const bool qt : {true, false}) {
        PeerProcess peer({.title = qt ? "Qt peer" : "GTK peer",
                          .qt = qt,
                          .environment = {{"WAYLAND_DISPLAY", kwin.socket()},
                                          {"DBUS_SESSION_BUS_ADDRESS", kwin.busAddress()},
                                          {"DISPLAY", std::nullopt},
                                          {"GDK_BACKEND", "wayland"},
                                          {"QT_QPA_PLATFORM", "wayland"}}});
        ASSERT_TRUE(peer.waitFor("ready", 20)) << (qt ? "Qt" : "GTK");
        clipboard->restore({kBefore});

        VirtualMicrophone microphone;
        if (qt) {
            // Held to talk: Alt+1 down while speaking, then let go.
            keyboard.post({{kAlt, true}, {kOne, true}});
            ASSERT_TRUE(waitForLog("Fn \u2192 Dictate", 10)) << "no capture started";
        } else {
            // The session bus works besides the shortcuts.
            ASSERT_EQ(testing::runProcess({TEVRACTL_PATH, "record", "toggle"}, bus).exitCode, 0);
        }
        pause(0.5);  // the record stream opens
        microphone.speak(speech);
        ASSERT_TRUE(waitUntil([&] { return microphone.finished(); }, 20));
        if (qt) {
            keyboard.post({{kOne, false}, {kAlt, false}});
        } else {
            ASSERT_EQ(testing::runProcess({TEVRACTL_PATH, "record", "toggle"}, bus).exitCode, 0);
        }
        EXPECT_TRUE(peer.waitFor("text", 30, [](const nlohmann::json& event) {
            return event["text"] == kPolished;
        })) << (qt ? "Qt" : "GTK");
        pause(1.5);
        EXPECT_EQ(clipboard->text(), "kept across the dictation") << "the clipboard is back";
        if (qt) {
            // The dictated text selected and translated in place, by its
            // shortcut, the copy chord through the portal and data control.
            keyboard.post({{kCtrl, true}, {kA, true}, {kA, false}, {kCtrl, false}});
            pause(0.3);
            keyboard.post({{kAlt, true}, {kEight, true}, {kEight, false}, {kAlt, false}});
            EXPECT_TRUE(waitForLog("translate selection \u2192 en: 27 chars", 10));
            pause(1.5);
        }
    }

    // A second start binds the same shortcuts again, asking nothing, and the
    // talk key starts a dictation.
    const std::string bound = "global shortcuts portal: bound talk=Alt+1";
    const std::size_t bindings = occurrences(bound);
    tevra.stop();
    startTevra(nlohmann::json::object(), session);
    ASSERT_TRUE(waitUntil([&] { return occurrences(bound) > bindings; }, 15)) << log();
    const std::size_t starts = occurrences("Fn \u2192 Dictate");
    keyboard.post({{kAlt, true}, {kOne, true}, {kOne, false}, {kAlt, false}});
    EXPECT_TRUE(waitUntil([&] { return occurrences("Fn \u2192 Dictate") > starts; }, 10)) << log();
    testing::runProcess({TEVRACTL_PATH, "record", "cancel"}, bus);
}

}  // namespace
}  // namespace tevra
