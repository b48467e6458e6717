#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "capture/clipboard.h"
#include "capture/focus_probe.h"
#include "capture/key_injector.h"
#include "capture/secure_input.h"
#include "capture/sound_cue.h"

// Recording fakes of the capture seams. Each writes what it was asked into a
// shared journal, stamped by a clock the test supplies (virtual time), so that
// a test can read the order and timing of a whole sequence in one place.
namespace tevra::testing {

struct Journal {
    std::function<double()> clock = [] { return 0.0; };
    std::vector<std::pair<double, std::string>> entries;

    void add(std::string what) { entries.emplace_back(clock(), std::move(what)); }
    std::vector<std::string> names() const {
        std::vector<std::string> out;
        for (const auto& entry : entries) {
            out.push_back(entry.second);
        }
        return out;
    }
};

// A clipboard of typed items. Types listed in `unreadable` offer no data, as a
// promised format whose owner fails to deliver it.
class RecordingClipboard : public Clipboard {
public:
    explicit RecordingClipboard(std::shared_ptr<Journal> journal) : journal_(std::move(journal)) {}

    ClipboardSnapshot items;
    std::set<std::string> unreadable;
    bool lastSetWasTransient = false;

    ClipboardSnapshot snapshot() override {
        journal_->add("snapshot");
        ClipboardSnapshot out;
        for (const ClipboardData& item : items) {
            ClipboardData copy;
            for (const auto& format : item.formats) {
                if (!unreadable.contains(format.first)) {
                    copy.formats.push_back(format);
                }
            }
            out.push_back(std::move(copy));
        }
        return out;
    }
    void setText(std::string_view text, bool transient) override {
        journal_->add("setText " + std::string(text));
        items = {ClipboardData{{{"text/plain;charset=utf-8", std::string(text)}}}};
        lastSetWasTransient = transient;
        ++changes_;
    }
    void setPrimaryText(std::string_view text) override {
        journal_->add("setPrimary " + std::string(text));
    }
    void restore(const ClipboardSnapshot& snapshot) override {
        journal_->add("restore " + std::to_string(snapshot.size()));
        items = snapshot;
        ++changes_;
    }
    std::optional<std::string> text() override {
        for (const ClipboardData& item : items) {
            for (const auto& [type, data] : item.formats) {
                if (type.starts_with("text/plain")) {
                    return data;
                }
            }
        }
        return std::nullopt;
    }
    std::int64_t changeCount() override { return changes_; }

private:
    std::shared_ptr<Journal> journal_;
    std::int64_t changes_ = 0;
};

class RecordingKeyInjector : public KeyInjector {
public:
    explicit RecordingKeyInjector(std::shared_ptr<Journal> journal)
        : journal_(std::move(journal)) {}

    bool available = true;
    bool canMakeEvents = true;
    bool readsPrimary = false;
    // How many more times modifiersHeld() answers true.
    int modifierChecksHeld = 0;
    KeySequence chord = {{37, true}, {55, true}, {55, false}, {37, false}};
    KeySequence copyChord = {{37, true}, {54, true}, {54, false}, {37, false}};
    std::vector<KeySequence> posted;

    bool isAvailable() override { return available; }
    std::optional<KeySequence> pasteSequence() override {
        journal_->add("pasteSequence");
        if (!canMakeEvents) {
            return std::nullopt;
        }
        return chord;
    }
    bool pasteReadsPrimary() override { return readsPrimary; }
    bool modifiersHeld() override {
        journal_->add("modifiersHeld");
        return modifierChecksHeld > 0 && modifierChecksHeld-- > 0;
    }
    std::optional<KeySequence> copySequence() override {
        journal_->add("copySequence");
        if (!canMakeEvents) {
            return std::nullopt;
        }
        return copyChord;
    }
    void post(const KeySequence& events) override {
        journal_->add("post");
        posted.push_back(events);
    }

private:
    std::shared_ptr<Journal> journal_;
};

class FakeSecureInput : public SecureInput {
public:
    bool active = false;
    int asked = 0;
    bool isActive() override {
        ++asked;
        return active;
    }
};

// A desktop whose focused application, field and title the test sets.
class ScriptedFocusProbe : public FocusProbe {
public:
    std::optional<FrontApplication> front;
    bool trusted = true;
    std::optional<std::string> text;
    std::optional<std::string> title;
    std::vector<std::string> asked;

    std::optional<FrontApplication> frontApplication() override {
        asked.push_back("front");
        return front;
    }
    bool canReadFocus() override { return trusted; }
    std::optional<std::string> focusedText(const FrontApplication&) override {
        asked.push_back("focusedText");
        return text;
    }
    std::optional<std::string> windowTitle(const FrontApplication&) override {
        asked.push_back("windowTitle");
        return title;
    }
};

// Cues that play in the journal: "play start", "stop done", ... A cue stays
// playing until the test ends it with finish().
class RecordingSoundCues : public SoundCueFactory {
public:
    explicit RecordingSoundCues(std::shared_ptr<Journal> journal) : journal_(std::move(journal)) {}

    std::set<ChimeSound> missing;  // sounds the system does not have
    std::vector<std::pair<ChimeSound, double>> made;

    std::unique_ptr<SoundCue> make(ChimeSound sound, double volume) override {
        made.emplace_back(sound, volume);
        if (missing.contains(sound)) {
            return nullptr;
        }
        auto cue = std::make_unique<Cue>(journal_, nameOf(sound), playing_[index(sound)]);
        return cue;
    }
    void finish(ChimeSound sound) { *playing_[index(sound)] = false; }

    static std::string nameOf(ChimeSound sound) {
        switch (sound) {
            case ChimeSound::start:
                return "start";
            case ChimeSound::done:
                return "done";
            case ChimeSound::fail:
                return "fail";
        }
        return "?";
    }

private:
    class Cue : public SoundCue {
    public:
        Cue(std::shared_ptr<Journal> journal, std::string name, std::shared_ptr<bool> playing)
            : journal_(std::move(journal)), name_(std::move(name)), playing_(std::move(playing)) {}
        bool isPlaying() override { return *playing_; }
        void stop() override {
            journal_->add("stop " + name_);
            *playing_ = false;
        }
        void play() override {
            journal_->add("play " + name_);
            *playing_ = true;
        }

    private:
        std::shared_ptr<Journal> journal_;
        std::string name_;
        std::shared_ptr<bool> playing_;
    };

    static std::size_t index(ChimeSound sound) { return static_cast<std::size_t>(sound); }

    std::shared_ptr<Journal> journal_;
    std::shared_ptr<bool> playing_[3] = {std::make_shared<bool>(false),
                                         std::make_shared<bool>(false),
                                         std::make_shared<bool>(false)};
};

}  // namespace tevra::testing
