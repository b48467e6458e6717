#include "capture/chime.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>

#include "capture/chime_tones.h"
#include "support/recording_capture.h"

namespace tevra {
namespace {

using ::testing::ElementsAre;
using ::testing::Pair;

struct ChimeRig {
    std::shared_ptr<testing::Journal> journal = std::make_shared<testing::Journal>();
    std::shared_ptr<testing::RecordingSoundCues> cues =
        std::make_shared<testing::RecordingSoundCues>(journal);
    Chime chime{cues};
};

TEST(Chime, MakesEachCueOnceAtItsVolumeAndRestartsOneStillPlaying) {
    ChimeRig rig;
    EXPECT_TRUE(rig.chime.enabled());
    EXPECT_TRUE(rig.cues->made.empty()) << "nothing is made before first use";

    rig.chime.processingStarted();
    rig.chime.processingStarted();  // still playing: stopped, then played from the start
    rig.cues->finish(ChimeSound::start);
    rig.chime.processingStarted();
    rig.chime.processingFinished();
    rig.chime.processingFailed();

    EXPECT_THAT(rig.journal->names(), ElementsAre("play start", "stop start", "play start",
                                                  "play start", "play done", "play fail"));
    EXPECT_THAT(rig.cues->made,
                ElementsAre(Pair(ChimeSound::start, 0.3), Pair(ChimeSound::done, 0.35),
                            Pair(ChimeSound::fail, 0.35)));
}

TEST(Chime, DisabledPlaysNothingAndMakesNothing) {
    ChimeRig rig;
    rig.chime.setEnabled(false);
    rig.chime.processingStarted();
    rig.chime.processingFinished();
    rig.chime.processingFailed();
    EXPECT_TRUE(rig.journal->entries.empty());
    EXPECT_TRUE(rig.cues->made.empty());

    rig.chime.setEnabled(true);
    rig.chime.processingFinished();
    EXPECT_THAT(rig.journal->names(), ElementsAre("play done"));
}

TEST(Chime, SkipsASoundTheSystemLacksWithoutAskingAgain) {
    ChimeRig rig;
    rig.cues->missing = {ChimeSound::done};
    rig.chime.processingFinished();
    rig.chime.processingFinished();
    rig.chime.processingFailed();
    EXPECT_THAT(rig.journal->names(), ElementsAre("play fail"));
    EXPECT_EQ(rig.cues->made.size(), 2u);
}

TEST(ChimeTones, AreShortAudibleMonoWavesThatDifferFromEachOther) {
    ByteBuffer start = ChimeTones::wav(ChimeSound::start);
    ByteBuffer done = ChimeTones::wav(ChimeSound::done);
    ByteBuffer fail = ChimeTones::wav(ChimeSound::fail);
    for (const ByteBuffer* wav : {&start, &done, &fail}) {
        ASSERT_GT(wav->size(), 44u);
        EXPECT_EQ(wav->compare(0, 4, "RIFF"), 0);
        const std::size_t samples = (wav->size() - 44) / 2;
        EXPECT_GT(samples, ChimeTones::sampleRate / 20u);  // over 50 ms
        EXPECT_LT(samples, ChimeTones::sampleRate / 1u);   // under a second
        int16_t peak = 0;
        int16_t last = 0;
        for (std::size_t i = 0; i < samples; ++i) {
            int16_t v;
            std::memcpy(&v, wav->data() + 44 + 2 * i, 2);
            peak = std::max<int16_t>(peak, static_cast<int16_t>(std::abs(v)));
            last = v;
        }
        EXPECT_GT(peak, 20000) << "loud enough to hear at a volume of 0.3";
        EXPECT_LT(std::abs(last), 200) << "fades out without a click";
    }
    EXPECT_LT(start.size(), fail.size());
    EXPECT_LT(fail.size(), done.size());
}

}  // namespace
}  // namespace tevra
