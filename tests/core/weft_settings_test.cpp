#include "core/weft_settings.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/resource.h>

#include <nlohmann/json.hpp>

#include "support/temp_dir.h"

namespace tevra {
namespace {

namespace fs = std::filesystem;
using testing::modeOf;
using testing::readFile;
using testing::TempDir;

WeftSettings loadFrom(const std::string& fileText) {
    TempDir tmp;
    std::ofstream(tmp / "settings.json", std::ios::binary) << fileText;
    return WeftSettings::load(tmp.path());
}

// Every key, each with a value other than its default, written as save writes:
// sorted, two spaces, a line feed at the end.
const std::string kEveryKeyChanged = R"({
  "appcastURL": "https://example.test/appcast.json",
  "appearance": "dark",
  "commandHotkey": "option3",
  "crashReportURL": "https://example.test/api/crash",
  "crashReportsEnabled": true,
  "deepinfraSTTModel": "openai/whisper-large-v3",
  "fireworksSTTModel": "whisper-v3",
  "groqLLMModel": "llama-3.1-8b-instant",
  "groqSTTModel": "whisper-large-v3",
  "hotkey": "option",
  "keepAudio": true,
  "languageHint": "pl",
  "notetakerAutoDetect": false,
  "onboarded": true,
  "openaiLLMModel": "gpt-4o",
  "openaiSTTModel": "gpt-4o-transcribe",
  "polishEnabled": false,
  "polishProvider": "rules",
  "proxyBaseURL": "http://127.0.0.1:8080/v1",
  "signatureStyle": "custom",
  "soundCues": false,
  "sttOrder": [
    "openai",
    "groq"
  ],
  "sttProvider": "groq",
  "talkKey": "Super_R",
  "translateTarget": "de",
  "userCompany": "Kestrum \"Labs\"",
  "userEmail": "zoe@example.test",
  "userFirstName": "Zoë",
  "userLastName": "Nguyễn",
  "userPhone": "+48 600 000 000",
  "userSignature": "Cheers,\n— Z"
}
)";

TEST(WeftSettingsLoad, MissingEmptyOrNonJSONFilesGiveTheDefaults) {
    TempDir tmp;
    EXPECT_EQ(WeftSettings::load(tmp.path()), WeftSettings{});
    EXPECT_EQ(WeftSettings::load(tmp / "no-such-dir"), WeftSettings{});
    for (const char* text : {"", "polishEnabled = false", "{\"polishEnabled\": false",
                             "[{\"polishEnabled\": false}]", "{\"languageHint\": \"\xff\xfe\"}"}) {
        EXPECT_EQ(loadFrom(text), WeftSettings{}) << text;
    }
    fs::create_directories(tmp / "dir" / "settings.json");
    EXPECT_EQ(WeftSettings::load(tmp / "dir"), WeftSettings{});
}

TEST(WeftSettingsLoad, AbsentAndNullKeysTakeTheirDefaultsAndUnknownKeysAreIgnored) {
    const WeftSettings defaults;
    // The deployment addresses reach the defaults from the build.
    EXPECT_EQ(defaults.appcastURL, "https://updates.tevra.invalid/appcast.json");
    EXPECT_EQ(defaults.crashReportURL, "https://crash.tevra.invalid/api/crash");
    EXPECT_EQ(defaults.proxyBaseURL, "https://relay.tevra.invalid/v1");
    EXPECT_EQ(loadFrom("{}"), defaults);

    WeftSettings expected = defaults;
    expected.polishEnabled = false;
    EXPECT_EQ(loadFrom(R"({"polishEnabled": false})"), expected);
    expected = defaults;
    expected.sttProvider = "openai";
    EXPECT_EQ(loadFrom(R"({"sttProvider": "openai", "sttOrder": null, "polishEnabled": null,
                           "talkKey": null, "userEmail": null})"),
              expected);
    expected = defaults;
    expected.sttOrder = {};
    expected.hotkey = "option";
    EXPECT_EQ(loadFrom(R"({"sttOrder": [], "futureSetting": {"a": [1, 2]}, "hotkey": "option"})"),
              expected);
}

TEST(WeftSettingsLoad, OneValueOfTheWrongTypeDiscardsTheWholeFile) {
    // Each file also holds a good value, which must be lost with the bad one.
    for (const char* bad : {
             R"({"hotkey": "option", "polishEnabled": "false"})",
             R"({"hotkey": "option", "polishEnabled": 0})",
             R"({"hotkey": "option", "languageHint": 7})",
             R"({"hotkey": "option", "talkKey": false})",
             R"({"hotkey": "option", "sttOrder": "groq"})",
             R"({"hotkey": "option", "sttOrder": ["groq", null]})",
             R"({"hotkey": "option", "userSignature": {"text": "x"}})",
         }) {
        EXPECT_EQ(loadFrom(bad), WeftSettings{}) << bad;
    }
}

TEST(WeftSettingsSave, EveryKeyRoundTripsAsSortedPrettyJSONInAPrivateFile) {
    TempDir tmp;
    const fs::path dir = tmp / "data" / "Tevra";
    fs::create_directories(dir);
    fs::permissions(dir, fs::perms(0755));
    std::ofstream(dir / "settings.json") << kEveryKeyChanged;
    fs::permissions(dir / "settings.json", fs::perms(0644));

    const WeftSettings loaded = WeftSettings::load(dir);
    EXPECT_EQ(loaded.hotkey, "option");
    EXPECT_EQ(loaded.talkKey, "Super_R");
    loaded.save(dir);
    EXPECT_EQ(readFile(dir / "settings.json"), kEveryKeyChanged);
    EXPECT_EQ(modeOf(dir / "settings.json"), 0600u);
    EXPECT_EQ(modeOf(dir), 0700u);

    // Defaults saved over it replace it entirely; no temporary file is left.
    fs::permissions(dir / "settings.json", fs::perms(0666));
    WeftSettings{}.save(dir);
    EXPECT_EQ(WeftSettings::load(dir), WeftSettings{});
    EXPECT_EQ(modeOf(dir / "settings.json"), 0600u);
    EXPECT_EQ(std::distance(fs::directory_iterator(dir), fs::directory_iterator()), 1);

    // A missing directory is made, with its parents, private.
    loaded.save(tmp / "fresh" / "Tevra");
    EXPECT_EQ(modeOf(tmp / "fresh" / "Tevra"), 0700u);
    EXPECT_EQ(WeftSettings::load(tmp / "fresh" / "Tevra"), loaded);
}

TEST(WeftSettingsSave, UnknownKeysAreDroppedAtTheNextSave) {
    TempDir tmp;
    std::ofstream(tmp / "settings.json") << R"({"legacyKey": true, "hotkey": "option"})";
    WeftSettings::load(tmp.path()).save(tmp.path());
    const auto saved = nlohmann::json::parse(readFile(tmp / "settings.json"));
    EXPECT_FALSE(saved.contains("legacyKey"));
    EXPECT_EQ(saved["hotkey"], "option");
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
    std::ofstream(tmp / "settings.json") << kEveryKeyChanged;
    {
        FileSizeLimit limit(64);
        EXPECT_NO_THROW(WeftSettings{}.save(tmp.path()));
    }
    // Text that is not UTF-8 cannot be encoded: nothing is written.
    WeftSettings garbled;
    garbled.userFirstName = "\xc3";
    EXPECT_NO_THROW(garbled.save(tmp.path()));
    EXPECT_EQ(readFile(tmp / "settings.json"), kEveryKeyChanged);
    EXPECT_EQ(std::distance(fs::directory_iterator(tmp.path()), fs::directory_iterator()), 1);

    // A directory that cannot be made: a plain file stands where its parent should.
    EXPECT_NO_THROW(garbled.save(tmp / "settings.json" / "Tevra"));
    EXPECT_TRUE(fs::is_regular_file(tmp / "settings.json"));
}

TEST(WeftSettingsDefaultDir, FollowsAnAbsoluteXDGDataHomeThenHome) {
    const std::pair<const char*, std::string> cases[] = {
        {"/data/ada", "/data/ada/Tevra"},
        {nullptr, "/home/ada/.local/share/Tevra"},
        {"relative/data", "/home/ada/.local/share/Tevra"},
    };
    const auto saved = [](const char* name) -> std::optional<std::string> {
        const char* value = ::getenv(name);
        return value ? std::optional<std::string>(value) : std::nullopt;
    };
    const auto home = saved("HOME"), xdg = saved("XDG_DATA_HOME");
    ::setenv("HOME", "/home/ada", 1);
    for (const auto& [value, expected] : cases) {
        value ? ::setenv("XDG_DATA_HOME", value, 1) : ::unsetenv("XDG_DATA_HOME");
        EXPECT_EQ(WeftSettings::defaultDir(), fs::path(expected));
    }
    home ? ::setenv("HOME", home->c_str(), 1) : ::unsetenv("HOME");
    xdg ? ::setenv("XDG_DATA_HOME", xdg->c_str(), 1) : ::unsetenv("XDG_DATA_HOME");
}

}  // namespace
}  // namespace tevra
