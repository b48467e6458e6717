// The main of the tests of the Linux implementations. They run against a real
// X server with a window manager, the accessibility bus and GTK applications
// in processes of their own, as scripts/test-env provides them.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QApplication>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "support/desktop/peer_process.h"

int main(int argc, char** argv) {
    if (argc == 2 && std::strcmp(argv[1], tevra::testing::ClipboardOwnerProcess::flag) == 0) {
        return tevra::testing::ClipboardOwnerProcess::serve(argc, argv);
    }
    if (argc == 3 && std::strcmp(argv[1], tevra::testing::PeerProcess::qtFlag) == 0) {
        return tevra::testing::PeerProcess::serveQt(argc, argv);
    }
    ::testing::InitGoogleMock(&argc, argv);
    if (GTEST_FLAG_GET(list_tests)) {
        return RUN_ALL_TESTS();
    }
    const char* display = std::getenv("DISPLAY");
    const char* bus = std::getenv("DBUS_SESSION_BUS_ADDRESS");
    if (!display || !*display || !bus || !*bus) {
        std::fprintf(stderr,
                     "These tests need an X display with a window manager, a session bus and "
                     "the accessibility bus (DISPLAY=%s, DBUS_SESSION_BUS_ADDRESS=%s): run them "
                     "under scripts/test-env.\n",
                     display ? display : "", bus ? bus : "");
        return 1;
    }
    qputenv("QT_QPA_PLATFORM", "xcb");
    QApplication app(argc, argv);
    return RUN_ALL_TESTS();
}
