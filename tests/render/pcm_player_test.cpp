#include "render/pcm_player.h"

#include <QStandardPaths>

#include <thread>

#include "render/sound_server.h"
#include "render/tone.h"
#include "support/suites.h"

using namespace orvelle::test;

namespace {

/// Writes the tone as a camera's decoder delivers it, on a thread of its own, until it is ended.
class ToneWriter {
public:
    ToneWriter(KvPcmPlayer& player, AVSampleFormat format, int rate, int channels)
        : m_player(player), m_thread([=, &player] {
              for (int64_t at = 0; !m_isEnded; at += rate / 50) {
                  player.writeFrame(toneFrame(format, rate, channels, at, rate / 50).get());
                  if (player.isClosed())
                      std::this_thread::yield();
              }
          }) {}
    ~ToneWriter() {
        m_isEnded = true;
        m_player.interrupt();
        m_thread.join();
    }

private:
    KvPcmPlayer& m_player;
    std::atomic<bool> m_isEnded{false};
    std::thread m_thread;
};

class PcmPlayerTest : public QObject {
    Q_OBJECT

    SoundServer m_server;

private slots:
    void initTestCase() {
        if (QStandardPaths::findExecutable(QStringLiteral("pulseaudio")).isEmpty())
            QSKIP("no sound server is installed");
        QVERIFY(m_server.start());
    }

    void tone_isHeard_inAnyFormat_data() {
        QTest::addColumn<int>("format");
        QTest::addColumn<int>("rate");
        QTest::addColumn<int>("channels");
        QTest::newRow("converted") << int(AV_SAMPLE_FMT_S16) << 8000 << 1;
        QTest::newRow("written as it is") << int(AV_SAMPLE_FMT_S16) << 48000 << 2;
    }

    void tone_isHeard_inAnyFormat() {
        QFETCH(int, format);
        QFETCH(int, rate);
        QFETCH(int, channels);
        KvPcmPlayer player;
        QCOMPARE(player.start(), 0);
        const ToneWriter writer(player, static_cast<AVSampleFormat>(format), rate, channels);
        QVERIFY(m_server.hearsTone());
    }

    void openFormat_isCutToStereo_whenTheFormatHasMore() {
        QAudioFormat format;
        format.setCodec(QStringLiteral("audio/pcm"));
        format.setSampleRate(44100);
        format.setChannelCount(6);
        format.setSampleSize(32);
        format.setSampleType(QAudioFormat::Float);
        KvPcmPlayer player;
        QCOMPARE(player.openFormat(format), 0);
        const ToneWriter writer(player, AV_SAMPLE_FMT_S16, 44100, 2);
        QVERIFY(m_server.hearsTone());
    }

    void mutedPlayer_takesSoundAndOpensNothing_untilItIsAudible() {
        KvPcmPlayer player;
        QCOMPARE(player.write("x", 1), -1);
        player.setVolume(0.0f);
        QCOMPARE(player.start(), 0);
        const std::vector<char> minute(48000 * 4 * 60);
        QCOMPARE(player.write(minute.data(), int(minute.size())), int(minute.size()));
        QCOMPARE(m_server.streamCount(), 0);
        player.setVolume(1.0f);
        {
            const ToneWriter writer(player, AV_SAMPLE_FMT_FLTP, 16000, 1);
            QVERIFY(m_server.hearsTone());
        }
        player.setVolume(0.0f);
        QTRY_COMPARE(m_server.streamCount(), 0);
    }

    void blockedWrite_ends_whenInterruptedOrStopped() {
        const std::vector<char> hour(48000 * 4 * 60);
        for (const bool stop : {false, true}) {
            KvPcmPlayer player;
            QCOMPARE(player.start(), 0);
            int result = 1;
            std::thread writer([&] { result = player.write(hour.data(), int(hour.size())); });
            QTRY_COMPARE(m_server.streamCount(), 1);
            stop ? player.stop() : player.interrupt();
            writer.join();
            QCOMPARE(result, stop ? -1 : 0);
            QCOMPARE(player.write(hour.data(), 8), stop ? -1 : 0);
            player.stop();
            QTRY_COMPARE(m_server.streamCount(), 0);
        }
    }

    void sound_comesBack_whenTheServerDiedAndReturned() {
        KvPcmPlayer player;
        QCOMPARE(player.start(), 0);
        const ToneWriter writer(player, AV_SAMPLE_FMT_S16, 8000, 1);
        QVERIFY(m_server.hearsTone());
        m_server.kill();
        QTRY_VERIFY(player.isClosed());
        QVERIFY(m_server.start());
        QTRY_VERIFY_WITH_TIMEOUT(!player.isClosed(), 20'000);
        QVERIFY(m_server.hearsTone());
    }
};

const RegisterSuite<PcmPlayerTest> registered;

}  // namespace

#include "pcm_player_test.moc"
