#include "system/recording_child.h"

#include <QThread>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <optional>

#include "frames/picture_clock.h"
#include "media/memory_input.h"
#include "media/player/player_decoder.h"
#include "media/recording/player_recorder.h"
#include "support/encoded_clip.h"
#include "support/full_disk.h"

namespace orvelle::test {

namespace {

/// Groups longer than what a kill may cost.
constexpr ClipFormat kFormat = {
    false, 320, 180, kChildPicturesPerSec* kChildSeconds, 75, nullptr, AV_PIX_FMT_YUV420P, "1"};
constexpr double kSoundSec = 0.064;

struct Told {
    std::atomic<bool> isCreated{false};
    std::atomic<bool> isEnded{false};
    std::atomic<double> seconds{0.0};

    void tellSecond(double now) {
        if (static_cast<int>(now) != static_cast<int>(seconds))
            std::printf("recorded %d\n", static_cast<int>(now)), std::fflush(stdout);
        seconds = now;
    }
    static int32_t event(void* user, int32_t event, double seconds, double) {
        auto& told = *static_cast<Told*>(user);
        if (event == KvPlayerRecorder::kCreated)
            told.isCreated = true;
        else if (event == KvPlayerRecorder::kProgress)
            told.tellSecond(seconds);
        else
            std::puts(event == KvPlayerRecorder::kFailed ? "failed" : "ended");
        std::fflush(stdout);
        if (event == KvPlayerRecorder::kEnded)
            told.isEnded = true;
        return 0;
    }
};

}  // namespace

int runRecordingChild(int argc, char** argv) {
    std::optional<FullDisk> disk;
    if (argc > 3)
        disk.emplace(std::strtoull(argv[3], nullptr, 10));
    const std::vector<EncodedPicture> clip = encodeClip(kFormat, [](AVFrame& frame, int index) {
        drawPictureClock(frame.data[0], frame.linesize[0], frame.width, frame.height,
                         static_cast<uint64_t>(index));
    });
    MemoryInput input;
    KvPlayerDecoder decoder;
    decoder.setInput(&input);
    decoder.start();
    KvPlayerRecorder recorder(&input, &decoder);
    Told told;
    recorder.setCallback(&told, Told::event);
    recorder.configure(QString::fromLocal8Bit(argv[2]), QStringLiteral("mp4"), 3600.0);
    const std::vector<uint8_t> silence(512, 0xD5);
    input.giveSound(silence, AV_CODEC_ID_PCM_ALAW, 0.0);
    while (!decoder.audioParameters())
        QThread::msleep(1);
    recorder.start();
    int sounds = 0;
    for (int i = 0; i < kFormat.pictures && !told.isEnded; ++i) {
        const double sec = static_cast<double>(i) / kChildPicturesPerSec;
        for (; sounds * kSoundSec <= sec; ++sounds)
            input.giveSound(silence, AV_CODEC_ID_PCM_ALAW, sounds * kSoundSec);
        do
            input.giveVideo(clip[static_cast<size_t>(i)], AV_CODEC_ID_H264, sec);
        while (i == 0 && !told.isCreated && (QThread::msleep(5), true));
        while (told.seconds < sec - 0.2 && !told.isEnded)
            QThread::msleep(1);
    }
    std::puts("waiting");
    std::fflush(stdout);
    std::getchar();
    recorder.stop();
    decoder.stop();
    return 0;
}

}  // namespace orvelle::test
