// The README's key table, read as a user reads it and checked against what
// the two hotkey schemes do with each key.
#include <gtest/gtest.h>

#include <fstream>
#include <map>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "base/virtual_main_queue.h"
#include "capture/fn_hotkey_monitor.h"
#include "capture/hotkey_monitor.h"
#include "capture/key_symbols.h"
#include "support/recording_desktop_keyboard.h"
#include "support/recording_hotkey_calls.h"

namespace tevra {
namespace {

using Kind = DesktopKeyboard::Event::Kind;

struct Row {
    std::string talkKey, altKey, meaning;
};

std::vector<std::string> cells(const std::string& line) {
    std::vector<std::string> out;
    std::stringstream stream(line);
    std::string cell;
    std::getline(stream, cell, '|');  // before the first bar
    while (std::getline(stream, cell, '|')) {
        const auto first = cell.find_first_not_of(' ');
        const auto last = cell.find_last_not_of(' ');
        out.push_back(first == std::string::npos ? "" : cell.substr(first, last - first + 1));
    }
    return out;
}

std::vector<Row> keyTable() {
    std::ifstream readme(std::string(TEVRA_TESTS_DIR) + "/../README.md");
    std::vector<Row> rows;
    bool inTable = false;
    for (std::string line; std::getline(readme, line);) {
        if (line.starts_with("| Talk key + | Alt + |")) {
            inTable = true;
        } else if (inTable && line.starts_with("|---")) {
            continue;
        } else if (inTable && line.starts_with("|")) {
            const auto c = cells(line);
            rows.push_back({c.at(0), c.at(1), c.at(2)});
        } else if (inTable) {
            break;
        }
    }
    return rows;
}

// What the orchestrator is asked for, by the words the README uses.
std::string expectedCall(const std::string& meaning) {
    static const std::vector<std::pair<std::string, std::string>> words = {
        {"plain dictation", "start 0"},
        {"voice 1:", "start 1"},
        {"voice 2:", "start 2"},
        {"voice 3:", "start 3"},
        {"voice 4:", "start 4"},
        {"voice 5:", "start 5"},
        {"select text", "select"},
        {"translate the selected", "translate selection"},
        {"translate the clipboard", "translate clipboard"},
        {"dictate and translate", "translate start"},
        {"add the copied text to the clipboard queue", "clip stack"},
        {"paste the clipboard queue", "clip paste"},
        {"switch the clipboard queue's paste mode", "clip mode"},
    };
    for (const auto& [phrase, call] : words) {
        if (meaning.starts_with(phrase)) {
            return call;
        }
    }
    return "unknown: " + meaning;
}

uint32_t keysym(const std::string& key) {
    return key == "."   ? KeySyms::period
           : key == "," ? KeySyms::comma
                        : static_cast<uint32_t>(key[0]);
}

TEST(ReadmeKeyTable, EveryKeyOfBothSchemesDoesWhatTheReadmeSays) {
    const std::vector<Row> rows = keyTable();
    ASSERT_EQ(rows.size(), 13u) << "the README's key table was not found whole";
    for (const Row& row : rows) {
        SCOPED_TRACE(row.talkKey + " / " + row.altKey);
        const std::string expected = expectedCall(row.meaning);
        EXPECT_EQ(row.meaning.find("not yet"), std::string::npos) << "every key does something";
        VirtualMainQueue queue;
        testing::RecordingHotkeyCalls calls;

        auto talkBoard = std::make_unique<testing::RecordingDesktopKeyboard>();
        talkBoard->clock = &queue;
        auto* talk = talkBoard.get();
        auto fn = std::make_shared<FnHotkeyMonitor>(queue, std::move(talkBoard));
        calls.wire(*fn);
        ASSERT_EQ(fn->start(), "fn-tap");
        talk->deliver({Kind::talkKeyDown, 0});
        if (row.talkKey == "(alone)") {
            queue.advance(0.3);
        } else {
            talk->deliver({Kind::keyDown, keysym(row.talkKey)});
        }
        EXPECT_EQ(calls.take(), std::vector<std::string>{expected}) << "talk key";

        if (row.altKey == "—") {
            continue;
        }
        auto altBoard = std::make_unique<testing::RecordingDesktopKeyboard>();
        auto* alt = altBoard.get();
        auto altMonitor = std::make_shared<HotkeyMonitor>(queue, std::move(altBoard), 6);
        calls.capturing = false;
        calls.wire(*altMonitor);
        ASSERT_EQ(altMonitor->start(), "hotkey");
        EXPECT_TRUE(alt->holds(keysym(row.altKey), DesktopKeyboard::Modifiers::alt));
        alt->deliver({Kind::keyDown, keysym(row.altKey)});
        EXPECT_EQ(calls.take(), std::vector<std::string>{expected}) << "Alt";
    }
}

}  // namespace
}  // namespace tevra
