#include "app/qt/settings_file_watcher.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "support/desktop/event_wait.h"
#include "support/temp_dir.h"

namespace tevra {
namespace {

using testing::waitUntil;

void write(const std::filesystem::path& path, const std::string& content) {
    std::ofstream(path, std::ios::trunc) << content;
}

TEST(SettingsFileWatcher, SeesEditsInPlaceAndFilesRenamedOverButNotTheSameBytes) {
    testing::TempDir dir;
    const auto settings = dir / "settings.json";
    write(settings, R"({"hotkey":"fn"})");
    int changes = 0;
    SettingsFileWatcher watcher(QString::fromStdString(settings.string()), [&] { ++changes; });

    write(settings, R"({"hotkey":"option"})");
    EXPECT_TRUE(waitUntil([&] { return changes == 1; }, 5)) << "an edit in place was missed";

    // An atomic save: a new file, renamed over the old one, twice in a row,
    // the second watched through the renewed watch.
    for (const char* content : {R"({"hotkey":"fn"})", R"({"hotkey":"alt"})"}) {
        write(dir / "settings.json.tmp", content);
        std::filesystem::rename(dir / "settings.json.tmp", settings);
        const int expected = changes + 1;
        EXPECT_TRUE(waitUntil([&] { return changes == expected; }, 5))
            << "a save by rename was missed";
    }

    // The same bytes again, and other files of the directory: no change.
    write(settings, R"({"hotkey":"alt"})");
    write(dir / "tevra.log", "[2026-11-23T00:00:00Z] hotkeys: 6 modes\n");
    std::filesystem::remove(dir / "tevra.log");
    waitUntil([] { return false; }, 0.3);
    EXPECT_EQ(changes, 3);
}

}  // namespace
}  // namespace tevra
