#include "core/secure_file.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <fstream>

#include "core/provider.h"
#include "support/temp_dir.h"

namespace tevra {
namespace {

namespace fs = std::filesystem;

unsigned modeOf(const fs::path& p) {
    struct stat st {};
    if (::stat(p.c_str(), &st) != 0) {
        return 0;
    }
    return st.st_mode & 07777;
}

TEST(SecureFile, EnsureSecureDirCreatesPrivateDirectoriesWithParents) {
    testing::TempDir tmp;
    const fs::path dir = tmp / "a" / "b" / "Tevra";
    SecureFile::ensureSecureDir(dir);
    ASSERT_TRUE(fs::is_directory(dir));
    EXPECT_EQ(modeOf(dir), 0700u);
    EXPECT_EQ(modeOf(tmp / "a"), 0700u);
    EXPECT_EQ(modeOf(tmp / "a" / "b"), 0700u);

    // Again on the same directory: already there is no failure, and it stays private.
    SecureFile::ensureSecureDir(dir);
    EXPECT_EQ(modeOf(dir), 0700u);
}

TEST(SecureFile, EnsureSecureDirTightensAnExistingDirectoryAndKeepsItsFiles) {
    testing::TempDir tmp;
    const fs::path dir = tmp / "open";
    fs::create_directory(dir);
    ::chmod(dir.c_str(), 0755);
    std::ofstream(dir / "keep.txt") << "data";

    SecureFile::ensureSecureDir(dir);
    EXPECT_EQ(modeOf(dir), 0700u);
    EXPECT_TRUE(fs::exists(dir / "keep.txt"));
}

TEST(SecureFile, EnsureSecureDirDropsFailures) {
    testing::TempDir tmp;
    const fs::path file = tmp / "plain";
    std::ofstream(file) << "x";
    ::chmod(file.c_str(), 0644);
    // A regular file where the directory should be: nothing is created, nothing thrown.
    SecureFile::ensureSecureDir(file / "sub");
    EXPECT_FALSE(fs::exists(file / "sub"));
    EXPECT_TRUE(fs::is_regular_file(file));
}

TEST(SecureFile, LockDownFileMakesAnExistingFileOwnerOnly) {
    testing::TempDir tmp;
    const fs::path file = tmp / "settings.json";
    std::ofstream(file) << "{}";
    ::chmod(file.c_str(), 0666);
    SecureFile::lockDownFile(file);
    EXPECT_EQ(modeOf(file), 0600u);

    const fs::path missing = tmp / "missing.json";
    SecureFile::lockDownFile(missing);
    EXPECT_FALSE(fs::exists(missing));
}

TEST(Provider, RawValuesAreTheEnvironmentVariablesInTableOrder) {
    constexpr auto cases = allCases<Provider>();
    static_assert(cases.size() == 4);
    EXPECT_EQ(rawValue(cases[0]), "GROQ_API_KEY");
    EXPECT_EQ(rawValue(cases[1]), "OPENAI_API_KEY");
    EXPECT_EQ(rawValue(cases[2]), "DEEPINFRA_API_KEY");
    EXPECT_EQ(rawValue(cases[3]), "FIREWORKS_API_KEY");
    for (Provider p : cases) {
        EXPECT_EQ(providerFromRawValue(rawValue(p)), p);
    }
    EXPECT_EQ(providerFromRawValue("groq_api_key"), std::nullopt);
    EXPECT_EQ(providerFromRawValue("TEVRA_PROXY_TOKEN"), std::nullopt);
}

}  // namespace
}  // namespace tevra
