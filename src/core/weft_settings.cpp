#include "core/weft_settings.h"

#include <fstream>
#include <sstream>

#include "base/atomic_file.h"
#include "base/secure_file.h"
#include "base/user_dirs.h"
#include "core/weft_settings_json.h"

namespace tevra {

namespace fs = std::filesystem;

namespace {

constexpr const char* fileName = "settings.json";

}  // namespace

fs::path WeftSettings::defaultDir() {
    return UserDirs::data();
}

WeftSettings WeftSettings::load(const fs::path& dir) {
    try {
        std::ifstream in(dir / fileName, std::ios::binary);
        if (!in) {
            return {};
        }
        std::ostringstream text;
        text << in.rdbuf();
        if (in.bad()) {
            return {};
        }
        return fromJSONText(text.str());
    } catch (const std::exception&) {
        return {};
    }
}

WeftSettings WeftSettings::fromJSONText(std::string_view text) {
    try {
        const nlohmann::json json = nlohmann::json::parse(text, nullptr, false);
        if (json.is_discarded()) {
            return {};
        }
        return WeftSettingsJSON::decode(json);
    } catch (const std::exception&) {
        return {};  // a corrupt file counts as no file
    }
}

void WeftSettings::save(const fs::path& dir) const {
    try {
        SecureFile::ensureSecureDir(dir);
        const std::string text = WeftSettingsJSON::encode(*this).dump(2) + "\n";
        const fs::path file = dir / fileName;
        writeFileAtomically(file, text);
        // The rename brought in a new inode, so the mode is set again every time.
        SecureFile::lockDownFile(file);
    } catch (const std::exception&) {
        // dump() refuses text that is not UTF-8; like a failed write, dropped
    }
}

}  // namespace tevra
