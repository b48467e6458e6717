#pragma once

#include <sys/types.h>

#include <atomic>
#include <cstdint>
#include <string>
#include <thread>
#include <vector>

namespace tevra::testing {

// A real PulseAudio server of a test's own, in a temporary directory: the
// user's sound setup is never seen or touched, and tests running side by side
// do not hear each other. Starting it throws std::runtime_error saying what is
// missing when pulseaudio cannot run, so such a test fails instead of skipping.
class PulseTestServer {
public:
    enum class Microphone {
        // A pipe source fed through a FIFO with s16le frames: it delivers
        // exactly what is written, as fast as it is written, and nothing else.
        fed,
        // The monitor of a null sink kept running: silence on the clock, in
        // short periods, like a real microphone.
        live,
        // No source and no sink at all.
        none,
    };

    // The default source has the given rate and channel count (unused for none).
    PulseTestServer(Microphone microphone, int sampleRate = 0, int channels = 0);
    // Stops the server and removes its directory.
    ~PulseTestServer();
    PulseTestServer(const PulseTestServer&) = delete;
    PulseTestServer& operator=(const PulseTestServer&) = delete;

    // The address a client connects to: "unix:<directory>/native".
    const std::string& address() const { return address_; }

    // Writes interleaved frames into the fed microphone from a thread of its
    // own, speed times faster than they would be spoken; the server only
    // takes them while something records.
    void feed(std::vector<int16_t> frames, double speed = 10.0);
    // The record streams the server has open now.
    int recordStreamCount() const;
    // Runs pactl against this server ("load-module", "set-default-sink", ...)
    // and returns what it printed.
    std::string pactl(std::vector<std::string> arguments) const;
    // The clients connected now, not counting the one that asks.
    int clientCount() const;

private:
    void shutDown();
    void startPlayer(int sampleRate, int channels);
    int countLines(const std::string& what) const;
    void waitUntilListening();
    std::string serverLog() const;

    std::string directory_;
    std::string address_;
    std::string fifo_;
    int sampleRate_;
    int channels_;
    std::atomic<bool> stopping_{false};
    pid_t pid_ = -1;
    pid_t playerPid_ = -1;
    int baselineClients_ = 0;
    std::vector<std::thread> feeders_;
};

}  // namespace tevra::testing
