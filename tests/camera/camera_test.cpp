#include "camera/camera.h"

#include <QTemporaryDir>

#include "camera/demo_feed.h"
#include "camera/media_kit.h"
#include "camera/source_feed.h"
#include "frames/frame_info.h"
#include "link/av.h"
#include "link/client/link_client.h"
#include "link/io_types.h"
#include "link/iotc.h"
#include "link/limits.h"
#include "support/suites.h"

using namespace orvelle;

namespace {

constexpr int kTimeoutMs = 20000;
constexpr char kPassword[] = "a camera's password";

/// A client over the real link that keeps all frames. One thread.
class Client {
public:
    explicit Client(const Camera& camera) : m_sid(IOTC_Get_SessionID()) {
        const std::string uid = camera.profile().uid.toStdString();
        const std::string address = uid + "=127.0.0.1:" + std::to_string(camera.port());
        qputenv("ORVELLE_CAMERA_ADDRESSES", QByteArray::fromStdString(address));
        uint32_t service = 0;
        int resend = 0;
        if (IOTC_Connect_ByUID_Parallel(uid.c_str(), m_sid) >= 0)
            m_av = avClientStart2(m_sid, "admin", kPassword, 5, &service, 0, &resend);
    }
    ~Client() { IOTC_Session_Close(m_sid); }

    bool send(uint32_t type, const QByteArray& payload = QByteArray(8, '\0')) {
        return avSendIOCtrl(m_av, type, payload.constData(), payload.size()) >= 0;
    }
    QByteArray receiveControl(uint32_t wanted) {
        char buffer[kMaxControlBytes];
        uint32_t type = 0;
        const int size = avRecvIOCtrl(m_av, &type, buffer, sizeof buffer, kTimeoutMs);
        return size >= 0 && type == wanted ? QByteArray(buffer, size) : QByteArray();
    }
    std::vector<EncodedFrame> frames(Medium medium) {
        std::vector<char> buffer(kMaxVideoFrameBytes);
        int size = 0, unused = 0;
        uint32_t number = 0;
        char info[FrameInfo::kBytes];
        while ((size = avRecvFrameData2(m_av, buffer.data(), int(buffer.size()), &unused, &unused,
                                        info, sizeof info, &unused, &number)) > 0)
            keep(Medium::kVideo, buffer.data(), size, info);
        while ((size = avRecvAudioData(m_av, buffer.data(), kMaxAudioFrameBytes, info, sizeof info,
                                       &number)) > 0)
            keep(Medium::kAudio, buffer.data(), size, info);
        return m_frames.frames(medium);
    }
    size_t count(Medium medium) { return frames(medium).size(); }

private:
    void keep(Medium medium, const char* data, int size, const char* info) {
        const auto header = decodeFrameInfo(info, FrameInfo::kBytes);
        m_frames.frameReady({medium, header->codecId, header->isKey(),
                             int64_t{header->timestampMs} * 1000,
                             std::make_shared<std::vector<uint8_t>>(data, data + size)});
    }

    const int m_sid;
    int m_av = -1;
    test::FrameCollector m_frames;
};

/// A turning camera on loopback with its feed.
struct House {
    explicit House(std::unique_ptr<Feed> lens) : feed(std::move(lens)) {
        QVERIFY2(feed->open().isEmpty(), "the feed does not open");
        CameraProfile profile;
        profile.uid = QStringLiteral("CAMERATEST%1").arg(++s_count);
        profile.deviceType = 1;
        camera = std::make_unique<Camera>(profile, CameraAddress{kPassword, "127.0.0.1", 0, 0},
                                          feed.get(), &panTilt);
        feed->start();
        QCOMPARE(camera->start(), 0);
    }
    ~House() { feed->stop(); }

    static inline int s_count = 0;
    std::unique_ptr<Feed> feed;
    PanTilt panTilt;
    std::unique_ptr<Camera> camera;
};

std::unique_ptr<Feed> demo(AVCodecID video = AV_CODEC_ID_H264, AVCodecID audio = AV_CODEC_ID_AAC) {
    DemoFeedConfig config = test::smallDemo();
    config.videoCodec = video;
    config.audioCodec = audio;
    return std::make_unique<DemoFeed>(config, nullptr);
}

}  // namespace

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
