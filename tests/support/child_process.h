#pragma once

#include <string>
#include <vector>

namespace tevra::testing {

// Runs a program to its end and returns what it wrote to standard output.
// Throws std::runtime_error naming the program when it is not installed or
// fails, so that a test missing a tool fails and says which.
std::string runProgram(const std::vector<std::string>& argv);

}  // namespace tevra::testing
