// tevractl ocr: the real program reading pictures with Tesseract.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <nlohmann/json.hpp>

#include "support/subprocess.h"
#include "support/temp_dir.h"

namespace tevra {
namespace {

using ::testing::HasSubstr;

const std::string kPictures = TEVRA_TESTS_DIR "/tevractl/pictures/";

testing::ProcessResult ocr(const testing::TempDir& home, std::vector<std::string> args) {
    args.insert(args.begin(), {TEVRACTL_PATH, "ocr"});
    return testing::runProcess(
        args, {{"HOME", home.path().string()}, {"XDG_DATA_HOME", (home / "data").string()}});
}

// Two columns of English above a line of Chinese.
TEST(TevractlOcr, ReadsLinesWordsAndJson) {
    testing::TempDir home;
    const std::string picture = kPictures + "two_columns.png";

    const auto lines = ocr(home, {picture});
    ASSERT_EQ(lines.exitCode, 0) << lines.err;
    EXPECT_EQ(lines.out,
              "Rivers carry water Mountains rise\ndown to the sea above the clouds\n今天天气很好\n")
        << "the recogniser's own lines, as the screenshot voice gets them";

    const auto words = ocr(home, {picture, "--words"});
    ASSERT_EQ(words.exitCode, 0) << words.err;
    EXPECT_THAT(words.out, HasSubstr("L0   c1   y=0.704 x=0.036  Rivers carry water\n"
                                     "L1   c1   y=0.522 x=0.035  down to the sea\n"));
    EXPECT_THAT(words.out, HasSubstr("c2   y=0.713 x=0.558  Mountains rise\n"));

    const auto json = ocr(home, {"--json", picture});
    ASSERT_EQ(json.exitCode, 0) << json.err;
    const auto parsed = nlohmann::json::parse(json.out);
    ASSERT_TRUE(parsed.is_array());
    EXPECT_EQ(parsed.front()["text"], "Rivers");
    EXPECT_EQ(parsed.front()["line"], 0);
    EXPECT_EQ(parsed.front()["column"], 1);
    EXPECT_NEAR(parsed.front()["x"].get<double>(), 0.036, 0.002);
    EXPECT_EQ(parsed.back()["text"], "clouds");
    EXPECT_EQ(parsed.back()["column"], 2);
}

TEST(TevractlOcr, NoTextAndNoPictureAreTold) {
    testing::TempDir home;
    std::ofstream(home / "notes.png") << "not a picture";
    const struct {
        std::vector<std::string> args;
        int status;
        const char* says;
    } cases[] = {
        {{kPictures + "blank.png"}, 1, "no text found"},
        {{kPictures + "blank.png", "--words"}, 1, "no text found"},
        {{(home / "notes.png").string()}, 2, "is not a readable picture"},
        {{(home / "missing.png").string()}, 2, "is not a readable picture"},
        {{kPictures + "blank.png", "--frames"}, 2, "unknown option --frames"},
        {{}, 2, "which picture?"},
    };
    for (const auto& c : cases) {
        const auto run = ocr(home, c.args);
        EXPECT_EQ(run.exitCode, c.status) << c.says;
        EXPECT_THAT(run.err, HasSubstr(c.says));
        EXPECT_EQ(run.out, "");
    }
}

}  // namespace
}  // namespace tevra
