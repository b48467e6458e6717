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

    EXPECT_FALSE(access.check().device.empty());

    // What is missing is said, for the microphone step of the first run.
    PulseTestServer withoutDevices(PulseTestServer::Microphone::none);
    const auto noInput = PulseMicrophoneAccess(withoutDevices.address()).check();
    EXPECT_EQ(noInput.status, Status::denied);
    EXPECT_NE(noInput.problem.find("no input device"), std::string::npos) << noInput.problem;

    testing::TempDir nowhere;
    const auto noServer = PulseMicrophoneAccess("unix:" + (nowhere / "native").string()).check();
    EXPECT_EQ(noServer.status, Status::denied);
    EXPECT_NE(noServer.problem.find("no sound server"), std::string::npos) << noServer.problem;
}

}  // namespace
}  // namespace tevra
