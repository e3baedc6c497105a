#include "link_fixture.h"
#include "support/udp_relay.h"

namespace orvelle::test {

namespace {

constexpr int kFps = 15;
constexpr int kGroup = 30;            // frames from one key frame to the next
constexpr size_t kKeyBytes = 120000;  // together 4 Mbit/s
constexpr size_t kDeltaBytes = 30300;

/// What came out of a stream, by frames.
struct Arrivals {
    int frames = 0;
    int gaps = 0;
    int brokenGroups = 0;  ///< gaps that do not end at a key frame
    int64_t worstDelayMs = 0;
    int64_t lastDelayMs = 0;

    void add(const ReceivedFrame& frame) {
        if (frame.code == AV_ER_LOSED_THIS_FRAME) {
            ++gaps;
            m_isAfterGap = true;
        }
        if (frame.code < 0)
            return;
        if (m_isAfterGap && frame.info[2] == 0)
            ++brokenGroups;
        m_isAfterGap = false;
        ++frames;
        int64_t sentMs = 0;
        std::memcpy(&sentMs, frame.data.data(), sizeof sentMs);
        lastDelayMs = steadyMilliseconds() - sentMs;
        worstDelayMs = std::max(worstDelayMs, lastDelayMs);
    }

private:
    bool m_isAfterGap = false;
};

/// Sends a 4 Mbit/s stream in real time from a thread of its own while it lives.
class Streamer {
public:
    Streamer(TestCamera& camera, int frames)
        : m_thread([this, &camera, frames] {
              const auto start = std::chrono::steady_clock::now();
              for (int i = 0; i < frames && !m_stopped; ++i) {
                  std::this_thread::sleep_until(start + std::chrono::milliseconds(1000) * i / kFps);
                  const bool isKey = i % kGroup == 0;
                  camera.sendVideo(isKey ? kKeyBytes : kDeltaBytes, isKey);
                  camera.sendAudio(200);
              }
          }) {}
    ~Streamer() {
        m_stopped = true;
        m_thread.join();
    }

private:
    std::atomic<bool> m_stopped{false};
    std::thread m_thread;
};

}  // namespace

/// Streams over paths that lose, delay and throttle.
class PathTest : public LinkSuite {
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void stream_losesNoFrame_onLossyPath();
    void stream_dropsGroupsAndRecovers_onSlowPath();

private:
    std::unique_ptr<TestCamera> m_camera;
    std::unique_ptr<UdpRelay> m_relay;
    std::unique_ptr<TestClient> m_client;
};

void PathTest::init() {
    m_camera = std::make_unique<TestCamera>();
    m_relay = std::make_unique<UdpRelay>(m_camera->server().port(), 7);
    m_client = std::make_unique<TestClient>();
    QVERIFY(connectThrough(m_relay->port(), *m_client) >= 0);
}

void PathTest::cleanup() {
    m_client.reset();
    m_camera.reset();
    m_relay.reset();
}

void PathTest::stream_losesNoFrame_onLossyPath() {
    RelayPath path;
    path.delayMs = 25;
    path.lossPercent = 3;
    m_relay->setBothPaths(path);
    constexpr int kFrames = 3 * kGroup + 1;  // the last is a key frame, which no drop leaves out
    Arrivals arrivals;
    const Streamer streamer(*m_camera, kFrames);
    for (uint32_t last = 0; last + 1 < kFrames;) {
        const ReceivedFrame frame = m_client->video();
        QVERIFY2(frame.code != AV_ER_DATA_NOREADY, qPrintable(QString::number(arrivals.frames)));
        arrivals.add(frame);
        last = frame.number;
    }
    QVERIFY(m_relay->droppedDatagrams(RelayDirection::ToClient) > 30);
    // The path takes none. The camera drops some only where the machine itself stands still.
    const auto dropped = int(m_camera->server().stats().videoFramesDropped);
    QCOMPARE(arrivals.frames + dropped, kFrames);
    QVERIFY2(dropped < kGroup / 2, qPrintable(QString::number(dropped)));
}

// Slower than the stream at first, then free again. The delay here is how long frames wait, which
// is the camera's choice, not how fast this machine is.
void PathTest::stream_dropsGroupsAndRecovers_onSlowPath() {
    RelayPath path;
    path.delayMs = 10;
    path.bitsPerSecond = 2'000'000;
    m_relay->setPath(RelayDirection::ToClient, path);
    Arrivals slow, healed;
    const Streamer streamer(*m_camera, 3600 * kFps);
    const int64_t startMs = steadyMilliseconds();
    while (steadyMilliseconds() - startMs < 8000)
        slow.add(m_client->video());
    QVERIFY(avCheckAudioBuf(m_client->av()) >= 0);  // the session holds
    QVERIFY(slow.gaps > 0);
    QCOMPARE(slow.brokenGroups, 0);
    QVERIFY(m_camera->server().stats().videoFramesDropped > 10);
    QVERIFY2(slow.worstDelayMs < 2500, qPrintable(QString::number(slow.worstDelayMs)));

    m_relay->setBothPaths({});
    const QDeadlineTimer deadline(20000);
    while (healed.frames < 2 * kGroup && !deadline.hasExpired()) {
        healed.add(m_client->video());
        if (healed.gaps > 0 || healed.lastDelayMs > 400)
            healed = {};
    }
    QCOMPARE(healed.frames, 2 * kGroup);
}

static const RegisterSuite<PathTest> kRegisterPath;

}  // namespace orvelle::test

#include "path_test.moc"
