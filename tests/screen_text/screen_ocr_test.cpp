#include "screen_text/screen_ocr.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "base/virtual_main_queue.h"
#include "support/main_queue_wait.h"
#include "support/recording_screen_text.h"
#include "support/temp_dir.h"

namespace tevra {
namespace {

struct OCRRig {
    VirtualMainQueue queue;
    testing::TempDir temp;
    std::shared_ptr<testing::ScriptedRegionCapture> capture =
        std::make_shared<testing::ScriptedRegionCapture>();
    std::shared_ptr<testing::ScriptedLineRecognizer> recognizer =
        std::make_shared<testing::ScriptedLineRecognizer>();
    std::vector<std::string> log;
    ScreenOCR ocr{queue,
                  std::make_shared<WorkPool>(1),
                  capture,
                  recognizer,
                  [this](const std::string& line) { log.push_back(line); },
                  temp.path()};

    // The result's text, or the description of its error.
    std::string read() {
        std::vector<std::string> outcomes;
        ocr.captureAndRead([&](ScreenOCR::Result result) {
            outcomes.push_back(std::holds_alternative<std::string>(result)
                                   ? std::get<std::string>(result)
                                   : "error: " + describe(std::get<std::exception_ptr>(result)));
        });
        testing::runMainQueueUntil(
            queue, [&] { return !outcomes.empty(); }, 5.0);
        queue.runPending();
        EXPECT_EQ(outcomes.size(), 1u) << "completion runs exactly once";
        return outcomes.empty() ? "" : outcomes.front();
    }
};

TEST(ScreenOCR, ReadsTheRegionAndAlwaysRemovesTheFile) {
    struct Case {
        const char* name;
        std::optional<std::string> file;
        std::vector<std::string> lines;
        std::optional<std::string> error;
        std::string outcome;
        std::vector<std::string> log;
    };
    const Case cases[] = {
        {"lines joined and trimmed; inner leading blanks stay",
         "png",
         {"  First line", "  second", "", ""},
         std::nullopt,
         "First line\n  second",
         {"OCR: 4 lines, 19 chars"}},
        {"characters are counted as the user sees them",
         "png",
         {"Zażółć", "今天"},
         std::nullopt,
         "Zażółć\n今天",
         {"OCR: 2 lines, 9 chars"}},
        {"cancelled: no file", std::nullopt, {}, std::nullopt, "error: screenshot cancelled", {}},
        {"only blanks",
         "png",
         {" ", "\t"},
         std::nullopt,
         "error: no text found in that selection",
         {"OCR: 2 lines, 0 chars"}},
        {"no lines",
         "png",
         {},
         std::nullopt,
         "error: no text found in that selection",
         {"OCR: 0 lines, 0 chars"}},
        {"the recogniser fails",
         "png",
         {},
         "Tesseract cannot load",
         "error: Tesseract cannot load",
         {}},
    };
    for (const Case& c : cases) {
        OCRRig rig;
        rig.capture->writes = c.file;
        rig.recognizer->lines = c.lines;
        rig.recognizer->error = c.error;
        EXPECT_EQ(rig.read(), c.outcome) << c.name;
        EXPECT_EQ(rig.log, c.log) << c.name;
        ASSERT_EQ(rig.capture->paths.size(), 1u);
        const auto& path = rig.capture->paths[0];
        EXPECT_EQ(path.parent_path(), rig.temp.path());
        EXPECT_TRUE(path.filename().string().starts_with("tevra-ocr-")) << path;
        EXPECT_EQ(path.extension(), ".png");
        EXPECT_FALSE(std::filesystem::exists(path)) << c.name << ": the picture is removed";
    }
}

TEST(ScreenOCR, AFailedLaunchIsReportedAsItCame) {
    OCRRig rig;
    rig.capture->launchError = std::make_exception_ptr(MessageError("no X display"));
    EXPECT_EQ(rig.read(), "error: no X display");
}

}  // namespace
}  // namespace tevra
