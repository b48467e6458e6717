#pragma once

#include <QListWidget>
#include <QStackedWidget>
#include <QWidget>
#include <array>
#include <functional>
#include <memory>

#include "ui/tevra_section.h"
#include "ui/ui_state.h"

namespace tevra {

class HistoryView;
class NotetakerView;
class InsightsView;
class ModesView;
class DictionaryView;
class ReplacementsView;
class SnippetsView;
class TonesView;
class SettingsView;
class RecordingBar;

// The main window: the sidebar with its sections and a page for each. It
// reads the lists afresh whenever it is shown; leaving the Settings page, or
// closing the window while on it, saves the settings.
class MainWindow : public QWidget {
public:
    // editProfile opens the profile editor over this window.
    MainWindow(UIState& state, std::function<void()> editProfile);
    ~MainWindow() override;

    // Shows it in front, reloaded; the first time on History.
    void present();
    void showSection(TevraSection section);
    TevraSection section() const;
    QWidget* page(TevraSection section) const;
    SettingsView& settingsView() const { return *settings_; }
    NotetakerView& notetakerView() const { return *notetaker_; }

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    void refresh();
    void refreshSection(TevraSection section);
    void sectionChanged(int index);

    UIState& state_;
    QListWidget* sidebar_;
    QStackedWidget* pages_;
    RecordingBar* bar_;
    HistoryView* history_;
    NotetakerView* notetaker_;
    InsightsView* insights_;
    ModesView* modes_;
    DictionaryView* dictionary_;
    ReplacementsView* replacements_;
    SnippetsView* snippets_;
    TonesView* tones_;
    SettingsView* settings_;
    int current_ = 0;
    // Pages whose lists changed while out of view.
    std::array<bool, TevraSections::all.size()> stale_{};
    Observers::Token token_;
    std::shared_ptr<bool> alive_ = std::make_shared<bool>(true);
};

}  // namespace tevra
