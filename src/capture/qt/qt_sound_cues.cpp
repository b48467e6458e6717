#include "capture/qt/qt_sound_cues.h"

#include <QFile>
#include <QSoundEffect>
#include <QUrl>

namespace tevra {
namespace {

class QtSoundCue : public SoundCue {
public:
    QtSoundCue(const QString& resource, double volume) : resource_(resource) {
        effect_.setVolume(static_cast<float>(volume));
    }

    bool isPlaying() override { return effect_.isPlaying(); }
    void stop() override { effect_.stop(); }
    // The sound loads at the first play, on a thread of Qt's; QSoundEffect
    // queues the play until it has loaded.
    void play() override {
        if (effect_.source().isEmpty()) {
            effect_.setSource(QUrl("qrc" + resource_));
        }
        effect_.play();
    }

private:
    QString resource_;
    QSoundEffect effect_;
};

}  // namespace

const char* QtSoundCues::resourcePath(ChimeSound sound) {
    switch (sound) {
        case ChimeSound::start:
            return ":/tevra/cues/start.wav";
        case ChimeSound::done:
            return ":/tevra/cues/done.wav";
        case ChimeSound::fail:
            break;
    }
    return ":/tevra/cues/fail.wav";
}

std::unique_ptr<SoundCue> QtSoundCues::make(ChimeSound sound, double volume) {
    const QString resource = resourcePath(sound);
    if (!QFile::exists(resource)) {
        return nullptr;
    }
    return std::make_unique<QtSoundCue>(resource, volume);
}

}  // namespace tevra
