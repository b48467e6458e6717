#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

namespace tevra::testing {

// A golden file under tests/polish/golden: the expected text exactly, plus
// the one line feed that ends every text file.
inline std::string golden(const std::string& name) {
    const auto path = std::filesystem::path(TEVRA_TESTS_DIR) / "polish" / "golden" / name;
    std::ifstream file(path, std::ios::binary);
    EXPECT_TRUE(file.good()) << "missing golden file " << path;
    std::ostringstream content;
    content << file.rdbuf();
    std::string text = content.str();
    if (text.ends_with('\n')) {
        text.pop_back();
    }
    return text;
}

}  // namespace tevra::testing
