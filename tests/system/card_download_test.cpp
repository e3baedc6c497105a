#include <QDateTime>
#include <QDir>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

#include "camera_set.h"
#include "device/tutk_device.h"
#include "frames/ffmpeg_io_ptr.h"
#include "media/card/card_download.h"
#include "support/suites.h"

using namespace orvelle;
using namespace orvelle::test;

namespace {

using State = CardDownload::State;

constexpr int kWaitMs = 60'000;
constexpr int kMinute = 60;

struct Sample {
    QByteArray bytes;
    double sec = 0.0;
    bool isKey = false;
};

/// The samples of one stream, in order.
std::vector<Sample> samplesOf(const QString& path, AVMediaType type) {
    AVFormatContext* context = nullptr;
    if (avformat_open_input(&context, path.toUtf8().constData(), nullptr, nullptr) < 0)
        return {};
    const InputFormatPtr format(context);
    const int stream = av_find_best_stream(context, type, -1, -1, nullptr, 0);
    const PacketPtr packet(av_packet_alloc());
    std::vector<Sample> samples;
    while (stream >= 0 && av_read_frame(context, packet.get()) >= 0) {
        if (packet->stream_index == stream)
            samples.push_back(
                {QByteArray(reinterpret_cast<const char*>(packet->data), packet->size),
                 double(packet->pts) * av_q2d(context->streams[stream]->time_base),
                 (packet->flags & AV_PKT_FLAG_KEY) != 0});
        av_packet_unref(packet.get());
    }
    return samples;
}

QList<QByteArray> bytesOf(const std::vector<Sample>& samples) {
    QList<QByteArray> bytes;
    for (const Sample& sample : samples)
        bytes << sample.bytes;
    return bytes;
}

}  // namespace

/// A real camera program with a real card, through the device and the link.
class CardDownloadTest : public QObject {
    Q_OBJECT

private slots:
    void initTestCase() {
        QProcess maker;
        maker.start(QCoreApplication::applicationDirPath() + QStringLiteral("/orvelle-camera"),
                    {QStringLiteral("--make-card"), m_card.path(), QStringLiteral("--uid"),
                     QStringLiteral("DOWNLOADCAM"), QStringLiteral("--days"), QStringLiteral("1"),
                     QStringLiteral("--size"), QStringLiteral("360p"), QStringLiteral("--fps"),
                     QStringLiteral("10")});
        QVERIFY(maker.waitForFinished(kWaitMs) && maker.exitCode() == 0);
        // The longest run of minutes is what is fetched.
        qint64 before = 0;
        CardDownload::Stretch run;
        const QStringList names =
            QDir(m_card.path()).entryList({QStringLiteral("*.mkv")}, QDir::Files, QDir::Name);
        for (const QString& name : names) {
            QDateTime start =
                QDateTime::fromString(name, QStringLiteral("yyyyMMdd'T'HHmmss'Z.mkv'"));
            start.setTimeSpec(Qt::UTC);
            const qint64 sec = start.toSecsSinceEpoch();
            if (sec != before + kMinute)
                run.recordingsSec = sec;
            before = sec;
            run.toSec = sec + kMinute;
            if (run.toSec - run.recordingsSec > m_run.toSec - m_run.recordingsSec)
                m_run = run;
        }
        m_run.fromSec = m_run.recordingsSec;
        QVERIFY(m_run.toSec - m_run.fromSec >= 3 * kMinute);
        m_cameras = std::make_unique<CameraSet>(
            QStringLiteral("DOWNLOADCAM"), 1,
            QStringList{QStringLiteral("--demo"), QStringLiteral("--size"), QStringLiteral("360p"),
                        QStringLiteral("--fps"), QStringLiteral("10"), QStringLiteral("--sd"),
                        m_card.path()});
        QVERIFY(m_cameras->connectAll());
    }
    void cleanupTestCase() { m_cameras.reset(); }

    void span_isWrittenSampleForSample_data() {
        QTest::addColumn<int>("from");
        QTest::addColumn<int>("to");
        QTest::addColumn<bool>("isKilled");
        QTest::addColumn<bool>("isPaused");
        QTest::newRow("a minute") << 60 << 120 << false << false;
        QTest::newRow("across minutes") << 31 << 155 << false << false;
        QTest::newRow("to the end of a run") << 0 << 180 << false << false;
        QTest::newRow("camera killed") << 0 << 180 << true << false;
        QTest::newRow("paused") << 0 << 180 << false << true;
    }

    void span_isWrittenSampleForSample() {
        QFETCH(int, from);
        QFETCH(int, to);
        QFETCH(bool, isKilled);
        QFETCH(bool, isPaused);
        const QTemporaryDir folder;
        CardDownload download(device(), {stretch(from, to)},
                              folder.filePath(QStringLiteral("clip.mp4")));
        download.start();
        if (isKilled || isPaused)
            QVERIFY(waitUntil(kWaitMs, [&] { return download.progress() > 0.05; }));
        if (isPaused) {
            download.pause();
            QVERIFY(waitUntil(kWaitMs, [&] { return download.state() == State::kPaused; }));
            QVERIFY(
                QDir(folder.path()).entryList({QStringLiteral("*.mp4")}, QDir::Files).isEmpty());
            download.resume();
        }
        if (isKilled) {
            m_cameras->process().kill();
            QVERIFY(waitUntil(kWaitMs, [&] { return download.state() == State::kWaiting; }));
            QVERIFY(
                QDir(folder.path()).entryList({QStringLiteral("*.mp4")}, QDir::Files).isEmpty());
            QVERIFY(m_cameras->process().start());
        }
        QVERIFY(waitUntil(kWaitMs, [&] { return download.isOver(); }));
        QCOMPARE(int(download.state()), int(State::kDone));
        QCOMPARE(download.missingMinutes(), 0);
        QCOMPARE(QDir(folder.path()).entryList(QDir::Files),
                 QStringList{QStringLiteral("clip.mp4")});
        for (const AVMediaType type : {AVMEDIA_TYPE_VIDEO, AVMEDIA_TYPE_AUDIO}) {
            const auto expected = expectedSamples(from, to, type);
            const auto written = samplesOf(download.path(), type);
            if (type == AVMEDIA_TYPE_VIDEO) {
                QCOMPARE(bytesOf(written), bytesOf(expected));
                QVERIFY(written.front().isKey);
                for (size_t i = 1; i < written.size(); ++i)
                    QVERIFY(qAbs((written[i].sec - written[1].sec) -
                                 (expected[i].sec - expected[1].sec)) < 0.002);
            } else {
                // Blocks at the edges may belong to either side.
                qInfo("sound %d of %d", int(written.size()), int(expected.size()));
                QVERIFY(qAbs(int(written.size()) - int(expected.size())) <= 4);
                const QList<QByteArray> all = bytesOf(expectedSamples(0, 180, type));
                for (const Sample& sample : written)
                    QVERIFY(all.contains(sample.bytes));
            }
        }
    }

    void stoppedDownload_leavesNothing_data() {
        QTest::addColumn<bool>("isDetached");
        QTest::newRow("stopped") << false;
        QTest::newRow("detached") << true;
    }

    void stoppedDownload_leavesNothing() {
        QFETCH(bool, isDetached);
        const QTemporaryDir folder;
        CardDownload download(device(), {stretch(0, 180)},
                              folder.filePath(QStringLiteral("clip.mp4")));
        download.start();
        QVERIFY(waitUntil(kWaitMs, [&] { return download.progress() > 0.05; }));
        if (isDetached)
            download.detach();
        else
            download.stop();
        QVERIFY(waitUntil(kWaitMs, [&] { return download.isOver(); }));
        QCOMPARE(int(download.state()), int(State::kStopped));
        QVERIFY(QDir(folder.path()).isEmpty());
    }

    void whatIsNotThere_isCounted_andTheRestWritten() {
        const QTemporaryDir folder;
        CardDownload::Stretch late = stretch(60, 120);
        late.toSec = m_run.toSec + 120;
        late.fromSec = m_run.toSec - kMinute;
        CardDownload download(device(), {late}, folder.filePath(QStringLiteral("clip.mp4")));
        download.start();
        QVERIFY(waitUntil(kWaitMs, [&] { return download.isOver(); }));
        QCOMPARE(int(download.state()), int(State::kDone));
        QCOMPARE(download.missingMinutes(), 2);
        const QString nowhere = folder.filePath(QStringLiteral("none/clip.mp4"));
        CardDownload refused(device(), {stretch(0, 60)}, nowhere);
        refused.start();
        QVERIFY(waitUntil(kWaitMs, [&] { return refused.isOver(); }));
        QCOMPARE(int(refused.state()), int(State::kNotWritten));
    }

private:
    KvTUTKDevice* device() { return qobject_cast<KvTUTKDevice*>(m_cameras->devices().front()); }
    CardDownload::Stretch stretch(int from, int to) const {
        return {m_run.recordingsSec, m_run.recordingsSec + from, m_run.recordingsSec + to};
    }
    QString nameOf(int minute) const {
        return QDateTime::fromSecsSinceEpoch(m_run.recordingsSec + minute * kMinute, Qt::UTC)
            .toString(QStringLiteral("yyyyMMdd'T'HHmmss'Z.mkv'"));
    }
    /// What the card holds of it, from the key picture before.
    std::vector<Sample> expectedSamples(int from, int to, AVMediaType type) const {
        std::vector<Sample> all;
        for (int minute = 0; minute * kMinute < to; ++minute) {
            for (Sample sample : samplesOf(m_card.filePath(nameOf(minute)), type)) {
                sample.sec += minute * kMinute;
                all.push_back(std::move(sample));
            }
        }
        double keySec = 0.0;
        for (const Sample& sample :
             samplesOf(m_card.filePath(nameOf(from / kMinute)), AVMEDIA_TYPE_VIDEO)) {
            const double sec = sample.sec + from / kMinute * kMinute;
            if (sample.isKey && sec <= from)
                keySec = sec;
        }
        size_t first = all.size(), end = 0;
        for (size_t i = 0; i < all.size(); ++i) {
            if (all[i].sec >= keySec)
                first = std::min(first, i);
            if (all[i].sec < to)
                end = i + 1;
        }
        return {all.begin() + ptrdiff_t(first), all.begin() + ptrdiff_t(end)};
    }

    QTemporaryDir m_card;
    CardDownload::Stretch m_run;
    std::unique_ptr<CameraSet> m_cameras;
};

static const RegisterSuite<CardDownloadTest> kCardDownloadTest;
#include "card_download_test.moc"
