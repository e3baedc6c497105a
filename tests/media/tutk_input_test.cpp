#include "device_camera.h"

#include "core/thread.h"
#include "link/av.h"
#include "media/live/tutk_preview_input.h"
#include "support/suites.h"

using namespace orvelle;
using Bytes = std::vector<uint8_t>;

namespace {

constexpr uint16_t kH264 = 0x4E;
constexpr uint16_t kAlaw = 0x8A;

/// An input on a camera of its own; counts its end and what its tap gets.
struct Rig {
    test::DeviceCamera camera;
    KvTUTKPreviewInput input;
    std::atomic<int> ends{0}, tapped{0};

    bool open() {
        input.setDevice(&camera.device);
        input.setCallback(this, [](void* rig, int32_t) { ++static_cast<Rig*>(rig)->ends; });
        input.setPacketCallback(
            this, [](void* rig, KvBasePlayerInputPacket*) { ++static_cast<Rig*>(rig)->tapped; });
        return camera.start() && camera.device.init() == 0 && input.open() == 0 &&
               QTest::qWaitFor([this] { return camera.commands().size() == 4; });
    }
    std::unique_ptr<KvBasePlayerInputPacket> take() {
        KvBasePlayerInputPacket* packet = nullptr;
        const bool came = QTest::qWaitFor([&] { return input.readVideoPacket(&packet) == 0; });
        return std::unique_ptr<KvBasePlayerInputPacket>(came ? packet : nullptr);
    }
    double takeTime() {
        const auto packet = take();
        return packet ? packet->time() : -1.0;
    }
    /// Video of the indices `first` to `last` (which are the stamps, too), one of them key.
    void send(uint32_t first, uint32_t last, uint32_t key) {
        for (uint32_t i = first; i <= last; ++i)
            QVERIFY(camera.send(kH264, i == key, i, Bytes(10, 1)));
    }
    StreamStatsSnapshot stats() { return input.stats().snapshot(); }
};

}  // namespace

class TutkInputTest : public QObject {
    Q_OBJECT
private slots:
    void camera_getsCommandsInOrder_whenOpenedAndClosed() {
        Rig rig;
        QVERIFY(rig.open());
        rig.input.close();
        rig.input.close();
        const std::vector<uint32_t> expected = {0x680, 0xFF, 0x1FF, 0x300, 0x301, 0x2FF};
        QTRY_COMPARE(rig.camera.commands(), expected);
        QVERIFY(!rig.input.isRunning());
        QCOMPARE(rig.ends, 0);
    }

    void packet_carriesFrameInformation() {
        Rig rig;
        QVERIFY(rig.open());
        const std::pair<uint16_t, int> rows[] = {
            {0x4E, AV_CODEC_ID_H264}, {0x50, AV_CODEC_ID_HEVC}, {0xFFFF, AV_CODEC_ID_NONE}};
        for (const auto& [cameraCodec, codec] : rows) {
            const bool isKey = cameraCodec != 0x50;
            QVERIFY(rig.camera.send(cameraCodec, isKey, 4'000'000'500u, Bytes(100'000, 7)));
            const auto packet = rig.take();
            QVERIFY(packet);
            QCOMPARE(packet->codecId(), codec);
            QCOMPARE(packet->packet()->flags, int{isKey});
            QCOMPARE(packet->time(), 4'000'000.5);
            QCOMPARE(packet->packet()->size, 100'000);
            QCOMPARE(packet->packet()->data[99'999], uint8_t{7});
        }
    }

    void video_resumesAtKey_afterBacklog() {
        Rig rig;
        QVERIFY(rig.open());
        uint32_t i = 0;
        for (; rig.stats().videoFramesDropped == 0 && i < 500; ++i) {
            const uint64_t before = rig.stats().videoFramesReceived;
            rig.send(i, i, i);
            // A busy machine may lose one: the camera drops what it cannot send in time.
            (void)QTest::qWaitFor([&] { return rig.stats().videoFramesReceived > before; }, 500);
        }
        QCOMPARE(rig.stats().videoFramesDropped, 91u);
        rig.send(i, i + 3, i + 2);
        QCOMPARE(rig.takeTime(), (i + 2) / 1000.0);
        QCOMPARE(rig.takeTime(), (i + 3) / 1000.0);
        // A recording goes on without a gap: nothing was missing on the way.
        QCOMPARE(static_cast<uint64_t>(rig.tapped), rig.stats().videoFramesReceived);
    }

    void sound_isTakenFromFiveFramesOn_andItsBacklogLeavesVideo() {
        Rig rig;
        QVERIFY(rig.open());
        for (uint32_t i = 0; i < 4; ++i)
            QVERIFY(rig.camera.send(kAlaw, false, i, Bytes(160, 1)));
        rig.send(1, 1, 1);
        QTRY_VERIFY(rig.stats().videoFramesReceived == 1);
        QTRY_COMPARE(avCheckAudioBuf(rig.camera.device.avIndex()), 4);
        for (uint32_t i = 4; i < 15; ++i)
            QVERIFY(rig.camera.send(kAlaw, false, i, Bytes(160, 1)));
        QTRY_VERIFY(rig.stats().audioFramesDropped == 11);
        QCOMPARE(rig.takeTime(), 0.001);
    }

    void sound_isThrownAway_whileItRests() {
        Rig rig;
        rig.input.setSoundWanted(false);
        QVERIFY(rig.open());
        const auto sendSound = [&rig](uint32_t first, uint32_t last, uint64_t received) {
            for (uint32_t i = first; i <= last; ++i)
                QVERIFY(rig.camera.send(kAlaw, false, 1000 * i, Bytes(10, 1)));
            QTRY_COMPARE(rig.stats().audioFramesReceived, received);
        };
        const auto take = [&rig] {
            KvBasePlayerInputPacket* packet = nullptr;
            const bool came = rig.input.readAudioPacket(&packet) == 0;
            const std::unique_ptr<KvBasePlayerInputPacket> owned(packet);
            return came ? owned->time() : -1.0;
        };
        const auto isSaid = [&rig](std::initializer_list<uint32_t> expected) {
            std::vector<uint32_t> said;
            for (const uint32_t type : rig.camera.commands())
                if (type == 0x300 || type == 0x301)
                    said.push_back(type);
            return said == std::vector<uint32_t>(expected);
        };
        // Ten are enough to learn what it is like; what the channel still holds goes.
        sendSound(1, 14, 14);
        QTRY_VERIFY(isSaid({0x300, 0x301}));
        sendSound(15, 17, 17);
        for (int i = 1; i <= 10; ++i)
            QCOMPARE(take(), static_cast<double>(i));
        QCOMPARE(take(), -1.0);
        QCOMPARE(rig.tapped, 10);
        rig.input.setSoundWanted(true);
        QTRY_VERIFY(isSaid({0x300, 0x301, 0x300}));
        sendSound(18, 22, 18);
        QCOMPARE(take(), 18.0);
        rig.input.setSoundWanted(true);
        rig.input.setSoundWanted(false);
        QTRY_VERIFY(isSaid({0x300, 0x301, 0x300, 0x301}));
    }

    void end_isToldOnce() {
        struct Reader : KvThread {
            explicit Reader(KvBasePlayerInput& source)
                : KvThread(QStringLiteral("reader")), input(source) {}
            void run() override {
                while (!isStopped() && input.isRunning())
                    input.waitForVideoPacket(*this, 3'600'000);
            }
            KvBasePlayerInput& input;
        };
        for (const bool byCamera : {true, false}) {
            Rig rig;
            QVERIFY(rig.open());
            Reader stopped(rig.input), orphaned(rig.input);
            stopped.start();
            orphaned.start();
            stopped.stop();
            rig.input.wakeReaders();
            QVERIFY(stopped.waitForEnd(10'000));
            // Fewer than are taken at a time; they must not keep the loop going.
            QVERIFY(rig.camera.send(kAlaw, false, 1, Bytes(160, 1)));
            QTRY_COMPARE(avCheckAudioBuf(rig.camera.device.avIndex()), 1);
            byCamera ? rig.camera.stop() : rig.camera.device.uninit();
            QVERIFY(orphaned.waitForEnd(10'000));
            QTRY_VERIFY(!rig.input.isRunning());
            rig.input.close();
            QCOMPARE(rig.ends, 1);
            // On a device that is not connected the end comes at once.
            rig.camera.device.uninit();
            QCOMPARE(rig.input.open(), 0);
            QTRY_VERIFY(!rig.input.isRunning());
            QCOMPARE(rig.ends, 2);
        }
    }

    void open_showsNothingOld_whenOpenedAgain() {
        Rig rig;
        QVERIFY(rig.open());
        rig.input.close();
        rig.send(2, 4, 2);
        avWaitVideo(rig.camera.device.avIndex(), 10'000, {});
        QCOMPARE(rig.input.open(), 0);
        rig.send(9, 9, 9);
        QCOMPARE(rig.takeTime(), 0.009);
    }
};

static const test::RegisterSuite<TutkInputTest> kRegistered;

#include "tutk_input_test.moc"
