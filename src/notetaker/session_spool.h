#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace tevra {

// The folder of one session under "sessions/" in the data directory, from
// the start of its recording until it is saved: the two streams, mic.wav and
// system.wav, and session.json saying what they are. Owner-only.
struct SpoolFolder {
    std::filesystem::path dir;
    std::string app;
    double startedAt = 0;  // seconds since the Unix epoch; 0 when unknown
    // The session made of it, when its audio is kept after saving because
    // parts of it could not be transcribed.
    std::optional<int64_t> savedAs;

    std::filesystem::path mic() const { return dir / "mic.wav"; }
    std::filesystem::path system() const { return dir / "system.wav"; }
};

namespace SessionSpool {

std::filesystem::path root(const std::filesystem::path& dataDir);

// A new folder for a session that starts now, named after its start in UTC,
// with its description written. Throws MessageError when it cannot be made.
SpoolFolder create(const std::filesystem::path& dataDir, const std::string& app, double startedAt);

// The folders that no saved session came from, oldest first: left by a
// Tevra that ended (or crashed, or lost its power) during a call or before
// its session was saved.
std::vector<SpoolFolder> unsaved(const std::filesystem::path& dataDir);

// Notes in the folder's description that the session was saved as id.
bool markSaved(SpoolFolder& folder, int64_t id);

// The folder and everything in it. Housekeeping: a failure is dropped.
void remove(const SpoolFolder& folder);

}  // namespace SessionSpool
}  // namespace tevra
