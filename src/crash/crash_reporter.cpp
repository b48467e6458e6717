#include "crash/crash_reporter.h"

#include <fstream>
#include <iterator>
#include <system_error>

#include "base/atomic_file.h"
#include "base/secure_file.h"
#include "base/url.h"
#include "base/user_dirs.h"

namespace tevra::CrashReporter {

namespace fs = std::filesystem;

fs::path pendingURL(const fs::path& dir) {
    return dir / "crash" / "pending.json";
}

fs::path signalURL(const fs::path& dir) {
    return dir / "crash" / "last-signal.txt";
}

void store(const fs::path& dir, const CrashReport& report) {
    SecureFile::ensureSecureDir(dir / "crash");
    if (writeFileAtomically(pendingURL(dir), report.toJSON())) {
        SecureFile::lockDownFile(pendingURL(dir));
    }
}

bool hasPending(const fs::path& dir) {
    std::error_code ignored;
    return fs::exists(pendingURL(dir), ignored);
}

void discardPending(const fs::path& dir) {
    std::error_code ignored;
    fs::remove(pendingURL(dir), ignored);
}

void collectPending(const fs::path& dir, const std::string& appVersion) {
    std::ifstream in(signalURL(dir), std::ios::binary);
    if (!in) {
        return;
    }
    const std::string text{std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
    if (in.bad()) {
        return;
    }
    in.close();
    std::error_code ignored;
    fs::remove(signalURL(dir), ignored);

    std::vector<std::string> frames;
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t end = std::min(text.find('\n', at), text.size());
        if (end > at) {
            frames.push_back(text.substr(at, end - at));
        }
        at = end + 1;
    }
    store(dir, CrashReport::make(appVersion, "signal", std::move(frames), UserDirs::home()));
}

HttpLimits httpLimits() {
    HttpLimits limits;
    limits.inactivitySec = 10.0;
    limits.totalSec = 60.0;
    limits.httpsOnly = true;
    return limits;
}

bool flushPending(const fs::path& dir, bool enabled, const std::optional<std::string>& endpoint,
                  const HttpClient& http) {
    std::ifstream in(pendingURL(dir), std::ios::binary);
    if (!in) {
        return false;
    }
    const std::string body{std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
    in.close();
    if (!enabled || !endpoint || !isHttpsURL(*endpoint)) {
        return false;
    }
    try {
        http.post(*endpoint, {{"Content-Type", "application/json"}}, body);
    } catch (const std::exception&) {
        return false;
    }
    discardPending(dir);
    return true;
}

bool flushPending(const fs::path& dir, bool enabled, const std::optional<std::string>& endpoint) {
    const HttpClient http(httpLimits());
    return flushPending(dir, enabled, endpoint, http);
}

}  // namespace tevra::CrashReporter
