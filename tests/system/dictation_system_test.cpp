// The real tevra program on the test desktop: Xvfb with openbox, PulseAudio
// with the virtual microphone, loopback speech and chat services reached
// through the relay setting, a fresh data directory, and a GTK application of
// another process whose text field receives the dictation.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <unistd.h>

#include <QGuiApplication>
#include <QProcess>
#include <QProcessEnvironment>
#include <QScreen>
#include <atomic>
#include <chrono>
#include <cmath>
#include <csignal>
#include <fstream>
#include <map>
#include <mutex>
#include <nlohmann/json.hpp>
#include <thread>

#include "pill/qt/pill_cards.h"
#include "store/history_store.h"
#include "stt/wav_reader.h"
#include "support/desktop/event_wait.h"
#include "support/desktop/peer_process.h"
#include "support/desktop/screenshots.h"
#include "support/loopback_server.h"
#include "support/speech_samples.h"
#include "support/subprocess.h"
#include "support/temp_dir.h"
#include "system/dictation_system_fixture.h"
#include "system/tevra_process.h"
#include "system/virtual_microphone.h"

namespace tevra {
namespace {

using ::testing::HasSubstr;
using testing::PeerProcess;
using testing::waitUntil;
using testing::xdotool;

// The pill's window as the X server has it; none while it is not on the screen.
std::optional<QRect> pillWindow() {
    const std::string ids = xdotool({"search", "--onlyvisible", "--name", "^Tevra pill$"});
    if (ids.empty()) {
        return std::nullopt;
    }
    const std::string shell = xdotool(
        {"getwindowgeometry", "--shell", QString::fromStdString(ids.substr(0, ids.find('\n')))});
    std::map<std::string, int> values;
    for (const QString& line : QString::fromStdString(shell).split('\n')) {
        const auto parts = line.split('=');
        if (parts.size() == 2) {
            values[parts[0].toStdString()] = parts[1].toInt();
        }
    }
    return QRect(values["X"], values["Y"], values["WIDTH"], values["HEIGHT"]);
}

bool waitForPill(QSize size, double seconds, std::optional<QRect>* seen = nullptr) {
    std::optional<QRect> last;
    const bool reached = waitUntil(
        [&] {
            last = pillWindow();
            return last && last->size() == size;
        },
        seconds);
    if (seen) {
        *seen = last;
    }
    return reached;
}

TEST_F(DictationSystemTest, HoldingTheTalkKeyPutsThePolishedTextIntoAnotherApplication) {
    PeerProcess peer({.title = "Tevra system peer"});
    peer.activate();
    startTevra();
    EXPECT_THAT(log(), HasSubstr("scheme=fn, fn-tap, autopaste=true"));
    EXPECT_THAT(log(), ::testing::ContainsRegex("start-up: runtime\n.*start-up: notetaker\n.*"
                                                "start-up: pill\n.*start-up: hotkeys\n"));
    std::string greeting;
    EXPECT_TRUE(waitUntil(
        [&] {
            greeting += tevra.process().readAllStandardOutput().toStdString();
            return greeting.find("Tevra is running: hold Control_R anywhere, speak, let go.") !=
                   std::string::npos;
        },
        10))
        << greeting;

    ASSERT_TRUE(waitForPill({48, 30}, 10)) << "no pill at rest";
    dictate({"Control_R"}, "Fn \u2192 Dictate", [] {
        // The meter, on the pill at the bottom centre of the one screen.
        std::optional<QRect> pill;
        ASSERT_TRUE(waitForPill({84, 30}, 5, &pill)) << "the pill shows no recording";
        EXPECT_EQ(pill->topLeft(), QPoint(598, 758));
        const QImage shot =
            QGuiApplication::primaryScreen()->grabWindow(0, pill->x(), pill->y(), 84, 30).toImage();
        testing::saveScreenshot("system-pill-recording", shot);
        int white = 0;
        for (int x = 14; x < 70; ++x) {
            white += shot.pixelColor(x, 15).lightness() > 200;
        }
        EXPECT_GT(white, 4) << "no white bars of the meter";
    });
    const auto text = peer.waitFor(
        "text", 30, [](const nlohmann::json& event) { return event["text"] == kPolished; });
    ASSERT_TRUE(text.has_value()) << "the polished text never reached the peer";
    EXPECT_TRUE(waitForPill({48, 30}, 5)) << "the pill did not come back to rest";
    EXPECT_EQ(speechRequests.load(), 1);
    EXPECT_THAT(log(), ::testing::ContainsRegex("Dictate: [0-9]+ms stt \\+ [0-9]+ms compose"));

    {
        std::lock_guard lock(audioMutex);
        const auto audio = WAV::readPCM16(lastAudio);
        ASSERT_TRUE(std::holds_alternative<WAV::PCM16>(audio));
        const auto& pcm = std::get<WAV::PCM16>(audio);
        EXPECT_EQ(pcm.sampleRate, 16000);
        EXPECT_GT(pcm.samples.size(), 16000u / 2) << "the speech was not recorded";
    }
    HistoryStore history((dataDir() / "weft.sqlite").string());
    const auto rows = history.recent(5);
    ASSERT_EQ(rows.size(), 1u);
    EXPECT_EQ(rows[0].raw, kTranscript);
    EXPECT_EQ(rows[0].polished, kPolished);
    EXPECT_EQ(rows[0].app, "TevraPeer");
}

TEST_F(DictationSystemTest, AFailingSpeechServiceKeepsTheAudioAndPastesNothing) {
    speechStatus = 500;
    PeerProcess peer({.title = "Tevra system peer"});
    peer.activate();
    startTevra();

    dictate({"Control_R"}, "Fn \u2192 Dictate");
    ASSERT_TRUE(waitForLog("FAILED: ", 30));
    EXPECT_EQ(failedAudio().size(), 1u);
    pause(0.5);
    EXPECT_FALSE(peer.waitFor("text", 0.5).has_value()) << "something was pasted";
}

TEST_F(DictationSystemTest, EscDuringARecordingPastesNothing) {
    PeerProcess peer({.title = "Tevra system peer"});
    peer.activate();
    startTevra();

    xdotool({"keydown", "Control_R"});
    ASSERT_TRUE(waitForLog("Fn \u2192 Dictate", 10));
    pause(0.3);
    xdotool({"key", "Escape"});
    ASSERT_TRUE(waitForLog("cancelled (Esc)", 10));
    xdotool({"keyup", "Control_R"});
    pause(1.0);
    EXPECT_EQ(speechRequests.load(), 0);
    EXPECT_FALSE(peer.waitFor("text", 0.5).has_value());
    const auto keyEvents = peer.waitFor(
        "key", 0.1, [](const nlohmann::json& event) { return event["name"] == "escape"; });
    EXPECT_FALSE(keyEvents.has_value()) << "Esc reached the application during the capture";
}

TEST_F(DictationSystemTest, TheAltSchemeDictatesTooAndStandsInForATalkKeyThatIsNoKey) {
    PeerProcess peer({.title = "Tevra system peer"});
    peer.activate();
    // Told on the terminal: the talk key that cannot be used and why.
    startTevra({{"talkKey", "NoSuchKey"}});
    EXPECT_THAT(log(), HasSubstr("scheme=fn, hotkey"));
    std::string terminal;
    EXPECT_TRUE(waitUntil(
        [&] {
            terminal += tevra.process().readAllStandardError().toStdString();
            return terminal.find(
                       "tevra: the talk key cannot be used: \"NoSuchKey\" is not "
                       "the name of a key") != std::string::npos;
        },
        10))
        << terminal;

    dictate({"Alt_L", "1"}, "Fn \u2192 Dictate");
    const auto text = peer.waitFor(
        "text", 30, [](const nlohmann::json& event) { return event["text"] == kPolished; });
    EXPECT_TRUE(text.has_value()) << "the polished text never reached the peer";
}

TEST_F(DictationSystemTest, ASecondInstanceStepsAsideAndAHandEditOfTheSettingsTakesEffect) {
    // A damaged history on the way: moved aside, and said where, in the log and the terminal.
    std::ofstream(dataDir() / "weft.sqlite") << std::string(1024, '#');
    startTevra();
    const std::string movedTo = "it was moved to " + (dataDir() / "weft.sqlite.damaged-").string();
    EXPECT_THAT(log(), HasSubstr(movedTo));
    std::string terminal;
    EXPECT_TRUE(waitUntil(
        [&] {
            terminal += tevra.process().readAllStandardError().toStdString();
            return terminal.find("tevra: the history database was damaged") != std::string::npos;
        },
        10))
        << terminal;
    EXPECT_THAT(terminal, HasSubstr(movedTo));

    // A second launch asks the first for its window, and leaves.
    const auto second = testing::runProcess({TEVRA_PATH});
    EXPECT_EQ(second.exitCode, 0) << second.err;
    EXPECT_THAT(second.out, HasSubstr("Tevra is already running"));
    EXPECT_TRUE(waitForLog("reopen", 10));

    nlohmann::json edited = {{"hotkey", "option"}, {"proxyBaseURL", service.baseURL() + "/v1"}};
    std::ofstream(dataDir() / "settings.json") << edited.dump();
    EXPECT_TRUE(waitForLog("scheme=option, hotkey", 10)) << "the edit was not taken into use";
}

TEST_F(DictationSystemTest, TevractlDrivesADictationOverTheSessionBusAsTheTalkKeyWould) {
    const auto absent = testing::runProcess({TEVRACTL_PATH, "status"});
    EXPECT_EQ(absent.exitCode, 1);
    EXPECT_EQ(absent.err, "tevractl status: Tevra is not running\n");

    PeerProcess peer({.title = "Tevra system peer"});
    peer.activate();
    startTevra();
    EXPECT_EQ(testing::runProcess({TEVRACTL_PATH, "status"}).out,
              "capture: idle\nnotetaker: idle\n");
    const auto speech = testing::spokenSamples(kTranscript, 48000, 2);
    const std::pair<std::string, std::string> ways[] = {{"start", "finish"}, {"toggle", "toggle"}};
    for (const auto& [begin, end] : ways) {
        VirtualMicrophone microphone;
        ASSERT_EQ(testing::runProcess({TEVRACTL_PATH, "record", begin}).exitCode, 0);
        ASSERT_TRUE(waitForLog("Fn \u2192 Dictate", 10));
        pause(0.3);  // the record stream opens
        microphone.speak(speech);
        ASSERT_TRUE(waitUntil([&] { return microphone.finished(); }, 20));
        const auto finished = testing::runProcess({TEVRACTL_PATH, "record", end});
        ASSERT_EQ(finished.exitCode, 0) << finished.err;
        EXPECT_TRUE(peer.waitFor("text", 30, [](const nlohmann::json& event) {
            return event["text"].get<std::string>().ends_with(kPolished);
        })) << begin;
    }
    EXPECT_EQ(speechRequests.load(), 2);
}

TEST_F(DictationSystemTest, ADroppedPillSnapsToTheNearestEdgeAndIsThereAfterARestart) {
    startTevra();
    ASSERT_TRUE(waitForPill({48, 30}, 10));
    xdotool({"mousemove", "640", "773"});
    ASSERT_TRUE(waitForPill({244, 250}, 5)) << "the mouse did not open the card";
    xdotool({"mousedown", "1"});
    for (const char* x : {"600", "400", "200", "80"}) {
        xdotool({"mousemove", x, "500"});
        pause(0.05);
    }
    xdotool({"mouseup", "1"});
    std::optional<QRect> pill;
    EXPECT_TRUE(waitForPill({26, 54}, 5, &pill)) << "no tab on the left edge";
    ASSERT_TRUE(pill.has_value());
    EXPECT_EQ(pill->x(), 12);
    const std::string layout = testing::readFile(dataDir() / "pill_layout.json");
    EXPECT_NE(layout.find("\"edge\":\"left\""), std::string::npos) << layout;

    tevra.stop();
    startTevra();
    std::optional<QRect> again;
    EXPECT_TRUE(waitForPill({26, 54}, 10, &again));
    EXPECT_EQ(again, pill) << "not where it was left";
}

TEST_F(DictationSystemTest, ARowClickedOnTheCardIsPastedWhereTheUserWas) {
    {
        HistoryStore history((dataDir() / "weft.sqlite").string());
        history.seedDefaultsIfEmpty();
        HistoryRow row;
        row.polished = "Pasted again from the pill.";
        history.add(row);
    }
    PeerProcess peer({.title = "Tevra system peer"});
    peer.activate();
    startTevra();
    ASSERT_TRUE(waitForPill({48, 30}, 10));
    xdotool({"mousemove", "640", "773"});
    ASSERT_TRUE(waitForPill({244, 250}, 5));
    xdotool({"click", "1"});
    std::optional<QRect> card;
    ASSERT_TRUE(waitForPill({320, 412}, 5, &card)) << "a click did not open the history";
    pause(0.4);  // the card has opened
    testing::saveScreenshot(
        "system-pill-history",
        QGuiApplication::primaryScreen()->grabWindow(0, card->x(), card->y(), 320, 412).toImage());
    const QPointF row = card->topLeft() + PillCards::fullLayout({320, 412}).rows[0].center();
    xdotool({"mousemove", QString::number(row.x()), QString::number(row.y())});
    xdotool({"click", "1"});

    const auto text = peer.waitFor("text", 10, [](const nlohmann::json& event) {
        return event["text"] == "Pasted again from the pill.";
    });
    EXPECT_TRUE(text.has_value()) << "the row never reached the application";
    EXPECT_TRUE(waitForPill({48, 30}, 5)) << "the card stayed open";
    const auto lost = peer.waitFor(
        "active", 0.5, [](const nlohmann::json& event) { return event["active"] == false; });
    EXPECT_FALSE(lost.has_value()) << "the application lost the focus";
}

TEST_F(DictationSystemTest, ACrashLeavesItsStackAndTheNextStartMakesAReport) {
    startTevra();
    ASSERT_EQ(::kill(static_cast<pid_t>(tevra.process().processId()), SIGSEGV), 0);
    ASSERT_TRUE(tevra.process().waitForFinished(15000));
    EXPECT_EQ(tevra.process().exitStatus(), QProcess::CrashExit);
    const auto signalFile = dataDir() / "crash" / "last-signal.txt";
    EXPECT_THAT(testing::readFile(signalFile), HasSubstr("/tevra(+"));

    const auto pending = dataDir() / "crash" / "pending.json";
    startTevra();
    ASSERT_TRUE(waitUntil([&] { return std::filesystem::exists(pending); }, 30));
    const auto report = nlohmann::json::parse(testing::readFile(pending), nullptr, false);
    EXPECT_EQ(report["kind"], "signal");
    EXPECT_THAT(report["frames"].dump(), HasSubstr("/tevra(+"));
    EXPECT_FALSE(std::filesystem::exists(signalFile));
}

TEST(TevraWithoutADisplay, SaysSoInOneLineAndExits) {
    for (const std::optional<std::string>& display :
         {std::optional<std::string>(), std::optional<std::string>(":97")}) {
        const auto result = testing::runProcess(
            {TEVRA_PATH}, {{"DISPLAY", display}, {"WAYLAND_DISPLAY", std::nullopt}});
        EXPECT_EQ(result.exitCode, 1);
        EXPECT_EQ(std::count(result.err.begin(), result.err.end(), '\n'), 1) << result.err;
        EXPECT_THAT(result.err,
                    HasSubstr(display ? "cannot open the X display :97" : "no desktop session"));
    }
}

}  // namespace
}  // namespace tevra
