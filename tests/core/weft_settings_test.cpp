#include "core/weft_settings.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <fstream>
#include <nlohmann/json.hpp>
#include <sstream>

#include "support/temp_dir.h"

namespace tevra {
namespace {

namespace fs = std::filesystem;
using testing::TempDir;

void writeText(const fs::path& file, const std::string& text) {
    std::ofstream(file, std::ios::binary) << text;
}

std::string readText(const fs::path& file) {
    std::ifstream in(file, std::ios::binary);
    std::ostringstream out;
    out << in.rdbuf();
    return out.str();
}

unsigned modeOf(const fs::path& p) {
    struct stat st {};
    return ::stat(p.c_str(), &st) == 0 ? st.st_mode & 07777 : 0;
}

WeftSettings loadFrom(const std::string& fileText) {
    TempDir tmp;
    writeText(tmp / "settings.json", fileText);
    return WeftSettings::load(tmp.path());
}

// A record in which every field differs from its default.
WeftSettings everyFieldChanged() {
    WeftSettings s;
    s.hotkey = "option";
    s.commandHotkey = "option3";
    s.sttProvider = "groq";
    s.sttOrder = {"openai", "groq"};
    s.polishProvider = "rules";
    s.polishEnabled = false;
    s.languageHint = "pl";
    s.keepAudio = true;
    s.soundCues = false;
    s.appcastURL = "https://example.test/appcast.json";
    s.crashReportsEnabled = true;
    s.crashReportURL = "https://example.test/api/crash";
    s.groqSTTModel = "whisper-large-v3";
    s.groqLLMModel = "llama-3.1-8b-instant";
    s.openaiSTTModel = "gpt-4o-transcribe";
    s.openaiLLMModel = "gpt-4o";
    s.deepinfraSTTModel = "openai/whisper-large-v3";
    s.fireworksSTTModel = "whisper-v3";
    s.proxyBaseURL = "http://127.0.0.1:8080/v1";
    s.translateTarget = "de";
    s.userFirstName = "Zoë";
    s.userLastName = "Nguyễn";
    s.userEmail = "zoe@example.test";
    s.userPhone = "+48 600 000 000";
    s.userCompany = "Kestrum \"Labs\"";
    s.signatureStyle = "custom";
    s.userSignature = "Cheers,\n— Z";
    s.onboarded = true;
    s.appearance = "dark";
    s.notetakerAutoDetect = false;
    s.talkKey = "Super_R";
    return s;
}

TEST(WeftSettingsLoad, MissingEmptyOrNonJSONFilesGiveTheDefaults) {
    TempDir tmp;
    EXPECT_EQ(WeftSettings::load(tmp.path()), WeftSettings{});
    EXPECT_EQ(WeftSettings::load(tmp / "no-such-dir"), WeftSettings{});
    EXPECT_EQ(loadFrom(""), WeftSettings{});
    EXPECT_EQ(loadFrom("polishEnabled = false"), WeftSettings{});
    EXPECT_EQ(loadFrom("{\"polishEnabled\": false"), WeftSettings{});  // truncated
    EXPECT_EQ(loadFrom("[{\"polishEnabled\": false}]"), WeftSettings{});
    EXPECT_EQ(loadFrom("{\"languageHint\": \"\xff\xfe\"}"), WeftSettings{});  // not UTF-8

    fs::create_directories(tmp / "dir" / "settings.json");
    EXPECT_EQ(WeftSettings::load(tmp / "dir"), WeftSettings{});
}

TEST(WeftSettingsLoad, AbsentAndNullKeysTakeTheirDefaults) {
    const WeftSettings defaults;
    // The deployment addresses reach the defaults from the build.
    EXPECT_EQ(defaults.appcastURL, "https://updates.tevra.invalid/appcast.json");
    EXPECT_EQ(defaults.crashReportURL, "https://crash.tevra.invalid/api/crash");
    EXPECT_EQ(defaults.proxyBaseURL, "https://relay.tevra.invalid/v1");

    EXPECT_EQ(loadFrom("{}"), defaults);

    WeftSettings onlyPolishOff = defaults;
    onlyPolishOff.polishEnabled = false;
    EXPECT_EQ(loadFrom(R"({"polishEnabled": false})"), onlyPolishOff);

    WeftSettings pinned = defaults;
    pinned.sttProvider = "openai";
    EXPECT_EQ(loadFrom(R"({"sttProvider": "openai", "sttOrder": null, "polishEnabled": null,
                           "talkKey": null, "userEmail": null})"),
              pinned);
}

TEST(WeftSettingsLoad, AnEmptyOrderStaysEmptyAndUnknownKeysAreIgnored) {
    const WeftSettings s = loadFrom(R"({"sttOrder": [], "futureSetting": {"a": [1, 2]},
                                         "hotkey": "option"})");
    EXPECT_TRUE(s.sttOrder.empty());
    EXPECT_EQ(s.hotkey, "option");
}

TEST(WeftSettingsLoad, OneValueOfTheWrongTypeDiscardsTheWholeFile) {
    // Each file also holds a good value, which must be lost with the bad one.
    for (const char* bad : {
             R"({"hotkey": "option", "polishEnabled": "false"})",
             R"({"hotkey": "option", "polishEnabled": 0})",
             R"({"hotkey": "option", "languageHint": 7})",
             R"({"hotkey": "option", "talkKey": false})",
             R"({"hotkey": "option", "sttOrder": "groq"})",
             R"({"hotkey": "option", "sttOrder": ["groq", 1]})",
             R"({"hotkey": "option", "sttOrder": ["groq", null]})",
             R"({"hotkey": "option", "userSignature": {"text": "x"}})",
         }) {
        EXPECT_EQ(loadFrom(bad), WeftSettings{}) << bad;
    }
}

TEST(WeftSettingsSave, EveryFieldSurvivesARoundTrip) {
    TempDir tmp;
    const WeftSettings changed = everyFieldChanged();
    changed.save(tmp.path());
    EXPECT_EQ(WeftSettings::load(tmp.path()), changed);

    // And back: defaults saved over the changed file replace it entirely.
    WeftSettings{}.save(tmp.path());
    EXPECT_EQ(WeftSettings::load(tmp.path()), WeftSettings{});
}

TEST(WeftSettingsSave, WritesSortedPrettyJSONWithEveryKey) {
    TempDir tmp;
    WeftSettings s;
    s.sttOrder = {};
    s.save(tmp.path());
    const std::string text = readText(tmp / "settings.json");

    const std::string expectedStart = "{\n  \"appcastURL\": \"" +
                                      std::string(Deployment::appcastURL) +
                                      "\",\n  \"appearance\": \"system\",\n";
    EXPECT_EQ(text.substr(0, expectedStart.size()), expectedStart);
    EXPECT_NE(text.find("\n  \"sttOrder\": [],\n"), std::string::npos);
    EXPECT_EQ(text.substr(text.size() - 3), "\n}\n");

    // Keys in byte order, one per line at two spaces, exactly the record's fields.
    std::vector<std::string> keys;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        if (line.rfind("  \"", 0) == 0) {
            keys.push_back(line.substr(3, line.find('"', 3) - 3));
        }
    }
    const std::vector<std::string> expected = {"appcastURL",          "appearance",
                                               "commandHotkey",       "crashReportURL",
                                               "crashReportsEnabled", "deepinfraSTTModel",
                                               "fireworksSTTModel",   "groqLLMModel",
                                               "groqSTTModel",        "hotkey",
                                               "keepAudio",           "languageHint",
                                               "notetakerAutoDetect", "onboarded",
                                               "openaiLLMModel",      "openaiSTTModel",
                                               "polishEnabled",       "polishProvider",
                                               "proxyBaseURL",        "signatureStyle",
                                               "soundCues",           "sttOrder",
                                               "sttProvider",         "talkKey",
                                               "translateTarget",     "userCompany",
                                               "userEmail",           "userFirstName",
                                               "userLastName",        "userPhone",
                                               "userSignature"};
    EXPECT_EQ(keys, expected);
}

TEST(WeftSettingsSave, LeavesAPrivateFileAndDropsUnknownKeys) {
    TempDir tmp;
    const fs::path dir = tmp / "data" / "Tevra";
    fs::create_directories(dir);
    ::chmod(dir.c_str(), 0755);
    writeText(dir / "settings.json", R"({"legacyKey": true, "hotkey": "option"})");
    ::chmod((dir / "settings.json").c_str(), 0644);

    WeftSettings s = WeftSettings::load(dir);
    EXPECT_EQ(s.hotkey, "option");
    s.save(dir);
    EXPECT_EQ(modeOf(dir / "settings.json"), 0600u);
    EXPECT_EQ(modeOf(dir), 0700u);
    const auto saved = nlohmann::json::parse(readText(dir / "settings.json"));
    EXPECT_FALSE(saved.contains("legacyKey"));
    EXPECT_EQ(saved["hotkey"], "option");

    // A second save still ends at 0600, and no temporary file is left behind.
    ::chmod((dir / "settings.json").c_str(), 0666);
    s.save(dir);
    EXPECT_EQ(modeOf(dir / "settings.json"), 0600u);
    EXPECT_EQ(std::distance(fs::directory_iterator(dir), fs::directory_iterator()), 1);

    // A missing directory is made, with its parents, private.
    s.save(tmp / "fresh" / "Tevra");
    EXPECT_EQ(modeOf(tmp / "fresh" / "Tevra"), 0700u);
    EXPECT_EQ(WeftSettings::load(tmp / "fresh" / "Tevra"), s);
}

// Makes every write past `bytes` fail with EFBIG while alive, as a full disk
// would; the limit holds for root as well.
class FileSizeLimit {
public:
    explicit FileSizeLimit(rlim_t bytes) {
        ::getrlimit(RLIMIT_FSIZE, &saved_);
        oldHandler_ = ::signal(SIGXFSZ, SIG_IGN);
        rlimit limit = saved_;
        limit.rlim_cur = bytes;
        ::setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FileSizeLimit() {
        ::setrlimit(RLIMIT_FSIZE, &saved_);
        ::signal(SIGXFSZ, oldHandler_);
    }

private:
    rlimit saved_{};
    sighandler_t oldHandler_;
};

TEST(WeftSettingsSave, FailuresReportNothingAndKeepTheOldFile) {
    TempDir tmp;
    const WeftSettings old = everyFieldChanged();
    old.save(tmp.path());
    const std::string oldText = readText(tmp / "settings.json");

    {
        FileSizeLimit limit(64);
        EXPECT_NO_THROW(WeftSettings{}.save(tmp.path()));
    }
    EXPECT_EQ(readText(tmp / "settings.json"), oldText);
    EXPECT_EQ(std::distance(fs::directory_iterator(tmp.path()), fs::directory_iterator()), 1);

    // Text that is not UTF-8 cannot be encoded: nothing is written.
    WeftSettings garbled;
    garbled.userFirstName = "\xc3";
    EXPECT_NO_THROW(garbled.save(tmp.path()));
    EXPECT_EQ(readText(tmp / "settings.json"), oldText);

    // A directory that cannot be made: a plain file stands where its parent should.
    writeText(tmp / "plain", "x");
    EXPECT_NO_THROW(old.save(tmp / "plain" / "Tevra"));
    EXPECT_FALSE(fs::exists(tmp / "plain" / "Tevra"));
}

class ScopedEnv {
public:
    ScopedEnv(const char* name, const char* value) : name_(name) {
        if (const char* old = ::getenv(name)) {
            old_ = old;
        }
        value ? ::setenv(name, value, 1) : ::unsetenv(name);
    }
    ~ScopedEnv() { old_ ? ::setenv(name_, old_->c_str(), 1) : ::unsetenv(name_); }

private:
    const char* name_;
    std::optional<std::string> old_;
};

TEST(WeftSettingsDefaultDir, FollowsXDGDataHomeThenHome) {
    ScopedEnv home("HOME", "/home/ada");
    {
        ScopedEnv xdg("XDG_DATA_HOME", "/data/ada");
        EXPECT_EQ(WeftSettings::defaultDir(), fs::path("/data/ada/Tevra"));
    }
    {
        ScopedEnv xdg("XDG_DATA_HOME", nullptr);
        EXPECT_EQ(WeftSettings::defaultDir(), fs::path("/home/ada/.local/share/Tevra"));
    }
    {
        ScopedEnv xdg("XDG_DATA_HOME", "relative/data");  // invalid, so ignored
        EXPECT_EQ(WeftSettings::defaultDir(), fs::path("/home/ada/.local/share/Tevra"));
    }
}

}  // namespace
}  // namespace tevra
