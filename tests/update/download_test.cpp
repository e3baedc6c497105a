#include <QFileInfo>
#include <QSignalSpy>
#include <QTemporaryDir>

#include "device/test_tools.h"
#include "support/suites.h"
#include "update/file_downloader.h"
#include "web_server.h"

using orvelle::FileDownloader;
using orvelle::test::WebServer;
using Outcome = FileDownloader::Outcome;

namespace {

// Longer than what is read ahead of the disk.
const QByteArray kWhole = "#!/bin/sh\n" + QByteArray(3'000'000, 'x');

QByteArray sumOf(const QByteArray& bytes) {
    return QCryptographicHash::hash(bytes, QCryptographicHash::Sha256);
}

QByteArray contentOf(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

}  // namespace

class DownloadTest : public QObject {
    Q_OBJECT

private slots:
    void init() {
        m_folder = std::make_unique<QTemporaryDir>();
        m_target = m_folder->filePath(QStringLiteral("117.run"));
        m_temporary = m_target + QStringLiteral(".tmp");
        m_server = std::make_unique<WebServer>();
        m_server->give("/whole", kWhole);
        m_server->give("/moved", "301 Moved", "Location: /whole\r\n" + WebServer::length(0), "");
        m_server->give("/local", "302 Found", "Location: file:///etc/hostname\r\n", "");
        m_server->give("/ring", "302 Found", "Location: /ring\r\n" + WebServer::length(0), "");
        const QByteArray chunked = "Transfer-Encoding: chunked\r\n";
        m_server->give("/chunks", "200 OK", chunked, "5\r\nhello\r\n0\r\n\r\n");
        m_server->give("/cut", "200 OK", chunked, "5\r\nhello\r\n9\r\nwo");
        m_server->give("/open", "200 OK", "", kWhole);
        m_server->give("/short", "200 OK", WebServer::length(100), QByteArray(60, 'x'));
        m_server->give("/empty", QByteArray());
    }

    void file_arrivesWhole_orIsRefused_data() {
        QTest::addColumn<QByteArray>("existing");
        QTest::addColumn<QByteArray>("sum");
        QTest::addColumn<int>("outcome");
        QTest::addColumn<QByteArray>("content");  // of the target
        QTest::addColumn<int>("left");            // in the temporary file, -1: none
        const QByteArray none;
        const auto row = [](const char* path, const QByteArray& existing, const QByteArray& sum,
                            Outcome outcome, const QByteArray& content, int left = -1) {
            QTest::newRow(path) << existing << sum << int(outcome) << content << left;
        };
        row("/whole", none, none, Outcome::kDone, kWhole);
        row("/whole right", none, sumOf(kWhole), Outcome::kDone, kWhole);
        row("/whole wrong", none, sumOf("x"), Outcome::kWrongFile, none);
        row("/whole exists", "old", none, Outcome::kDone, "old");
        row("/whole exists, right", "old", sumOf("old"), Outcome::kDone, "old");
        row("/whole exists, wrong", "old", sumOf(kWhole), Outcome::kDone, kWhole);
        row("/moved", none, none, Outcome::kDone, kWhole);
        row("/local", none, none, Outcome::kFailed, none);
        row("/ring", none, none, Outcome::kFailed, none);
        row("/chunks", none, none, Outcome::kDone, "hello");
        row("/cut", none, none, Outcome::kShort, none, 7);
        row("/open", none, none, Outcome::kDone, kWhole);
        row("/short", none, none, Outcome::kShort, none, 60);
        row("/empty", none, none, Outcome::kShort, none);
        row("/missing", none, none, Outcome::kFailed, none);
    }
    void file_arrivesWhole_orIsRefused() {
        QFETCH(QByteArray, existing);
        QFETCH(QByteArray, sum);
        const QString path =
            QString::fromLatin1(QTest::currentDataTag()).section(QLatin1Char(' '), 0, 0);
        QFile file(m_target);
        QVERIFY(existing.isEmpty() || (file.open(QIODevice::WriteOnly) && file.write(existing)));
        file.close();
        FileDownloader downloader;
        QSignalSpy finished(&downloader, &FileDownloader::finished);
        QSignalSpy progressed(&downloader, &FileDownloader::progressed);
        downloader.start(QUrl(m_server->address(path)), m_target, sum);
        QTRY_COMPARE(finished.count(), 1);
        QTEST(int(downloader.outcome()), "outcome");
        QTEST(contentOf(m_target), "content");
        QTEST(QFile::exists(m_temporary) ? contentOf(m_temporary).size() : -1, "left");
        QCOMPARE(m_server->requests.isEmpty(), contentOf(m_target) == "old");
        const bool isOpen = path == QLatin1String("/open") || path[1] == QLatin1Char('c');
        for (const auto& step : qAsConst(progressed))
            QCOMPARE(step.at(1).toLongLong() < 0, isOpen);
        QCOMPARE(QFileInfo(m_target).isExecutable(), contentOf(m_target).startsWith("#!"));
    }

    void download_isNotSaved_whenTheDiskTakesNothing() {
        FileDownloader downloader;
        QSignalSpy finished(&downloader, &FileDownloader::finished);
        const QUrl address(m_server->address(QStringLiteral("/whole")));
        {
            const orvelle::test::FullDisk disk(1 << 20);
            downloader.start(address, m_target, {});
            QTRY_COMPARE(finished.count(), 1);
        }
        QCOMPARE(downloader.outcome(), Outcome::kNotSaved);
        QVERIFY(!QFile::exists(m_target) && !QFile::exists(m_temporary));
        downloader.start(address, QStringLiteral("/proc/117.run"), {});
        QTRY_COMPARE(finished.count(), 2);
        QCOMPARE(downloader.outcome(), Outcome::kNotSaved);
        downloader.start(address, m_target, {});
        QTRY_COMPARE(finished.count(), 3);
        QCOMPARE(contentOf(m_target), kWhole);
    }

    void cancel_endsTheRequest_atAnyTime() {
        m_server->stalled = "/short";
        FileDownloader downloader;
        QSignalSpy finished(&downloader, &FileDownloader::finished);
        QSignalSpy progressed(&downloader, &FileDownloader::progressed);
        const QUrl address(m_server->address(QStringLiteral("/short")));
        downloader.start(address, m_target, {});
        QTRY_COMPARE(progressed.count(), 1);
        QCOMPARE(m_server->clients, 1);
        downloader.cancel();
        QTRY_COMPARE(m_server->clients, 0);
        // From within its own signal, too, and before it has begun.
        connect(&downloader, &FileDownloader::progressed, &downloader, &FileDownloader::cancel);
        downloader.start(address, m_target, {});
        QTRY_COMPARE(progressed.count(), 2);
        downloader.start(address, m_target, {});
        downloader.cancel();
        QTRY_COMPARE(m_server->clients, 0);
        QVERIFY(finished.isEmpty() && !QFile::exists(m_target));
    }

private:
    std::unique_ptr<QTemporaryDir> m_folder;
    QString m_target;
    QString m_temporary;
    std::unique_ptr<WebServer> m_server;
};

static const orvelle::test::RegisterSuite<DownloadTest> kDownloadTest;
#include "download_test.moc"
