// The notetaker of the real tevra program on the test desktop: a window of
// class "zoom", another program recording the virtual microphone as a call
// application does, speech on both sides of the call (the microphone's FIFO
// and the speakers, a null sink), and loopback speech and chat services
// reached through the relay setting.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>

#include <atomic>
#include <fstream>
#include <nlohmann/json.hpp>

#include "notetaker/session_spool.h"
#include "notetaker/transcript_assembly.h"
#include "store/history_store.h"
#include "stt/wav.h"
#include "support/child_process.h"
#include "support/desktop/event_wait.h"
#include "support/desktop/peer_process.h"
#include "support/loopback_server.h"
#include "support/speech_samples.h"
#include "support/temp_dir.h"
#include "system/tevra_process.h"
#include "system/virtual_microphone.h"

namespace tevra {
namespace {

using testing::BackgroundProgram;
using testing::PeerProcess;
using testing::waitUntil;

constexpr const char* kMine = "Where is the quarterly report?";
constexpr const char* kTheirs = "I will send it on Friday.";

class NotetakerSystemTest : public ::testing::Test {
protected:
    testing::TempDir home;
    testing::LoopbackServer service;
    std::atomic<int> speechRequests{0};
    TevraProcess tevra{home.path()};

    std::filesystem::path dataDir() const { return tevra.dataDir(); }

    void SetUp() override {
        // The microphone's windows are sent first: the first request is the user's.
        service.server().Post(
            "/v1/audio/transcriptions", [this](const httplib::Request&, httplib::Response& res,
                                               const httplib::ContentReader& reader) {
                testing::readMultipart(reader);
                const bool mine = ++speechRequests == 1;
                res.set_content(nlohmann::json{{"text", mine ? kMine : kTheirs}}.dump(),
                                "application/json");
            });
        service.server().Post(
            "/v1/chat/completions", [](const httplib::Request&, httplib::Response& res) {
                const std::string items =
                    R"({"items":[{"kind":"task","title":"Send the quarterly report",)"
                    R"("owner":"them","due":"2026-07-10","confidence":0.9}]})";
                res.set_content(
                    nlohmann::json{{"choices", {{{"message", {{"content", items}}}}}}}.dump(),
                    "application/json");
            });
        service.start();
    }

    void TearDown() override {
        tevra.stop();
        if (HasFailure()) {
            std::cerr << tevra.report();
        }
    }

    void startTevra() { tevra.start({{"notetakerAutoDetect", true}}, service.baseURL() + "/v1"); }
    bool waitForLog(const std::string& text, double seconds) {
        return tevra.waitForLog(text, seconds);
    }

    // Another program takes the microphone, as a call application does, in
    // front of a window of class "zoom", and both sides speak.
    void callUntil(const std::function<void()>& hangUp) {
        PeerProcess zoom({.title = "Zoom Meeting", .wmClass = "zoom"});
        BackgroundProgram call({"parecord", "--device=microphone", "--raw"});
        ASSERT_TRUE(waitForLog("callDetector: START Zoom (micHot=true)", 10));
        ASSERT_TRUE(waitForLog("session: system audio capturing", 10));
        ASSERT_TRUE(waitForLog("engine started: ", 10)) << "the session's microphone";
        VirtualMicrophone microphone;
        microphone.speak(testing::spokenSamples(kMine, 48000, 2));
        ASSERT_TRUE(waitUntil([&] { return microphone.finished(); }, 20));
        hangUp();
    }

    // The other side, played to the speakers of the session.
    void theySpeak() {
        const ByteBuffer wav = WAV::data(testing::spokenSamples(kTheirs, 16000, 1), 16000);
        std::ofstream(home / "theirs.wav", std::ios::binary)
            .write(wav.data(), static_cast<std::streamsize>(wav.size()));
        testing::runProgram({"paplay", "--device=speakers", (home / "theirs.wav").string()});
    }

    std::vector<NoteSession> sessions() const {
        return HistoryStore((dataDir() / "weft.sqlite").string()).recentSessions(5);
    }
};

TEST_F(NotetakerSystemTest, ACallIsRecordedOnBothSidesAndSavedAsOneSessionAfterItEnds) {
    startTevra();
    callUntil([&] { theySpeak(); });
    ASSERT_TRUE(waitForLog("callDetector: END", 15)) << "the call did not end";
    ASSERT_TRUE(waitForLog("notetaker: saved session #1 \u2014 2 lines, 1 items", 30));

    const auto saved = sessions();
    ASSERT_EQ(saved.size(), 1u);
    EXPECT_EQ(saved[0].appName, "Zoom");
    EXPECT_EQ(TranscriptAssembly::flatText(saved[0].transcript),
              std::string("Me: ") + kMine + "\nThem: " + kTheirs);
    ASSERT_EQ(saved[0].items.size(), 1u);
    EXPECT_EQ(saved[0].items[0].title, "Send the quarterly report");
    EXPECT_EQ(saved[0].items[0].owner, Speaker::them);
    EXPECT_TRUE(waitUntil([&] { return SessionSpool::unsaved(dataDir()).empty(); }, 5))
        << "the saved call's audio is gone";
}

TEST_F(NotetakerSystemTest, ACallCutShortByACrashIsSavedFromItsRecordingAtTheNextStart) {
    startTevra();
    callUntil([&] {
        const auto spooled = SessionSpool::unsaved(dataDir());
        ASSERT_EQ(spooled.size(), 1u);
        EXPECT_EQ(testing::modeOf(spooled[0].dir), 0700u);
        EXPECT_EQ(testing::modeOf(spooled[0].mic()), 0600u);
        // The last quarter second is written out before the crash.
        ASSERT_TRUE(waitUntil(
            [&] { return std::filesystem::file_size(spooled[0].mic()) > 44 + 32000; }, 5));
        ::kill(static_cast<pid_t>(tevra.process().processId()), SIGKILL);
        ASSERT_TRUE(tevra.process().waitForFinished(5000));
    });
    std::filesystem::remove(dataDir() / "tevra.log");

    startTevra();
    ASSERT_TRUE(waitForLog("notetaker: recovering the recording of Zoom", 10));
    ASSERT_TRUE(waitForLog("notetaker: saved session #1", 30));
    const auto saved = sessions();
    ASSERT_EQ(saved.size(), 1u);
    EXPECT_EQ(saved[0].appName, "Zoom");
    EXPECT_EQ(TranscriptAssembly::flatText(saved[0].transcript), std::string("Me: ") + kMine)
        << "the other side said nothing";
    EXPECT_TRUE(waitUntil([&] { return SessionSpool::unsaved(dataDir()).empty(); }, 5));
}

}  // namespace
}  // namespace tevra
