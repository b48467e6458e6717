#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace tevra::testing {

struct ProcessResult {
    int exitCode = -1;  // -1 when it did not exit normally
    std::string out;
    std::string err;
};

// Runs a program to its end with the environment of this process, changed by
// `environment` (a value of nullopt removes the variable), and collects its
// standard output and error.
ProcessResult runProcess(const std::vector<std::string>& argv,
                         const std::map<std::string, std::optional<std::string>>& environment = {});

}  // namespace tevra::testing
