#include "media/player/player_output.h"

#include "frames/decoder_frame.h"
#include "media/player/pacing.h"
#include "media/player/player_output_threads.h"
#include "media/player/sound_schedule.h"
#include "media/stages/base_player_decoder.h"
#include "media/stages/base_player_input.h"
#include "render/pcm_player.h"
#include "render/video_surface.h"

#include <QDebug>

#include <algorithm>
#include <optional>
#include <utility>

extern "C" {
#include <libavutil/time.h>
}

namespace {

/// A wait is ended by a frame, the end or a stop; this only bounds what a lost wake-up costs.
constexpr int kWaitMs = 1000;
/// How long a recording's next picture may be overdue before it counts as run dry.
constexpr int kDryMs = 150;
constexpr double kLongestStepSec = 2.0;
/// By how much sound is written before it is due: more than a device holds, which then blocks.
constexpr int64_t kSoundAheadUs = 200'000;
/// Between two looks at a clock that may be set.
constexpr int kClockLookMs = 20;
/// After which a clock that stands when all was received is left alone.
constexpr int kMaxClockLooks = 25;

int64_t durationUs(const AVFrame& sound) {
    return sound.sample_rate > 0 ? int64_t{sound.nb_samples} * 1'000'000 / sound.sample_rate : 0;
}

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
    m_clock.stall();
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
    if (isRecording())
        showRecording(thread);
    else
        showLive(thread);
    // A stop also ends the stages before this one, which is not the end of the stream.
    if (thread.isStopped())
        notify(kStopped);
    else if (m_hasShown || isRecording())
        notify(kPicturesEnded);
    qDebug("Display video Ended");
}

bool KvPlayerOutput::isRecording() const {
    KvBasePlayerInput* const source = decoder()->input();
    return source && !source->isLive();
}

void KvPlayerOutput::showLive(KvThread& thread) {
    orvelle::Pacing pacing(av_gettime_relative());
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
}

void KvPlayerOutput::showRecording(KvThread& thread) {
    m_isDry = false;
    m_stepSec = kLongestStepSec;
    while (!thread.isStopped()) {
        KvBasePlayerDecoderFrame* frame = nullptr;
        if (decoder()->readVideoFrame(&frame) == 0)
            presentWhenDue(frame, thread);
        else if (!decoder()->isRunning() && !decoder()->waitForVideoFrame(thread, 0))
            break;
        else
            waitForRecording(thread);
    }
}

void KvPlayerOutput::waitForRecording(KvThread& thread) {
    const auto next = m_clock.soundAt(m_videoTime + m_stepSec);
    const int64_t untilDryUs = next ? *next - av_gettime_relative() + kDryMs * 1000 : 0;
    // What has ended has no picture that could be late; its sound may go on for a while.
    if (m_isDry || m_shownCount == 0 || !next || !decoder()->input()->isRunning()) {
        decoder()->waitForVideoFrame(thread, kWaitMs);
    } else if (untilDryUs > 0) {
        decoder()->waitForVideoFrame(thread, static_cast<int>(untilDryUs / 1000) + 1);
    } else {
        m_isDry = true;
        m_clock.stall();
        decoder()->input()->holdBack();
        notify(kDry);
    }
}

// Shown early rather than not at all when it is stopped meanwhile: a pause loses no picture.
void KvPlayerOutput::presentWhenDue(KvBasePlayerDecoderFrame* frame, KvThread& thread) {
    const int64_t nowUs = av_gettime_relative();
    const int64_t holdUs = m_clock.showAt(frame->time(), nowUs) - nowUs;
    stats().holdUs = holdUs;
    if (holdUs > 0)
        thread.sleepUnlessStopped(static_cast<int>(holdUs / 1000));
    if (std::exchange(m_isDry, false))
        notify(kGoesOn);
    if (m_shownCount > 0)
        m_stepSec = std::clamp(frame->time() - m_videoTime, 0.0, kLongestStepSec);
    m_videoTime = frame->time();
    showVideo(frame->frame(), frame->time());
    decoder()->releaseVideoFrame(frame);
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

void KvPlayerOutput::playInStep(const KvBasePlayerDecoderFrame& frame,
                                orvelle::SoundSchedule& schedule, KvThread& thread) {
    if (!frame.frame() || !waitForTurn(frame.time(), thread))
        return;
    // Without a device the sound passes at its own pace all the same.
    if (!m_soundPlayer || m_soundPlayer->isMuted()) {
        schedule.restart();
        playAudio(frame.frame(), frame.time());
        return;
    }
    const int64_t frameUs = durationUs(*frame.frame());
    const int64_t fromUs = av_gettime_relative();
    const auto dueUs = m_clock.soundAt(frame.time());
    const auto plan = schedule.plan(dueUs.value_or(fromUs), frameUs, fromUs);
    if (plan.isLate)
        return;
    if (plan.silenceUs > 0 && m_soundPlayer->writeSilence(plan.silenceUs) == 0)
        schedule.wrote(plan.silenceUs, fromUs, av_gettime_relative());
    const int64_t soundFromUs = av_gettime_relative();
    if (playAudio(frame.frame(), frame.time()) == 0)
        schedule.wrote(frameUs, soundFromUs, av_gettime_relative());
    else
        schedule.restart();
}

// False when it is not to be played: the clock does not run any more, or a stop was asked for.
bool KvPlayerOutput::waitForTurn(double seconds, KvThread& thread) {
    while (!thread.isStopped()) {
        const auto dueUs = m_clock.soundAt(seconds);
        const int64_t waitUs = dueUs ? *dueUs - kSoundAheadUs - av_gettime_relative() : 0;
        if (dueUs && waitUs <= 0)
            return true;
        // No picture will set it any more.
        const bool isOver = !dueUs && !decoder()->input()->isRunning();
        m_standingLooks = isOver ? m_standingLooks + 1 : 0;
        if (m_standingLooks > kMaxClockLooks)
            return false;
        const int waitMs = static_cast<int>(std::clamp<int64_t>(waitUs / 1000, 1, kClockLookMs));
        thread.sleepUnlessStopped(dueUs ? waitMs : kClockLookMs);
    }
    return false;
}

void KvPlayerOutput::doPlayAudio(KvThread& thread) {
    // Here, since a device may take its time. Without one the picture plays all the same.
    if (m_soundPlayer)
        m_soundPlayer->start();
    orvelle::SoundSchedule schedule;
    m_standingLooks = 0;
    const bool isInStep = isRecording();
    while (!thread.isStopped()) {
        KvBasePlayerDecoderFrame* frame = nullptr;
        if (decoder()->readAudioFrame(&frame) == 0) {
            if (isInStep)
                playInStep(*frame, schedule, thread);
            else
                playAudio(frame->frame(), frame->time());
            decoder()->releaseAudioFrame(frame);
            continue;
        }
        if (!decoder()->waitForAudioFrame(thread, kWaitMs) && !decoder()->isRunning())
            break;
    }
    qDebug("Display audio Ended");
}
