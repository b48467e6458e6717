// Whether the sound server offers a microphone, asked of real PulseAudio
// servers of the test's own.
#include "capture/linux/pulse_microphone_access.h"

#include <gtest/gtest.h>

#include "support/pulse_test_server.h"
#include "support/temp_dir.h"

namespace tevra {
namespace {

using testing::PulseTestServer;
using Status = MicrophoneAccess::Status;

TEST(PulseMicrophoneAccess, AServerWithAnInputIsAuthorizedAndAnythingLessDenied) {
    PulseTestServer withMicrophone(PulseTestServer::Microphone::fed, 48000, 2);
    PulseMicrophoneAccess access(withMicrophone.address());
    EXPECT_EQ(access.status(), Status::authorized);
    bool granted = false;
    access.requestAccess([&](bool answer) { granted = answer; });
    EXPECT_TRUE(granted);

    PulseTestServer withoutDevices(PulseTestServer::Microphone::none);
    EXPECT_EQ(PulseMicrophoneAccess(withoutDevices.address()).status(), Status::denied);

    testing::TempDir nowhere;
    EXPECT_EQ(PulseMicrophoneAccess("unix:" + (nowhere / "native").string()).status(),
              Status::denied);
}

}  // namespace
}  // namespace tevra
