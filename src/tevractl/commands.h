#pragma once

#include <iosfwd>
#include <string>
#include <vector>

namespace tevra {
class WeftRuntime;
}

// The commands of tevractl. Each takes its own arguments (after the command
// name), writes to out and err, and returns the process exit status:
// 0 success, 1 the work failed, 2 the command line or the input was wrong.
namespace tevra::ctl {

using Args = std::vector<std::string>;

int dictate(WeftRuntime& runtime, const Args& args, std::ostream& out, std::ostream& err);
int translate(WeftRuntime& runtime, const Args& args, std::ostream& out, std::ostream& err);
int history(WeftRuntime& runtime, const Args& args, std::ostream& out, std::ostream& err);
int stats(WeftRuntime& runtime, const Args& args, std::ostream& out, std::ostream& err);
int keys(WeftRuntime& runtime, const Args& args, std::ostream& out, std::ostream& err);
int ocr(WeftRuntime& runtime, const Args& args, std::ostream& out, std::ostream& err);

// Help texts, printed for --help and after a usage error.
extern const char* const kUsage;
std::string helpFor(const std::string& command);  // empty for an unknown command

}  // namespace tevra::ctl
