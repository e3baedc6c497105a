#include "device_camera.h"
#include "event_log.h"
#include "support/encoded_clip.h"

#include "device/device_messages.h"
#include "media/card/playback_time.h"
#include "media/card/playback_times.h"
#include "media/card/tutk_playback_input.h"
#include "media/live/tutk_player.h"
#include "media/player/playback_clock.h"
#include "media/player/sound_schedule.h"
#include "render/raster_video_view.h"
#include "support/suites.h"
#include "support/zone_guard.h"

#include <QtEndian>

using namespace orvelle;
using Packet = KvBasePlayerInputPacket;

namespace {

constexpr uint16_t kH264 = 0x4E;
constexpr uint16_t kAlaw = 0x8A;
constexpr int kChannel = 3;
enum PlayCommand : uint32_t { kStop = 1, kEnd = 7, kStart = 16 };

QByteArray words(const std::vector<uint32_t>& values) {
    QByteArray bytes;
    for (const uint32_t value : values) {
        const uint32_t little = qToLittleEndian(value);
        bytes.append(reinterpret_cast<const char*>(&little), sizeof little);
    }
    return bytes;
}

/// A camera that answers what a test lets it answer, and the events of who plays from it.
struct PlaybackCamera : test::DeviceCamera {
    QByteArray timeBase = words({12, 1, 480});
    QByteArray startAnswer = words({kStart, kChannel});  ///< empty: none
    QByteArray stopAnswer = words({kStop, 0});
    std::atomic<int> starts{0}, stops{0};
    QByteArray startRequest, stopRequest;  ///< the last ones; read after the counts
    std::atomic<uint> roomFrames{0};       ///< granted on kChannel

    // Stopped while the commands can still be handled.
    ~PlaybackCamera() override { stop(); }
    bool connect() {
        onCommand = [this](uint32_t type, const QByteArray& payload) { handle(type, payload); };
        return start() && device.init() == 0;
    }
    void say(uint32_t command, uint32_t result = 0) { sayBytes(words({command, result})); }
    void sayBytes(const QByteArray& bytes) {
        if (!bytes.isEmpty())
            answer(IOTYPE_USER_IPCAM_RECORD_PLAYCONTROL_RESP, bytes);
    }
    bool picture(uint32_t timestampMs, bool isKey = true) {
        return send(kH264, isKey, timestampMs, std::vector<uint8_t>(10, 1), kChannel);
    }

private:
    void handle(uint32_t type, const QByteArray& payload) {
        if (type == IOTYPE_USER_IPCAM_GET_TIMEZONE_REQ && !timeBase.isEmpty())
            answer(IOTYPE_USER_IPCAM_GET_TIMEZONE_RESP, timeBase);
        if (type == IOTYPE_USER_IPCAM_RECORD_ROOM && payload.startsWith(words({kChannel})))
            roomFrames = qFromLittleEndian<quint32>(payload.constData() + 4);
        if (type != IOTYPE_USER_IPCAM_RECORD_PLAYCONTROL)
            return;
        const bool isStart = payload[4] == char(kStart);
        (isStart ? startRequest : stopRequest) = payload;
        sayBytes(isStart ? startAnswer : stopAnswer);
        ++(isStart ? starts : stops);
    }
};

struct Rig {
    PlaybackCamera camera;
    KvTUTKPlaybackInput input;
    std::atomic<int> unusable{0}, lost{0};

    bool open() {
        input.setCallback(this, [](void* rig, int32_t event) {
            auto& self = *static_cast<Rig*>(rig);
            ++(event == KvBasePlayerInput::kLost ? self.lost : self.unusable);
        });
        input.setDevice(&camera.device);
        input.setStartTime(
            QDateTime(QDate(2026, 3, 1), QTime(10, 0, 7), Qt::OffsetFromUTC, 8 * 3600));
        return camera.connect() && input.open() == 0;
    }
    bool isPlaying() {
        return QTest::qWaitFor([this] { return camera.isChannelOpen(kChannel); });
    }
    QVector<double> takeTimes(int most) {
        QVector<double> times;
        Packet* packet = nullptr;
        while (times.size() < most &&
               QTest::qWaitFor([&] { return input.readVideoPacket(&packet) == 0; }, 2000)) {
            times.append(packet->time());
            input.releaseVideoPacket(packet);
        }
        return times;
    }
    bool ends() {
        return QTest::qWaitFor([this] { return !input.isRunning(); }, 10'000);
    }
};

}  // namespace

class PlaybackInputTest : public QObject {
    Q_OBJECT
private slots:
    void recordingTime_isTheInstant_inEveryZone() {
        if (!test::ZoneGuard::isPossible())
            QSKIP("the zone is that of the machine");
        // The computer's zone, a time of its clock or with an offset, and the same in UTC.
        for (const auto& [zone, local, utc] :
             {std::tuple("UTC", "2026-03-01T10:00:00+08:00", "2026-03-01T02:00:00"),
              {"UTC", "2026-03-01T10:00:00-01:00", "2026-03-01T11:00:00"},
              {"UTC", "2026-02-28T23:59:59", "2026-02-28T23:59:59"},
              {"Europe/Berlin", "2026-03-29T01:59:59", "2026-03-29T00:59:59"},
              {"Europe/Berlin", "2026-03-29T03:00:00", "2026-03-29T01:00:00"},
              {"Europe/Berlin", "2026-10-25T02:30:00+02:00", "2026-10-25T00:30:00"},
              {"Europe/Berlin", "2026-10-25T02:30:00+01:00", "2026-10-25T01:30:00"},
              {"Asia/Kathmandu", "2026-01-01T05:44:59", "2025-12-31T23:59:59"},
              {"America/St_Johns", "2026-07-01T23:00:00", "2026-07-02T01:30:00"}}) {
            const test::ZoneGuard guard(zone);
            const auto given = QDateTime::fromString(QLatin1String(local), Qt::ISODate);
            const auto start = QDateTime::fromSecsSinceEpoch(given.toSecsSinceEpoch());
            for (const int32_t baseMinute : {0, 480, -60, 345, -150, INT32_MAX, INT32_MIN}) {
                const QDateTime asked = recordingTime(start, baseMinute);
                QCOMPARE(QDateTime(asked.date(), asked.time(), Qt::UTC),
                         QDateTime::fromString(QLatin1String(utc) + QLatin1Char('Z'), Qt::ISODate));
            }
        }
    }

    void times_followTheStamps_whereTheyMakeSense() {
        // pN a picture and sN sound with that stamp in ms, e the end of the pictures; after it the
        // times in ms that came of it, of the sound in brackets. Then the positions of those times.
        const struct {
            std::optional<double> askedSec;
            const char *steps, *positionsMs;
        } rows[] = {
            {0.0, "p0=0 p40=40 p2040=2040 p2107=2107", "0=0 2107=2107"},
            // From the key picture to the moment asked for.
            {20.0, "p18000=-2000 p19933=-67 p20000=0 s19990=[-10] s20010= p20067=67[10]",
             "0=0 67=67"},
            // Stamps of a clock of its own; the first picture counts as the moment asked for.
            {20.0, "p900000=0 s900010= p900067=67[10] p960000=134", "134=134"},
            {{}, "p5000=0 p5500=500 p4000=567 p4000=633 p4100=733", "733=733"},
            // A gap in the recording is left out; the moment is behind it then.
            {0.0, "p0=0 s1500= p1000=1000 p31000=1067[1500] s31010= p31067=1134[1077]",
             "0=0 1000=1000 1067=31000 1134=31067"},
            // Sound waits for its pictures, but not for ever.
            {0.0, "s0= s64= p0=0[0] p67=67[64] s70= s200= p133=133[70] p200=200[200]", ""},
            {0.0, "p0=0 s500= s600= p2000=2000[500,600]", ""},
            {0.0, "p0=0 s90000= s90100= p2000=2000 p4000=4000[4000,4100]", ""},
            {0.0, "p0=0 s40= s5000= e=[40,5000] s6000=[6000]", ""}};
        for (const auto& row : rows) {
            OwningQueue<Packet> passed;
            PlaybackTimes times(passed, row.askedSec);
            QByteArrayList happened, positions;
            for (const QByteArray& step : QByteArray(row.steps).split(' ')) {
                const QByteArray what = step.left(step.indexOf('='));
                const double stampSec = what.mid(1).toInt() / 1000.0;
                QByteArray result = what + '=';
                if (what[0] == 'p')
                    result += QByteArray::number(qRound(times.takePicture(stampSec) * 1000));
                else if (what[0] == 's')
                    QVERIFY(times.offer(Packet::copyOf("", 0, true, 0, Packet::kAudio, stampSec)));
                else
                    times.endPictures();
                QByteArrayList sounds;
                while (const auto sound = passed.take())
                    sounds += QByteArray::number(qRound(sound->time() * 1000));
                happened += sounds.isEmpty() ? result : result + '[' + sounds.join(',') + ']';
            }
            QCOMPARE(happened.join(' '), QByteArray(row.steps));
            for (const QByteArray& pair : QByteArray(row.positionsMs).split(' ')) {
                const double timeSec = pair.left(pair.indexOf('=')).toInt() / 1000.0;
                const int positionMs = qRound(times.positionOf(timeSec) * 1000);
                if (!pair.isEmpty())
                    positions += QByteArray::number(qRound(timeSec * 1000)) + '=' +
                                 QByteArray::number(positionMs);
            }
            QCOMPARE(positions.join(' '), QByteArray(row.positionsMs));
        }
    }

    void clock_keepsPicturesAndSoundTogether() {
        constexpr int64_t kHead = PlaybackClock::kHeadStartUs;
        PlaybackClock clock;
        QVERIFY(!clock.soundAt(7.0));
        QCOMPARE(clock.showAt(7.0, 1000), 1000);
        QCOMPARE(clock.showAt(7.1, 2000), 1000 + kHead + 100'000);
        QCOMPARE(*clock.soundAt(7.05), 1000 + kHead + 50'000);
        // A little late changes nothing, and much sets both back.
        QCOMPARE(clock.showAt(7.2, 1000 + kHead + 250'000), 1000 + kHead + 250'000);
        QCOMPARE(*clock.soundAt(7.3), 1000 + kHead + 300'000);
        QCOMPARE(clock.showAt(7.3, 5'000'000), 5'000'000);
        QCOMPARE(*clock.soundAt(7.4), 5'000'000 + kHead + 100'000);
        clock.stall();
        QVERIFY(!clock.soundAt(7.4));
        QCOMPARE(clock.showAt(7.4, 9'000'000), 9'000'000);
        QCOMPARE(*clock.soundAt(7.4), 9'000'000 + kHead);
        // What makes no sense is shown at once.
        QCOMPARE(clock.showAt(1e300, 9'000'001), 9'000'001);
    }

    void soundSchedule_followsTheClock_andTheDevice() {
        constexpr int64_t kFrame = 20'000, kDevice = 120'000;
        SoundSchedule schedule;
        // The device: plays from the first write on, `rate` of its own time in the machine's.
        int64_t nowUs = 0, startUs = 0;
        double writtenUs = 0.0, rate = 1.0;
        const auto write = [&](int64_t us) {
            const int64_t fromUs = nowUs;
            if (writtenUs == 0.0)
                startUs = nowUs;
            writtenUs += static_cast<double>(us);
            const double untilUs = (writtenUs - kDevice) / rate + static_cast<double>(startUs);
            nowUs = std::max(nowUs, static_cast<int64_t>(untilUs));
            schedule.wrote(us, fromUs, nowUs);
        };
        const auto heardUs = [&] { return startUs + static_cast<int64_t>(writtenUs / rate); };
        int64_t dueUs = 150'000, worstUs = 0;
        int late = 0;
        // Whether sound that is due every 20 ms is heard when it is due.
        const auto play = [&](int frames) {
            worstUs = late = 0;
            for (int i = 0; i < frames; ++i, dueUs += kFrame) {
                const auto plan = schedule.plan(dueUs, kFrame, nowUs);
                late += plan.isLate;
                if (plan.isLate)
                    continue;
                if (plan.silenceUs > 0)
                    write(plan.silenceUs);
                worstUs = std::max(worstUs, std::abs(heardUs() - dueUs));
                write(kFrame);
            }
        };
        play(500);
        QCOMPARE(std::pair(worstUs, late), std::pair(int64_t{0}, 0));
        dueUs += 700'000;  // the clock was set back: silence
        play(500);
        QCOMPARE(std::pair(worstUs, late), std::pair(int64_t{0}, 0));
        dueUs -= 200'000;  // and ahead: what comes too late is left out
        play(500);
        QVERIFY(worstUs <= SoundSchedule::kToleranceUs && late > 0);
        for (const double deviceRate : {0.999, 1.001}) {
            schedule.restart();
            writtenUs = 0.0;
            rate = deviceRate;
            dueUs = nowUs + 150'000;
            play(15'000);
            QVERIFY2(worstUs <= 3 * SoundSchedule::kToleranceUs,
                     qPrintable(QString::number(worstUs)));
        }
        // A device that ran empty begins anew.
        nowUs = heardUs() + 400'000;
        writtenUs = 0.0;
        dueUs = nowUs + 150'000;
        play(10);
        QVERIFY(worstUs < 1000 && late == 0);
    }

    void packets_areTimedFromTheMomentAskedFor() {
        Rig rig;
        std::vector<double> tapped;
        rig.input.setPacketCallback(&tapped, [](void* times, Packet* packet) {
            if (packet->mediaType() == Packet::kVideo)
                static_cast<std::vector<double>*>(times)->push_back(packet->time());
        });
        rig.input.setRecordingStart(
            QDateTime(QDate(2026, 3, 1), QTime(10, 0, 2), Qt::OffsetFromUTC, 8 * 3600));
        QVERIFY(rig.open() && rig.isPlaying());
        QCOMPARE(rig.camera.startRequest, QByteArray::fromHex("0100000010000000"
                                                              "00000000"
                                                              "ea07030107020007"
                                                              "00000000"));
        for (uint32_t i = 0; i < 5; ++i)
            QVERIFY(
                rig.camera.send(kAlaw, false, 5000 + i, std::vector<uint8_t>(160, 1), kChannel));
        QVERIFY(rig.camera.picture(4500) && rig.camera.picture(5000, false));
        Packet* sound = nullptr;
        QVERIFY(QTest::qWaitFor([&] { return rig.input.readAudioPacket(&sound) == 0; }));
        QCOMPARE(sound->time(), 0.0);
        rig.input.releaseAudioPacket(sound);
        QVERIFY(rig.camera.picture(4000, false) && rig.camera.picture(90000, false));
        QCOMPARE(rig.takeTimes(4), (QVector<double>{-0.5, 0.0, 1 / 15.0, 2 / 15.0}));
        rig.input.close();
        QCOMPARE(tapped, (std::vector<double>{4.5, 5.0, 4.0, 90.0}));
        QTRY_COMPARE(rig.camera.stops, 1);
        QCOMPARE(rig.camera.stopRequest, words({0, kStop, 0, 0, 0, 0}));
        QCOMPARE(rig.unusable + rig.lost, 0);
        QVERIFY(rig.input.endReason() == PlaybackEnd::kNone);
    }

    void answersOfEarlierPlayback_areIgnored() {
        Rig rig;
        const QByteArray timeBase = std::exchange(rig.camera.timeBase, {});
        rig.camera.startAnswer.clear();
        QVERIFY(rig.open());
        QTRY_COMPARE(rig.camera.commands().size(), 2u);
        for (const uint32_t command : {kEnd, kStop, kStart})
            rig.camera.say(command, 9);
        rig.camera.answer(IOTYPE_USER_IPCAM_GET_TIMEZONE_RESP, timeBase);
        QTRY_COMPARE(rig.camera.starts, 1);
        for (const QByteArray& bytes : {words({kEnd, 0}), words({kStop, 0}), QByteArray("\7", 1)})
            rig.camera.sayBytes(bytes);
        rig.camera.say(kStart, kChannel);
        QVERIFY(rig.isPlaying());
        rig.camera.say(kStart, 9);
        QVERIFY(rig.camera.picture(1));
        QCOMPARE(rig.takeTimes(1), QVector<double>{0.0});
        QVERIFY(rig.input.isRunning() && rig.camera.stops == 0 && rig.unusable == 0);
    }

    void refusal_isToldOnce() {
        for (const QByteArray& answer :
             {words({kStart, uint32_t(-1)}), words({kStart, uint32_t(-2)}),
              words({kStart, 0x80000000u}), words({kStart}), words({kStart, 0}),
              words({kStart, 32}), words({kStart, 256 + kChannel})}) {
            Rig rig;
            rig.camera.timeBase = words({12});  // cut short: counts as UTC
            rig.camera.startAnswer = answer;
            QVERIFY(rig.open() && rig.ends());
            QCOMPARE(std::pair(rig.unusable.load(), rig.lost.load()), std::pair(1, 0));
            const bool isMissing = answer == words({kStart, uint32_t(-2)});
            QVERIFY(rig.input.endReason() ==
                    (isMissing ? PlaybackEnd::kMissing : PlaybackEnd::kRefused));
            QTRY_COMPARE(rig.camera.stops, 1);
            QVERIFY(!rig.camera.isChannelOpen(kChannel) && rig.camera.device.isOnline());
        }
    }

    void queuedPictures_outliveTheEnd() {
        // The announcement may overtake pictures, and the camera may close the channel with it.
        Rig rig;
        for (const bool isStopAnswered : {true, false}) {
            if (!isStopAnswered)
                rig.camera.stopAnswer.clear();
            QVERIFY(isStopAnswered ? rig.open() : rig.input.open() == 0);
            QVERIFY(rig.isPlaying());
            for (uint32_t i = 0; i < 20; ++i)
                QVERIFY(rig.camera.picture(i));
            rig.camera.say(kEnd);
            QVERIFY(rig.camera.picture(20));
            QVERIFY(rig.ends());
            QCOMPARE(rig.takeTimes(22).size(), 21);
            QVERIFY(rig.input.endReason() == PlaybackEnd::kFinished);
            QCOMPARE(rig.unusable + rig.lost, 0);
            rig.input.close();
        }
        QTRY_COMPARE(rig.camera.stops, 2);
    }

    void lostCamera_isToldOnce() {
        for (const QByteArray stage : {"no session", "time base", "start", "playing"}) {
            Rig rig;
            if (stage == "time base")
                rig.camera.timeBase.clear();
            if (stage == "start")
                rig.camera.startAnswer.clear();
            QVERIFY(rig.open());
            if (stage == "no session") {
                rig.input.close();
                rig.camera.device.uninit();
                QCOMPARE(rig.input.open(), 0);
            } else {
                QTRY_VERIFY(rig.camera.commands().size() >= 2);
                QVERIFY(stage != "playing" || (rig.isPlaying() && rig.camera.picture(1)));
                rig.camera.stop();
            }
            QVERIFY(rig.ends());
            QCOMPARE(rig.unusable + rig.lost, 1);
            QVERIFY(rig.input.endReason() == PlaybackEnd::kLost);
        }
    }

    void close_endsQuietly_atEveryStage() {
        Rig rig;
        QVERIFY(rig.open());
        rig.input.close();
        for (int stage = 0; stage < 12; ++stage) {
            rig.camera.timeBase = stage == 0 ? QByteArray() : words({12, 1, 0});
            rig.camera.startAnswer = stage == 1 ? QByteArray() : words({kStart, kChannel});
            rig.camera.stopAnswer.clear();
            const int starts = rig.camera.starts, stops = rig.camera.stops;
            const size_t commands = rig.camera.commands().size();
            QCOMPARE(rig.input.open(), 0);
            QTRY_VERIFY(rig.camera.commands().size() > commands);
            if (stage > 0)
                QTRY_COMPARE(rig.camera.starts, starts + 1);
            // From 2 on during the login, from 8 on while playing.
            QVERIFY(stage < 8 || rig.isPlaying());
            if (stage > 9)
                rig.camera.say(kEnd);
            if (stage > 10)
                QTRY_COMPARE(rig.camera.stops, stops + 1);
            rig.input.close();
            QTRY_COMPARE(rig.camera.stops, stops + (stage > 0));
            QTRY_VERIFY(!rig.camera.isChannelOpen(kChannel));
        }
        QCOMPARE(rig.unusable + rig.lost, 0);
    }

    void pausedQueue_isBounded_andLosesNothing() {
        constexpr uint64_t kMax = KvTUTKPlaybackInput::kMaxPictures;
        Rig rig;
        QVERIFY(rig.open() && rig.isPlaying());
        const auto received = [&rig] { return rig.input.stats().videoFramesReceived.load(); };
        for (uint32_t sent = 0; sent < kMax + 100; sent += 100) {
            for (uint32_t i = sent; i < sent + 100; ++i)
                QVERIFY(rig.camera.picture(i));
            QTRY_VERIFY(received() >= std::min<uint64_t>(sent + 100, kMax));
        }
        QCOMPARE(received(), kMax);
        QVERIFY(rig.takeTimes(5).last() == 0.004);
        QTRY_COMPARE(received(), kMax + 5);
        QCOMPARE(rig.input.stats().videoFramesDropped.load(), 0u);
    }

    void camera_isToldTheRoom_asPicturesAreTaken() {
        constexpr uint32_t kRoom = KvTUTKPlaybackInput::kRoomFrames;
        Rig rig;
        QVERIFY(rig.open() && rig.isPlaying());
        QTRY_COMPARE(rig.camera.roomFrames, kRoom);
        for (uint32_t i = 0; i < 200; ++i)
            QVERIFY(rig.camera.picture(i * 40));
        QCOMPARE(rig.takeTimes(191).size(), 191);
        QCOMPARE(rig.camera.roomFrames, kRoom);
        QCOMPARE(rig.takeTimes(1).size(), 1);
        QTRY_COMPARE(rig.camera.roomFrames, kRoom + 192);
    }

    void dryReader_waitsForAWhileOfTheRecording() {
        Rig rig;
        QVERIFY(rig.open() && rig.isPlaying());
        QVERIFY(rig.camera.picture(0) && rig.takeTimes(1).size() == 1);
        Packet* packet = nullptr;
        // Until a second and a half waits; then until the end.
        for (const bool isEnd : {false, true}) {
            rig.input.holdBack();
            const uint32_t fromMs = isEnd ? 1540 : 40, toMs = isEnd ? 1800 : 1500;
            for (uint32_t ms = fromMs; ms < toMs; ms += 40)
                QVERIFY(rig.camera.picture(ms));
            const uint64_t sent = isEnd ? 46 : 38;
            QTRY_COMPARE(rig.input.stats().videoFramesReceived.load(), sent);
            QCOMPARE(rig.input.readVideoPacket(&packet), -1);
            if (isEnd)
                rig.camera.say(kEnd);
            else
                QVERIFY(rig.camera.picture(1500));
            QCOMPARE(rig.takeTimes(100).size(), isEnd ? 7 : 38);
        }
    }

    void player_showsAll_thenTellsTheEnd() {
        const std::vector<test::EncodedPicture> clip = test::encodeClip({});
        QVERIFY(!clip.empty());
        PlaybackCamera camera;
        orvelle::RasterVideoView view;
        KvTUTKPlayer player;
        test::EventLog events(player);
        player.setView(&view);
        QCOMPARE(player.play(), -1);
        player.setDevice(&camera.device);
        player.setStartTime(QDateTime::currentDateTime());
        QVERIFY(camera.connect());
        // Paused early or behind the last picture; then the recording ends or the camera is lost.
        for (const auto& [isLast, isLost] :
             {std::pair(false, false), {true, false}, {false, true}}) {
            QCOMPARE(player.play(), 0);
            QTRY_VERIFY(camera.isChannelOpen(kChannel));
            for (uint32_t i = 0; i < clip.size(); ++i)
                QVERIFY(camera.send(kH264, clip[i].isKey, i * 40, clip[i].bytes, kChannel));
            QTRY_VERIFY(events.count(KvBasePlayerFirstFrame) == 1);
            if (isLast)
                QTRY_COMPARE(player.stats().picturesShown, uint64_t{clip.size()});
            // Nothing is skipped, and what was shown is not shown again.
            player.pause();
            QVERIFY(!player.isRunning());
            isLost ? camera.stop() : camera.say(kEnd);
            QTRY_VERIFY(player.endReason() != PlaybackEnd::kNone);
            player.resume();
            QTRY_COMPARE(events.count(KvBasePlayerVideoEnded), 1);
            QCOMPARE(player.stats().picturesShown, uint64_t{clip.size()});
            if (!isLast)
                QCOMPARE(player.outputTime(), (clip.size() - 1) * 0.04);
            QCOMPARE(events.count(KvBasePlayerOpenFailed), int{isLost});
            QVERIFY(player.endReason() == (isLost ? PlaybackEnd::kLost : PlaybackEnd::kFinished));
            player.shutdown();
            QTRY_VERIFY(!camera.isChannelOpen(kChannel));  // the next one uses the same
            (void)events.take();
        }
    }
};

static const test::RegisterSuite<PlaybackInputTest> kRegistered;

#include "playback_input_test.moc"
