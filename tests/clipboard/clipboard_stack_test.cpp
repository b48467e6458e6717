// The clipboard queue: what each push keeps, what each paste gives, in both modes.
#include "clipboard/clipboard_stack.h"

#include <gtest/gtest.h>

#include <string>
#include <tuple>
#include <vector>

namespace tevra {
namespace {

// Runs the steps and writes what each answered: "push <text>" + or -,
// "paste" and "preview" the text in brackets or "none" (joined by "|", or by
// the default separator for "paste default"), "remove <i>" 1 or 0, "count", "oldest" the first
// item; "toggle", "clear" and "fill" (t1 to t50) answer nothing.
std::string run(ClipboardStack& stack, const std::vector<std::string>& steps) {
    auto shown = [](const std::optional<std::string>& text) {
        return text ? "[" + *text + "]" : std::string("none");
    };
    std::string out;
    for (const std::string& step : steps) {
        std::string answer;
        if (step.starts_with("push ")) {
            answer = stack.push(step.substr(5)) ? "+" : "-";
        } else if (step.starts_with("paste")) {
            answer =
                shown(stack.nextPaste(step == "paste" ? "|" : ClipboardStack::defaultSeparator));
        } else if (step == "preview") {
            answer = shown(stack.preview("|"));
        } else if (step.starts_with("remove ")) {
            answer = stack.remove(std::stol(step.substr(7))) ? "1" : "0";
        } else if (step == "oldest") {
            answer = stack.items().front().text;
        } else if (step == "count") {
            answer = std::to_string(stack.count());
        } else if (step == "toggle") {
            stack.toggleMode();
        } else if (step == "clear") {
            stack.clear();
        } else if (step == "fill") {
            for (int i = 1; i <= 50; ++i) {
                stack.push("t" + std::to_string(i));
            }
        }
        out += (answer.empty() || out.empty() ? "" : " ") + answer;
    }
    return out;
}

TEST(ClipboardStack, KeepsWhatItShouldAndPastesInEitherMode) {
    const std::vector<std::tuple<const char*, std::vector<std::string>, std::string>> cases = {
        {"blank text is refused", {"push   ", "push \n\t", "count"}, "- - 0"},
        {"only the newest neighbour counts",
         {"push a", "push a", "push b", "push a", "preview"},
         "+ - + + [a|b|a]"},
        {"a trailing blank makes another text", {"push a", "push a ", "paste"}, "+ + [a|a ]"},
        {"all at once empties the queue",
         {"push a", "push b", "paste default", "paste", "count"},
         "+ + [a\nb] none 0"},
        {"one by one takes the oldest each time",
         {"push a", "push b", "toggle", "preview", "paste", "paste", "paste"},
         "+ + [a] [a] [b] none"},
        {"toggling leaves the items",
         {"push a", "push b", "toggle", "toggle", "preview"},
         "+ + [a|b]"},
        {"the 51st text pushes the oldest out", {"fill", "push t51", "count", "oldest"}, "+ 50 t2"},
        {"remove(at:) within the queue only",
         {"push a", "push b", "push c", "remove -1", "remove 3", "remove 1", "preview"},
         "+ + + 0 0 1 [a|c]"},
        {"clear empties", {"push a", "clear", "preview"}, "+ none"},
    };
    for (const auto& [name, steps, expected] : cases) {
        ClipboardStack stack;
        EXPECT_EQ(run(stack, steps), expected) << name;
    }
    EXPECT_EQ(PasteModes::label(PasteMode::all), "All at once");
    EXPECT_EQ(PasteModes::label(PasteMode::oneByOne), "One by one");
    EXPECT_EQ(PasteModes::fromRawValue(PasteModes::rawValue(PasteMode::oneByOne)),
              PasteMode::oneByOne);
}

}  // namespace
}  // namespace tevra
