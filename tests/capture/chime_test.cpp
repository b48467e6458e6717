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

TEST(Chime, DisabledOrMissingCuesPlayNothingAndAreNotAskedForAgain) {
    ChimeRig rig;
    rig.cues->missing = {ChimeSound::done};
    rig.chime.setEnabled(false);
    rig.chime.processingStarted();
    rig.chime.processingFailed();
    EXPECT_TRUE(rig.cues->made.empty());
    rig.chime.setEnabled(true);
    rig.chime.processingFinished();
    rig.chime.processingFinished();
    rig.chime.processingFailed();
    EXPECT_THAT(rig.journal->names(), ElementsAre("play fail"));
    EXPECT_EQ(rig.cues->made.size(), 2u);
}

TEST(ChimeTones, AreShortAudibleMonoWavesThatDifferFromEachOther) {
    std::vector<std::size_t> sizes;
    for (const ChimeSound sound : {ChimeSound::start, ChimeSound::fail, ChimeSound::done}) {
        const ByteBuffer wav = ChimeTones::wav(sound);
        ASSERT_GT(wav.size(), 44u);
        EXPECT_EQ(wav.compare(0, 4, "RIFF"), 0);
        std::vector<int16_t> samples((wav.size() - 44) / 2);
        std::memcpy(samples.data(), wav.data() + 44, samples.size() * 2);
        EXPECT_GT(samples.size(), ChimeTones::sampleRate / 20u);  // over 50 ms
        EXPECT_LT(samples.size(), ChimeTones::sampleRate / 1u);   // under a second
        int peak = 0;
        for (int16_t v : samples) {
            peak = std::max(peak, std::abs(int(v)));
        }
        EXPECT_GT(peak, 20000) << "loud enough to hear at a volume of 0.3";
        EXPECT_LT(std::abs(samples.back()), 200) << "fades out without a click";
        sizes.push_back(wav.size());
    }
    EXPECT_TRUE(std::is_sorted(sizes.begin(), sizes.end()));
    EXPECT_EQ(std::adjacent_find(sizes.begin(), sizes.end()), sizes.end());
}

}  // namespace
}  // namespace tevra
