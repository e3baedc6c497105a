#include "media/player_recorder.h"

#include <QTemporaryDir>
#include <QtTest>

#include <functional>

#include "event_log.h"
#include "media/player_decoder.h"
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

        // Everything but the opening key picture is there; players begin at the next one.
        const QString path = rig.recorder.path();
        const RecordingReader whole(path, RecordingReader::kIgnoreEdits);
        const RecordingReader shown(path);
        QVERIFY(whole.isOpen() && shown.isOpen());
        QCOMPARE(boxesOf(path), QByteArray("ftyp mdat moov"));
        QCOMPARE(shown.streams(), 2U);
        QCOMPARE(whole.packets(0), kPictures - 1);
        QCOMPARE(shown.packets(0), kPictures - kPicturesPerKey);
        QVERIFY(shown.first(0).pts == 0 && (shown.first(0).flags & AV_PKT_FLAG_KEY));
        const double keySec = kPicturesPerKey * kStepSec;
        QVERIFY(std::abs(shown.durationSec() - (recordedSec - keySec)) < 2 * kStepSec);
        QVERIFY(std::abs(shown.lastSec(0) - (recordedSec - keySec)) < 0.002);
        const double soundEndSec = 0.1 + kPictures * kSoundSec - keySec;
        QVERIFY(std::abs(shown.endSec(1) - soundEndSec) < (isAac ? 0.002 : 0.26));
        if (isAac)
            QCOMPARE(whole.packets(1), kPictures);
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

    void recording_leavesNoFile_whenNothingInItCouldBeShown() {
        Rig rig;
        const std::vector<EncodedPicture> clip = encodeClip({});
        QVERIFY(rig.begin(clip[0]));
        rig.cameraSec += kStepSec;
        rig.give(clip[1]);
        QTRY_VERIFY(rig.events.lastValue > 0.0);
        rig.recorder.stop();
        QCOMPARE(rig.events.take(R::kProgress), (Events{R::kCreated, R::kEnded}));
        QVERIFY(rig.recorder.hasFile() && QDir(rig.dir.path()).isEmpty());
    }

    void recording_fails_whenItCannotGoOn() {
        using Row = std::tuple<const char*, int, Events>;
        const EncodedPicture h264 = encodeClip({})[0];
        const EncodedPicture h263 = encodeClip({false, 176, 144, 1, 1, "h263"})[0];
        for (const auto& [name, codec, events] :
             {Row{"no/folder.mp4", kH264, {R::kFailed}},
              Row{"/proc/read-only.mp4", kH264, {R::kFailed}},
              Row{"undecoded.mp4", AV_CODEC_ID_NONE, {R::kFailed}},
              Row{"not-held.mp4", AV_CODEC_ID_H263, {R::kFailed}},
              Row{"change.mp4", kH264, {R::kCreated, R::kFailed, R::kEnded}}}) {
            Rig rig;
            QVERIFY(rig.begin(codec == AV_CODEC_ID_H263 ? h263 : h264, codec, name));
            rig.give(h264, AV_CODEC_ID_HEVC);
            QTRY_VERIFY(!rig.recorder.isRecording());
            rig.recorder.stop();
            QCOMPARE(rig.events.take(R::kProgress), events);
            QVERIFY(events.size() == 3 || QDir(rig.dir.path()).isEmpty());
        }
    }
};

}  // namespace

static const orvelle::test::RegisterSuite<PlayerRecorderTest> kRegistered;

#include "player_recorder_test.moc"
