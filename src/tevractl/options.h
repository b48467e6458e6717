#pragma once

#include <cstdint>
#include <iosfwd>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "tevractl/commands.h"

// The command line as every command reads it.
namespace tevra::ctl {

// A wrong command line; the command prints it with its help, status 2.
struct UsageError {
    std::string message;
};

// Options of the form --name VALUE or --flag, and the positional rest.
struct Parsed {
    std::vector<std::string> positional;
    std::map<std::string, std::string> values;
    std::set<std::string> flags;
};

Parsed parse(const Args& args, const std::set<std::string>& valueOptions,
             const std::set<std::string>& flagOptions);
// A whole number of zero or more; UsageError otherwise.
int64_t parseNumber(const std::string& option, const std::string& text);
bool wantsHelp(const Args& args);
// Prints "tevractl COMMAND: message" and the command's help; returns 2.
int usage(const std::string& command, const std::string& message, std::ostream& err);
std::optional<std::string> readFile(const std::string& path);

}  // namespace tevra::ctl
