#include "screen_text/selection_capture_controller.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "base/virtual_main_queue.h"
#include "support/main_queue_wait.h"
#include "support/recording_capture.h"
#include "support/recording_screen_text.h"

namespace tevra {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

struct ControllerRig {
    VirtualMainQueue queue;
    std::shared_ptr<testing::Journal> journal = std::make_shared<testing::Journal>();
    std::shared_ptr<testing::FakeScreens> screens = std::make_shared<testing::FakeScreens>();
    std::shared_ptr<testing::ScriptedWordRecognizer> recognizer =
        std::make_shared<testing::ScriptedWordRecognizer>();
    std::shared_ptr<testing::RecordingClipboard> clipboard =
        std::make_shared<testing::RecordingClipboard>(journal);
    std::shared_ptr<testing::ScriptedFocusProbe> focus =
        std::make_shared<testing::ScriptedFocusProbe>();
    std::shared_ptr<testing::RecordingActivator> activator =
        std::make_shared<testing::RecordingActivator>();
    std::vector<std::shared_ptr<testing::OverlayRecord>> overlays;
    std::vector<std::string> log;
    std::vector<std::string> messages;
    std::vector<std::string> copied;
    std::shared_ptr<SelectionCaptureController> controller;
    SelectionOverlay* current = nullptr;

    ControllerRig() {
        focus->front = FrontApplication{"Editor", "editor", 42, 0x400001};
        recognizer->words = {{"hello", {0.1, 0.5, 0.2, 0.05}}};
        SelectionServices services;
        services.queue = &queue;
        services.work = std::make_shared<WorkPool>(1);
        services.screens = screens;
        services.windows = screens;
        services.grabber = screens;
        services.recognizer = recognizer;
        services.makeOverlay = [this](std::shared_ptr<const ScreenImage> image, const ScreenArea&,
                                      const std::vector<Rect>& windows) {
            EXPECT_EQ(image->width, 400);
            overlays.push_back(std::make_shared<testing::OverlayRecord>());
            overlays.back()->windows = windows;
            auto overlay = std::make_unique<testing::RecordingOverlay>(overlays.back());
            current = overlay.get();
            return overlay;
        };
        services.clipboard = clipboard;
        services.focus = focus;
        services.activator = activator;
        services.log = [this](const std::string& line) { log.push_back(line); };
        controller = SelectionCaptureController::create(std::move(services));
        controller->onMessage = [this](const std::string& m) { messages.push_back(m); };
        controller->onCopied = [this](const std::string& text) { copied.push_back(text); };
    }

    // Starts the tool and lets capture and recognition finish.
    void start() {
        controller->toggle();
        testing::runMainQueueUntil(
            queue, [this] { return !overlays.empty() && overlays.back()->words; }, 2.0);
        queue.runPending();
    }
};

TEST(SelectionCaptureController, FailuresLeaveWithAMessageAndNoOverlayUp) {
    struct Case {
        const char* name;
        std::function<void(ControllerRig&)> arrange;
        std::vector<std::string> log;
        std::vector<std::string> messages;
    };
    const Case cases[] = {
        {"no permission",
         [](ControllerRig& rig) { rig.screens->allowed = false; },
         {"selection: Grant Tevra Screen Recording, then press Fn 6 (\u23257) again"},
         {SelectionCaptureController::permissionMessage}},
        {"the capture fails",
         [](ControllerRig& rig) { rig.screens->captureError = "XGetImage failed"; },
         {"selection capture failed: XGetImage failed",
          "selection: Capture failed \u2014 is Screen Recording granted?"},
         {SelectionCaptureController::captureFailedMessage}},
        {"the recogniser fails",
         [](ControllerRig& rig) { rig.recognizer->error = "no engine"; },
         {"selection capture failed: no engine",
          "selection: Capture failed \u2014 is Screen Recording granted?"},
         {SelectionCaptureController::captureFailedMessage}},
        {"no words",
         [](ControllerRig& rig) { rig.recognizer->words.clear(); },
         {"selection: No text found on screen (protected content shows blank)"},
         {SelectionCaptureController::noTextMessage}},
        {"no screen", [](ControllerRig& rig) { rig.screens->screen.reset(); }, {}, {}},
    };
    for (const Case& c : cases) {
        ControllerRig rig;
        c.arrange(rig);
        rig.controller->toggle();
        testing::runMainQueueUntil(
            rig.queue, [&] { return rig.messages.size() == c.messages.size(); }, 5.0);
        EXPECT_EQ(rig.log, c.log) << c.name;
        EXPECT_EQ(rig.messages, c.messages) << c.name;
        EXPECT_FALSE(rig.controller->isActive()) << c.name;
        for (const auto& overlay : rig.overlays) {
            EXPECT_TRUE(overlay->closed) << c.name;
        }
        EXPECT_EQ(rig.screens->requests, rig.screens->allowed ? 0 : 1) << c.name;
        EXPECT_THAT(rig.journal->names(), IsEmpty()) << c.name << ": the clipboard is untouched";
    }
}

TEST(SelectionCaptureController, ReturnCopiesAndEveryWayOutGivesTheFocusBack) {
    struct Case {
        const char* name;
        std::function<void(ControllerRig&)> leave;
        std::vector<std::string> clipboard;
    };
    const Case cases[] = {
        {"Return", [](ControllerRig& rig) { rig.current->onFinish("hello"); }, {"setText hello"}},
        {"Escape", [](ControllerRig& rig) { rig.current->onFinish(std::nullopt); }, {}},
        {"Return with nothing picked", [](ControllerRig& rig) { rig.current->onFinish(""); }, {}},
        {"the hotkey again", [](ControllerRig& rig) { rig.controller->toggle(); }, {}},
    };
    for (const Case& c : cases) {
        ControllerRig rig;
        rig.screens->windows = {{0, 0, 0.5, 1}};
        rig.start();
        ASSERT_TRUE(rig.controller->isActive()) << c.name;
        ASSERT_EQ(rig.overlays.size(), 1u);
        EXPECT_TRUE(rig.overlays[0]->shown);
        EXPECT_EQ(rig.overlays[0]->windows, rig.screens->windows);
        EXPECT_EQ(*rig.overlays[0]->words, rig.recognizer->words);

        c.leave(rig);
        EXPECT_EQ(rig.journal->names(), c.clipboard) << c.name;
        EXPECT_FALSE(rig.clipboard->lastSetWasTransient) << "a copy stays for clipboard managers";
        EXPECT_EQ(rig.copied.size(), c.clipboard.size()) << c.name;
        EXPECT_TRUE(rig.overlays[0]->closed) << c.name;
        EXPECT_FALSE(rig.controller->isActive()) << c.name;
        ASSERT_EQ(rig.activator->activated.size(), 1u) << c.name;
        EXPECT_EQ(rig.activator->activated[0].window, 0x400001u);

        // The engines go some minutes later, unless the tool is used again.
        rig.queue.advance(SelectionCaptureController::engineKeepSec - 1);
        EXPECT_EQ(rig.recognizer->releases, 0);
        rig.queue.advance(1);
        EXPECT_EQ(rig.recognizer->releases, 1);
    }
}

TEST(SelectionCaptureController, WideScreensAreReadInOverlappingStrips) {
    const ScreenImage small{3000, 10, {}};
    const ScreenImage wide{3200, 10, {}};
    const ScreenImage huge{10, 5201, {}};
    std::vector<std::optional<Rect>> regions;
    auto pass = [&](std::optional<Rect> region) {
        regions.push_back(region);
        if (region && region->minX() > 0.3) {
            throw MessageError("this strip failed");
        }
        return std::vector<OCRWord>{{"seen", {0.4, 0.5, 0.1, 0.02}},
                                    {"twice", {0.4, 0.5, 0.1, 0.02}},
                                    {"seen", {0.4004, 0.5016, 0.1, 0.02}}};
    };
    EXPECT_EQ(SelectionCaptureController::ocrWords(small, pass).size(), 3u)
        << "one pass, no deduplication";
    EXPECT_THAT(regions, ElementsAre(std::nullopt));

    regions.clear();
    const auto words = SelectionCaptureController::ocrWords(wide, pass);
    ASSERT_EQ(regions.size(), 2u);
    EXPECT_NEAR(regions[0]->maxX(), 0.6, 1e-12);
    EXPECT_NEAR(regions[1]->minX(), 0.4, 1e-12);
    EXPECT_EQ(regions[1]->maxX(), 1.0);
    // The failed strip adds nothing; a word within a grain of another goes.
    ASSERT_EQ(words.size(), 2u);
    EXPECT_EQ(words[1].text, "twice");

    regions.clear();
    SelectionCaptureController::ocrWords(huge, pass);
    ASSERT_EQ(regions.size(), 3u) << "three strips above 5200 pixels, whatever the shape";
    EXPECT_EQ(regions[0]->minX(), 0.0);
    EXPECT_NEAR(regions[2]->minX(), 2.0 / 3 - 0.2 / 3, 1e-12);
    EXPECT_EQ(regions[1]->height, 1.0);
}

}  // namespace
}  // namespace tevra
