#include "polish/voice.h"

#include <gtest/gtest.h>

namespace tevra {
namespace {

using Voice::detectLanguage;

TEST(DetectLanguage, HanScriptWinsOverEverythingElse) {
    EXPECT_EQ(detectLanguage("Zamówienie 浅灰色 jest gotowe"), "zh");
    EXPECT_EQ(detectLanguage("meeting in 東京 tomorrow"), "zh");
}

TEST(DetectLanguage, PolishLettersInAnyCaseOrComposition) {
    EXPECT_EQ(detectLanguage("ZAŻÓŁĆ"), "pl");
    EXPECT_EQ(detectLanguage("Łukasz says hello"), "pl");
    // "a" followed by a combining ogonek is the letter "ą".
    EXPECT_EQ(detectLanguage("prosze o szybka odpowiedz\u0328"), "en");
    EXPECT_EQ(detectLanguage("prosze o szybka\u0328 odpowiedz"), "pl");
}

TEST(DetectLanguage, MarkerWordsNeedBlanksAroundThem) {
    EXPECT_EQ(detectLanguage("nie"), "pl");
    EXPECT_EQ(detectLanguage("Nie wiem"), "pl");
    EXPECT_EQ(detectLanguage("to jest ok"), "pl");
    EXPECT_EQ(detectLanguage("kawa oraz herbata"), "pl");
    EXPECT_EQ(detectLanguage("the internet is nice"), "en");
    EXPECT_EQ(detectLanguage("to jest."), "en");
    EXPECT_EQ(detectLanguage(""), "en");
}

}  // namespace
}  // namespace tevra
