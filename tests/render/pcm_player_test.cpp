#include "render/pcm_player.h"

#include <QStandardPaths>

#include <thread>

#include "support/sound_server.h"
#include "support/suites.h"

using namespace orvelle::test;

namespace {

/// Runs `check` while a thread writes the tone as a decoder delivers it.
template <class Check>
void withTone(KvPcmPlayer& player, int rate, int channels, Check check) {
    std::atomic<bool> isEnded{false};
    std::thread writer([&] {
        for (int64_t at = 0; !isEnded; at += rate / 50)
            player.writeFrame(toneFrame(AV_SAMPLE_FMT_S16, rate, channels, at, rate / 50).get());
    });
    check();
    isEnded = true;
    player.interrupt();
    writer.join();
}

class PcmPlayerTest : public QObject {
    Q_OBJECT

    SoundServer m_server;

private slots:
    void initTestCase() {
        if (QStandardPaths::findExecutable(QStringLiteral("pulseaudio")).isEmpty())
            QSKIP("no sound server is installed");
        QVERIFY(m_server.start());
    }

    void tone_isHeard_onceThePlayerIsNotMuted() {
        KvPcmPlayer player;
        QCOMPARE(player.write("x", 1), -1);
        player.setVolume(0.0f);
        QCOMPARE(player.start(), 0);
        const std::vector<char> minute(48000 * 4 * 60);
        QCOMPARE(player.write(minute.data(), int(minute.size())), int(minute.size()));
        QCOMPARE(m_server.streamCount(), 0);
        player.setVolume(1.0f);
        withTone(player, 48000, 2, [this] { QVERIFY(m_server.hearsTone()); });
        player.setVolume(0.0f);
        QTRY_COMPARE(m_server.streamCount(), 0);
    }

    void blockedWrite_ends_whenInterruptedOrStoppedOrMuted() {
        const std::vector<char> minute(48000 * 4 * 60);
        const std::tuple<void (*)(KvPcmPlayer&), int, int, int> cases[] = {
            {[](KvPcmPlayer& player) { player.interrupt(); }, 0, 0, 1},
            {[](KvPcmPlayer& player) { player.stop(); }, -1, -1, 0},
            {[](KvPcmPlayer& player) { player.setVolume(0.0f); }, 0, 8, 0},
        };
        for (const auto& [end, result, next, streams] : cases) {
            KvPcmPlayer player;
            QCOMPARE(player.start(), 0);
            std::atomic<int> written{1};
            std::thread writer([&] { written = player.write(minute.data(), int(minute.size())); });
            const bool isPlaying = QTest::qWaitFor([&] { return m_server.streamCount() == 1; });
            end(player);
            const bool hasEnded = QTest::qWaitFor([&] { return written != 1; });
            player.interrupt();
            writer.join();
            QVERIFY(isPlaying && hasEnded);
            QCOMPARE(written.load(), result);
            QTRY_COMPARE(m_server.streamCount(), streams);
            QCOMPARE(player.write(minute.data(), 8), next);
        }
    }

    void sound_comesBack_whenTheServerDiedAndReturned() {
        KvPcmPlayer player;
        QCOMPARE(player.start(), 0);
        withTone(player, 8000, 1, [&] {
            QVERIFY(m_server.hearsTone());
            // The toolkit looks for a lost server just once, so the next one waits there already.
            QVERIFY(m_server.start());
            QTRY_VERIFY(player.isClosed());
            QTRY_VERIFY_WITH_TIMEOUT(!player.isClosed(), 20'000);
            QVERIFY(m_server.hearsTone());
        });
    }
};

const RegisterSuite<PcmPlayerTest> registered;

}  // namespace

#include "pcm_player_test.moc"
