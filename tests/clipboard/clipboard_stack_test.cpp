// The clipboard queue: what each push keeps, what each paste gives, in both modes.
#include "clipboard/clipboard_stack.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace tevra {
namespace {

// Runs a script of steps on the queue and writes what each answered:
// "push <text>" gives + or -, "paste" and "preview" the text in brackets or
// "none", "remove <i>" 1 or 0, "count" the count; "toggle" and "clear" give
// nothing. Pastes join with "|" unless the step is "paste default".
std::string run(ClipboardStack& stack, const std::vector<std::string>& steps) {
    auto shown = [](const std::optional<std::string>& text) {
        return text ? "[" + *text + "]" : std::string("none");
    };
    std::string out;
    for (const std::string& step : steps) {
        std::string answer;
        if (step.starts_with("push ")) {
            answer = stack.push(step.substr(5)) ? "+" : "-";
        } else if (step == "paste") {
            answer = shown(stack.nextPaste("|"));
        } else if (step == "paste default") {
            answer = shown(stack.nextPaste(ClipboardStack::defaultSeparator));
        } else if (step == "preview") {
            answer = shown(stack.preview("|"));
        } else if (step.starts_with("remove ")) {
            answer = stack.remove(std::stol(step.substr(7))) ? "1" : "0";
        } else if (step == "count") {
            answer = std::to_string(stack.count());
        } else if (step == "toggle") {
            stack.toggleMode();
        } else if (step == "clear") {
            stack.clear();
        }
        if (!answer.empty()) {
            out += (out.empty() ? "" : " ") + answer;
        }
    }
    return out;
}

TEST(ClipboardStack, KeepsWhatItShouldAndPastesInEitherMode) {
    struct Case {
        const char* name;
        std::vector<std::string> steps;
        std::string expected;
    };
    const std::vector<Case> cases = {
        {"blank text is refused", {"push   ", "push \n\t", "count"}, "- - 0"},
        {"only the newest neighbour counts",
         {"push a", "push a", "push b", "push a", "preview"},
         "+ - + + [a|b|a]"},
        {"a trailing blank makes another text, and stays",
         {"push a", "push a ", "paste"},
         "+ + [a|a ]"},
        {"all at once joins with the separator and empties the queue",
         {"push a", "push b", "paste default", "paste", "count"},
         "+ + [a\nb] none 0"},
        {"one by one takes the oldest each time",
         {"push a", "push b", "toggle", "preview", "paste", "paste", "paste"},
         "+ + [a] [a] [b] none"},
        {"toggling twice leaves the items and the mode alone",
         {"push a", "push b", "toggle", "toggle", "preview"},
         "+ + [a|b]"},
        {"remove(at:) within the queue only",
         {"push a", "push b", "push c", "remove -1", "remove 3", "remove 1", "preview"},
         "+ + + 0 0 1 [a|c]"},
        {"clear empties", {"push a", "clear", "preview", "count"}, "+ none 0"},
    };
    for (const Case& c : cases) {
        ClipboardStack stack;
        EXPECT_EQ(run(stack, c.steps), c.expected) << c.name;
    }
}

TEST(ClipboardStack, TheFiftyFirstTextPushesTheOldestOut) {
    ClipboardStack stack;
    for (int i = 1; i <= 50; ++i) {
        stack.push("t" + std::to_string(i));
    }
    EXPECT_TRUE(stack.push("t51"));
    EXPECT_EQ(stack.count(), ClipboardStack::maxItems);
    EXPECT_EQ(stack.items().front().text, "t2");
    EXPECT_EQ(stack.items().back().text, "t51");
}

TEST(ClipboardStack, PasteModesAreWrittenByTheirRawValues) {
    for (PasteMode mode : PasteModes::allCases) {
        EXPECT_EQ(PasteModes::fromRawValue(PasteModes::rawValue(mode)), mode);
        EXPECT_NE(PasteModes::toggled(mode), mode);
    }
    EXPECT_EQ(PasteModes::rawValue(PasteMode::oneByOne), "oneByOne");
    EXPECT_EQ(PasteModes::label(PasteMode::all), "All at once");
    EXPECT_EQ(PasteModes::label(PasteMode::oneByOne), "One by one");
    EXPECT_EQ(PasteModes::fromRawValue("All"), std::nullopt);
}

}  // namespace
}  // namespace tevra
