#include "crash/crash_report.h"

#include <chrono>
#include <nlohmann/json.hpp>

#include "base/iso8601.h"
#include "base/os_version.h"

namespace tevra {
namespace {

void replaceAll(std::string& text, const std::string& pattern, const std::string& with) {
    if (pattern.empty()) {
        return;
    }
    for (std::size_t at = text.find(pattern); at != std::string::npos;
         at = text.find(pattern, at + with.size())) {
        text.replace(at, pattern.size(), with);
    }
}

}  // namespace

std::string CrashReport::toJSON() const {
    nlohmann::ordered_json json;
    json["appVersion"] = appVersion;
    json["osVersion"] = osVersion;
    json["when"] = when;
    json["kind"] = kind;
    json["frames"] = frames;
    // Bytes that are not UTF-8 (a path in another encoding) become U+FFFD
    // rather than losing the report.
    return json.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
}

CrashReport CrashReport::make(std::string appVersion, std::string kind,
                              std::vector<std::string> frames, const std::filesystem::path& home) {
    return CrashReport{std::move(appVersion), OSVersion::running().dotted(),
                       iso8601UTC(std::chrono::system_clock::now()), std::move(kind),
                       scrub(std::move(frames), home)};
}

std::vector<std::string> CrashReport::scrub(std::vector<std::string> frames,
                                            const std::filesystem::path& home) {
    std::string homeText = home.string();
    while (homeText.size() > 1 && homeText.back() == '/') {
        homeText.pop_back();
    }
    const std::string name = std::filesystem::path(homeText).filename().string();
    for (std::string& frame : frames) {
        if (homeText != "/") {
            replaceAll(frame, homeText, "~");
        }
        if (!name.empty()) {
            replaceAll(frame, "/Users/" + name, "~");
            replaceAll(frame, "/home/" + name, "~");
        }
    }
    return frames;
}

}  // namespace tevra
