// The half of the crash reporter that runs while the process goes down.
#include <cxxabi.h>
#include <execinfo.h>
#include <fcntl.h>
#include <unistd.h>

#include <atomic>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <memory>
#include <optional>

#include "base/secure_file.h"
#include "base/user_dirs.h"
#include "crash/crash_reporter.h"

namespace {

namespace fs = std::filesystem;

constexpr int kMaxFrames = 64;

// Written by install before any handler is live, read by the handlers.
std::optional<fs::path> dataDir;
std::string appVer = "0.0.0";
// The signal file's path as a plain C string, so that the signal handler has
// no string to build.
std::atomic<const char*> signalPath{nullptr};

// "std::out_of_range", or nothing when terminate came without an exception.
std::optional<std::string> currentExceptionName() {
    const std::type_info* type = abi::__cxa_current_exception_type();
    if (type == nullptr) {
        return std::nullopt;
    }
    int status = 0;
    std::unique_ptr<char, decltype(&std::free)> demangled(
        abi::__cxa_demangle(type->name(), nullptr, nullptr, &status), &std::free);
    return std::string(status == 0 && demangled ? demangled.get() : type->name());
}

// An uncaught exception: the process can still run ordinary code, so the
// report is written whole, straight away. abort() follows, and with it the
// signal handler.
[[noreturn]] void onTerminate() {
    try {
        const auto name = currentExceptionName();
        if (dataDir && name) {
            void* frames[kMaxFrames];
            const int count = ::backtrace(frames, kMaxFrames);
            std::vector<std::string> lines;
            if (char** symbols = ::backtrace_symbols(frames, count)) {
                lines.assign(symbols, symbols + count);
                std::free(symbols);
            }
            tevra::CrashReporter::store(
                *dataDir, tevra::CrashReport::make(appVer, "exception:" + *name, std::move(lines),
                                                   tevra::UserDirs::home()));
        }
    } catch (...) {
        // The process is going down anyway.
    }
    std::abort();
}

}  // namespace

extern "C" void tevraSignalHandler(int sig) {
    if (const char* path = signalPath.load(std::memory_order_acquire)) {
        const int fd = ::open(path, O_WRONLY | O_CREAT | O_TRUNC, 0600);
        if (fd >= 0) {
            void* frames[kMaxFrames];
            const int count = ::backtrace(frames, kMaxFrames);
            ::backtrace_symbols_fd(frames, count, fd);
            ::close(fd);
        }
    }
    ::signal(sig, SIG_DFL);
    ::raise(sig);
}

namespace tevra::CrashReporter {

void install(const fs::path& dir, const std::string& appVersion) {
    dataDir = dir;
    appVer = appVersion;
    SecureFile::ensureSecureDir(dir / "crash");
    // Never freed: a handler on another thread may be reading an earlier one.
    signalPath.store(::strdup(signalURL(dir).c_str()), std::memory_order_release);
    // backtrace loads its unwinder on first use, which allocates: that happens
    // here, not in the handler.
    void* warmUp[1];
    ::backtrace(warmUp, 1);
    std::set_terminate(onTerminate);
    for (const int sig : {SIGSEGV, SIGABRT, SIGILL, SIGBUS, SIGFPE, SIGTRAP}) {
        ::signal(sig, tevraSignalHandler);
    }
}

}  // namespace tevra::CrashReporter
