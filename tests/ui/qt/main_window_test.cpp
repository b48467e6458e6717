// The main window offscreen: every page shows the store, its controls write
// through to the store, settings.json and the keyring; and every page and
// wizard step drawn, light and dark, into the build's screenshots folder.
#include <gtest/gtest.h>

#include <QCheckBox>
#include <QComboBox>
#include <QKeyEvent>
#include <QListWidget>
#include <QPushButton>
#include <QScrollArea>
#include <QScrollBar>
#include <algorithm>
#include <set>

#include "ui/qt/settings_view.h"
#include "ui/qt/wizard_windows.h"
#include "window_harness.h"

namespace tevra {
namespace {

using testing::WindowHarness;

template <typename List, typename Value>
bool holds(const List& list, const Value& value) {
    return std::find(list.begin(), list.end(), value) != list.end();
}

struct PageCase {
    TevraSection section;
    // Works the page's controls; then the store must show the result.
    std::function<void(WindowHarness&)> act;
    std::function<bool(HistoryStore&)> stored;
};

const PageCase kPageCases[] = {
    {TevraSection::dictionary,
     [](WindowHarness& h) {
         ASSERT_TRUE(h.enter("Phrase", "Kestrum Cloud", "Add phrase"));
         ASSERT_TRUE(h.press("Remove Groq"));
     },
     [](HistoryStore& store) {
         return holds(store.dictionary(), "Kestrum Cloud") && !holds(store.dictionary(), "Groq");
     }},
    {TevraSection::replacements,
     [](WindowHarness& h) {
         h.find<QLineEdit>("Heard text")->setText("full stop");
         ASSERT_TRUE(h.enter("Typed text", ".", "Add replacement"));
     },
     [](HistoryStore& store) {
         return std::ranges::any_of(store.replacements(), [](const Replacement& r) {
             return r.from == "full stop" && r.to == ".";
         });
     }},
    {TevraSection::snippets,
     [](WindowHarness& h) {
         h.find<QLineEdit>("Trigger")->setText("my address");
         h.find<QLineEdit>("Trigger")->textChanged("my address");
         ASSERT_TRUE(h.enter("Expansion", "1 Main St", "Add snippet"));
     },
     [](HistoryStore& store) {
         return std::ranges::any_of(store.snippets(),
                                    [](const Snippet& s) { return s.trigger == "my address"; });
     }},
    {TevraSection::tones,
     [](WindowHarness& h) {
         h.find<QComboBox>("Match on")->setCurrentIndex(1);
         ASSERT_TRUE(h.enter("Pattern", "Gmail", "Add tone"));
     },
     [](HistoryStore& store) {
         return std::ranges::any_of(store.toneProfiles(), [](const ToneProfile& p) {
             return p.pattern == "Gmail" && p.matchKind == "title";
         });
     }},
    {TevraSection::modes,
     [](WindowHarness& h) {
         const std::string name = h.state->modes.at(1).name;
         auto* on = h.find<QCheckBox>(QString::fromStdString(name + " on"));
         ASSERT_NE(on, nullptr);
         on->click();
         QApplication::processEvents();
     },
     [](HistoryStore& store) { return !store.modes().at(1).enabled; }},
};

TEST(MainWindow, EveryListPageShowsTheStoreAndWritesThroughToIt) {
    for (const PageCase& page : kPageCases) {
        WindowHarness h;
        h.window().showSection(page.section);
        h.window().show();
        QApplication::processEvents();
        page.act(h);
        ASSERT_NE(h.state->store(), nullptr);
        EXPECT_TRUE(page.stored(*h.state->store())) << TevraSections::title(page.section);
        // What the store holds is what the page lists.
        h.state->reload();
        QApplication::processEvents();
        if (page.section == TevraSection::dictionary) {
            EXPECT_NE(h.find("Kestrum Cloud"), nullptr);
            EXPECT_EQ(h.find("Groq"), nullptr);
        }
    }
}

TEST(MainWindow, SaveSettingsWritesTheFileAndTellsTheProgram) {
    WindowHarness h;
    int posted = 0;
    auto heard = h.notifications.observe(weftSettingsChanged, [&] { ++posted; });
    h.window().showSection(TevraSection::settings);
    h.window().show();
    auto* hint = h.find<QLineEdit>("Language hint (empty = auto-detect)");
    ASSERT_NE(hint, nullptr);
    hint->setText("pl");
    ASSERT_TRUE(h.press("Save settings"));
    h.queue.runPending();
    EXPECT_EQ(WeftSettings::load(h.dir.path()).languageHint, "pl");
    EXPECT_EQ(posted, 1);

    // Leaving the page saves what was edited on it.
    h.find<QCheckBox>("Send anonymous crash reports")->click();
    h.window().showSection(TevraSection::history);
    EXPECT_TRUE(WeftSettings::load(h.dir.path()).crashReportsEnabled);
}

TEST(MainWindow, TheKeysGroupSavesIntoTheKeyringAndTheRuntimeTakesTheKey) {
    WindowHarness h;
    h.window().showSection(TevraSection::settings);
    h.window().show();
    KeysGroup& keys = h.window().settingsView().keys();
    h.queue.runPending();
    EXPECT_EQ(keys.status("GROQ_API_KEY"), "not set");
    EXPECT_FALSE(h.runtime->hasCloudSTT());
    ASSERT_TRUE(h.enter("Groq key", "gsk_test", "Save key Groq"));
    h.queue.runPending();
    EXPECT_EQ(h.secrets->lookup("GROQ_API_KEY"), "gsk_test");
    EXPECT_EQ(keys.status("GROQ_API_KEY"), "in the keyring");
    EXPECT_TRUE(h.runtime->hasCloudSTT());
    // The field never shows it again.
    EXPECT_TRUE(h.find<QLineEdit>("Groq key")->text().isEmpty());
    // An empty field removes it.
    ASSERT_TRUE(h.enter("Groq key", "", "Save key Groq"));
    h.queue.runPending();
    EXPECT_EQ(h.secrets->lookup("GROQ_API_KEY"), std::nullopt);
    EXPECT_FALSE(h.runtime->hasCloudSTT());

    // The wizard's last step asks for a key while none is there, and keeps it the same way.
    OnboardingWizard wizard(*h.state, true, [] {});
    EXPECT_TRUE(wizard.needsSpeechKey());
    bool kept = false;
    wizard.saveSpeechKey("OPENAI_API_KEY", " sk-test ", [&](bool ok) { kept = ok; });
    h.queue.runPending();
    EXPECT_TRUE(kept);
    EXPECT_EQ(h.secrets->lookup("OPENAI_API_KEY"), "sk-test");
    EXPECT_FALSE(wizard.needsSpeechKey());
}

// Rows enough that every page has something to draw.
void fill(HistoryStore& store) {
    const double now = HistoryRow::currentTimestamp();
    for (int i = 0; i < 40; ++i) {
        HistoryRow row;
        row.ts = now - i * 86400.0 * 2.3;
        row.app = i % 3 == 0 ? "firefox" : (i % 3 == 1 ? "org.gnome.TextEditor" : "thunderbird");
        row.raw = "um so send the the report by friday";
        row.polished = "So, send the report by Friday.";
        row.words = 6 + i % 5;
        row.durationMs = 2400;
        row.sttMs = 320;
        row.polishMs = 410;
        row.polishBackend = i == 0 ? "instruct-groq" : "groq";
        store.add(row);
    }
    NoteSession session;
    session.startedAt = now - 3600;
    session.endedAt = now - 1800;
    session.appName = "Zoom";
    session.title = "Quarterly planning";
    session.transcript = {{2, Speaker::me, "Can you send the deck by Friday?"},
                          {6, Speaker::them, "Yes, I'll send it Thursday."}};
    session.items = {{.kind = CaptureKind::task,
                      .title = "Send the deck",
                      .owner = Speaker::them,
                      .evidence = "Yes, I'll send it Thursday."},
                     {.kind = CaptureKind::event, .title = "Review", .dueISO = "2026-12-01"}};
    store.saveSession(session);
}

TEST(MainWindow, TheKeyboardReachesEveryPageAndEveryControlHasAName) {
    WindowHarness h;
    fill(*h.state->store());
    h.state->reload();
    MainWindow& window = h.window();
    window.show();
    QApplication::setActiveWindow(&window);
    QApplication::processEvents();
    auto* sections = h.find<QListWidget>("Sections");
    ASSERT_NE(sections, nullptr);
    sections->setCurrentRow(0);
    std::set<std::string> unnamed;
    for (int row = 0; row < sections->count(); ++row) {
        sections->setFocus();
        if (row > 0) {
            QKeyEvent down(QEvent::KeyPress, Qt::Key_Down, Qt::NoModifier);
            QApplication::sendEvent(sections, &down);
            QApplication::processEvents();
        }
        ASSERT_EQ(sections->currentRow(), row);
        const TevraSection section = TevraSections::all[static_cast<std::size_t>(row)];
        EXPECT_TRUE(window.page(section)->isVisible()) << TevraSections::title(section);
        // Tab goes round the page's controls and back to the sections.
        int reached = 0;
        for (int step = 0; step < 300; ++step) {
            QKeyEvent tab(QEvent::KeyPress, Qt::Key_Tab, Qt::NoModifier);
            QApplication::sendEvent(QApplication::focusWidget(), &tab);
            QWidget* now = QApplication::focusWidget();
            if (now == sections || now == nullptr) {
                break;
            }
            ++reached;
            if (now->accessibleName().isEmpty()) {
                unnamed.insert(std::string(TevraSections::title(section)) + ": " +
                               now->metaObject()->className() + " \"" +
                               now->property("text").toString().toStdString() + "\"");
            }
        }
        EXPECT_GT(reached, 0) << TevraSections::title(section) << " has nothing to reach";
    }
    EXPECT_TRUE(unnamed.empty()) << ::testing::PrintToString(unnamed);
}

TEST(MainWindow, EveryPageAndWizardStepDrawnLightAndDark) {
    WindowHarness h;
    fill(*h.state->store());
    h.state->reload();
    for (const char* appearance : {"light", "dark"}) {
        Theme::applyAppearance(appearance);
        for (TevraSection section : TevraSections::all) {
            h.window().showSection(section);
            const QString name = QString::fromStdString(std::string(TevraSections::title(section)) +
                                                        "-" + appearance);
            EXPECT_FALSE(h.screenshot(name.toLower().replace(' ', '-')).isEmpty());
        }
        // The foot of Settings: the Keys group and the two buttons.
        auto* settings = static_cast<QScrollArea*>(h.window().page(TevraSection::settings));
        settings->verticalScrollBar()->setValue(settings->verticalScrollBar()->maximum());
        h.screenshot(QStringLiteral("settings-keys-%1").arg(appearance));
        settings->verticalScrollBar()->setValue(0);
        OnboardingWizard wizard(*h.state, true, [] {});
        WizardWindow window(wizard, [] {});
        for (int step = 0; step <= OnboardingWizard::lastStep; ++step) {
            wizard.draft.userFirstName = "Ann";
            wizard.draft.userLastName = "Smith";
            // Stepped onto, so that the window draws it.
            wizard.step = std::max(0, step - 1);
            wizard.advance();
            if (step == 0) {
                wizard.back();
            }
            h.queue.runPending();
            h.screenshot(QStringLiteral("wizard-%1-%2").arg(step).arg(appearance), &window);
        }
    }
    Theme::applyAppearance("system");
    // The notetaker's session opens in its detail.
    h.window().showSection(TevraSection::notetaker);
    ASSERT_TRUE(h.press("Quarterly planning"));
    EXPECT_NE(h.find<QPushButton>("Copy transcript"), nullptr);
    h.screenshot("notetaker-session");
}

}  // namespace
}  // namespace tevra
