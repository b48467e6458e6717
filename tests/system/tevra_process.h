#pragma once

#include <gtest/gtest.h>

#include <QProcess>
#include <QProcessEnvironment>
#include <filesystem>
#include <fstream>
#include <map>
#include <nlohmann/json.hpp>
#include <string>

#include "support/desktop/event_wait.h"
#include "support/temp_dir.h"

namespace tevra {

// The real tevra program of a system test: a data directory of its own under
// home, no provider keys, and its speech and chat services reached through the
// relay setting with the token "relay-token".
class TevraProcess {
public:
    explicit TevraProcess(std::filesystem::path home) : home_(std::move(home)) {
        std::filesystem::create_directories(dataDir());
    }
    ~TevraProcess() { stop(); }

    std::filesystem::path dataDir() const { return home_ / "data" / "Tevra"; }
    QProcess& process() { return process_; }

    // Writes settings.json (with the relay's root) and starts tevra, waiting
    // until it has brought up its hotkeys. Unless the settings say otherwise,
    // the user is past the first run, so that no wizard takes the focus.
    void start(nlohmann::json settings, const std::string& relayRoot,
               const std::map<QString, QString>& extraEnvironment = {}) {
        settings["proxyBaseURL"] = relayRoot;
        if (!settings.contains("onboarded")) {
            settings["onboarded"] = true;
        }
        std::ofstream(dataDir() / "settings.json") << settings.dump();
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert("XDG_DATA_HOME", QString::fromStdString((home_ / "data").string()));
        env.insert("TEVRA_PROXY_TOKEN", "relay-token");
        for (const char* name :
             {"GROQ_API_KEY", "OPENAI_API_KEY", "DEEPINFRA_API_KEY", "FIREWORKS_API_KEY"}) {
            env.remove(name);
        }
        env.remove("QT_QPA_PLATFORM");
        for (const auto& [name, value] : extraEnvironment) {
            if (value.isNull()) {
                env.remove(name);  // QString(): not set at all
            } else {
                env.insert(name, value);
            }
        }
        process_.setProcessEnvironment(env);
        process_.start(TEVRA_PATH, {});
        ASSERT_TRUE(process_.waitForStarted(10000)) << process_.errorString().toStdString();
        ASSERT_TRUE(waitForLog("hotkeys: ", 30)) << "tevra did not bring up its hotkeys";
    }

    // Ends it as the end of a session does.
    void stop() {
        if (process_.state() != QProcess::NotRunning) {
            process_.terminate();
            if (!process_.waitForFinished(15000)) {
                process_.kill();
                process_.waitForFinished(5000);
            }
        }
    }

    std::string log() const { return testing::readFile(dataDir() / "tevra.log"); }
    bool waitForLog(const std::string& text, double seconds) const {
        return testing::waitUntil([&] { return log().find(text) != std::string::npos; }, seconds);
    }
    // What a failed test shows: the log and what tevra said on stderr.
    std::string report() {
        return "--- tevra.log ---\n" + log() + "--- tevra stderr ---\n" +
               process_.readAllStandardError().toStdString();
    }

private:
    std::filesystem::path home_;
    QProcess process_;
};

}  // namespace tevra
