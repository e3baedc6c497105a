#include <thread>

#include "suite.h"
#include "support/udp_relay.h"

namespace orvelle::test {

/// Control messages, frames and the ends of an open channel, over loopback.
class ChannelTest : public LinkSuite {
    Q_OBJECT

private slots:
    void controls_arriveInOrder_bothWays();
    void controls_areRefused_whenTooLong();
    void frames_arriveWhole_atEverySize_data();
    void frames_arriveWhole_atEverySize();
    void frame_leavesGap_whenTooLarge();
    void frame_isDropped_whenBufferIsSmall();
    void media_startsAtKeyFrame_afterDiscard();
    void playbackChannel_isSeparate_fromLiveOne();
    void waits_return_whenStopped_data();
    void waits_return_whenStopped();
    void channel_endsWithReason_whenPeerGoes_data();
    void channel_endsWithReason_whenPeerGoes();
    void camera_letsClientGo_whenItCloses();
};

void ChannelTest::controls_arriveInOrder_bothWays() {
    TestCamera camera;
    TestClient client;
    QVERIFY(client.connect() >= 0);
    constexpr int kMessages = 60;
    for (int i = 0; i < kMessages; ++i) {
        const QByteArray text = QByteArray::number(i).repeated(i);
        QCOMPARE(avSendIOCtrl(client.av(), uint32_t(i), text.data(), text.size()), 0);
        QCOMPARE(camera.server().sendControl(camera.lastClient(), uint32_t(i) << 24, text.data(),
                                             size_t(text.size())),
                 0);
    }
    for (int i = 0; i < kMessages; ++i) {
        uint32_t type = 0;
        QByteArray data;
        QCOMPARE(client.control(&type, &data), QByteArray::number(i).repeated(i).size());
        QCOMPARE(type, uint32_t(i) << 24);
        QCOMPARE(data, QByteArray::number(i).repeated(i));
    }
    QTRY_COMPARE(camera.controls().size(), kMessages);
    for (int i = 0; i < kMessages; ++i)
        QCOMPARE(camera.controls()[i],
                 QByteArray::number(i, 16) + ':' + QByteArray::number(i).repeated(i));
}

void ChannelTest::controls_areRefused_whenTooLong() {
    TestCamera camera;
    TestClient client;
    QVERIFY(client.connect() >= 0);
    const QByteArray most(kMaxControlBytes, 'x'), tooMany(kMaxControlBytes + 1, 'x');
    QCOMPARE(avSendIOCtrl(client.av(), 1, tooMany.data(), tooMany.size()),
             int{AV_ER_EXCEED_MAX_SIZE});
    QCOMPARE(avSendIOCtrl(client.av(), 1, most.data(), most.size()), 0);
    QTRY_COMPARE(camera.controls(), QVector<QByteArray>{"1:" + most});

    LinkServer& server = camera.server();
    const int id = camera.lastClient();
    QCOMPARE(server.sendControl(id, 1, tooMany.data(), size_t(tooMany.size())),
             int{AV_ER_EXCEED_MAX_SIZE});
    QCOMPARE(server.sendControl(id + 1, 1, "", 0), int{AV_ER_INVALID_ARG});
    QCOMPARE(server.sendControl(id, 1, most.data(), size_t(most.size())), 0);
    QCOMPARE(server.sendControl(id, 2, "ok", 2), 0);
    uint32_t type = 0;
    char small[8];
    QCOMPARE(avRecvIOCtrl(client.av(), &type, small, sizeof small, 5000),
             int{AV_ER_EXCEED_MAX_SIZE});
    QCOMPARE(avRecvIOCtrl(client.av(), &type, small, sizeof small, 5000), 2);
    QCOMPARE(type, 2U);
}

void ChannelTest::frames_arriveWhole_atEverySize_data() {
    QTest::addColumn<int>("size");
    for (const int size : {1, 1423, 1424, 1425, 2848, 50000, kMaxVideoFrameBytes})
        QTest::addRow("%d", size) << size;
}

void ChannelTest::frames_arriveWhole_atEverySize() {
    QFETCH(int, size);
    TestCamera camera;
    TestClient client;
    QVERIFY(client.connect() >= 0);
    auto bytes = std::make_shared<std::vector<uint8_t>>();
    for (int i = 0; i < size; ++i)
        bytes->push_back(uint8_t(i * 7 + i / 1000));
    for (int i = 0; i < 3; ++i)
        QCOMPARE(camera.server().sendVideo(camera.lastClient(), 0, {0x50, 1, 0x01020304}, bytes),
                 0);
    const int soundSize = std::min(size, int{kMaxAudioFrameBytes});
    QCOMPARE(camera.sendAudio(size_t(soundSize)), 0);
    QCOMPARE(client.audio().data, QByteArray(soundSize, '\xA5'));
    for (int i = 0; i < 3; ++i) {
        const ReceivedFrame frame = client.video();
        QCOMPARE(frame.number, uint32_t(i));
        QVERIFY(frame.data == QByteArray(reinterpret_cast<char*>(bytes->data()), size));
        QCOMPARE(frame.info.left(5), QByteArray("\x50\0\1\0\0", 5));
        QCOMPARE(int(frame.info[5]), i);
        QCOMPARE(frame.info.mid(12), QByteArray("\4\3\2\1", 4));
    }
    QCOMPARE(client.video(0).code, int{AV_ER_DATA_NOREADY});
    QCOMPARE(avLostVideoFrames(client.av()), 0U);
}

void ChannelTest::frame_leavesGap_whenTooLarge() {
    TestCamera camera;
    TestClient client;
    QVERIFY(client.connect() >= 0);
    QCOMPARE(camera.sendVideo(100, true), 0);
    QCOMPARE(camera.sendVideo(kMaxVideoFrameBytes + 1, true), int{AV_ER_EXCEED_MAX_SIZE});
    QCOMPARE(camera.sendVideo(0, true), int{AV_ER_INVALID_ARG});
    QCOMPARE(camera.sendAudio(kMaxAudioFrameBytes + 1), int{AV_ER_EXCEED_MAX_SIZE});
    QCOMPARE(camera.sendVideo(200, false), 0);  // refers to the one that is missing
    QCOMPARE(camera.sendVideo(300, true), 0);
    QCOMPARE(client.video().code, 100);
    const ReceivedFrame gap = client.video();
    QCOMPARE(gap.code, int{AV_ER_LOSED_THIS_FRAME});
    QCOMPARE(gap.number, 1U);
    QCOMPARE(client.video().code, 300);
    QCOMPARE(avLostVideoFrames(client.av()), 2U);
    QCOMPARE(camera.server().stats().videoFramesDropped, uint64_t{2});
}

void ChannelTest::frame_isDropped_whenBufferIsSmall() {
    TestCamera camera;
    TestClient client;
    QVERIFY(client.connect() >= 0);
    camera.sendVideo(1000, true);
    camera.sendVideo(100, false);
    char small[100], info[kFrameInfoBytes];
    int size = -1, expected = -1;
    uint32_t number = 0;
    const auto receive = [&](int infoSize) {
        avWaitVideo(client.av(), 5000, {});
        return avRecvFrameData2(client.av(), small, sizeof small, &size, &expected, info, infoSize,
                                nullptr, &number);
    };
    QCOMPARE(receive(15), int{AV_ER_INVALID_ARG});
    QCOMPARE(receive(16), int{AV_ER_BUFPARA_MAXSIZE_INSUFF});
    QCOMPARE(expected, 1000);
    QCOMPARE(size, 0);
    QCOMPARE(receive(16), 100);
    QCOMPARE(avLostVideoFrames(client.av()), 1U);
}

void ChannelTest::media_startsAtKeyFrame_afterDiscard() {
    TestCamera camera;
    TestClient client;
    QVERIFY(client.connect() >= 0);
    camera.sendVideo(10, true);
    camera.sendAudio(10);
    QCOMPARE(client.audio().code, 10);
    avWaitVideo(client.av(), 5000, {});
    avDiscardMedia(client.av());
    camera.sendVideo(20, false);
    camera.sendVideo(30, true);
    QCOMPARE(client.video().code, 30);
    QCOMPARE(avLostVideoFrames(client.av()), 0U);
}

void ChannelTest::playbackChannel_isSeparate_fromLiveOne() {
    TestCamera camera;
    TestClient client;
    QVERIFY(client.connect() >= 0);
    const int av = avClientStart2(client.sid(), "admin", kPassword, 20000, nullptr, 7, nullptr);
    QVERIFY(av > client.av());
    LinkServer& server = camera.server();
    const int id = camera.lastClient();
    QVERIFY(server.isChannelOpen(id, 7));
    const auto frame = std::make_shared<std::vector<uint8_t>>(77);
    QCOMPARE(server.sendVideo(id, 7, {}, frame), 0);
    QCOMPARE(server.sendVideo(id, 8, {}, frame), int{AV_ER_INVALID_ARG});
    QCOMPARE(camera.sendVideo(11, true), 0);
    QCOMPARE(client.video().code, 11);
    avWaitAudio(av, 0, 0, {});
    avWaitVideo(av, 5000, {});
    char buffer[100], info[kFrameInfoBytes];
    uint32_t number = 9;
    QCOMPARE(avRecvFrameData2(av, buffer, sizeof buffer, nullptr, nullptr, info, sizeof info,
                              nullptr, &number),
             77);
    QCOMPARE(number, 0U);
    QCOMPARE(avSendIOCtrl(av, 1, "", 0), int{AV_ER_INVALID_ARG});

    avClientStop(av);
    QTRY_VERIFY(!server.isChannelOpen(id, 7));
    QCOMPARE(camera.sendVideo(12, false), 0);
    QCOMPARE(client.video().code, 12);
}

void ChannelTest::waits_return_whenStopped_data() {
    QTest::addColumn<int>("how");
    QTest::addColumn<int>("result");
    QTest::newRow("stop check and wake") << 0 << int{AV_ER_TIMEOUT};
    QTest::newRow("exit") << 1 << int{AV_ER_TIMEOUT};
    QTest::newRow("abort") << 2 << int{IOTC_ER_INVALID_SID};
    QTest::newRow("channel stopped") << 3 << int{AV_ER_INVALID_ARG};
    QTest::newRow("session closed") << 4 << int{IOTC_ER_INVALID_SID};
}

// Each waits for longer than the test may take, so only what is tried can end it. The video
// wait is not ended by avClientExit, which is for what would block without a stop check.
void ChannelTest::waits_return_whenStopped() {
    QFETCH(int, how);
    QFETCH(int, result);
    TestCamera camera;
    TestClient client;
    QVERIFY(client.connect() >= 0);
    const int av = client.av(), sid = client.sid();
    std::atomic<bool> stopped{false};
    std::atomic<int> asked{0}, returned{0};
    const AvStopCheck stop = [&] {
        ++asked;
        return stopped.load();
    };
    std::atomic<int> code{0};
    std::thread control([&] {
        uint32_t type;
        char buffer[8];
        code = avRecvIOCtrl(av, &type, buffer, sizeof buffer, 3600 * 1000, stop);
        ++returned;
    });
    std::thread video([&] {
        avWaitVideo(av, 3600 * 1000, stop);
        ++returned;
    });
    QTRY_VERIFY(asked >= 2);
    QCOMPARE(returned.load(), 0);
    if (how == 0)
        stopped = true;
    if (how == 0)
        avWake(av);
    else if (how == 1)
        avClientExit(sid, uint8_t(av));
    else if (how == 2)
        IOTC_Connect_Stop_BySID(sid);
    else if (how == 3)
        avClientStop(av);
    else
        IOTC_Session_Close(sid);
    control.join();
    if (how == 1)
        stopped = true;
    avWake(av);
    video.join();
    QCOMPARE(code.load(), result);
}

void ChannelTest::channel_endsWithReason_whenPeerGoes_data() {
    QTest::addColumn<bool>("orderly");
    QTest::addColumn<int>("reason");
    QTest::newRow("goodbye") << true << int{AV_ER_SESSION_CLOSE_BY_REMOTE};
    QTest::newRow("silence") << false << int{AV_ER_REMOTE_TIMEOUT_DISCONNECT};
}

void ChannelTest::channel_endsWithReason_whenPeerGoes() {
    QFETCH(bool, orderly);
    QFETCH(int, reason);
    TestCamera camera;
    UdpRelay relay(camera.server().port());
    const AddressOverride address("TESTCAMERA0123456789", relay.port());
    qputenv("ORVELLE_DISCOVERY_PORT", "47252");  // or it would be found past the relay
    TestClient client;
    const int av = client.connect();
    qputenv("ORVELLE_DISCOVERY_PORT", "47251");
    QVERIFY(av >= 0);
    camera.sendVideo(10, true);
    camera.sendAudio(10);
    QCOMPARE(client.audio().code, 10);
    if (orderly)
        camera.server().stop();
    else
        relay.setSilent(true);
    uint32_t type = 0;
    QByteArray data;
    QCOMPARE(client.control(&type, &data, 8000), reason);
    QCOMPARE(client.video().code, 10);  // what had arrived is not taken away
    QCOMPARE(client.video().code, reason);
    QCOMPARE(avCheckAudioBuf(av), reason);
    QCOMPARE(avSendIOCtrl(av, 1, "", 0), reason);
    QTRY_COMPARE_WITH_TIMEOUT(camera.orderlyGone() + camera.lostGone(), 1, 8000);
    QCOMPARE(camera.orderlyGone() == 1, orderly);
}

void ChannelTest::camera_letsClientGo_whenItCloses() {
    TestCamera camera;
    TestClient client;
    QVERIFY(client.connect() >= 0);
    QCOMPARE(camera.server().stats().clients, 1);
    client.close();
    QTRY_COMPARE(camera.orderlyGone(), 1);
    QVERIFY(!camera.server().isChannelOpen(camera.lastClient(), 0));
    QCOMPARE(camera.sendVideo(10, true), int{AV_ER_INVALID_ARG});
}

static const RegisterSuite<ChannelTest> kRegisterChannel;

}  // namespace orvelle::test

#include "channel_test.moc"
