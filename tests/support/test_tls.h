#pragma once

#include <filesystem>

namespace tevra::testing {

// A certificate authority made by openssl for this test run, and a server
// certificate it signed for 127.0.0.1 and localhost: what a loopback https
// server presents, and what a test's HTTP client trusts through
// HttpLimits::trustedCAFile. The product itself never trusts it.
struct TestTLS {
    std::filesystem::path caFile;
    std::filesystem::path certFile;
    std::filesystem::path keyFile;

    // Made once per process, in a temporary directory that lives as long.
    static const TestTLS& shared();
};

}  // namespace tevra::testing
