#include "encoded_clip.h"
#include "test_camera.h"

#include "media/device_inputs.h"
#include "media/device_player.h"
#include "media/player_decoder.h"
#include "media/player_output_default.h"
#include "media/tutk_input.h"
#include "render/video_view.h"
#include "support/suites.h"

#include <QTemporaryDir>
#include <QTimer>
#include <QtTest>

#include <algorithm>

using namespace orvelle;

namespace {

#if defined(__SANITIZE_THREAD__)
/// The sound server's library is not instrumented, and nothing is opened while muted.
constexpr double kVolume = 0.0;
#else
constexpr double kVolume = 1.0;
#endif

/// What a player told its owner, on whichever thread.
class EventLog {
public:
    void listenTo(KvBasePlayer& player) {
        player.setCallback(this, [](void* log, int32_t event, double a, double b) -> int32_t {
            static_cast<EventLog*>(log)->add(event, a, b);
            return 0;
        });
    }
    int count(int event) const {
        std::lock_guard<std::mutex> lock(m_mutex);
        return static_cast<int>(std::count(m_events.begin(), m_events.end(), event));
    }
    std::vector<int> take() {
        std::lock_guard<std::mutex> lock(m_mutex);
        return std::move(m_events);
    }
    bool hasLiveProgress() const { return m_position > 0.0 && m_duration < 0.0; }

private:
    void add(int event, double a, double b) {
        if (event == KvBasePlayerProgress) {
            m_position = a;
            m_duration = b;
        }
        std::lock_guard<std::mutex> lock(m_mutex);
        m_events.push_back(event);
    }

    std::atomic<double> m_position{0.0}, m_duration{0.0};
    mutable std::mutex m_mutex;
    std::vector<int> m_events;
};

/// A player on a camera that streams a clip and silence for ever, each 20 ms a picture and twice
/// the sound that a device takes meanwhile, so that its writes block where there is a device.
struct Rig {
    test::TestCamera camera;
    KvVideoView view;
    EventLog events;
    KvDevicePlayer player;
    std::vector<test::EncodedPicture> clip = test::encodeClip({});
    QTimer timer;
    uint32_t sent = 0;

    bool start() {
        registerDeviceInputs();
        events.listenTo(player);
        player.setVolume(kVolume);
        player.setView(&view);
        player.setDevice(&camera.device());
        QObject::connect(&timer, &QTimer::timeout, [this] {
            const auto& picture = clip[sent % clip.size()];
            camera.sendVideo(0x4E, picture.isKey, 1000 + 20 * sent, picture.bytes);
            for (const uint32_t half : {0u, 10u})
                camera.sendAudio(0x8A, 1000 + 20 * sent + half, std::vector<uint8_t>(160, 0xD5));
            ++sent;
        });
        timer.start(20);
        return !clip.empty() && camera.start() && camera.device().init() == 0;
    }
};

/// A player of real stages without a camera, whose stages a test can let speak.
class BarePlayer : public KvBasePlayer {
public:
    ~BarePlayer() override { stop(); }
    std::unique_ptr<KvBasePlayerInput> createInput() override {
        return std::make_unique<KvTUTKInput>();
    }
    std::unique_ptr<KvBasePlayerDecoder> createDecoder() override {
        return std::make_unique<KvPlayerDecoder>();
    }
    std::unique_ptr<KvBasePlayerOutput> createOutput() override {
        return std::make_unique<KvPlayerOutput>();
    }
    void say(bool isInput, int event) {
        isInput ? input()->notify(event) : output()->notify(event);
    }
};

}  // namespace

class DevicePlayerTest : public QObject {
    Q_OBJECT
private slots:
    void play_failsSilently_withoutDevice();
    void stageEvent_reachesOwner_data();
    void stageEvent_reachesOwner();
    void play_tellsEventsInOrder_untilShutDownTwice();
    void pictures_areDropped_withoutView();
    void resume_showsPicturesAgain_afterPause();
    void play_showsPicturesAgain_afterCameraWasLost();
    void playersStopSideBySide_whenAllAreAskedFirst();
};

void DevicePlayerTest::play_failsSilently_withoutDevice() {
    KvDevicePlayer player;
    EventLog events;
    events.listenTo(player);
    QCOMPARE(player.play(), -1);
    player.stop();
    QVERIFY(!player.isRunning() && !player.isInputRunning());
    QCOMPARE(player.outputTime(), 0.0);  // -1 with an output stage
    QVERIFY(events.take().empty());
}

void DevicePlayerTest::stageEvent_reachesOwner_data() {
    QTest::addColumn<bool>("isInput");
    QTest::addColumn<int>("stageEvent");
    QTest::addColumn<int>("playerEvent");  // 0: none
    const int ofInput[] = {0, 1, 0, 1, 0, 0, 0};
    for (int event = 0; event < 7; ++event)
        QTest::addRow("input %d", event) << true << event << ofInput[event];
    const int ofOutput[] = {2, 3, 4, 5, 0};
    for (int event = 0; event < 5; ++event)
        QTest::addRow("output %d", event) << false << event << ofOutput[event];
}

void DevicePlayerTest::stageEvent_reachesOwner() {
    QFETCH(bool, isInput);
    QFETCH(int, stageEvent);
    QFETCH(int, playerEvent);
    BarePlayer player;
    EventLog events;
    events.listenTo(player);
    QCOMPARE(player.open(), 0);
    player.say(isInput, stageEvent);
    QCOMPARE(events.take(), playerEvent ? std::vector<int>{playerEvent} : std::vector<int>{});
}

void DevicePlayerTest::play_tellsEventsInOrder_untilShutDownTwice() {
    Rig rig;
    QVERIFY(rig.start());
    QCOMPARE(rig.player.play(), 0);
    QTRY_VERIFY(rig.events.count(KvBasePlayerProgress) > 5);
    QVERIFY(rig.events.hasLiveProgress());
    QVERIFY(rig.player.isRunning() && rig.player.isInputRunning());
    QVERIFY(rig.player.stats().delayUs >= 0);
    QTemporaryDir directory;
    QVERIFY(rig.view.snapshot(directory.filePath(QStringLiteral("shown.jpg"))));
    rig.player.shutdown();
    rig.player.shutdown();
    std::vector<int> events = rig.events.take();
    QCOMPARE(events.front(), int{KvBasePlayerFirstFrame});
    QCOMPARE(events.back(), int{KvBasePlayerPlayEnded});
    for (size_t i = 1; i + 1 < events.size(); ++i)
        QCOMPARE(events[i], int{KvBasePlayerProgress});
}

void DevicePlayerTest::pictures_areDropped_withoutView() {
    Rig rig;
    QVERIFY(rig.start());
    rig.player.setView(nullptr);
    QCOMPARE(rig.player.play(), 0);
    // More than the queues hold, so the output takes them.
    QTRY_VERIFY(rig.player.stats().picturesDecoded > 10);
    rig.player.shutdown();
    QCOMPARE(rig.events.take(), std::vector<int>{KvBasePlayerPlayEnded});
}

void DevicePlayerTest::resume_showsPicturesAgain_afterPause() {
    Rig rig;
    QVERIFY(rig.start());
    QCOMPARE(rig.player.play(), 0);
    QTRY_VERIFY(rig.events.count(KvBasePlayerFirstFrame) == 1);
    rig.player.pause();
    QVERIFY(!rig.player.isRunning() && rig.player.isInputRunning());
    QCOMPARE(rig.events.take().back(), int{KvBasePlayerPlayEnded});
    rig.player.resume();
    QTRY_VERIFY(rig.events.count(KvBasePlayerProgress) > 0);
    rig.player.flush();
    rig.events.take();
    QTRY_VERIFY(rig.events.count(KvBasePlayerProgress) > 0);
}

void DevicePlayerTest::play_showsPicturesAgain_afterCameraWasLost() {
    Rig rig;
    QVERIFY(rig.start());
    QCOMPARE(rig.player.play(), 0);
    QTRY_VERIFY(rig.events.count(KvBasePlayerFirstFrame) == 1);
    rig.camera.stop();
    QTRY_VERIFY(rig.events.count(KvBasePlayerOpenFailed) == 1);
    QTRY_VERIFY(rig.events.count(KvBasePlayerVideoEnded) == 1);
    rig.player.shutdown();
    QVERIFY(rig.camera.start());
    rig.camera.device().uninit();
    QCOMPARE(rig.camera.device().ensureConnected(), 0);
    QCOMPARE(rig.player.play(), 0);
    QTRY_VERIFY(rig.events.count(KvBasePlayerFirstFrame) == 2);
}

void DevicePlayerTest::playersStopSideBySide_whenAllAreAskedFirst() {
    Rig rigs[3];
    for (Rig& rig : rigs) {
        QVERIFY(rig.start());
        QCOMPARE(rig.player.play(), 0);
    }
    for (Rig& rig : rigs)
        QTRY_VERIFY(rig.events.count(KvBasePlayerFirstFrame) == 1);
    for (Rig& rig : rigs)
        rig.player.requestStop();
    // Before anything waits for them: all three are about to end.
    for (Rig& rig : rigs)
        QVERIFY(!rig.player.isRunning() && !rig.player.isInputRunning());
}

static const orvelle::test::RegisterSuite<DevicePlayerTest> kRegistered;

#include "device_player_test.moc"
