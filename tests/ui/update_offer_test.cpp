#include <QDir>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QTextBlock>
#include <QTextBrowser>

#include "core/file_utils.h"
#include "device/device_manager.h"
#include "support/suites.h"
#include "support/system_files.h"
#include "ui/dialogs/alert_dialog.h"
#include "ui/dialogs/confirm_dialog.h"
#include "ui/dialogs/file_downloader_dialog.h"
#include "ui/dialogs/manual_dialog.h"
#include "ui/dialogs/new_version_dialog.h"
#include "ui/main/main_window.h"
#include "ui/widgets/text.h"
#include "ui/widgets/toast_view.h"
#include "update/signer.h"
#include "update/update_server.h"

using orvelle::text;
using orvelle::test::Signer;
using orvelle::test::WebServer;

static void click(const QWidget& dialog, const char* key) {
    for (auto* each : dialog.findChildren<QPushButton*>())
        if (each->text() == text(key) || each->accessibleName() == text(key))
            return each->click();
}

static bool shows(const QWidget* widget, const QString& words) {
    const auto labels = widget ? widget->findChildren<QLabel*>() : QList<QLabel*>();
    return std::any_of(labels.begin(), labels.end(),
                       [&](const QLabel* label) { return label->text().contains(words); });
}

class UpdateOfferTest : public QObject {
    Q_OBJECT

private slots:
    void init() {
        QCoreApplication::setApplicationVersion(QStringLiteral("1.1.6"));
        QDir(KvFileUtils::dataRoot()).removeRecursively();
        KvDeviceManager::create();
        m_server = std::make_unique<WebServer>();
        orvelle::setUpdateServer(m_server->address(), m_signer.publicKey());
        m_proof = KvFileUtils::dataRoot() + QStringLiteral("/started");
        m_installer = orvelle::test::programThatMakes(m_proof);
    }
    void cleanup() {
        orvelle::setUpdateServer(QString(), QByteArray());
        KvDeviceManager::release();
    }

    void newerVersion_isOffered_onceNothingElseIsInFront_data() {
        QTest::addColumn<QString>("seen");
        QTest::newRow("1.1.6") << "other none";
        QTest::newRow("1.1.7") << "other Faster\nSafer";
        QTest::newRow("1.1.8 while the program asks whether to close") << "other Faster\nSafer";
    }
    void newerVersion_isOffered_onceNothingElseIsInFront() {
        const QByteArray row(QTest::currentDataTag());
        giveUpdate(row.left(5).constData(), "");
        MainWindow window;
        KvAlertDialog other(QStringLiteral("first"), &window);
        QStringList seen;
        QTimer driver;
        driver.callOnTimeout(&window, [&] {
            auto* front = qobject_cast<QDialog*>(QApplication::activeModalWidget());
            if (m_server->requests.isEmpty() || m_server->clients > 0)
                return;
            const auto* notes = front ? front->findChild<QTextBrowser*>() : nullptr;
            seen << (notes ? notes->toPlainText() : QLatin1String(front ? "other" : "none"));
            const bool isOther = front == &other || qobject_cast<KvConfirmDialog*>(front);
            if (front)  // Return to an offer: later
                QTest::keyClick(front, isOther ? Qt::Key_Escape : Qt::Key_Return);
            if (!isOther)
                QCoreApplication::exit();
        });
        if (row.size() == 5)
            QTimer::singleShot(0, &other, &QDialog::exec);
        else
            QTimer::singleShot(0, &window, [&window] { window.close(); });
        driver.start(200);
        QCOMPARE(QCoreApplication::exec(), 0);
        QTEST(seen.join(QLatin1Char(' ')), "seen");
    }

    void download_isStarted_orSaysWhyNot_data() {
        QTest::addColumn<QByteArray>("more");
        QTest::addColumn<QString>("told");       // empty: the file is started at once
        QTest::addColumn<bool>("helpsToRetry");  // once the server is right
        const auto row = [](const char* name, const QByteArray& more, const char* told,
                            bool helpsToRetry) {
            QTest::newRow(name) << more << QString::fromLatin1(told) << helpsToRetry;
        };
        const char* const notGenuine = "the_downloaded_file_is_damaged_and_is_not_started";
        const char* const notUsable = "this_version_cannot_be_downloaded";
        row("right", "", "", false);
        row("short", "", "the_connection_was_cut_too_early", true);
        row("missing", "", "the_update_server_does_not_give_the_file", true);
        row("unsigned", "", "the_update_server_does_not_give_the_file", true);
        row("tampered", "", notGenuine, true);
        row("replaced before it runs", "", notGenuine, true);
        row("moved away", "", "the_connection_to_the_update_server_is_not_safe", true);
        row("other sum", "<sha256>" + QByteArray(64, 'a') + "</sha256>", notGenuine, false);
        row("odd sum", "<sha256>12</sha256>", notUsable, false);
        row("no sum", "<sha256/>", notUsable, false);
        row("bad name", "<name>../setup</name>", notUsable, false);
        row("bad address", "<path>file:///x</path>", notUsable, false);
        row("unsafe address", "<path>http://0.0.0.0/setup</path>", notUsable, false);
    }
    void download_isStarted_orSaysWhyNot() {
        QFETCH(QByteArray, more);
        QFETCH(QString, told);
        QFETCH(bool, helpsToRetry);
        giveUpdate("1.1.7", more);
        giveFault(QTest::currentDataTag());
        MainWindow window;
        window.show();
        QTimer driver;
        bool wasTold = false;
        driver.callOnTimeout(&window, [&] {
            QWidget* front = QApplication::activeModalWidget();
            if (auto* offer = qobject_cast<KvNewVersionDialog*>(front))
                return click(*offer, "download");
            if (m_isReplacing && qobject_cast<KvFileDownloaderDialog*>(front))
                front->installEventFilter(this);
            if (told.isEmpty() || wasTold || !shows(front, words(told)))
                return;
            QVERIFY(!QFile::exists(m_proof));
            wasTold = true;
            if (!helpsToRetry)
                return QCoreApplication::exit(1);
            publishInstaller();
            click(*front, "retry");
        });
        driver.start(5);
        const bool isStarted = told.isEmpty() || helpsToRetry;
        QCOMPARE(QCoreApplication::exec(), isStarted ? 0 : 1);
        QCOMPARE(wasTold, !told.isEmpty());
        QTRY_COMPARE(QFile::exists(m_proof), isStarted);
        QCOMPARE(QFile::exists(target()), isStarted);
    }

    void stalledDownload_closes_withItsReason() {
        publishInstaller();
        m_server->give("/setup", "200 OK", WebServer::length(100), "x");
        m_server->stalled = "/setup";
        KvFileDownloaderDialog dialog(nullptr, 200);
        QVERIFY(!dialog.download(installer(), target()));
        QVERIFY(dialog.failure().contains(text("the_update_server_sends_nothing_any_more")));
        QVERIFY(dialog.failure().contains(text("download_failed")));
    }

    void bar_stopsBeforeTheEnd_andCloseEndsTheRequest_data() {
        QTest::addColumn<QByteArray>("length");
        QTest::addColumn<QString>("bar");
        QTest::newRow("half") << WebServer::length(1998) << "50 of 100";
        QTest::newRow("nearly all") << WebServer::length(1000) << "99 of 100";
        QTest::newRow("unknown") << QByteArray() << "0 of 0";
    }
    void bar_stopsBeforeTheEnd_andCloseEndsTheRequest() {
        QFETCH(QByteArray, length);
        publishInstaller();
        m_server->give("/setup", "200 OK", length, QByteArray(999, 'x'));
        m_server->stalled = "/setup";
        KvFileDownloaderDialog dialog;
        const auto* bar = dialog.findChild<QProgressBar*>();
        QString seen;
        QTimer driver;
        driver.callOnTimeout(&dialog, [&] {
            seen = QStringLiteral("%1 of %2").arg(bar->value()).arg(bar->maximum());
            if (bar->value() != 0 || bar->maximum() == 0)
                click(dialog, "close");
        });
        driver.start(5);
        QVERIFY(!dialog.download(installer(), target()));
        QVERIFY(dialog.failure().isEmpty());
        QTEST(seen, "bar");
        QTRY_COMPARE(m_server->clients, 0);
    }

    void manual_leadsToItsHeadings_orIsMissed() {
        const QTemporaryDir folder;
        QFile page(folder.filePath(QStringLiteral("manual.md")));
        QVERIFY(page.open(QIODevice::WriteOnly));
        page.write("# One\n[two](#two-half)\n\n![x](images/none.png)\n\n![y](../../x.png)\n\n" +
                   QByteArray("text\n\n").repeated(200) + "## Two, half\n");
        page.close();
        orvelle::ManualDialog manual(folder.path(), {800, 600}, nullptr);
        manual.show();
        auto* browser = manual.findChild<QTextBrowser*>();
        emit browser->anchorClicked(QUrl(QStringLiteral("#two-half")));
        QCOMPARE(browser->textCursor().block().text(), QStringLiteral("Two, half"));
        QTest::keyClick(browser, Qt::Key_Escape);
        QVERIFY(manual.isHidden() && manual.isReadable());
        const QString none = folder.filePath(QStringLiteral("none"));
        QVERIFY(!orvelle::ManualDialog(none, {800, 600}, nullptr).isReadable());
    }

    /// The moment after the download, before the file is run.
    bool eventFilter(QObject*, QEvent* event) override {
        if (event->type() == QEvent::Hide && std::exchange(m_isReplacing, false)) {
            QFile file(target());
            file.open(QIODevice::WriteOnly | QIODevice::Append);
            file.write("exit\n");
        }
        return false;
    }

private:
    void giveUpdate(const QByteArray& version, const QByteArray& more) {
        publishInstaller();
        const QByteArray sum =
            QCryptographicHash::hash(m_installer, QCryptographicHash::Sha256).toHex();
        m_signer.publish(*m_server, "/WINversion.xml",
                         "<u><version>" + version + "</version><name>setup</name><type>exe</type>" +
                             "<description_en>Faster\\nSafer</description_en><path>" +
                             installer().address.toEncoded() + "</path><sha256>" + sum +
                             "</sha256>" + more + "</u>");
    }
    void publishInstaller() { m_signer.publish(*m_server, "/setup", m_installer); }
    void giveFault(const QByteArray& fault) {
        if (fault == "short")
            m_server->give("/setup", "200 OK", WebServer::length(100), "x");
        if (fault == "missing")
            m_server->pages.remove("/setup");
        if (fault == "unsigned")
            m_server->pages.remove("/setup.minisig");
        if (fault == "tampered")
            m_server->give("/setup", m_installer + "exit\n");
        if (fault == "moved away")
            m_server->give("/setup", "302 Found",
                           "Location: " + orvelle::test::elsewhere(*m_server) + "\r\n", "");
        m_isReplacing = fault.startsWith("replaced");
    }
    orvelle::Installer installer() const {
        return {QUrl(m_server->address(QStringLiteral("/setup"))), QStringLiteral("setup.exe"),
                QCryptographicHash::hash(m_installer, QCryptographicHash::Sha256)};
    }
    static QString target() { return KvFileUtils::updatePath() + QStringLiteral("/setup.exe"); }
    /// A text's beginning, before what is filled in.
    static QString words(const QString& key) {
        return text(qPrintable(key)).section(QStringLiteral("%1"), 0, 0);
    }

    const Signer m_signer;
    std::unique_ptr<WebServer> m_server;
    QString m_proof;         ///< there once the installer ran
    QByteArray m_installer;  ///< right content
    bool m_isReplacing = false;
};

static const orvelle::test::RegisterSuite<UpdateOfferTest> kUpdateOfferTest;
#include "update_offer_test.moc"
