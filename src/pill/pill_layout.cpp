#include "pill/pill_layout.h"

#include <chrono>
#include <fstream>
#include <iterator>
#include <nlohmann/json.hpp>
#include <system_error>

#include "base/atomic_file.h"
#include "base/log.h"
#include "base/secure_file.h"
#include "store/database_files.h"

namespace tevra {
namespace {

namespace fs = std::filesystem;

// Stored JSON is read strictly: every value an object of exactly the three keys.
bool isSpot(const nlohmann::json& value) {
    return value.is_object() && value.size() == 3 && value.contains("fx") &&
           value["fx"].is_number() && value.contains("fy") && value["fy"].is_number() &&
           value.contains("edge") && value["edge"].is_string();
}

}  // namespace

uint32_t PillLayout::screenKey(std::string_view screenName) {
    // FNV-1a: stable across starts and builds, unlike std::hash.
    uint32_t hash = 2166136261u;
    for (const unsigned char c : screenName) {
        hash = (hash ^ c) * 16777619u;
    }
    return hash;
}

PillLayout::PillLayout(fs::path dataDir) : dataDir_(std::move(dataDir)), url_(dataDir_ / fileName) {
    read();
}

void PillLayout::read() {
    std::error_code error;
    if (!fs::is_regular_file(url_, error)) {
        return;
    }
    std::ifstream in(url_, std::ios::binary);
    if (!in) {
        return;
    }
    const std::string text{std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
    in.close();
    const nlohmann::json json = nlohmann::json::parse(text, nullptr, /*allow_exceptions=*/false);
    bool valid = json.is_object();
    for (auto it = json.begin(); valid && it != json.end(); ++it) {
        valid = isSpot(it.value());
    }
    if (!valid) {
        try {
            const fs::path aside = DatabaseFiles::moveAside(url_, std::chrono::system_clock::now());
            Log::write(
                "pill_layout.json was damaged; the pills start at the bottom, and it was "
                "moved to " +
                aside.string());
        } catch (const fs::filesystem_error&) {
            // Left where it is; the next drop writes over it.
        }
        return;
    }
    for (const auto& [key, value] : json.items()) {
        map_[key] = {value["fx"].get<double>(), value["fy"].get<double>(),
                     value["edge"].get<std::string>()};
    }
}

std::optional<PillSpot> PillLayout::spot(uint32_t screen) const {
    const auto it = map_.find(std::to_string(screen));
    if (it == map_.end()) {
        return std::nullopt;
    }
    const Spot& spot = it->second;
    return PillSpot{spot.fx, spot.fy, pillDockFromRaw(spot.edge).value_or(PillDock::bottom)};
}

void PillLayout::set(uint32_t screen, double fx, double fy, PillDock dock) {
    map_[std::to_string(screen)] = {fx, fy, std::string(rawValue(dock))};
    nlohmann::json json = nlohmann::json::object();
    for (const auto& [key, spot] : map_) {
        json[key] = {{"fx", spot.fx}, {"fy", spot.fy}, {"edge", spot.edge}};
    }
    SecureFile::ensureSecureDir(dataDir_);
    if (writeFileAtomically(url_, json.dump())) {
        SecureFile::lockDownFile(url_);
    }
}

}  // namespace tevra
