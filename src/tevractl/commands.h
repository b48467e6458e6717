#pragma once

#include <ostream>
#include <string>

#include "tevractl/options.h"

namespace tevra {
class WeftRuntime;
}

// The commands of tevractl. Each takes its own arguments (after the command
// name), writes to out and err, and returns the process exit status:
// 0 success, 1 the work failed, 2 the command line or the input was wrong.
namespace tevra::ctl {

int dictate(WeftRuntime& runtime, const Args& args, std::ostream& out, std::ostream& err);
int translate(WeftRuntime& runtime, const Args& args, std::ostream& out, std::ostream& err);
int history(WeftRuntime& runtime, const Args& args, std::ostream& out, std::ostream& err);
int stats(WeftRuntime& runtime, const Args& args, std::ostream& out, std::ostream& err);
int keys(WeftRuntime& runtime, const Args& args, std::ostream& out, std::ostream& err);
// notes process | list | show | delete
int notes(WeftRuntime& runtime, const Args& args, std::ostream& out, std::ostream& err);
// update check | verify
int update(WeftRuntime& runtime, const Args& args, std::ostream& out, std::ostream& err);
int ocr(WeftRuntime& runtime, const Args& args, std::ostream& out, std::ostream& err);

// The commands that drive a running Tevra over the session bus; they need no
// runtime of their own. notesControl takes "start [--app NAME]" and "stop".
int record(const Args& args, std::ostream& out, std::ostream& err);
int window(const Args& args, std::ostream& out, std::ostream& err);
int notesControl(const Args& args, std::ostream& out, std::ostream& err);
int status(const Args& args, std::ostream& out, std::ostream& err);

// Help texts, printed for --help and after a usage error.
extern const char* const kUsage;
std::string helpFor(const std::string& command);  // empty for an unknown command

// Runs a command's body: its help for --help, and for a UsageError the
// message, the help and status 2.
template <typename Command>
int guarded(const std::string& name, const Args& args, std::ostream& out, std::ostream& err,
            Command command) {
    if (wantsHelp(args)) {
        out << helpFor(name);
        return 0;
    }
    try {
        return command();
    } catch (const UsageError& e) {
        err << "tevractl " << name << ": " << e.message << "\n\n" << helpFor(name);
        return 2;
    }
}

}  // namespace tevra::ctl
