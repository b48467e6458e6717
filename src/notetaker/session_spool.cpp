#include "notetaker/session_spool.h"

#include <algorithm>
#include <chrono>
#include <fstream>
#include <nlohmann/json.hpp>

#include "base/atomic_file.h"
#include "base/error.h"
#include "base/iso8601.h"
#include "base/secure_file.h"

namespace tevra::SessionSpool {
namespace fs = std::filesystem;
namespace {

constexpr const char* kDescription = "session.json";

bool writeDescription(const SpoolFolder& folder) {
    nlohmann::ordered_json description = {{"app", folder.app}, {"startedAt", folder.startedAt}};
    if (folder.savedAs) {
        description["savedAs"] = *folder.savedAs;
    }
    return writeFileAtomically(folder.dir / kDescription, description.dump() + "\n");
}

// What the description says; a missing or damaged one leaves the defaults:
// a session of "Notes" whose start is read off its audio later.
SpoolFolder readFolder(const fs::path& dir) {
    SpoolFolder folder{dir, "Notes", 0, std::nullopt};
    std::ifstream in(dir / kDescription);
    const auto description = nlohmann::json::parse(in, nullptr, /*allow_exceptions=*/false);
    if (!description.is_object()) {
        return folder;
    }
    if (const auto app = description.find("app"); app != description.end() && app->is_string()) {
        folder.app = app->get<std::string>();
    }
    if (const auto started = description.find("startedAt");
        started != description.end() && started->is_number()) {
        folder.startedAt = started->get<double>();
    }
    if (const auto saved = description.find("savedAs");
        saved != description.end() && saved->is_number_integer()) {
        folder.savedAs = saved->get<int64_t>();
    }
    return folder;
}

}  // namespace

fs::path root(const fs::path& dataDir) {
    return dataDir / "sessions";
}

SpoolFolder create(const fs::path& dataDir, const std::string& app, double startedAt) {
    const fs::path parent = root(dataDir);
    SecureFile::ensureSecureDir(parent);
    std::string name = iso8601UTC(std::chrono::system_clock::time_point(
        std::chrono::duration_cast<std::chrono::system_clock::duration>(
            std::chrono::duration<double>(startedAt))));
    std::replace(name.begin(), name.end(), ':', '-');
    SpoolFolder folder{parent / name, app, startedAt, std::nullopt};
    std::error_code error;
    // A second session in the same second (or a kept one) gets a number.
    for (int n = 2; !fs::create_directory(folder.dir, error); ++n) {
        if (error || n > 99) {
            throw MessageError("cannot make a folder in " + parent.string() +
                               (error ? ": " + error.message() : std::string()));
        }
        folder.dir = parent / (name + "-" + std::to_string(n));
    }
    SecureFile::ensureSecureDir(folder.dir);
    if (!writeDescription(folder)) {
        remove(folder);
        throw MessageError("cannot write " + (folder.dir / kDescription).string());
    }
    return folder;
}

std::vector<SpoolFolder> unsaved(const fs::path& dataDir) {
    std::vector<SpoolFolder> folders;
    std::error_code ignored;
    for (const auto& entry : fs::directory_iterator(root(dataDir), ignored)) {
        if (!entry.is_directory(ignored)) {
            continue;
        }
        SpoolFolder folder = readFolder(entry.path());
        if (!folder.savedAs) {
            folders.push_back(std::move(folder));
        }
    }
    // Names are UTC stamps: their order is the order of the calls.
    std::sort(folders.begin(), folders.end(),
              [](const SpoolFolder& a, const SpoolFolder& b) { return a.dir < b.dir; });
    return folders;
}

bool markSaved(SpoolFolder& folder, int64_t id) {
    folder.savedAs = id;
    return writeDescription(folder);
}

void remove(const SpoolFolder& folder) {
    std::error_code ignored;
    fs::remove_all(folder.dir, ignored);
}

}  // namespace tevra::SessionSpool
