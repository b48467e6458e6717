#pragma once

// The fixture of the tests of the real tevra program: loopback speech and
// chat services reached through the relay setting, a fresh data directory,
// and the helpers that drive a dictation.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QStringList>
#include <atomic>
#include <filesystem>
#include <functional>
#include <map>
#include <mutex>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "support/desktop/event_wait.h"
#include "support/desktop/peer_process.h"
#include "support/loopback_server.h"
#include "support/speech_samples.h"
#include "support/temp_dir.h"
#include "system/tevra_process.h"
#include "system/virtual_microphone.h"

namespace tevra {

constexpr const char* kTranscript = "hello from the system test";
constexpr const char* kPolished = "Hello from the system test.";

class DictationSystemTest : public ::testing::Test {
protected:
    testing::TempDir home;
    testing::LoopbackServer service;
    std::atomic<int> speechRequests{0};
    std::atomic<int> speechStatus{200};
    std::mutex audioMutex;
    std::string lastAudio;
    TevraProcess tevra{home.path()};

    std::filesystem::path dataDir() const { return tevra.dataDir(); }

    void SetUp() override {
        service.server().Post("/v1/audio/transcriptions", [this](const httplib::Request& req,
                                                                 httplib::Response& res,
                                                                 const httplib::ContentReader&
                                                                     reader) {
            ++speechRequests;
            for (auto& part : testing::readMultipart(reader)) {
                if (part.name == "file") {
                    std::lock_guard lock(audioMutex);
                    lastAudio = std::move(part.content);
                }
            }
            if (req.get_header_value("Authorization") != "Bearer relay-token") {
                res.status = 401;
                return;
            }
            res.status = speechStatus;
            if (res.status == 200) {
                res.set_content(nlohmann::json{{"text", kTranscript}}.dump(), "application/json");
            } else {
                res.set_content(R"({"error":{"message":"the speech model is down"}})",
                                "application/json");
            }
        });
        service.server().Post(
            "/v1/chat/completions", [](const httplib::Request&, httplib::Response& res) {
                res.set_content(
                    nlohmann::json{{"choices", {{{"message", {{"content", kPolished}}}}}}}.dump(),
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

    void startTevra(nlohmann::json settings = nlohmann::json::object(),
                    const std::map<QString, QString>& extraEnvironment = {}) {
        tevra.start(std::move(settings), service.baseURL() + "/v1", extraEnvironment);
    }

    std::string log() const { return tevra.log(); }
    // How many times the log has the line so far.
    std::size_t occurrences(const std::string& line) const {
        const std::string text = log();
        std::size_t found = 0;
        for (auto at = text.find(line); at != std::string::npos; at = text.find(line, at + 1)) {
            ++found;
        }
        return found;
    }
    bool waitForLog(const std::string& text, double seconds) {
        return tevra.waitForLog(text, seconds);
    }
    // Lets the event loop and the other processes run for a while.
    static void pause(double seconds) {
        testing::waitUntil([] { return false; }, seconds);
    }

    std::vector<std::filesystem::path> failedAudio() const {
        std::vector<std::filesystem::path> files;
        std::error_code ignored;
        for (const auto& entry :
             std::filesystem::directory_iterator(dataDir() / "failed", ignored)) {
            files.push_back(entry.path());
        }
        return files;
    }

    // Holds keys down while the microphone speaks, then lets them go.
    void dictate(const QStringList& keys, const std::string& startedLine,
                 const std::function<void()>& whileSpeaking = {}) {
        const auto speech = testing::spokenSamples(kTranscript, 48000, 2);
        VirtualMicrophone microphone;
        testing::xdotool(QStringList{"keydown"} + keys);
        ASSERT_TRUE(waitForLog(startedLine, 10)) << "no capture started";
        pause(0.3);  // the record stream opens
        microphone.speak(speech);
        if (whileSpeaking) {
            pause(0.5);
            whileSpeaking();
        }
        ASSERT_TRUE(testing::waitUntil([&] { return microphone.finished(); }, 20));
        pause(0.3);
        QStringList reversed;
        for (auto it = keys.rbegin(); it != keys.rend(); ++it) {
            reversed << *it;
        }
        testing::xdotool(QStringList{"keyup"} + reversed);
    }
};

}  // namespace tevra
