#include "media/recording/player_recorder.h"

#include <QDateTime>
#include <QSemaphore>
#include <QTemporaryDir>
#include <QtTest>

#include <functional>

#include "event_log.h"
#include "frames/decoder_frame.h"
#include "media/player/player_decoder.h"
#include "memory_input.h"
#include "recording_reader.h"
#include "support/suites.h"

using namespace orvelle;
using namespace orvelle::test;

namespace {

using Events = std::vector<int>;
using R = KvPlayerRecorder;

constexpr int kH264 = AV_CODEC_ID_H264;
constexpr double kStepSec = 1.0 / 15;
constexpr double kSoundSec = 0.064;
const std::vector<uint8_t> kSilence(512, 0xD5);
constexpr int kPictures = 45, kPicturesPerKey = 15;

/// A camera, its decoder and a recorder; the camera's clock does not begin at 0.
struct Rig {
    QTemporaryDir dir;
    MemoryInput input;
    KvPlayerDecoder decoder;
    KvPlayerRecorder recorder{&input, &decoder};
    EventLog events{recorder};
    double cameraSec = 1000.0;

    Rig() {
        decoder.setInput(&input);
        decoder.start();
    }
    ~Rig() { recorder.stop(); }
    void record(const QString& name = QStringLiteral("clip.mp4")) {
        recorder.configure(QDir(dir.path()).filePath(name), QStringLiteral("mp4"), 3600.0);
        recorder.start();
    }
    void give(const EncodedPicture& picture, int codec = kH264) {
        input.giveVideo(picture, codec, cameraSec);
        cameraSec += kStepSec;
        dropPictures();
    }
    /// In place of an output, for which the decoder would wait.
    void dropPictures() {
        KvBasePlayerDecoderFrame* frame = nullptr;
        while (decoder.readVideoFrame(&frame) == 0)
            decoder.releaseVideoFrame(frame);
    }
    /// A stream that runs, of which all is known.
    bool play(const EncodedPicture& key) {
        give(key);
        input.giveSound(kSilence, AV_CODEC_ID_PCM_ALAW, cameraSec);
        return QTest::qWaitFor(
            [&] { return decoder.videoParameters() && decoder.audioParameters(); });
    }
    /// Gives the key frame until the recorder tells something. Repeated at the same time it leaves
    /// no trace in the file.
    bool begin(
        const EncodedPicture& key, int codec = kH264, const char* name = "clip.mp4",
        const std::function<void()>& giveSound = [] {}) {
        record(QLatin1String(name));
        return QTest::qWaitFor([&] {
            giveSound();
            input.giveVideo(key, codec, cameraSec);
            return events.count(R::kCreated) + events.count(R::kFailed) > 0;
        });
    }
};

/// Holds the recorder's thread up after its first pictures, as a disk would, until it is opened.
class Gate {
public:
    std::atomic<int> failures{0};

    static int32_t onEvent(void* user, int32_t event, double, double) {
        auto& gate = *static_cast<Gate*>(user);
        gate.failures += event == R::kFailed;
        if (event == R::kProgress && ++gate.m_pictures == 10) {
            gate.m_arrived.release();
            gate.m_opened.acquire();
        }
        return 0;
    }
    bool awaitStandstill() { return m_arrived.tryAcquire(1, 10000); }
    void open() { m_opened.release(); }

private:
    QSemaphore m_arrived, m_opened;
    int m_pictures = 0;  ///< used by the recorder's thread
};

class PlayerRecorderTest : public QObject {
    Q_OBJECT
private slots:
    void recording_opensAgain_data() {
        QTest::addColumn<int>("codec");
        QTest::addColumn<int>("soundCodec");
        QTest::addColumn<double>("clockStepSec");  // of the camera's clock in mid-recording
        const int aac = AV_CODEC_ID_AAC;
        QTest::newRow("HEVC") << int(AV_CODEC_ID_HEVC) << aac << 0.0;
        QTest::newRow("sound that becomes AAC") << kH264 << int(AV_CODEC_ID_PCM_ALAW) << 0.0;
        QTest::newRow("clock set back") << kH264 << aac << -500.0;
        QTest::newRow("clock set ahead") << kH264 << aac << 1e9;
    }

    void recording_opensAgain() {
        QFETCH(const int, codec);
        QFETCH(const int, soundCodec);
        QFETCH(const double, clockStepSec);
        const bool isHevc = codec == AV_CODEC_ID_HEVC, isAac = soundCodec == AV_CODEC_ID_AAC;
        const std::vector<EncodedPicture> clip =
            encodeClip({isHevc, 64, 48, kPictures, kPicturesPerKey});
        // 64 ms of silence: AAC LC, 16 kHz, mono, as ADTS header and one frame; A-law, 8 kHz.
        const QByteArray adts = QByteArray::fromHex("fff1604001bffc00c800802380");
        const std::vector<uint8_t> sound = isAac ? std::vector<uint8_t>(adts.begin(), adts.end())
                                                 : std::vector<uint8_t>(512, 0xD5);
        Rig rig;
        rig.input.giveSound(sound, soundCodec, rig.cameraSec);
        QTRY_VERIFY(rig.decoder.audioParameters());
        QVERIFY(rig.begin(clip[0], codec, "clip.mp4",
                          [&] { rig.input.giveSound(sound, soundCodec, 999.0); }));
        for (int i = 0; i < kPictures; ++i) {
            if (i == kPictures / 2)
                rig.cameraSec += clockStepSec;
            rig.input.giveSound(sound, soundCodec, 1000.1 + i * kSoundSec);
            rig.give(clip[static_cast<size_t>(i)], codec);
        }
        const double recordedSec = (kPictures - 1) * kStepSec;
        QTRY_VERIFY(std::abs(rig.events.lastValue - recordedSec) < 0.01);
        rig.recorder.stop();
        QCOMPARE(rig.events.take(R::kProgress), (Events{R::kCreated, R::kEnded}));

        const QString path = rig.recorder.path();
        const RecordingReader shown(path);
        QVERIFY(shown.isOpen());
        QCOMPARE(boxesOf(path), QByteArray("ftyp mdat moov"));
        QCOMPARE(shown.streams(), 2U);
        QCOMPARE(shown.packets(0), kPictures);
        QVERIFY(shown.first(0).pts == 0 && (shown.first(0).flags & AV_PKT_FLAG_KEY));
        QVERIFY(std::abs(shown.durationSec() - recordedSec) < 2 * kStepSec);
        QVERIFY(std::abs(shown.lastSec(0) - recordedSec) < 0.002);
        const double soundEndSec = 0.1 + kPictures * kSoundSec;
        QVERIFY(std::abs(shown.endSec(1) - soundEndSec) < (isAac ? 0.002 : 0.26));
        if (isAac)
            QCOMPARE(shown.packets(1), kPictures);
        QCOMPARE(shown.codec(0).codec_tag,
                 isHevc ? MKTAG('h', 'v', 'c', '1') : MKTAG('a', 'v', 'c', '1'));
        QCOMPARE(shown.codec(0).width, 64);
        QVERIFY(shown.codec(0).extradata_size > 20 && shown.codec(0).extradata[0] == 1);
        QCOMPARE(int(shown.codec(1).codec_id), int(AV_CODEC_ID_AAC));
        QVERIFY(shown.codec(1).sample_rate == (isAac ? 16000 : 8000) &&
                shown.codec(1).extradata_size >= 2);
    }

    void recording_beginsAtKeyFrame() {
        Rig rig;
        rig.record();
        rig.give(encodeClip({})[1]);
        rig.recorder.stop();
        QCOMPARE(rig.events.take(R::kProgress), Events{R::kEnded});
        QVERIFY(QDir(rig.dir.path()).isEmpty());
    }

    void recording_getsNumber_whenNameIsTaken() {
        Rig rig;
        QFile taken(rig.dir.filePath(QStringLiteral("clip.mp4")));
        QVERIFY(taken.open(QIODevice::WriteOnly) && taken.write("precious") == 8);
        taken.close();
        const EncodedPicture key = encodeClip({})[0];
        QVERIFY(rig.begin(key));
        rig.cameraSec += kStepSec;
        rig.give(key);
        QTRY_VERIFY(rig.events.lastValue > 0.0);
        rig.recorder.stop();
        QCOMPARE(rig.recorder.path(), rig.dir.filePath(QStringLiteral("clip-2.mp4")));
        QVERIFY(QFileInfo(rig.recorder.path()).size() > 0);
        QCOMPARE(taken.size(), qint64{8});
    }

    void recording_reachesBack_toTheKeyPictureThatRuns() {
        const std::vector<EncodedPicture> clip = encodeClip({false, 64, 48, 20, 10});
        Rig rig;
        QVERIFY(rig.play(clip[0]));
        for (size_t i = 1; i < 15; ++i)
            rig.give(clip[i]);
        rig.input.giveSound(kSilence, AV_CODEC_ID_PCM_ALAW, rig.cameraSec);
        QTest::qWait(300);
        const double leadSec = rig.input.keptSec();
        QVERIFY(leadSec > 0.29);
        const QDateTime clicked = QDateTime::currentDateTimeUtc();
        rig.record();
        QTRY_COMPARE(rig.events.count(R::kCreated), 1);
        for (size_t i = 15; i < 20; ++i)
            rig.give(clip[i]);
        rig.recorder.stop();
        const RecordingReader reader(rig.recorder.path());
        QVERIFY(reader.isOpen());
        QCOMPARE(reader.packets(0), 10);
        QVERIFY(reader.decodesAllPictures());
        const double begunSec = reader.createdAt().msecsTo(clicked) / 1000.0;
        QVERIFY2(begunSec > leadSec - 1.1 && begunSec < leadSec + 1.1,
                 qPrintable(QString::number(begunSec)));
    }

    /// Whatever waits when the recording is to end, whether its stages live on or not.
    void recording_writesWhatWaits() {
        const std::vector<EncodedPicture> clip = encodeClip({false, 64, 48, 300, 15});
        for (const bool isReleased : {false, true}) {
            auto rig = std::make_unique<Rig>();
            QVERIFY(rig->play(clip[0]));
            Gate gate;
            QTemporaryDir dir;
            KvPlayerRecorder recorder(&rig->input, &rig->decoder);
            recorder.setCallback(&gate, Gate::onEvent);
            recorder.configure(dir.filePath(QStringLiteral("clip.mp4")), QStringLiteral("mp4"),
                               0.0);
            recorder.start();
            QTRY_VERIFY(recorder.hasFile());
            for (size_t i = 1; i < 300; ++i)
                rig->give(clip[i]);
            QVERIFY(gate.awaitStandstill());
            isReleased ? recorder.release() : recorder.requestStop();
            rig->give(clip[0]);
            if (isReleased)
                rig.reset();
            gate.open();
            recorder.stop();
            QCOMPARE(RecordingReader(recorder.path()).packets(0), 300);
            QCOMPARE(recorder.result().files, QStringList{recorder.path()});
            QVERIFY(recorder.result().fault == RecordingFault::kNone);
        }
    }

    void recording_keepsWhatCameBefore_whenTheDiskFallsBehind() {
        const EncodedPicture key = encodeClip({})[0];
        Rig rig;
        QVERIFY(rig.play(key));
        Gate gate;
        rig.recorder.setCallback(&gate, Gate::onEvent);
        rig.record();
        QTRY_VERIFY(rig.recorder.hasFile());
        for (int i = 0; i < 20; ++i)
            rig.give(key);
        QVERIFY(gate.awaitStandstill());
        for (int i = 0; i < 5000; ++i)
            rig.give(key);
        gate.open();
        QTRY_VERIFY(rig.recorder.hasEnded());
        rig.recorder.stop();
        QCOMPARE(gate.failures.load(), 1);
        QVERIFY(rig.recorder.result().fault == RecordingFault::kDiskTooSlow);
        const int pictures = RecordingReader(rig.recorder.path()).packets(0);
        QVERIFY2(pictures > 4090 && pictures < 4150, qPrintable(QString::number(pictures)));
    }

    void change_beginsAnotherFile_withoutAGap_data() {
        QTest::addColumn<QByteArray>("change");
        QTest::addColumn<int>("secondPictures");  // with those that both hold
        // Groups of ten pictures; the change comes with the 25th or, of the picture, the 30th.
        QTest::newRow("size of the picture") << QByteArray("size") << 20;
        QTest::newRow("codec of the sound") << QByteArray("codec") << 30;
        QTest::newRow("rate of the sound") << QByteArray("rate") << 30;
        QTest::newRow("late sound") << QByteArray("late") << 30;
    }

    void change_beginsAnotherFile_withoutAGap() {
        QFETCH(const QByteArray, change);
        QFETCH(const int, secondPictures);
        const std::vector<EncodedPicture> clip = encodeClip({false, 64, 48, 50, 10});
        const std::vector<EncodedPicture> other = encodeClip({false, 96, 64, 50, 10});
        const QByteArray aac16 = QByteArray::fromHex("fff1604001bffc00c800802380");
        const QByteArray aac8 = QByteArray::fromHex("fff16c4001bffc00c800802380");
        const std::vector<uint8_t> alaw(512, 0xD5);
        const auto bytes = [](const QByteArray& data) {
            return std::vector<uint8_t>(data.begin(), data.end());
        };
        Rig rig;
        const auto giveSound = [&](bool isChanged) {
            const bool isAlaw = change == "codec" && isChanged;
            if (change == "late" && !isChanged)
                return;
            rig.input.giveSound(isAlaw ? alaw : bytes(change == "rate" && isChanged ? aac8 : aac16),
                                isAlaw ? AV_CODEC_ID_PCM_ALAW : AV_CODEC_ID_AAC, rig.cameraSec);
        };
        giveSound(false);
        rig.give(clip[0]);
        QTRY_VERIFY(rig.decoder.videoParameters() &&
                    (change == "late" || rig.decoder.audioParameters()));
        QVERIFY(rig.begin(clip[0]));
        rig.cameraSec += kStepSec;
        for (size_t i = 1; i < 50; ++i) {
            giveSound(i >= 25);
            const bool isOther = change == "size" && i >= 30;
            rig.give(isOther ? other[i] : clip[i]);
            // At a camera's pace, so that the decoder can tell the new parameters.
            if (i >= 25)
                QTRY_VERIFY(rig.decoder.audioParameters() &&
                            rig.decoder.audioParameters().codec->codec_id ==
                                (change == "codec" ? AV_CODEC_ID_PCM_ALAW : AV_CODEC_ID_AAC));
            if (isOther)
                QTRY_VERIFY((rig.dropPictures(), rig.decoder.videoParameters()) &&
                            rig.decoder.videoParameters().codec->width == 96);
        }
        rig.recorder.stop();
        const QStringList files = rig.recorder.result().files;
        QCOMPARE(files.size(), 2);
        QVERIFY(files[1].endsWith(QLatin1String("clip-2.mp4")));
        QVERIFY(!rig.recorder.result().lacksSound);
        const RecordingReader first(files[0]), second(files[1]);
        QVERIFY(first.decodesAllPictures() && second.decodesAllPictures());
        // What the decoder has still to learn goes into the first file until then.
        QVERIFY2(first.packets(0) >= (change == "size" ? 30 : 25) && first.packets(0) <= 31,
                 qPrintable(QString::number(first.packets(0))));
        QCOMPARE(second.packets(0), secondPictures);
        QCOMPARE(first.streams(), change == "late" ? 1U : 2U);
        QCOMPARE(second.streams(), 2U);
        if (change == "size")
            QCOMPARE(second.codec(0).width, 96);
        else if (change != "late")
            QVERIFY(second.codec(1).sample_rate != first.codec(1).sample_rate);
    }

    /// Pausing stops the decoder, which then knows nothing, and the packets go on.
    void recording_goesOn_whileTheDecoderRests() {
        const std::vector<EncodedPicture> clip = encodeClip({false, 64, 48, 30, 10});
        const std::vector<EncodedPicture> other = encodeClip({false, 96, 64, 10, 10});
        Rig rig;
        rig.give(clip[0]);
        QTRY_VERIFY(rig.decoder.videoParameters());
        // Without sound the file is begun a second later.
        rig.record();
        rig.decoder.stop();
        QVERIFY(!rig.decoder.videoParameters());
        size_t given = 1;
        while (rig.events.count(R::kCreated) == 0 && given < clip.size()) {
            rig.give(clip[given++]);
            QTest::qWait(100);
        }
        QTRY_COMPARE(rig.events.count(R::kCreated), 1);
        for (const EncodedPicture& picture : other)
            rig.give(picture);
        rig.recorder.stop();
        QCOMPARE(rig.events.count(R::kFailed), 0);
        const QStringList files = rig.recorder.result().files;
        QCOMPARE(files.size(), 2);
        const RecordingReader first(files[0]), second(files[1]);
        QVERIFY(first.decodesAllPictures() && second.decodesAllPictures());
        QCOMPARE(first.packets(0), given);
        QCOMPARE(second.packets(0), other.size());
    }

    void recording_leavesNoFile_whenNobodyWantsOrSeesIt() {
        for (const bool isDropped : {false, true}) {
            Rig rig;
            const std::vector<EncodedPicture> clip = encodeClip({});
            QVERIFY(rig.begin(clip[0]));
            if (isDropped) {
                rig.cameraSec += kStepSec;
                rig.give(clip[1]);
                QTRY_VERIFY(rig.events.lastValue > 0.0);
                QVERIFY(QFile::exists(rig.recorder.path()));
                rig.recorder.requestDiscard();
            }
            rig.recorder.stop();
            QCOMPARE(rig.events.take(R::kProgress), (Events{R::kCreated, R::kEnded}));
            QVERIFY(rig.recorder.hasFile() && QDir(rig.dir.path()).isEmpty());
            QVERIFY(rig.recorder.result().files.isEmpty());
        }
    }

    void recording_fails_whenItCannotGoOn() {
        using Row = std::tuple<const char*, int, Events>;
        const EncodedPicture h264 = encodeClip({})[0];
        const EncodedPicture h263 = encodeClip({false, 176, 144, 1, 1, "h263"})[0];
        for (const auto& [name, codec, events] :
             {Row{"no/folder.mp4", kH264, {R::kFailed}},
              Row{"/proc/read-only.mp4", kH264, {R::kFailed}},
              Row{"undecoded.mp4", AV_CODEC_ID_NONE, {R::kFailed}},
              Row{"not-held.mp4", AV_CODEC_ID_H263, {R::kFailed}}}) {
            Rig rig;
            QVERIFY(rig.begin(codec == AV_CODEC_ID_H263 ? h263 : h264, codec, name));
            QTRY_VERIFY(!rig.recorder.isRecording());
            rig.recorder.stop();
            QCOMPARE(rig.events.take(R::kProgress), events);
            QVERIFY(rig.recorder.result().fault == RecordingFault::kOther &&
                    QDir(rig.dir.path()).isEmpty());
        }
    }
};

}  // namespace

static const orvelle::test::RegisterSuite<PlayerRecorderTest> kRegistered;

#include "player_recorder_test.moc"
