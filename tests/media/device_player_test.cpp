#include "device_camera.h"
#include "event_log.h"
#include "recording_reader.h"
#include "support/encoded_clip.h"

#include "media/live/device_inputs.h"
#include "media/live/device_player.h"
#include "media/live/tutk_input.h"
#include "media/player/player_output_default.h"
#include "media/recording/player_recorder.h"
#include "render/raster_video_view.h"
#include "support/suites.h"

#include <QTemporaryDir>
#include <QTimer>

using namespace orvelle;

namespace {

/// A player whose stages a test can let speak.
struct OpenPlayer : KvDevicePlayer {
    ~OpenPlayer() override { shutdown(); }
    std::unique_ptr<KvBasePlayerInput> createInput() override {
        return std::make_unique<KvTUTKInput>();
    }
    void say(bool isInput, int event) {
        isInput ? input()->notify(event) : output()->notify(event);
    }
};

/// A player on a camera that streams a clip and silence for ever, each 20 ms a picture and twice
/// the sound that a device takes meanwhile, so that its writes block where there is a device.
struct Rig {
    test::DeviceCamera camera;
    orvelle::RasterVideoView view;
    std::unique_ptr<test::EventLog> events;
    KvDevicePlayer player;
    std::vector<test::EncodedPicture> clip = test::encodeClip({});
    QTimer timer;
    uint32_t sent = 0;

    bool play() {
        registerDeviceInputs();
        events = std::make_unique<test::EventLog>(player);
        player.setView(&view);
        player.setDevice(&camera.device);
        QObject::connect(&timer, &QTimer::timeout, [this] {
            const auto& picture = clip[sent % clip.size()];
            camera.send(0x4E, picture.isKey, 1000 + 20 * sent, picture.bytes);
            for (const uint32_t half : {0u, 10u})
                if (isSoundAsked())
                    camera.send(0x8A, false, 1000 + 20 * sent + half,
                                std::vector<uint8_t>(160, 0xD5));
            ++sent;
        });
        timer.start(20);
        return !clip.empty() && camera.start() && camera.device.init() == 0 && player.play() == 0;
    }
    /// Whether the camera was last told to send sound.
    bool isSoundAsked() const {
        const std::vector<uint32_t> said = camera.commands();
        const auto last = std::find_if(said.rbegin(), said.rend(), [](uint32_t type) {
            return type == IOTYPE_USER_IPCAM_AUDIOSTART || type == IOTYPE_USER_IPCAM_AUDIOSTOP;
        });
        return last != said.rend() && *last == IOTYPE_USER_IPCAM_AUDIOSTART;
    }
    int soundRequests() const {
        const std::vector<uint32_t> said = camera.commands();
        return static_cast<int>(std::count(said.begin(), said.end(), IOTYPE_USER_IPCAM_AUDIOSTART));
    }
    bool shows() {
        return QTest::qWaitFor([this] { return events->count(KvBasePlayerProgress) > 5; });
    }
};

}  // namespace

class DevicePlayerTest : public QObject {
    Q_OBJECT
private slots:
    void stageEvent_reachesOwner() {
        KvDevicePlayer deviceless;
        const test::EventLog silence(deviceless);
        QCOMPARE(deviceless.play(), -1);
        deviceless.stop();
        QCOMPARE(deviceless.outputTime(), 0.0);  // -1 with an output stage
        OpenPlayer player;
        test::EventLog events(player);
        QCOMPARE(player.open(), 0);
        for (int event = 0; event < 7; ++event)
            player.say(true, event);
        QCOMPARE(events.take(), (std::vector<int>{1, 1}));
        for (int event = 0; event < 7; ++event)
            player.say(false, event);
        QCOMPARE(events.take(), (std::vector<int>{2, 3, 4, 5, 6, 6}));
        QCOMPARE(silence.count(KvBasePlayerOpenFailed), 0);
    }

    void events_comeInOrder_fromPlayToShutdown() {
        Rig rig;
        QVERIFY(rig.play() && rig.shows());
        QVERIFY(rig.player.isRunning() && rig.player.stats().delayUs >= 0);
        QTemporaryDir directory;
        QVERIFY(rig.view.snapshot(directory.filePath(QStringLiteral("shown.jpg"))));
        rig.player.pause();
        QVERIFY(!rig.player.isRunning() && rig.player.isInputRunning());
        QCOMPARE(rig.events->take().back(), int{KvBasePlayerPlayEnded});
        rig.player.resume();
        QVERIFY(rig.shows());
        rig.player.flush();
        rig.player.requestStop();
        QVERIFY(!rig.player.isInputRunning());
        rig.player.shutdown();
        rig.player.shutdown();
        std::vector<int> expected(rig.events->count(KvBasePlayerProgress), KvBasePlayerProgress);
        expected.insert(expected.begin(), KvBasePlayerFirstFrame);
        expected.push_back(KvBasePlayerPlayEnded);
        QCOMPARE(rig.events->take(), expected);
        // Without a view pictures are taken, more than the queues hold, and dropped.
        rig.player.setView(nullptr);
        QCOMPARE(rig.player.play(), 0);
        QTRY_VERIFY(rig.player.stats().picturesDecoded > 10);
        rig.player.shutdown();
        QCOMPARE(rig.events->take(), std::vector<int>{KvBasePlayerPlayEnded});
    }

    void sound_rests_whileNobodyTakesIt() {
        Rig rig;
        rig.player.setVolume(0.0);
        QVERIFY(rig.play() && rig.shows());
        QTRY_VERIFY(!rig.isSoundAsked());
        // It is back for a recording, which knows at once what it is like.
        const QTemporaryDir directory;
        const QString path = directory.filePath(QStringLiteral("clip.mp4"));
        rig.player.startRecord(path, QStringLiteral("mp4"), 3600.0);
        QTRY_VERIFY(rig.isSoundAsked());
        const uint64_t before = rig.player.stats().audioFramesReceived;
        QTRY_VERIFY(rig.player.recorder()->isRecording() &&
                    rig.player.stats().audioFramesReceived > before + 100);
        rig.player.stopRecord();
        const test::RecordingReader recording(path);
        QVERIFY(recording.isOpen() && recording.streams() == 2 && recording.packets(1) > 2);
        QTRY_VERIFY(!rig.isSoundAsked());
        for (const double volume : {1.0, 0.0}) {
            rig.player.setVolume(volume);
            QTRY_COMPARE(rig.isSoundAsked(), volume > 0.0);
        }
        // A decoder that begins anew has to learn it once more.
        const int requests = rig.soundRequests();
        rig.player.pause();
        rig.player.resume();
        QTRY_COMPARE(rig.soundRequests(), requests + 1);
        QTRY_VERIFY(!rig.isSoundAsked());
    }

    void play_showsPicturesAgain_afterCameraWasLost() {
        Rig rig;
        QVERIFY(rig.play() && rig.shows());
        rig.camera.stop();
        QTRY_COMPARE(rig.events->count(KvBasePlayerVideoEnded), 1);
        QCOMPARE(rig.events->count(KvBasePlayerOpenFailed), 1);
        rig.player.shutdown();
        QVERIFY(rig.camera.start());
        // The loops of the lost session may still be ending.
        auto& device = rig.camera.device;
        QTRY_VERIFY(device.isWorking() || device.ensureConnected() == 0);
        QCOMPARE(rig.player.play(), 0);
        QTRY_COMPARE(rig.events->count(KvBasePlayerFirstFrame), 2);
    }
};

static const test::RegisterSuite<DevicePlayerTest> kRegistered;

#include "device_player_test.moc"
