#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include "base/http_client.h"
#include "crash/crash_report.h"

// The crash reporter in two halves. At the moment of a crash the signal
// handler writes the raw stack lines to crash/last-signal.txt with a handful
// of async-signal-safe calls, and an uncaught exception writes its report
// straight to crash/pending.json. At the next start, in a healthy process,
// collectPending turns the signal file into a report, and flushPending sends
// it, only with the user's consent and only over https. Every failure is
// silent: a broken reporter must never disturb the start.
namespace tevra::CrashReporter {

// Remembers dir and appVersion for the handlers, makes the private "crash"
// directory, and installs the handlers: std::set_terminate, and the signal
// handler for SIGSEGV, SIGABRT, SIGILL, SIGBUS, SIGFPE and SIGTRAP. Call it
// once, on the main thread, before other threads run.
void install(const std::filesystem::path& dir, const std::string& appVersion);

// Turns crash/last-signal.txt, if there is one, into crash/pending.json (kind
// "signal", stamped now with appVersion). The signal file goes as soon as it
// has been read, so that a crash is reported at most once.
void collectPending(const std::filesystem::path& dir, const std::string& appVersion);

// The client reports go out with: https only, 10 s without progress, 60 s in all.
HttpLimits httpLimits();

// Posts crash/pending.json as it stands to endpoint, when there is one, the
// user has opted in (enabled) and endpoint is https. Any HTTP answer, whatever
// its status, removes the file; true then. Without an answer the file stays
// for the next start. Blocking.
bool flushPending(const std::filesystem::path& dir, bool enabled,
                  const std::optional<std::string>& endpoint, const HttpClient& http);
// The same with a client of httpLimits().
bool flushPending(const std::filesystem::path& dir, bool enabled,
                  const std::optional<std::string>& endpoint);

// Writes the report as crash/pending.json, private to the user, replacing an
// unsent one. Failures are dropped.
void store(const std::filesystem::path& dir, const CrashReport& report);
bool hasPending(const std::filesystem::path& dir);
void discardPending(const std::filesystem::path& dir);

std::filesystem::path pendingURL(const std::filesystem::path& dir);
std::filesystem::path signalURL(const std::filesystem::path& dir);

}  // namespace tevra::CrashReporter

// The signal handler: writes the stack to the signal file with open,
// backtrace, backtrace_symbols_fd and close, then restores the default action
// and raises the signal again, so that the process dies of it as usual.
extern "C" void tevraSignalHandler(int sig);
