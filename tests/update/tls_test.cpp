#include <QSignalSpy>
#include <QSslConfiguration>
#include <QStandardPaths>
#include <QTemporaryDir>

#include "device/test_tools.h"
#include "support/suites.h"
#include "update/certificates.h"
#include "update/file_downloader.h"
#include "update/signer.h"
#include "update/update_server.h"
#include "update/updater.h"

using orvelle::FileDownloader;
using orvelle::test::Certificates;
using orvelle::test::Signer;
using orvelle::test::TlsIdentity;
using orvelle::test::WebServer;
using Outcome = FileDownloader::Outcome;

namespace {

const QByteArray kInstaller = "installer";
const QByteArray kUpdateFile = "<u><version>1.1.7</version></u>";

}  // namespace

/// Servers over TLS, of which the system believes those that the test's own authority vouches for.
class TlsTest : public QObject {
    Q_OBJECT

private slots:
    void initTestCase() {
        m_former = QSslConfiguration::defaultConfiguration();
        if (QStandardPaths::findExecutable(QStringLiteral("openssl")).isEmpty())
            QSKIP("certificates are made with openssl, which is not here");
        QSslConfiguration trusting = m_former;
        trusting.addCaCertificate(m_certificates.authority());
        QSslConfiguration::setDefaultConfiguration(trusting);
    }
    void cleanupTestCase() { QSslConfiguration::setDefaultConfiguration(m_former); }

    void server_isBelieved_whenItProvesWhoItIs_data() {
        QTest::addColumn<QString>("subject");
        QTest::addColumn<bool>("byAuthority");
        QTest::addColumn<int>("outcome");
        const auto row = [](const char* name, const char* subject, bool byAuthority,
                            Outcome outcome) {
            QTest::newRow(name) << QString::fromLatin1(subject) << byAuthority << int(outcome);
        };
        row("right", "IP:127.0.0.1", true, Outcome::kDone);
        row("self-signed", "IP:127.0.0.1", false, Outcome::kUntrusted);
        row("another's", "DNS:example.org", true, Outcome::kUntrusted);
    }
    void server_isBelieved_whenItProvesWhoItIs() {
        QFETCH(QString, subject);
        QFETCH(bool, byAuthority);
        QFETCH(int, outcome);
        WebServer server(byAuthority ? m_certificates.byAuthority(subject)
                                     : m_certificates.byItself(subject));
        use(server);
        QCOMPARE(int(outcomeOf(server, "/setup")), outcome);
        KvUpdater updater;
        QSignalSpy told(&updater, &KvUpdater::readUpdateInfo);
        updater.start(server.address(QStringLiteral("/WINversion.xml")));
        orvelle::test::LogLines log;
        updater.check(0);
        QTRY_VERIFY(!told.isEmpty() || log.contains("no update file"));
        QCOMPARE(told.count(), outcome == int(Outcome::kDone) ? 1 : 0);
        QCOMPARE(server.requests.isEmpty(), told.isEmpty());
    }

    void redirection_leadsToAnotherServer_butNotAwayFromHttps() {
        const TlsIdentity identity = m_certificates.byAuthority(QStringLiteral("IP:127.0.0.1"));
        WebServer plain;
        WebServer secure(identity);
        WebServer other(identity);
        for (WebServer* server : {&plain, &secure, &other})
            use(*server);
        for (const auto& [target, outcome] :
             {std::pair(&plain, Outcome::kUntrusted), {&other, Outcome::kDone}}) {
            const QByteArray address = target->address().toUtf8();
            for (const QByteArray path : {"/setup", "/setup.minisig", "/WINversion.xml"})
                secure.give("/moved" + path, "302 Found",
                            "Location: " + address + path + "\r\n" + WebServer::length(0), "");
            QCOMPARE(outcomeOf(secure, "/moved/setup"), outcome);
            KvUpdater updater;
            QSignalSpy told(&updater, &KvUpdater::readUpdateInfo);
            m_signer.publish(secure, "/moved/WINversion.xml", kUpdateFile);
            secure.give("/moved/WINversion.xml", "302 Found",
                        "Location: " + address + "/WINversion.xml\r\n" + WebServer::length(0), "");
            orvelle::test::LogLines log;
            updater.start(secure.address(QStringLiteral("/moved/WINversion.xml")));
            updater.check(0);
            QTRY_VERIFY(!told.isEmpty() || log.contains("no update file"));
            QCOMPARE(told.count(), outcome == Outcome::kDone ? 1 : 0);
        }
        QVERIFY(plain.requests.isEmpty());
    }

private:
    void use(WebServer& server) {
        orvelle::setUpdateServer(server.address(), m_signer.publicKey());
        m_signer.publish(server, "/setup", kInstaller);
        m_signer.publish(server, "/WINversion.xml", kUpdateFile);
    }
    static Outcome outcomeOf(const WebServer& server, const char* path) {
        const QTemporaryDir folder;
        FileDownloader downloader;
        QSignalSpy finished(&downloader, &FileDownloader::finished);
        downloader.start({QUrl(server.address(QString::fromLatin1(path))), QStringLiteral("setup"),
                          QCryptographicHash::hash(kInstaller, QCryptographicHash::Sha256)},
                         folder.filePath(QStringLiteral("setup")));
        finished.wait(20'000);
        return downloader.outcome();
    }

    Certificates m_certificates;
    const Signer m_signer;
    QSslConfiguration m_former;
};

static const orvelle::test::RegisterSuite<TlsTest> kTlsTest;
#include "tls_test.moc"
