#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace tevra {

// One stream of a session written to disk as it is recorded: a mono 16-bit
// WAV file whose header claims the largest length until finish() writes the
// real one, so that a file cut off by a crash still reads as WAV. Owner-only.
// Used from one thread at a time.
class SpoolWriter {
public:
    static constexpr std::size_t headerBytes = 44;

    // Creates the file, which must not exist yet. Throws MessageError.
    SpoolWriter(const std::filesystem::path& file, int sampleRate);
    // finish()
    ~SpoolWriter();
    SpoolWriter(const SpoolWriter&) = delete;
    SpoolWriter& operator=(const SpoolWriter&) = delete;

    // Buffers a quarter second, then writes; what is written reaches the disk
    // every few seconds. A failure is kept (see failure()), never thrown, and
    // what follows it is dropped.
    void append(std::span<const int16_t> samples);
    // Writes what is buffered, puts the real sizes in the header, makes it
    // durable and closes the file. Safe to repeat.
    void finish();

    int64_t samples() const { return samples_; }
    const std::optional<std::string>& failure() const { return failure_; }

    // A file left by a writer that never finished (a crash, a power cut): a
    // trailing half sample cut off and the header's sizes made to match.
    // False when it is not a spool file.
    static bool repair(const std::filesystem::path& file);

private:
    void writePending();
    void fail(const std::string& what);

    std::filesystem::path file_;
    int fd_ = -1;
    std::vector<int16_t> pending_;
    int64_t samples_ = 0;
    int64_t unsynced_ = 0;
    std::optional<std::string> failure_;
};

// The samples of a finished or repaired spool file, mapped rather than read:
// processing an hour of audio costs no memory of its own, and the pages go
// back to the file when it is done.
class SpoolSamples {
public:
    // Empty when the file is missing or not a spool file.
    explicit SpoolSamples(const std::filesystem::path& file);
    ~SpoolSamples();
    SpoolSamples(const SpoolSamples&) = delete;
    SpoolSamples& operator=(const SpoolSamples&) = delete;

    std::span<const int16_t> samples() const { return samples_; }

private:
    void* map_ = nullptr;
    std::size_t mapBytes_ = 0;
    std::span<const int16_t> samples_;
};

}  // namespace tevra
