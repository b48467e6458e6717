#include "capture/qt/qt_sound_cues.h"

#include <gtest/gtest.h>

#include <QFile>

#include "capture/chime.h"
#include "capture/chime_tones.h"

namespace tevra {
namespace {

TEST(QtSoundCues, TheApplicationCarriesTheSynthesisedCuesAndMakesACueOfEach) {
    auto cues = std::make_shared<QtSoundCues>();
    for (ChimeSound sound : {ChimeSound::start, ChimeSound::done, ChimeSound::fail}) {
        QFile file(QtSoundCues::resourcePath(sound));
        ASSERT_TRUE(file.open(QIODevice::ReadOnly)) << file.fileName().toStdString();
        const ByteBuffer expected = ChimeTones::wav(sound);
        EXPECT_EQ(file.readAll().toStdString(), std::string(expected.data(), expected.size()));
        EXPECT_NE(cues->make(sound, Chime::volume(sound)), nullptr);
    }
}

}  // namespace
}  // namespace tevra
