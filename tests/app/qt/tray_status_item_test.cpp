#include "app/qt/tray_status_item.h"

#include <gtest/gtest.h>

#include <QAction>

namespace tevra {
namespace {

TEST(TrayStatusItem, ShowsTheVoicesInItsToolTipOpensTheWindowStartsNotesAndQuits) {
    int quits = 0;
    int opens = 0;
    TrayStatusItem tray([&] { ++opens; }, [&] { ++quits; });
    tray.setToolTip("Tevra \u2014 Fn Dictate \u00b7 Fn 2 Email");
    EXPECT_EQ(tray.toolTip(), QString::fromUtf8("Tevra \u2014 Fn Dictate \u00b7 Fn 2 Email"));

    auto actions = tray.menu().actions();
    ASSERT_EQ(actions.size(), 5);
    // "Open Tevra" and a click on the icon both open the window.
    EXPECT_EQ(actions[0]->text(), "Open Tevra");
    actions[0]->trigger();
    tray.activate();
    EXPECT_EQ(opens, 2);
    actions.erase(actions.begin(), actions.begin() + 2);
    EXPECT_FALSE(actions[0]->isVisible()) << "no notetaker, no entry";
    int notes = 0;
    tray.setNotesEntry("Stop notes", true, [&] { ++notes; });
    EXPECT_TRUE(actions[0]->isVisible());
    EXPECT_EQ(actions[0]->text(), "Stop notes");
    actions[0]->trigger();
    EXPECT_EQ(notes, 1);
    tray.setNotesEntry("Start notes", false, [] {});
    EXPECT_FALSE(actions[0]->isEnabled());

    EXPECT_EQ(actions[2]->text(), "Quit Tevra");
    actions[2]->trigger();
    EXPECT_EQ(quits, 1);
    EXPECT_FALSE(TrayStatusItem::drawIcon().availableSizes().isEmpty());
}

}  // namespace
}  // namespace tevra
