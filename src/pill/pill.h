#pragma once

namespace tevra {

// The pills as the orchestrator reaches them: one door to the pill of every
// screen, of which the main screen's shows the capture. Every operation may
// be called from any thread; from another than the main thread it runs on
// the main queue soon after.
class Pill {
public:
    virtual ~Pill() = default;

    // The meter, on the main screen's pill, showing the pills if they were hidden.
    virtual void startRecording() = 0;
    // The microphone's level, 0...1.
    virtual void updateLevel(double level) = 0;
    // The wave while the text is being made; stays until an outcome.
    virtual void processing() = 0;
    // The check mark; the pill collapses 0.85 s later.
    virtual void done() = 0;
    // The glow of a failure; the pill collapses 1.6 s later.
    virtual void error() = 0;
    // Back to the resting tab at once: nothing came of the capture.
    virtual void finishRecording() = 0;
    // The history cards read the newest dictations again.
    virtual void reload() = 0;
    virtual void show() = 0;
};

}  // namespace tevra
