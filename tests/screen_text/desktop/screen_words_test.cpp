// Tesseract's words off real windows on the test display, and the reading
// order and columns that the selection tool makes of them.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QProcess>
#include <map>
#include <set>

#include "screen_text/ocr/tesseract_line_recognizer.h"
#include "screen_text/qt/region_picker.h"
#include "screen_text/qt/region_picker_window.h"
#include "screen_text/screen_ocr.h"
#include "screen_text_rig.h"
#include "support/temp_dir.h"

namespace tevra {
namespace {

using testing::PeerProcess;
using testing::SelectionRig;
using testing::TextWindow;
using testing::waitUntil;
using testing::xdotool;

struct ReadLine {
    std::string text;
    std::int64_t column;
    std::int64_t window;
};

// The lines as the overlay reads them, in reading order.
std::vector<ReadLine> linesOf(const SelectionView& view) {
    const SelectionState& state = *view.state();
    std::vector<ReadLine> out;
    for (std::size_t l = 0; l < state.lines().size(); ++l) {
        const auto& line = state.lines()[l];
        out.push_back({WordSelection::text(line, state.words(), state.lineOf()),
                       state.columnOf()[line.front()], state.lineWindow()[l]});
    }
    return out;
}

// The lines read among those expected, in reading order, each with the letter
// of its column (or window): A for the first met, B for the next.
std::string readingOf(const SelectionView& view, const std::set<std::string>& expected,
                      bool byWindow) {
    std::map<std::int64_t, char> letters;
    std::string out;
    for (const ReadLine& line : linesOf(view)) {
        if (expected.contains(line.text)) {
            const auto key = byWindow ? line.window : line.column;
            const char letter = letters.try_emplace(key, 'A' + letters.size()).first->second;
            out += line.text + " " + letter + "\n";
        }
    }
    return out;
}

TEST(ScreenWordsOnX11, TwoColumnsAreReadOneAfterTheOther) {
    SelectionRig rig;
    TextWindow page("Two columns",
                    {"Rivers carry water\ndown to the sea\nwhere it rests",
                     "Mountains rise\nabove the clouds\nand wait"},
                    QRect(80, 100, 900, 300));
    SelectionView* view = rig.startAndWaitForWords();
    ASSERT_TRUE(view);
    testing::keepScreenshot(*view, "two-columns");
    EXPECT_EQ(readingOf(*view,
                        {"Rivers carry water", "down to the sea", "where it rests",
                         "Mountains rise", "above the clouds", "and wait"},
                        false),
              "Rivers carry water A\ndown to the sea A\nwhere it rests A\n"
              "Mountains rise B\nabove the clouds B\nand wait B\n")
        << view->state()->debugLinesDump();
    rig.controller->toggle();
}

TEST(ScreenWordsOnX11, ATerminalBesideAnEditorIsReadWindowByWindow) {
    SelectionRig rig;
    QProcess xterm;
    xterm.start("xterm", {"-T", "Words terminal", "-geometry", "60x8+0+60", "-fa",
                          "DejaVu Sans Mono", "-fs", "13", "-e", "sh", "-c",
                          "printf 'make test passed\\nall builds green\\n'; sleep 120"});
    ASSERT_TRUE(xterm.waitForStarted(10000)) << "xterm is missing: run scripts/install-deps";
    ASSERT_TRUE(waitUntil(
        [] {
            return !xdotool({"search", "--name", "Words terminal"}).empty();
        },
        10));
    PeerProcess editor({.title = "Words editor",
                        .text = "Dear reader\nthe editor stands in front\n",
                        .textview = true});
    editor.activate();
    xdotool({"search", "--name", "Words editor", "windowmove", "--sync", "560", "300", "windowsize",
             "--sync", "600", "200"});

    SelectionView* view = rig.startAndWaitForWords();
    ASSERT_TRUE(view);
    testing::keepScreenshot(*view, "terminal-and-editor");
    // The active editor is in front: its lines first, then the terminal's.
    EXPECT_EQ(readingOf(*view,
                        {"Dear reader", "the editor stands in front", "make test passed",
                         "all builds green"},
                        true),
              "Dear reader A\nthe editor stands in front A\nmake test passed B\n"
              "all builds green B\n")
        << view->state()->debugLinesDump();
    EXPECT_GE(linesOf(*view).front().window, 0);
    rig.controller->toggle();
    xterm.kill();
    xterm.waitForFinished(5000);
}

TEST(ScreenWordsOnX11, PolishAndChineseLines) {
    SelectionRig rig;
    TextWindow page("Two scripts", {"Zażółć gęślą jaźń\n今天天气很好"}, QRect(100, 100, 600, 200),
                    22);
    SelectionView* view = rig.startAndWaitForWords();
    ASSERT_TRUE(view);
    // The selection tool's languages have no Polish: its letters may come out
    // plain, but its three words make one line above the Chinese one, which
    // is a single token, as text without blanks is.
    const auto lines = linesOf(*view);
    ASSERT_EQ(lines.size(), 2u) << view->state()->debugLinesDump();
    EXPECT_EQ(std::count(lines[0].text.begin(), lines[0].text.end(), ' '), 2) << lines[0].text;
    EXPECT_TRUE(lines[1].text.starts_with("今天") && lines[1].text.ends_with("很好") &&
                lines[1].text.find(' ') == std::string::npos)
        << lines[1].text;
    rig.controller->toggle();

    // The screenshot reader, with Polish, on a region dragged over the window.
    QObject timers;
    QtMainQueue queue(&timers);
    testing::TempDir temp;
    ScreenOCR ocr(queue, std::make_shared<WorkPool>(1),
                  std::make_shared<RegionPicker>(std::make_shared<QtScreenSource>(),
                                                 std::make_shared<X11ScreenGrabber>()),
                  std::make_shared<TesseractLineRecognizer>(), nullptr, temp.path());
    std::vector<std::string> results;
    auto read = [&] {
        ocr.captureAndRead([&](ScreenOCR::Result result) {
            results.push_back(std::holds_alternative<std::string>(result)
                                  ? std::get<std::string>(result)
                                  : "error: " + describe(std::get<std::exception_ptr>(result)));
        });
        return waitUntil([] { return RegionPicker::current() != nullptr; }, 10);
    };
    const QPoint topLeft = page.widget().mapToGlobal(QPoint(0, 0));
    ASSERT_TRUE(read());
    xdotool(QStringList{"mousemove"} + testing::at(topLeft + QPoint(4, 4)) +
            QStringList{"mousedown", "1", "mousemove"} + testing::at(topLeft + QPoint(590, 190)) +
            QStringList{"mouseup", "1"});
    ASSERT_TRUE(waitUntil([&] { return results.size() == 1; }, 60));
    EXPECT_TRUE(results[0].starts_with("Zażółć gęślą jaźń\n今天")) << results[0];

    ASSERT_TRUE(read());
    xdotool({"key", "Escape"});
    ASSERT_TRUE(waitUntil([&] { return results.size() == 2; }, 20));
    EXPECT_EQ(results[1], "error: screenshot cancelled");
    EXPECT_TRUE(std::filesystem::is_empty(temp.path())) << "no picture is left behind";
}

}  // namespace
}  // namespace tevra
