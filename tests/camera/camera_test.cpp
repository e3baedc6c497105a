#include "camera/camera_house.h"

#include <QTemporaryDir>

#include "camera/sources/source_feed.h"

using namespace orvelle;
using test::Client;
using test::demo;
using test::House;
using test::kTimeoutMs;

class CameraTest : public QObject {
    Q_OBJECT

private slots:
    void initTestCase() {
        IOTC_Initialize2(0);
        avInitialize(kMaxLinkChannels);
    }
    void cleanupTestCase() { LinkClient::instance().shutDown(); }

    void client_receivesH264AndAac() { receive(demo(AV_CODEC_ID_H264, AV_CODEC_ID_AAC)); }
    void client_receivesHevcAndAlaw() { receive(demo(AV_CODEC_ID_HEVC, AV_CODEC_ID_PCM_ALAW)); }

    void secondClient_getsItsOwnKeyFrame_andLeavesTheFirstAlone() {
        House house(demo());
        Client first(*house.camera);
        QVERIFY(first.send(IOTYPE_USER_IPCAM_START));
        QTRY_VERIFY_WITH_TIMEOUT(first.count(Medium::kVideo) > 4, kTimeoutMs);
        {
            Client second(*house.camera);
            QVERIFY(second.send(IOTYPE_USER_IPCAM_START));
            QTRY_VERIFY_WITH_TIMEOUT(second.count(Medium::kVideo) > 4, kTimeoutMs);
            QCOMPARE(test::faultOf(second.frames(Medium::kVideo)), std::string());
        }
        const size_t before = first.count(Medium::kVideo);
        QTRY_VERIFY_WITH_TIMEOUT(first.count(Medium::kVideo) > before + 4, kTimeoutMs);
        const auto frames = first.frames(Medium::kVideo);
        QCOMPARE(test::decode(frames).size(), frames.size());
    }

    void passedStream_isJoinedThroughItsGroupOfPictures() {
        const QTemporaryDir directory;
        SourceFeedConfig config;
        config.source.url = directory.filePath(QStringLiteral("join.mp4"));
        QVERIFY(test::makeClip(config.source.url,
                               QStringLiteral("-an -c:v libx264 -bf 0 -g 15 -sc_threshold 0")));
        House house(std::make_unique<SourceFeed>(config));
        Client first(*house.camera);
        QVERIFY(first.send(IOTYPE_USER_IPCAM_START));
        const auto isWithinGroup = [&first] {
            const auto frames = first.frames(Medium::kVideo);
            return frames.size() > 15 &&
                   std::none_of(frames.end() - 4, frames.end(), [](auto& f) { return f.isKey; });
        };
        QTRY_VERIFY_WITH_TIMEOUT(isWithinGroup(), kTimeoutMs);
        Client second(*house.camera);
        QVERIFY(second.send(IOTYPE_USER_IPCAM_START));
        QTRY_VERIFY_WITH_TIMEOUT(second.count(Medium::kVideo) > 20, kTimeoutMs);
        const auto frames = second.frames(Medium::kVideo);
        QCOMPARE(test::faultOf(frames), std::string());
        QVERIFY(frames[1].timeUs - frames[0].timeUs <= 2000);  // squeezed, to catch up
        const auto pictures = test::decode(frames);
        QCOMPARE(pictures.size(), frames.size());
        const int start = test::clipIndexOf(*pictures.front());
        QCOMPARE(start % 15, 0);
        for (size_t i = 0; i < pictures.size(); ++i)
            QCOMPARE(test::clipIndexOf(*pictures[i]), (start + int(i)) % 45);
    }

    void camera_stopsTurning_whenItsClientGoes() {
        House house(demo());
        const auto panIn = [&house](int64_t seconds) {
            return house.panTilt.position(cameraClockUs() + seconds * 1'000'000).pan;
        };
        {
            Client client(*house.camera);
            const QByteArray right("\x06\x01\0\0\0\0\0\0", 8);
            QVERIFY(client.send(IOTYPE_USER_IPCAM_PTZ_COMMAND, right));
            QTRY_COMPARE_WITH_TIMEOUT(panIn(100), 1.0, kTimeoutMs);
        }
        QTRY_VERIFY_WITH_TIMEOUT(panIn(0) == panIn(100) && panIn(0) < 1.0, kTimeoutMs);
    }

private:
    static void receive(std::unique_ptr<Feed> feed) {
        House house(std::move(feed));
        Client client(*house.camera);
        QVERIFY(client.send(IOTYPE_USER_IPCAM_GET_DEVICE_TYPE_REQ));
        QCOMPARE(client.receiveControl(IOTYPE_USER_IPCAM_GET_DEVICE_TYPE_RESP),
                 QByteArray("\x01\0\0\0", 4));
        QVERIFY(client.send(IOTYPE_USER_IPCAM_START) && client.send(IOTYPE_USER_IPCAM_AUDIOSTART));
        QTRY_VERIFY_WITH_TIMEOUT(
            client.count(Medium::kVideo) > 10 && client.count(Medium::kAudio) > 5, kTimeoutMs);
        const auto frames = client.frames(Medium::kVideo);
        QCOMPARE(test::faultOf(frames), std::string());
        const auto pictures = test::decode(frames);
        QCOMPARE(pictures.size(), frames.size());
        uint64_t last = 0;
        for (const FramePtr& picture : pictures) {
            const auto clock = test::clockOf(*picture);
            QVERIFY(clock && *clock > last);
            last = *clock;
        }
        QVERIFY(!test::decode(client.frames(Medium::kAudio)).empty());
    }
};

static const test::RegisterSuite<CameraTest> s_cameraTest;

#include "camera_test.moc"
