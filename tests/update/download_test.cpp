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

// Longer than what is read ahead of the disk, and no two parts alike.
QByteArray installer() {
    QByteArray bytes = "#!/bin/sh\n";
    for (int i = 0; bytes.size() < 3'000'000; ++i)
        bytes.append(QByteArray::number(i)).append('\n');
    return bytes;
}

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
        m_server = std::make_unique<WebServer>();
    }

    void file_arrivesWhole_orIsRefused_data() {
        QTest::addColumn<QString>("path");
        QTest::addColumn<QByteArray>("existing");
        QTest::addColumn<QByteArray>("sum");
        QTest::addColumn<int>("outcome");
        QTest::addColumn<QByteArray>("content");  // of the target
        QTest::addColumn<int>("requests");
        const QByteArray whole = installer();
        const QByteArray none;
        const auto row = [](const char* name, const char* path, const QByteArray& existing,
                            const QByteArray& sum, Outcome outcome, const QByteArray& content,
                            int requests) {
            QTest::newRow(name) << QString::fromLatin1(path) << existing << sum << int(outcome)
                                << content << requests;
        };
        row("whole", "/whole", none, none, Outcome::kDone, whole, 1);
        row("right sum", "/whole", none, sumOf(whole), Outcome::kDone, whole, 1);
        row("wrong sum", "/whole", none, sumOf("x"), Outcome::kWrongFile, none, 1);
        row("redirected", "/moved", none, none, Outcome::kDone, whole, 2);
        row("redirected to a file", "/local", none, none, Outcome::kFailed, none, 1);
        row("redirected in a ring", "/ring", none, none, Outcome::kFailed, none, -1);
        row("in chunks", "/chunks", none, none, Outcome::kDone, "hello", 1);
        row("chunks cut off", "/cut", none, none, Outcome::kShort, none, 1);
        row("unknown length", "/open", none, none, Outcome::kDone, whole, 1);
        row("short", "/short", none, none, Outcome::kShort, none, 1);
        row("empty", "/empty", none, none, Outcome::kShort, none, 1);
        row("missing", "/missing", none, none, Outcome::kFailed, none, 1);
        row("there already", "/whole", "old", none, Outcome::kDone, "old", 0);
        row("there and right", "/whole", "old", sumOf("old"), Outcome::kDone, "old", 0);
        row("there and wrong", "/whole", "old", sumOf(whole), Outcome::kDone, whole, 1);
    }
    void file_arrivesWhole_orIsRefused() {
        QFETCH(QString, path);
        QFETCH(QByteArray, existing);
        QFETCH(QByteArray, sum);
        QFETCH(int, outcome);
        QFETCH(int, requests);
        fillServer();
        if (!existing.isEmpty()) {
            QFile file(m_target);
            QVERIFY(file.open(QIODevice::WriteOnly) && file.write(existing) > 0);
        }
        FileDownloader downloader;
        QSignalSpy finished(&downloader, &FileDownloader::finished);
        QSignalSpy progressed(&downloader, &FileDownloader::progressed);
        downloader.start(QUrl(m_server->address(path)), m_target, sum);
        QVERIFY(finished.isEmpty());
        QTRY_COMPARE(finished.count(), 1);
        QCOMPARE(int(downloader.outcome()), outcome);
        QTEST(contentOf(m_target), "content");
        QVERIFY(requests < 0 || m_server->requests.size() == requests);
        // Only what was cut short stays, for the next attempt to overwrite.
        const bool isCut = path == QLatin1String("/short") || path == QLatin1String("/cut");
        QCOMPARE(QFile::exists(temporary()), isCut);
        const bool isOpen = path == QLatin1String("/open") || path == QLatin1String("/chunks") ||
                            path == QLatin1String("/cut");
        for (const auto& step : qAsConst(progressed))
            QCOMPARE(step.at(1).toLongLong() < 0, isOpen);
        if (contentOf(m_target).startsWith("#!"))
            QVERIFY(QFileInfo(m_target).isExecutable());
        for (const QByteArray& request : qAsConst(m_server->requests))
            QVERIFY(request.contains("\r\nAccept-Encoding: identity\r\n"));
    }

    void download_isNotSaved_whenTheDiskTakesNothing() {
        fillServer();
        FileDownloader downloader;
        QSignalSpy finished(&downloader, &FileDownloader::finished);
        const QUrl address(m_server->address(QStringLiteral("/whole")));
        {
            const orvelle::test::FullDisk disk(1 << 20);
            downloader.start(address, m_target, {});
            QTRY_COMPARE(finished.count(), 1);
        }
        QCOMPARE(downloader.outcome(), Outcome::kNotSaved);
        QVERIFY(!QFile::exists(m_target) && !QFile::exists(temporary()));
        downloader.start(address, QStringLiteral("/proc/117.run"), {});
        QTRY_COMPARE(finished.count(), 2);
        QCOMPARE(downloader.outcome(), Outcome::kNotSaved);
        // The same object succeeds once there is room.
        downloader.start(address, m_target, {});
        QTRY_COMPARE(finished.count(), 3);
        QCOMPARE(contentOf(m_target), installer());
    }

    void cancel_endsTheRequest() {
        m_server->give("/stalls", "200 OK", WebServer::length(100), QByteArray(60, 'x'));
        m_server->stalled = "/stalls";
        FileDownloader downloader;
        QSignalSpy finished(&downloader, &FileDownloader::finished);
        QSignalSpy progressed(&downloader, &FileDownloader::progressed);
        const QUrl address(m_server->address(QStringLiteral("/stalls")));
        downloader.start(address, m_target, {});
        QTRY_COMPARE(progressed.count(), 1);
        QCOMPARE(m_server->clients, 1);
        downloader.cancel();
        QTRY_COMPARE(m_server->clients, 0);
        QCOMPARE(contentOf(temporary()).size(), 60);
        // From within its own signal, too, and before it has begun.
        connect(&downloader, &FileDownloader::progressed, &downloader, &FileDownloader::cancel);
        downloader.start(address, m_target, {});
        QTRY_COMPARE(progressed.count(), 2);
        downloader.start(address, m_target, {});
        downloader.cancel();
        QTRY_COMPARE(m_server->clients, 0);
        QVERIFY(finished.isEmpty() && !QFile::exists(m_target));
        QCOMPARE(downloader.outcome(), Outcome::kNone);
    }

private:
    QString temporary() const { return m_target + QStringLiteral(".tmp"); }

    void fillServer() {
        m_server->give("/whole", installer());
        m_server->give("/moved", "301 Moved", "Location: /whole\r\n" + WebServer::length(0), "");
        m_server->give("/local", "302 Found", "Location: file:///etc/hostname\r\n", "");
        m_server->give("/ring", "302 Found", "Location: /ring\r\n" + WebServer::length(0), "");
        m_server->give("/chunks", "200 OK", "Transfer-Encoding: chunked\r\n",
                       "5\r\nhello\r\n0\r\n\r\n");
        m_server->give("/cut", "200 OK", "Transfer-Encoding: chunked\r\n", "5\r\nhello\r\n9\r\nwo");
        m_server->give("/open", "200 OK", "", installer());
        m_server->give("/short", "200 OK", WebServer::length(100), QByteArray(60, 'x'));
        m_server->give("/empty", QByteArray());
    }

    std::unique_ptr<QTemporaryDir> m_folder;
    QString m_target;
    std::unique_ptr<WebServer> m_server;
};

static const orvelle::test::RegisterSuite<DownloadTest> kDownloadTest;
#include "download_test.moc"
