#include "base/secure_file.h"

#include <gtest/gtest.h>

#include "support/temp_dir.h"

namespace tevra {
namespace {

namespace fs = std::filesystem;
using testing::modeOf;

TEST(SecureFile, DirectoriesAreMadeOrTightenedToOwnerOnlyAndFailuresAreDropped) {
    testing::TempDir tmp;
    const fs::path dir = tmp / "a" / "b" / "Tevra";
    SecureFile::ensureSecureDir(dir);
    SecureFile::ensureSecureDir(dir);  // already there is no failure
    for (const fs::path& made : {tmp / "a", tmp / "a" / "b", dir}) {
        EXPECT_EQ(modeOf(made), 0700u) << made;
    }

    fs::permissions(tmp / "a", fs::perms(0755));
    std::ofstream(tmp / "a" / "keep.txt") << "data";
    SecureFile::ensureSecureDir(tmp / "a");
    EXPECT_EQ(modeOf(tmp / "a"), 0700u);
    EXPECT_EQ(testing::readFile(tmp / "a" / "keep.txt"), "data");

    // A regular file where the directory should be: nothing is made, nothing thrown.
    SecureFile::ensureSecureDir(tmp / "a" / "keep.txt" / "sub");
    EXPECT_TRUE(fs::is_regular_file(tmp / "a" / "keep.txt"));
}

TEST(SecureFile, LockDownMakesAnExistingFileOwnerOnlyAndMakesNoFile) {
    testing::TempDir tmp;
    std::ofstream(tmp / "settings.json") << "{}";
    fs::permissions(tmp / "settings.json", fs::perms(0666));
    SecureFile::lockDownFile(tmp / "settings.json");
    EXPECT_EQ(modeOf(tmp / "settings.json"), 0600u);
    SecureFile::lockDownFile(tmp / "missing.json");
    EXPECT_FALSE(fs::exists(tmp / "missing.json"));
}

}  // namespace
}  // namespace tevra
