// A program that installs the crash reporter and then dies the way it is told,
// so that a test can look at what the crash left behind and live on.
//
//     tevra_crash_child DATA_DIR segv|exception
#include <cstdint>
#include <cstdio>
#include <stdexcept>
#include <string>

#include "crash/crash_reporter.h"

namespace tevra::testing {

struct CrashProbeError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

}  // namespace tevra::testing

int main(int argc, char** argv) {
    if (argc != 3) {
        std::fprintf(stderr, "usage: tevra_crash_child DATA_DIR segv|exception\n");
        return 2;
    }
    tevra::CrashReporter::install(argv[1], "9.9.9");
    const std::string how = argv[2];
    if (how == "segv") {
        // A real invalid access, at an address no sanitizer check stops first.
        *reinterpret_cast<volatile int*>(std::uintptr_t{16}) = 1;
    } else if (how == "exception") {
        throw tevra::testing::CrashProbeError("nobody catches this");
    }
    return 2;
}
