#include "media/player/player_output.h"

#include "frames/decoder_frame.h"
#include "media/player/pacing.h"
#include "media/player/player_output_threads.h"
#include "media/stages/base_player_decoder.h"
#include "media/stages/base_player_input.h"
#include "render/pcm_player.h"
#include "render/video_surface.h"

#include <QDebug>

#include <algorithm>
#include <optional>

extern "C" {
#include <libavutil/time.h>
}

namespace {

/// A wait is ended by a frame, the end or a stop; this only bounds what a lost wake-up costs.
constexpr int kWaitMs = 1000;

bool isPlanar420(const AVFrame& frame) {
    return (frame.format == AV_PIX_FMT_YUV420P || frame.format == AV_PIX_FMT_YUVJ420P) &&
           frame.width > 0 && frame.height > 0;
}

}  // namespace

KvPlayerOutput::KvPlayerOutput(QObject* parent) : KvBasePlayerOutput(parent) {}

KvPlayerOutput::~KvPlayerOutput() {
    KvPlayerOutput::stop();
}

int KvPlayerOutput::start() {
    KvPlayerOutput::stop();
    m_videoThread = std::make_unique<KvPlayerOutputVideoThread>(*this);
    m_audioThread = std::make_unique<KvPlayerOutputAudioThread>(*this);
    m_videoThread->start();
    m_audioThread->start();
    return 0;
}

void KvPlayerOutput::requestStop() {
    if (m_audioThread)
        m_audioThread->stop();
    if (m_videoThread)
        m_videoThread->stop();
    if (decoder() && (m_audioThread || m_videoThread))
        decoder()->wakeReaders();
}

void KvPlayerOutput::stop() {
    KvPlayerOutput::requestStop();
    for (KvPlayerOutputThread* thread : {m_audioThread.get(), m_videoThread.get()}) {
        if (thread)
            thread->waitForEnd();
    }
    m_audioThread.reset();
    m_videoThread.reset();
}

bool KvPlayerOutput::isRunning() {
    return !KvThread::isThreadStopped(m_videoThread.get()) ||
           !KvThread::isThreadStopped(m_audioThread.get());
}

int KvPlayerOutput::showVideo(AVFrame* frame, double seconds) {
    orvelle::VideoSurface* const view = m_view;
    if (!view || !frame || !isPlanar420(*frame) || view->showPicture(*frame) < 0)
        return -1;
    m_hasShown = true;
    stats().noteShown(seconds, av_gettime_relative());
    if (m_shownCount++ > 0) {
        notify(kPicture);
        return 0;
    }
    qDebug("display yuv %p, time = %.3lf", static_cast<void*>(frame), seconds);
    notify(kFirstPicture);
    return 0;
}

int KvPlayerOutput::playAudio(AVFrame* frame, double) {
    return m_soundPlayer ? m_soundPlayer->writeFrame(frame) : -1;
}

void KvPlayerOutput::doShowVideo(KvThread& thread) {
    m_shownCount = 0;
    m_videoTime = -1.0;
    KvBasePlayerInput* const source = decoder()->input();
    orvelle::Pacing pacing(source && source->isLive(), av_gettime_relative());
    while (!thread.isStopped()) {
        KvBasePlayerDecoderFrame* frame = nullptr;
        if (decoder()->readVideoFrame(&frame) == 0) {
            present(frame, pacing, thread);
            continue;
        }
        if (decoder()->waitForVideoFrame(thread, kWaitMs) || decoder()->isRunning())
            continue;
        break;
    }
    // A stop also ends the stages before this one, which is not the end of the stream.
    if (thread.isStopped())
        notify(kStopped);
    else if (m_hasShown)
        notify(kPicturesEnded);
    qDebug("Display video Ended");
}

void KvPlayerOutput::present(KvBasePlayerDecoderFrame* frame, orvelle::Pacing& pacing,
                             KvThread& thread) {
    const std::optional<int64_t> dueUs = pacing.holdUntil(frame->time(), av_gettime_relative());
    m_videoTime = frame->time();
    const bool isShown = showVideo(frame->frame(), frame->time()) == 0;
    decoder()->releaseVideoFrame(frame);
    const int64_t holdUs = isShown && dueUs ? *dueUs - av_gettime_relative() : 0;
    stats().holdUs = std::max<int64_t>(holdUs, 0);
    if (holdUs > 0)
        thread.sleepUnlessStopped(static_cast<int>(holdUs / 1000));
}

void KvPlayerOutput::doPlayAudio(KvThread& thread) {
    // Here, since a device may take its time. Without one the picture plays all the same.
    if (m_soundPlayer)
        m_soundPlayer->start();
    while (!thread.isStopped()) {
        KvBasePlayerDecoderFrame* frame = nullptr;
        if (decoder()->readAudioFrame(&frame) == 0) {
            playAudio(frame->frame(), frame->time());
            decoder()->releaseAudioFrame(frame);
            continue;
        }
        if (!decoder()->waitForAudioFrame(thread, kWaitMs) && !decoder()->isRunning())
            break;
    }
    qDebug("Display audio Ended");
}
