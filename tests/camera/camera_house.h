#pragma once

#include <algorithm>

#include "camera/camera.h"
#include "camera/demo/demo_feed.h"
#include "camera/media_kit.h"
#include "frames/frame_info.h"
#include "link/av.h"
#include "link/client/link_client.h"
#include "link/io_types.h"
#include "link/iotc.h"
#include "link/limits.h"
#include "support/suites.h"

namespace orvelle::test {

constexpr int kTimeoutMs = 20000;
constexpr char kPassword[] = "a camera's password";

/// One AV channel of a client, and all frames that came on it. One thread.
class Channel {
public:
    Channel(int sid, int number) {
        uint32_t service = 0;
        int resend = 0;
        m_av = avClientStart2(sid, "admin", kPassword, 5, &service, static_cast<uint8_t>(number),
                              &resend);
    }
    ~Channel() { avClientStop(m_av); }
    Channel(const Channel&) = delete;
    Channel& operator=(const Channel&) = delete;

    int index() const { return m_av; }

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

    int m_av = -1;
    FrameCollector m_frames;
};

/// A client over the real link. One thread.
class Client {
public:
    explicit Client(const Camera& camera) : m_sid(IOTC_Get_SessionID()) {
        const std::string uid = camera.profile().uid.toStdString();
        const std::string address = uid + "=127.0.0.1:" + std::to_string(camera.port());
        qputenv("ORVELLE_CAMERA_ADDRESSES", QByteArray::fromStdString(address));
        IOTC_Connect_ByUID_Parallel(uid.c_str(), m_sid);
        m_live = open(0);
    }
    ~Client() { IOTC_Session_Close(m_sid); }

    std::unique_ptr<Channel> open(int channel) const {
        return std::make_unique<Channel>(m_sid, channel);
    }
    bool send(uint32_t type, const QByteArray& payload = QByteArray(8, '\0')) {
        return avSendIOCtrl(m_live->index(), type, payload.constData(), payload.size()) >= 0;
    }
    QByteArray receiveControl(uint32_t wanted, int timeoutMs = kTimeoutMs) {
        char buffer[kMaxControlBytes];
        uint32_t type = 0;
        const int size =
            avRecvIOCtrl(m_live->index(), &type, buffer, sizeof buffer, uint32_t(timeoutMs));
        return size >= 0 && type == wanted ? QByteArray(buffer, size) : QByteArray();
    }
    std::vector<EncodedFrame> frames(Medium medium) { return m_live->frames(medium); }
    size_t count(Medium medium) { return m_live->count(medium); }

private:
    const int m_sid;
    std::unique_ptr<Channel> m_live;
};

/// A turning camera on loopback with its feed, and with a memory card if a directory is given. Its
/// clock is UTC.
struct House {
    explicit House(std::unique_ptr<Feed> lens, const QString& cardDirectory = {})
        : feed(std::move(lens)) {
        QVERIFY2(feed->open().isEmpty(), "the feed does not open");
        CameraProfile profile;
        profile.uid = QStringLiteral("CAMERATEST%1").arg(++s_count);
        profile.deviceType = 1;
        profile.timezoneMinutes = 0;
        if (!cardDirectory.isEmpty())
            card = std::make_unique<MemoryCard>(cardDirectory, int64_t{1} << 30, feed.get());
        camera = std::make_unique<Camera>(profile, CameraAddress{kPassword, "127.0.0.1", 0, 0},
                                          feed.get(), &panTilt, card.get());
        feed->start();
        if (card)
            card->start();
        QCOMPARE(camera->start(), 0);
    }
    ~House() {
        if (card)
            card->stop();
        feed->stop();
    }

    static inline int s_count = 0;
    std::unique_ptr<Feed> feed;
    PanTilt panTilt;
    std::unique_ptr<MemoryCard> card;
    std::unique_ptr<Camera> camera;
};

inline std::unique_ptr<Feed> demo(AVCodecID video = AV_CODEC_ID_H264,
                                  AVCodecID audio = AV_CODEC_ID_AAC) {
    DemoFeedConfig config = smallDemo();
    config.videoCodec = video;
    config.audioCodec = audio;
    return std::make_unique<DemoFeed>(config, nullptr);
}

}  // namespace orvelle::test
