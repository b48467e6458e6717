#pragma once

#include <cstdint>
#include <iosfwd>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

// The command line of one tevractl command, after the command's name.
namespace tevra::ctl {

using Args = std::vector<std::string>;

// A wrong command line; the command prints the message and its help, and
// exits with status 2.
struct UsageError {
    std::string message;
};

// Options of the form --name VALUE (or --name=VALUE) and --flag, and the
// positional rest, in order.
struct Parsed {
    std::vector<std::string> positional;
    std::map<std::string, std::string> values;
    std::set<std::string> flags;
};

// Splits args by the options a command knows. "--" ends the options: all
// after it is positional. An argument that is no known option is positional
// unless it has the shape of one ("-x", "--word"), so that a text such as
// "-5 °C today" or "-3" needs no "--"; one with that shape throws UsageError
// "unknown option ...".
Parsed parse(const Args& args, const std::set<std::string>& valueOptions,
             const std::set<std::string>& flagOptions);

// A whole number of zero or more; throws UsageError naming the option.
int64_t parseNumber(const std::string& option, const std::string& text);

// True when --help or -h comes before any "--".
bool wantsHelp(const Args& args);

// Prints "tevractl COMMAND: message" and the command's help; returns 2.
int usage(const std::string& command, const std::string& message, std::ostream& err);

// A file's bytes; nothing when it cannot be read.
std::optional<std::string> readFile(const std::string& path);

}  // namespace tevra::ctl
