// The main of the Qt layer's tests: a QApplication on Qt's offscreen platform,
// so that they need no display.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QApplication>

int main(int argc, char** argv) {
    ::testing::InitGoogleMock(&argc, argv);
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) {
        qputenv("QT_QPA_PLATFORM", "offscreen");
    }
    QApplication app(argc, argv);
    return RUN_ALL_TESTS();
}
