#include "capture/key_event_decoder.h"

#include <gtest/gtest.h>

#include "capture/key_symbols.h"

namespace tevra {
namespace {

using Event = DesktopKeyboard::Event;
using Kind = Event::Kind;

constexpr uint8_t controlRCode = 105;
constexpr uint32_t controlR = 0xffe4;
constexpr uint8_t oneCode = 10;
constexpr uint8_t qCode = 24;

TEST(KeySyms, OnlyTheTwelveChordKeysReachTheChordTable) {
    EXPECT_EQ(KeySyms::chordAction(KeySyms::digit(5)), FnAction::slot(5));
    EXPECT_EQ(KeySyms::chordAction(KeySyms::digit(0)), FnAction::clipStack());
    EXPECT_EQ(KeySyms::chordAction(KeySyms::comma), FnAction::clipMode());
    for (uint32_t key : KeySyms::chordKeys) {
        EXPECT_NE(KeySyms::chordAction(key), std::nullopt) << key;
    }
    // Escape, Q, "!" (shifted 1), the keypad's 1, slash, colon.
    for (uint32_t other : {KeySyms::escape, 0x71u, 0x21u, 0xffb1u, 0x2fu, 0x3au}) {
        EXPECT_EQ(KeySyms::chordAction(other), std::nullopt) << other;
    }
}

TEST(KeyEventDecoder, OnlyTheTalkKeyIsReportedFromTheKeysSeenEverywhere) {
    KeyEventDecoder decoder;
    decoder.setKeysym(controlRCode, controlR);
    decoder.setKeysym(oneCode, KeySyms::digit(1));
    EXPECT_EQ(decoder.observed(controlRCode, true), std::nullopt) << "no talk key set yet";

    decoder.setTalkKey(controlRCode);
    decoder.setChordKey(oneCode, true);
    EXPECT_EQ(decoder.observed(qCode, true), std::nullopt);
    EXPECT_EQ(decoder.observed(oneCode, false), std::nullopt);
    EXPECT_EQ(decoder.observed(controlRCode, true, 1.5),
              (Event{Kind::talkKeyDown, controlR, false, 1.5}));
    EXPECT_TRUE(decoder.isTalkKeyDown());
    EXPECT_EQ(decoder.observed(controlRCode, true), (Event{Kind::talkKeyDown, controlR, true}));
    // With the talk key down, any key but a chord key is the user's shortcut.
    EXPECT_EQ(decoder.observed(qCode, true, 1.6), (Event{Kind::otherKeyDown, 0, false, 1.6}));
    EXPECT_EQ(decoder.observed(qCode, false), std::nullopt);
    EXPECT_EQ(decoder.observed(oneCode, true), std::nullopt) << "a chord key comes by its grab";
    EXPECT_EQ(decoder.observed(controlRCode, false), (Event{Kind::talkKeyUp, controlR, false}));
    EXPECT_EQ(decoder.observed(qCode, true), std::nullopt);
    EXPECT_EQ(decoder.observed(controlRCode, true), (Event{Kind::talkKeyDown, controlR, false}));
}

TEST(KeyEventDecoder, APressOfAKeyAlreadyDownIsAutoRepeat) {
    KeyEventDecoder decoder;
    decoder.setKeysym(oneCode, KeySyms::digit(1));
    const uint32_t one = KeySyms::digit(1);
    EXPECT_EQ(decoder.taken(oneCode, true), (Event{Kind::keyDown, one, false}));
    EXPECT_EQ(decoder.taken(oneCode, true), (Event{Kind::keyDown, one, true}));
    EXPECT_EQ(decoder.taken(oneCode, false), (Event{Kind::keyUp, one, false}));
    EXPECT_EQ(decoder.taken(oneCode, true), (Event{Kind::keyDown, one, false}));
    EXPECT_EQ(decoder.taken(qCode, true), (Event{Kind::keyDown, 0, false})) << "unknown code";

    // A release that went to another window still ends the press.
    decoder.observed(oneCode, false);
    EXPECT_FALSE(decoder.taken(oneCode, true).repeat);
}

TEST(KeyEventDecoder, TheTalkKeyArrivingThroughAGrabIsStillTheTalkKey) {
    KeyEventDecoder decoder;
    decoder.setKeysym(controlRCode, controlR);
    decoder.setTalkKey(controlRCode);
    EXPECT_EQ(decoder.observed(controlRCode, true), (Event{Kind::talkKeyDown, controlR, false}));
    // While a chord key is held the release comes through its grab.
    EXPECT_EQ(decoder.taken(controlRCode, false), (Event{Kind::talkKeyUp, controlR, false}));
    EXPECT_FALSE(decoder.isTalkKeyDown());
    EXPECT_EQ(decoder.taken(controlRCode, true), (Event{Kind::talkKeyDown, controlR, false}));
}

}  // namespace
}  // namespace tevra
