#pragma once

#include <cstdint>
#include <vector>

#include "capture/audio_recorder.h"

namespace tevra::testing {

// A recorder for the orchestrator's tests: it keeps the callbacks of the last
// start so the test can send levels or finish the start with or without an
// error, and stop() hands back whatever the test put in recording.
class RecordingAudioRecorder : public AudioRecorder {
public:
    Samples recording;
    int starts = 0;
    int stops = 0;
    LevelHandler onLevel;
    Completion completion;

    void start(LevelHandler level, Completion done) override {
        ++starts;
        running_ = true;
        onLevel = std::move(level);
        completion = std::move(done);
    }
    Samples stop() override {
        ++stops;
        running_ = false;
        return recording;
    }
    bool isRunning() override { return running_; }
    Samples snapshot() override { return recording; }

private:
    bool running_ = false;
};

}  // namespace tevra::testing
