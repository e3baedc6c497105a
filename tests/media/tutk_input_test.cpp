#include "test_camera.h"

#include "core/thread.h"
#include "link/av.h"
#include "link/io_types.h"
#include "link/limits.h"
#include "media/tutk_preview_input.h"
#include "support/suites.h"

#include <QtTest>

using namespace orvelle;
using Bytes = std::vector<uint8_t>;
using Packet = std::unique_ptr<KvBasePlayerInputPacket>;

namespace {

constexpr uint16_t kH264 = 0x4E;
constexpr uint16_t kAlaw = 0x8A;

/// An input that plays from a camera of its own; counts what it tells.
struct Rig {
    test::TestCamera camera;
    KvTUTKPreviewInput input;
    std::atomic<int> events[4] = {};
    std::atomic<int> tapped{0};

    bool open() {
        input.setDevice(&camera.device());
        input.setCallback(
            this, [](void* rig, int32_t event) { ++static_cast<Rig*>(rig)->events[event]; });
        input.setPacketCallback(
            this, [](void* rig, KvBasePlayerInputPacket*) { ++static_cast<Rig*>(rig)->tapped; });
        return camera.start() && camera.device().init() == 0 && input.open() == 0 &&
               QTest::qWaitFor([this] { return camera.hasCommand(IOTYPE_USER_IPCAM_AUDIOSTART); });
    }
    Packet take() {
        KvBasePlayerInputPacket* packet = nullptr;
        const bool came = QTest::qWaitFor([&] { return input.readVideoPacket(&packet) == 0; });
        return Packet(came ? packet : nullptr);
    }
    double takeTime() {
        const Packet packet = take();
        return packet ? packet->time() : -1.0;
    }
    bool receives(uint64_t videoFrames) {
        return QTest::qWaitFor(
            [&] { return input.stats().snapshot().videoFramesReceived >= videoFrames; });
    }
};

}  // namespace

class TutkInputTest : public QObject {
    Q_OBJECT
private slots:
    void camera_getsCommandsInOrder_whenOpenedAndClosed();
    void packet_carriesFrameInformation_data();
    void packet_carriesFrameInformation();
    void video_resumesAtKey_afterLostFrame();
    void video_resumesAtKey_afterBacklog();
    void sound_isTakenFromFiveFramesOn_andItsBacklogLeavesVideo();
    void loss_isToldOnceAndEndsInput_data();
    void loss_isToldOnceAndEndsInput();
    void reader_isWoken_whenStoppedOrInputLost();
    void open_showsNothingOld_whenOpenedAgain();
};

void TutkInputTest::camera_getsCommandsInOrder_whenOpenedAndClosed() {
    Rig rig;
    QVERIFY(rig.open());
    QCOMPARE(rig.camera.takeCommands(), (std::vector<uint32_t>{0x680, 0xFF, 0x1FF, 0x300}));
    rig.input.close();
    rig.input.close();
    QTRY_VERIFY(rig.camera.hasCommand(IOTYPE_USER_IPCAM_STOP));
    QCOMPARE(rig.camera.takeCommands(), (std::vector<uint32_t>{0x301, 0x2FF}));
    QVERIFY(!rig.input.isRunning());
    QCOMPARE(rig.events[KvTUTKInput::kLost], 0);
}

void TutkInputTest::packet_carriesFrameInformation_data() {
    QTest::addColumn<int>("cameraCodec");
    QTest::addColumn<int>("codec");
    QTest::addColumn<bool>("isKey");
    QTest::newRow("H.264 key") << 0x4E << int{AV_CODEC_ID_H264} << true;
    QTest::newRow("HEVC") << 0x50 << int{AV_CODEC_ID_HEVC} << false;
    QTest::newRow("hole in the table") << 0x86 << int{AV_CODEC_ID_NONE} << true;
    QTest::newRow("unknown") << 0xFFFF << int{AV_CODEC_ID_NONE} << true;
}

void TutkInputTest::packet_carriesFrameInformation() {
    QFETCH(int, cameraCodec);
    QFETCH(int, codec);
    QFETCH(bool, isKey);
    Rig rig;
    QVERIFY(rig.open());
    // The channel may want a key frame before anything else.
    QVERIFY(rig.camera.sendVideo(kH264, true, 0, Bytes(5, 1)));
    QVERIFY(rig.camera.sendVideo(static_cast<uint16_t>(cameraCodec), isKey, 4'000'000'500u,
                                 Bytes(100'000, 7)));
    QVERIFY(rig.take());
    const Packet packet = rig.take();
    QVERIFY(packet);
    QCOMPARE(packet->codecId(), codec);
    QCOMPARE(packet->packet()->flags, isKey ? AV_PKT_FLAG_KEY : 0);
    QCOMPARE(packet->mediaType(), int{KvBasePlayerInputPacket::kVideo});
    QCOMPARE(packet->time(), 4'000'000.5);
    QCOMPARE(packet->packet()->size, 100'000);
    QCOMPARE(packet->packet()->data[99'999], uint8_t{7});
}

void TutkInputTest::video_resumesAtKey_afterLostFrame() {
    Rig rig;
    QVERIFY(rig.open());
    for (uint32_t i = 0; i < 4; ++i)
        QVERIFY(rig.camera.sendVideo(kH264, i == 0, i, Bytes(10, 1)));
    // Numbered, but too big to travel; what builds on it does not travel either.
    QVERIFY(!rig.camera.sendVideo(kH264, false, 4, Bytes(kMaxVideoFrameBytes + 1)));
    for (uint32_t i = 5; i < 8; ++i)
        QVERIFY(rig.camera.sendVideo(kH264, i == 7, i, Bytes(10, 1)));
    for (const int ms : {0, 1, 2, 3, 7})
        QCOMPARE(rig.takeTime(), ms / 1000.0);
    QCOMPARE(rig.tapped, 5);
    QCOMPARE(rig.input.stats().snapshot().videoFramesLost, 3u);
}

void TutkInputTest::video_resumesAtKey_afterBacklog() {
    Rig rig;
    QVERIFY(rig.open());
    for (uint32_t i = 0; i < 91; ++i) {
        QVERIFY(rig.camera.sendVideo(kH264, i == 0, i, Bytes(10, 1)));
        QVERIFY(i % 20 != 0 || rig.receives(i));
    }
    QTRY_COMPARE(rig.input.stats().snapshot().videoFramesDropped, 91u);
    for (uint32_t i = 91; i < 95; ++i)
        QVERIFY(rig.camera.sendVideo(kH264, i == 93, i, Bytes(10, 1)));
    QCOMPARE(rig.takeTime(), 0.093);
    QCOMPARE(rig.takeTime(), 0.094);
    // A recording goes on without a gap: nothing was missing on the way.
    QCOMPARE(rig.tapped, 95);
}

void TutkInputTest::sound_isTakenFromFiveFramesOn_andItsBacklogLeavesVideo() {
    Rig rig;
    QVERIFY(rig.open());
    QVERIFY(rig.camera.sendVideo(kH264, true, 1, Bytes(10, 1)));
    for (uint32_t i = 0; i < 4; ++i)
        QVERIFY(rig.camera.sendAudio(kAlaw, i, Bytes(160, 1)));
    QVERIFY(rig.camera.sendVideo(kH264, false, 2, Bytes(10, 1)));
    QVERIFY(rig.receives(2));
    QCOMPARE(rig.input.stats().snapshot().audioFramesReceived, 0u);
    for (uint32_t i = 4; i < 15; ++i)
        QVERIFY(rig.camera.sendAudio(kAlaw, i, Bytes(160, 1)));
    QTRY_COMPARE(rig.input.stats().snapshot().audioFramesDropped, 11u);
    QCOMPARE(rig.takeTime(), 0.001);
    QCOMPARE(rig.takeTime(), 0.002);
}

void TutkInputTest::loss_isToldOnceAndEndsInput_data() {
    QTest::addColumn<bool>("wasConnected");
    QTest::addColumn<bool>("byCamera");
    QTest::newRow("camera says goodbye") << true << true;
    QTest::newRow("session closed under it") << true << false;
    QTest::newRow("never connected") << false << false;
}

void TutkInputTest::loss_isToldOnceAndEndsInput() {
    QFETCH(bool, wasConnected);
    QFETCH(bool, byCamera);
    Rig rig;
    QVERIFY(rig.open());
    // One frame is left over when the sound ends; it must not keep the loop going.
    QVERIFY(rig.camera.sendAudio(kAlaw, 1, Bytes(160, 1)));
    if (byCamera)
        rig.camera.stop();
    else
        rig.camera.device().uninit();
    QTRY_VERIFY(!rig.input.isRunning());
    if (!wasConnected) {
        QCOMPARE(rig.input.open(), 0);
        QTRY_VERIFY(!rig.input.isRunning());
    }
    rig.input.close();
    QCOMPARE(rig.events[KvTUTKInput::kLost] + rig.events[KvTUTKInput::kUnusable],
             wasConnected ? 1 : 2);
}

void TutkInputTest::reader_isWoken_whenStoppedOrInputLost() {
    struct Reader : KvThread {
        explicit Reader(KvBasePlayerInput& source)
            : KvThread(QStringLiteral("reader")), input(source) {}
        void run() override {
            while (!isStopped() && input.isRunning())
                input.waitForVideoPacket(*this, 3'600'000);
        }
        KvBasePlayerInput& input;
    };
    Rig rig;
    QVERIFY(rig.open());
    Reader stopped(rig.input);
    Reader orphaned(rig.input);
    stopped.start();
    orphaned.start();
    stopped.stop();
    rig.input.wakeReaders();
    QVERIFY(stopped.waitForEnd(10'000));
    rig.camera.stop();
    QVERIFY(orphaned.waitForEnd(10'000));
}

void TutkInputTest::open_showsNothingOld_whenOpenedAgain() {
    Rig rig;
    QVERIFY(rig.open());
    QVERIFY(rig.camera.sendVideo(kH264, true, 1, Bytes(10, 1)));
    QVERIFY(rig.take());
    rig.input.close();
    for (uint32_t i = 2; i < 5; ++i)
        QVERIFY(rig.camera.sendVideo(kH264, i == 3, i, Bytes(10, 1)));
    avWaitVideo(rig.camera.device().avIndex(), 10'000, {});
    rig.camera.takeCommands();
    QCOMPARE(rig.input.open(), 0);
    QTRY_VERIFY(rig.camera.hasCommand(IOTYPE_USER_IPCAM_START));
    QVERIFY(rig.camera.sendVideo(kH264, true, 9, Bytes(10, 1)));
    QCOMPARE(rig.takeTime(), 0.009);
}

static const orvelle::test::RegisterSuite<TutkInputTest> kRegistered;

#include "tutk_input_test.moc"
