#pragma once

#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "polish/polish_backend.h"
#include "store/pipeline_store.h"
#include "stt/transcription_backend.h"

namespace tevra::testing {

// A speech backend that answers from a script and records what it was asked.
class ScriptedTranscriber : public TranscriptionBackend {
public:
    using Answer = std::function<Transcript()>;

    ScriptedTranscriber(std::string name, Answer answer)
        : name_(std::move(name)), answer_(std::move(answer)) {}

    static std::shared_ptr<ScriptedTranscriber> returning(
        std::string name, std::string text, std::optional<std::string> language = {}) {
        return std::make_shared<ScriptedTranscriber>(std::move(name), [text, language] {
            return Transcript{text, language, {}};
        });
    }
    template <typename E>
    static std::shared_ptr<ScriptedTranscriber> failing(std::string name, E error) {
        return std::make_shared<ScriptedTranscriber>(std::move(name),
                                                     [error]() -> Transcript { throw error; });
    }

    std::string name() const override { return name_; }
    Transcript transcribe(std::string_view wav,
                          const std::optional<std::string>& languageHint) const override {
        {
            std::lock_guard lock(mutex_);
            calls_.push_back(Call{std::string(wav), languageHint});
        }
        return answer_();
    }

    struct Call {
        std::string wav;
        std::optional<std::string> languageHint;
    };
    std::vector<Call> calls() const {
        std::lock_guard lock(mutex_);
        return calls_;
    }

private:
    std::string name_;
    Answer answer_;
    mutable std::mutex mutex_;
    mutable std::vector<Call> calls_;
};

// A polisher that answers every operation from one script and records what it
// was asked. The script sees the transcript (polish, instruct) or the user
// message (compose).
class ScriptedPolisher : public PolishBackend {
public:
    using Answer = std::function<std::string(const std::string& transcriptOrUser)>;

    ScriptedPolisher(std::string name, Answer answer)
        : name_(std::move(name)), answer_(std::move(answer)) {}

    static std::shared_ptr<ScriptedPolisher> returning(std::string name, std::string text) {
        return std::make_shared<ScriptedPolisher>(std::move(name),
                                                  [text](const std::string&) { return text; });
    }
    template <typename E>
    static std::shared_ptr<ScriptedPolisher> failing(std::string name, E error) {
        return std::make_shared<ScriptedPolisher>(
            std::move(name), [error](const std::string&) -> std::string { throw error; });
    }

    std::string name() const override { return name_; }
    std::string polish(const std::string& transcript, const PolishContext&,
                       const std::vector<std::string>& dictionary,
                       const std::vector<Replacement>& replacements,
                       const std::vector<Snippet>& snippets) const override {
        {
            std::lock_guard lock(mutex_);
            ++calls_;
            lastDictionary_ = dictionary;
            lastReplacements_ = replacements;
            lastSnippets_ = snippets;
        }
        return answer_(transcript);
    }
    std::string instruct(const std::string& transcript, const PolishContext&,
                         const std::vector<std::string>& dictionary) const override {
        {
            std::lock_guard lock(mutex_);
            ++calls_;
            lastDictionary_ = dictionary;
        }
        return answer_(transcript);
    }
    using PolishBackend::compose;
    std::string compose(const std::string&, const std::string& user, double) const override {
        {
            std::lock_guard lock(mutex_);
            ++calls_;
        }
        return answer_(user);
    }

    int calls() const {
        std::lock_guard lock(mutex_);
        return calls_;
    }
    std::vector<std::string> lastDictionary() const {
        std::lock_guard lock(mutex_);
        return lastDictionary_;
    }
    std::vector<Replacement> lastReplacements() const {
        std::lock_guard lock(mutex_);
        return lastReplacements_;
    }
    std::vector<Snippet> lastSnippets() const {
        std::lock_guard lock(mutex_);
        return lastSnippets_;
    }

private:
    std::string name_;
    Answer answer_;
    mutable std::mutex mutex_;
    mutable int calls_ = 0;
    mutable std::vector<std::string> lastDictionary_;
    mutable std::vector<Replacement> lastReplacements_;
    mutable std::vector<Snippet> lastSnippets_;
};

// A store with fixed vocabulary that records the history rows it is given.
class RecordingStore : public PipelineStore {
public:
    std::vector<std::string> dictionaryWords;
    std::vector<Replacement> replacementRules;
    std::vector<Snippet> snippetList;

    std::vector<std::string> dictionary() const override { return dictionaryWords; }
    std::vector<Replacement> replacements() const override { return replacementRules; }
    std::vector<Snippet> snippets() const override { return snippetList; }
    void add(const HistoryRow& row) override {
        std::lock_guard lock(mutex_);
        rows_.push_back(row);
    }
    std::vector<HistoryRow> rows() const {
        std::lock_guard lock(mutex_);
        return rows_;
    }

private:
    mutable std::mutex mutex_;
    std::vector<HistoryRow> rows_;
};

}  // namespace tevra::testing
