#include "link_fixture.h"
#include "support/udp_relay.h"

namespace orvelle::test {

/// Control messages, frames and the ends of an open channel, over loopback.
class ChannelTest : public LinkSuite {
    Q_OBJECT

private slots:
    void init() {
        m_camera = std::make_unique<TestCamera>();
        m_client = std::make_unique<TestClient>();
        QVERIFY(m_client->connect() >= 0);
    }
    void cleanup() {
        m_client.reset();
        m_camera.reset();
    }

    void controls_arriveInOrder_bothWays();
    void controls_areRefused_whenTooLong();
    void frames_arriveWhole_atEverySize_data();
    void frames_arriveWhole_atEverySize();
    void frame_leavesGap_whenRefused();
    void media_startsAtKeyFrame_afterDiscard();
    void playbackChannel_isSeparate_fromLiveOne();
    void waits_return_whenStopped_data();
    void waits_return_whenStopped();
    void channel_endsWithReason_whenPeerGoes_data();
    void channel_endsWithReason_whenPeerGoes();

private:
    std::unique_ptr<TestCamera> m_camera;
    std::unique_ptr<TestClient> m_client;
};

void ChannelTest::controls_arriveInOrder_bothWays() {
    QVector<QByteArray> sent;
    for (uint32_t i = 0; i < 60; ++i) {
        const QByteArray text = QByteArray::number(i).repeated(int(i));
        sent += QByteArray::number(i << 24, 16) + ':' + text;
        QCOMPARE(avSendIOCtrl(m_client->av(), i << 24, text.data(), text.size()), 0);
        QCOMPARE(m_camera->server().sendControl(m_camera->lastClient(), i << 24, text.data(),
                                                size_t(text.size())),
                 0);
    }
    for (const QByteArray& expected : sent) {
        QByteArray message;
        QVERIFY(m_client->control(&message) >= 0);
        QCOMPARE(message, expected);
    }
    QTRY_COMPARE(m_camera->controls(), sent);
}

void ChannelTest::controls_areRefused_whenTooLong() {
    const QByteArray most(kMaxControlBytes, 'x'), tooMany(kMaxControlBytes + 1, 'x');
    LinkServer& server = m_camera->server();
    const int id = m_camera->lastClient();
    const int tooLong = AV_ER_EXCEED_MAX_SIZE;
    QCOMPARE(avSendIOCtrl(m_client->av(), 1, tooMany.data(), tooMany.size()), tooLong);
    QCOMPARE(server.sendControl(id, 1, tooMany.data(), size_t(tooMany.size())), tooLong);
    QCOMPARE(avSendIOCtrl(m_client->av(), 1, most.data(), most.size()), 0);
    QTRY_COMPARE(m_camera->controls(), QVector<QByteArray>{"1:" + most});
    QCOMPARE(server.sendControl(id, 1, most.data(), size_t(most.size())), 0);
    QCOMPARE(server.sendControl(id, 2, "ok", 2), 0);
    uint32_t type = 0;
    char small[8];
    QCOMPARE(avRecvIOCtrl(m_client->av(), &type, small, sizeof small, 5000), tooLong);
    QCOMPARE(avRecvIOCtrl(m_client->av(), &type, small, sizeof small, 5000), 2);
    QCOMPARE(type, 2U);
}

void ChannelTest::frames_arriveWhole_atEverySize_data() {
    QTest::addColumn<int>("size");
    for (const int size : {1, 1424, 1425, 2848, kMaxVideoFrameBytes})
        QTest::addRow("%d", size) << size;
}

void ChannelTest::frames_arriveWhole_atEverySize() {
    QFETCH(int, size);
    auto bytes = std::make_shared<std::vector<uint8_t>>();
    for (int i = 0; i < size; ++i)
        bytes->push_back(uint8_t(i * 7 + i / 1000));
    for (int i = 0; i < 2; ++i)
        QCOMPARE(
            m_camera->server().sendVideo(m_camera->lastClient(), 0, {0x50, 1, 0x01020304}, bytes),
            0);
    const int soundSize = std::min(size, int{kMaxAudioFrameBytes});
    QCOMPARE(m_camera->sendAudio(size_t(soundSize)), 0);
    QCOMPARE(m_client->audio(), QByteArray(soundSize, '\xA5'));
    for (int i = 0; i < 2; ++i) {
        const ReceivedFrame frame = m_client->video();
        QCOMPARE(frame.number, uint32_t(i));
        QVERIFY(frame.data == QByteArray(reinterpret_cast<char*>(bytes->data()), size));
        QCOMPARE(frame.info.left(5), QByteArray("\x50\0\1\0\0", 5));
        QCOMPARE(int(frame.info[5]), i);
        QCOMPARE(frame.info.mid(12), QByteArray("\4\3\2\1", 4));
    }
    QCOMPARE(m_client->video(0).code, int{AV_ER_DATA_NOREADY});
    QCOMPARE(avLostVideoFrames(m_client->av()), 0U);
}

void ChannelTest::frame_leavesGap_whenRefused() {
    QCOMPARE(m_camera->sendVideo(100, true), 0);
    QCOMPARE(m_camera->sendVideo(kMaxVideoFrameBytes + 1, true), int{AV_ER_EXCEED_MAX_SIZE});
    QCOMPARE(m_camera->sendVideo(0, true), int{AV_ER_INVALID_ARG});
    QCOMPARE(m_camera->sendAudio(kMaxAudioFrameBytes + 1), int{AV_ER_EXCEED_MAX_SIZE});
    QCOMPARE(m_camera->sendVideo(200, false), 0);  // refers to the one that is missing
    QCOMPARE(m_camera->sendVideo(300, true), 0);
    QCOMPARE(m_client->video().code, 100);
    const ReceivedFrame gap = m_client->video();
    QCOMPARE(gap.code, int{AV_ER_LOSED_THIS_FRAME});
    QCOMPARE(gap.number, 1U);
    QCOMPARE(m_client->video().code, 300);
    QCOMPARE(avLostVideoFrames(m_client->av()), 2U);
    QCOMPARE(m_camera->server().stats().videoFramesDropped, uint64_t{2});
}

void ChannelTest::media_startsAtKeyFrame_afterDiscard() {
    m_camera->sendVideo(10, true);
    avWaitVideo(m_client->av(), 5000, {});
    avDiscardMedia(m_client->av());
    m_camera->sendVideo(20, false);
    m_camera->sendVideo(30, true);
    QCOMPARE(m_client->video().code, 30);
    QCOMPARE(avLostVideoFrames(m_client->av()), 0U);
}

void ChannelTest::playbackChannel_isSeparate_fromLiveOne() {
    const int av = avClientStart2(m_client->sid(), "admin", kPassword, 20000, nullptr, 7, nullptr);
    QVERIFY(av > m_client->av());
    LinkServer& server = m_camera->server();
    const int id = m_camera->lastClient();
    QVERIFY(server.isChannelOpen(id, 7));
    const auto frame = std::make_shared<std::vector<uint8_t>>(77);
    QCOMPARE(server.sendVideo(id, 7, {}, frame), 0);
    QCOMPARE(server.sendVideo(id, 8, {}, frame), int{AV_ER_INVALID_ARG});
    QCOMPARE(m_camera->sendVideo(11, true), 0);
    QCOMPARE(m_client->video().code, 11);
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
    QCOMPARE(m_camera->sendVideo(12, false), 0);
    QCOMPARE(m_client->video().code, 12);
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

// Each waits for an hour, so only what is tried can end it.
void ChannelTest::waits_return_whenStopped() {
    QFETCH(int, how);
    const int av = m_client->av(), sid = m_client->sid();
    std::atomic<bool> stopped{false};
    std::atomic<int> asked{0}, code{0};
    const AvStopCheck stop = [&] {
        ++asked;
        return stopped.load();
    };
    std::thread control([&] {
        uint32_t type;
        char buffer[8];
        code = avRecvIOCtrl(av, &type, buffer, sizeof buffer, 3600 * 1000, stop);
    });
    std::thread video([&] { avWaitVideo(av, 3600 * 1000, stop); });
    QTRY_VERIFY(asked >= 2);
    QCOMPARE(code.load(), 0);
    switch (how) {
        case 0:
            stopped = true;
            avWake(av);
            break;
        case 1:
            avClientExit(sid, uint8_t(av));
            break;
        case 2:
            IOTC_Connect_Stop_BySID(sid);
            break;
        case 3:
            avClientStop(av);
            break;
        default:
            IOTC_Session_Close(sid);
    }
    control.join();
    // The exit is for what would block without a stop check; media are asked by theirs.
    stopped = how <= 1;
    avWake(av);
    video.join();
    QTEST(code.load(), "result");
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
    UdpRelay relay(m_camera->server().port());
    m_client = std::make_unique<TestClient>();
    QTRY_COMPARE(m_camera->orderlyGone(), 1);
    QVERIFY(connectThrough(relay.port(), *m_client) >= 0);
    m_camera->sendVideo(10, true);
    m_camera->sendAudio(10);
    QCOMPARE(m_client->audio().size(), 10);
    avWaitVideo(m_client->av(), 5000, {});  // which is sent after the sound
    if (orderly)
        m_camera->server().stop();
    else
        relay.setSilent(true);
    QByteArray message;
    QCOMPARE(m_client->control(&message), reason);
    QCOMPARE(m_client->video().code, 10);  // what had arrived is not taken away
    QCOMPARE(m_client->video().code, reason);
    QCOMPARE(avCheckAudioBuf(m_client->av()), reason);
    QCOMPARE(avSendIOCtrl(m_client->av(), 1, "", 0), reason);
    QTRY_COMPARE_WITH_TIMEOUT(m_camera->orderlyGone() + m_camera->lostGone(), 2, 8000);
    QCOMPARE(m_camera->lostGone(), orderly ? 0 : 1);
}

static const RegisterSuite<ChannelTest> kRegisterChannel;

}  // namespace orvelle::test

#include "channel_test.moc"
