#include "app/qt/tray_status_item.h"

#include <gtest/gtest.h>

#include <QAction>

namespace tevra {
namespace {

TEST(TrayStatusItem, ShowsTheVoicesInItsToolTipAndQuitsFromItsMenu) {
    int quits = 0;
    TrayStatusItem tray([&] { ++quits; });
    tray.setToolTip("Tevra \u2014 Fn Dictate \u00b7 Fn 2 Email");
    EXPECT_EQ(tray.toolTip(), QString::fromUtf8("Tevra \u2014 Fn Dictate \u00b7 Fn 2 Email"));

    const auto actions = tray.menu().actions();
    ASSERT_EQ(actions.size(), 1);
    EXPECT_EQ(actions[0]->text(), "Quit Tevra");
    actions[0]->trigger();
    EXPECT_EQ(quits, 1);
    EXPECT_FALSE(TrayStatusItem::drawIcon().availableSizes().isEmpty());
}

}  // namespace
}  // namespace tevra
