#pragma once

#include <chrono>
#include <filesystem>
#include <functional>
#include <string>

#include "base/log_file.h"
#include "base/serial_queue.h"

namespace tevra {

using WallClock = std::function<std::chrono::system_clock::time_point()>;

// One log file and the serial queue "tevra.log" that does all of its work, so
// that writing costs the caller only the hand-over of the string.
class Logger {
public:
    // The clock is read on the log queue only.
    explicit Logger(std::filesystem::path dir, WallClock clock = std::chrono::system_clock::now);
    // Writes whatever is still queued, then stops the queue.
    ~Logger() = default;

    const LogFile& file() const { return file_; }

    // Queues one line: "[" time stamp "] " message "\n". Returns at once and
    // never fails; a line that cannot be written is lost.
    void write(std::string message);
    // Waits until every line queued before the call is in the file.
    void flush();

private:
    WallClock clock_;
    LogFile file_;
    SerialQueue queue_;  // last: it stops, and runs what is queued, before the rest goes
};

// The process log, in the data directory unless configured otherwise. Any
// thread may write.
namespace Log {

void write(std::string message);

// Sends later lines to a log in dir, stamped by clock; lines already written
// go to the previous log first. For tests, and for a program that keeps its
// data elsewhere.
void configure(std::filesystem::path dir, WallClock clock = std::chrono::system_clock::now);
// Back to the default: the data directory and the system clock.
void reset();
// Waits until every line written so far is in the file.
void flush();

}  // namespace Log

}  // namespace tevra
