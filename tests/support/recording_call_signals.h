#pragma once

#include <functional>
#include <mutex>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "notetaker/call_signals.h"
#include "notetaker/system_audio_source.h"

// Recording fakes of the notetaker's platform seams: what the desktop says
// about the microphone and its applications, and the system's output.
namespace tevra::testing {

class ScriptedMicrophoneUse : public MicrophoneUse {
public:
    bool hot = false;
    int questions = 0;
    std::function<void()> onChange;

    bool isDefaultInputHot() override {
        ++questions;
        return hot;
    }
    void listen(std::function<void()> listener) override { onChange = std::move(listener); }
    void stopListening() override { onChange = nullptr; }

    // Changes the answer and tells the listener, as the sound server would.
    void set(bool value) {
        hot = value;
        if (onChange) {
            onChange();
        }
    }
};

class ScriptedApplications : public RunningApplications {
public:
    std::optional<std::string> front;
    std::vector<std::string> windows;
    int listings = 0;

    std::optional<std::string> frontmost() override { return front; }
    std::vector<std::string> running() override {
        ++listings;
        return windows;
    }
};

// The system's output: it plays, has no output at all, or cannot be
// recorded; the test plays samples into the source that runs.
class ScriptedSystemAudio : public std::enable_shared_from_this<ScriptedSystemAudio> {
public:
    enum class Answer { plays, noOutput, fails };

    static std::shared_ptr<ScriptedSystemAudio> make(Answer answer = Answer::plays) {
        auto audio = std::make_shared<ScriptedSystemAudio>();
        audio->answer_ = answer;
        return audio;
    }
    SystemAudioFactory factory() {
        return [self = shared_from_this()] { return std::make_unique<Source>(self); };
    }
    // False when no source runs.
    bool play(std::span<const int16_t> samples) {
        std::lock_guard lock(mutex_);
        if (onSamples_) {
            onSamples_(samples);
        }
        return static_cast<bool>(onSamples_);
    }
    bool isRunning() {
        std::lock_guard lock(mutex_);
        return static_cast<bool>(onSamples_);
    }

private:
    struct Source : SystemAudioSource {
        explicit Source(std::shared_ptr<ScriptedSystemAudio> a) : audio(std::move(a)) {}
        ~Source() override { stop(); }
        void start(SampleHandler onSamples, NoticeHandler) override {
            if (audio->answer_ == Answer::noOutput) {
                throw NoSoundOutputError();
            }
            if (audio->answer_ == Answer::fails) {
                throw MessageError("the monitor refused");
            }
            std::lock_guard lock(audio->mutex_);
            audio->onSamples_ = std::move(onSamples);
        }
        void stop() override {
            std::lock_guard lock(audio->mutex_);
            audio->onSamples_ = nullptr;
        }
        std::shared_ptr<ScriptedSystemAudio> audio;
    };

    std::mutex mutex_;
    Answer answer_ = Answer::plays;
    SystemAudioSource::SampleHandler onSamples_;
};

}  // namespace tevra::testing
