#pragma once

#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "app/status_item.h"
#include "pill/hud.h"
#include "pill/pill.h"
#include "support/fake_microphone_access.h"
#include "support/recording_capture.h"
#include "update/update_prompt.h"

// Recording fakes of the services the orchestrator reports to.
namespace tevra::testing {

// A HUD that writes each call into the journal: "hud processing",
// "hud error <message>".
class RecordingHud : public Hud {
public:
    explicit RecordingHud(std::shared_ptr<Journal> journal) : journal_(std::move(journal)) {}

    void processing() override { journal_->add("hud processing"); }
    void done() override { journal_->add("hud done"); }
    void error(const std::string& message) override { journal_->add("hud error " + message); }
    void hide() override { journal_->add("hud hide"); }

private:
    std::shared_ptr<Journal> journal_;
};

// Pills that write each call into the journal: "pill processing"; levels are
// only counted. onPaste is what the orchestrator handed them for their cards.
class RecordingPill : public Pill {
public:
    explicit RecordingPill(std::shared_ptr<Journal> journal) : journal_(std::move(journal)) {}

    std::vector<double> levels;
    std::function<void(const std::string&)> onPaste;

    void startRecording() override { journal_->add("pill startRecording"); }
    void updateLevel(double level) override { levels.push_back(level); }
    void processing() override { journal_->add("pill processing"); }
    void done() override { journal_->add("pill done"); }
    void error() override { journal_->add("pill error"); }
    void finishRecording() override { journal_->add("pill finishRecording"); }
    void reload() override { journal_->add("pill reload"); }
    void show() override { journal_->add("pill show"); }

private:
    std::shared_ptr<Journal> journal_;
};

class RecordingStatusItem : public StatusItem {
public:
    std::vector<std::string> toolTips;
    // The notetaker's entry as last set: "Start notes", or "Stop notes";
    // a trailing " (disabled)" when it cannot be picked.
    std::string notesEntry;
    std::function<void()> notesAction;

    bool shown = false;

    void setToolTip(const std::string& text) override { toolTips.push_back(text); }
    void show() override { shown = true; }
    void setNotesEntry(const std::string& label, bool enabled,
                       std::function<void()> action) override {
        notesEntry = label + (enabled ? "" : " (disabled)");
        notesAction = std::move(action);
    }
};

// The update offer: the texts it was shown, the answer it gives, the pages opened.
class RecordingUpdatePrompt : public UpdatePrompt {
public:
    bool download = true;
    std::vector<UpdateOffer> offers;
    std::vector<std::string> opened;

    bool askToDownload(const UpdateOffer& offer) override {
        offers.push_back(offer);
        return download;
    }
    void openURL(const std::string& url) override { opened.push_back(url); }
};

}  // namespace tevra::testing
