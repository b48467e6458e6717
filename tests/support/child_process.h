#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

namespace tevra::testing {

// Runs a program to its end and returns what it wrote to standard output.
// Throws std::runtime_error naming the program when it is not installed or
// fails, so that a test missing a tool fails and says which.
std::string runProgram(const std::vector<std::string>& argv);

// A program that runs beside the test (a recorder, a player) until stopped or
// destroyed, which ends it with SIGTERM and waits. Its output goes nowhere.
// Throws like runProgram when it cannot be started.
class BackgroundProgram {
public:
    explicit BackgroundProgram(const std::vector<std::string>& argv);
    ~BackgroundProgram() { stop(); }
    BackgroundProgram(const BackgroundProgram&) = delete;
    BackgroundProgram& operator=(const BackgroundProgram&) = delete;

    void stop();
    bool isRunning();

private:
    pid_t pid_ = -1;
};

}  // namespace tevra::testing
