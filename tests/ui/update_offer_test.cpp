#include <QDir>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QTextBlock>
#include <QTextBrowser>

#include "core/file_utils.h"
#include "device/device_manager.h"
#include "support/suites.h"
#include "ui/dialogs/alert_dialog.h"
#include "ui/dialogs/file_downloader_dialog.h"
#include "ui/dialogs/manual_dialog.h"
#include "ui/dialogs/new_version_dialog.h"
#include "ui/main/main_window.h"
#include "ui/widgets/text.h"
#include "ui/widgets/toast_view.h"
#include "update/update_server.h"
#include "update/web_server.h"

using orvelle::text;
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
        orvelle::setUpdateServer(m_server->address());
    }
    void cleanup() {
        orvelle::setUpdateServer(QString());
        KvDeviceManager::release();
    }

    void newerVersion_isOffered_onceNothingElseIsInFront_data() {
        QTest::addColumn<QString>("seen");
        QTest::newRow("1.1.6") << "other none";
        QTest::newRow("1.1.7") << "other Faster\nSafer";
    }
    void newerVersion_isOffered_onceNothingElseIsInFront() {
        giveUpdate(QTest::currentDataTag(), "");
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
            if (front)
                QTest::keyClick(front, Qt::Key_Return);  // to an offer: later
            if (front != &other)
                QCoreApplication::exit();
        });
        QTimer::singleShot(0, &other, &QDialog::exec);
        driver.start(200);
        QCOMPARE(QCoreApplication::exec(), 0);
        QTEST(seen.join(QLatin1Char(' ')), "seen");
    }

    void download_endsAsTheServerDoes_data() {
        QTest::addColumn<QByteArray>("more");
        QTest::addColumn<QString>("told");  // empty: the file is started and the program left
        const auto row = [](const char* name, const QByteArray& more, const char* told) {
            QTest::newRow(name) << more << QString::fromLatin1(told);
        };
        row("started", "", "");
        row("short", "<path>/short</path>", "download_failed");
        row("missing", "<path>/none</path>", "download_failed");
        row("other file", "<sha256>" + QByteArray(64, 'a') + "</sha256>",
            "the_downloaded_file_is_damaged_and_is_not_started");
        row("odd sum", "<sha256>12</sha256>", "this_version_cannot_be_downloaded");
        row("bad name", "<name>../setup</name>", "this_version_cannot_be_downloaded");
        row("bad address", "<path>file:///x</path>", "this_version_cannot_be_downloaded");
    }
    void download_endsAsTheServerDoes() {
        QFETCH(QByteArray, more);
        QFETCH(QString, told);
        const QString proof = KvFileUtils::dataRoot() + QStringLiteral("/started");
        m_server->give("/short", "200 OK", WebServer::length(100), "x");
        m_server->give("/setup", "#!/bin/sh\ntouch '" + proof.toUtf8() + "'\n");
        giveUpdate("1.1.7", "<path>/setup</path>" + more);
        MainWindow window;
        window.show();
        QTimer driver;
        driver.callOnTimeout(&window, [&] {
            QWidget* front = QApplication::activeModalWidget();
            const auto* toast = window.findChild<KvToastView*>();
            if (auto* offer = qobject_cast<KvNewVersionDialog*>(front))
                return click(*offer, "download");
            const QString words = told.isEmpty() ? told : text(qPrintable(told));
            if (!told.isEmpty() && (shows(front, words) || shows(toast, words)))
                QCoreApplication::exit(1);
        });
        driver.start(5);
        QCOMPARE(QCoreApplication::exec(), told.isEmpty() ? 0 : 1);
        QTRY_COMPARE(QFile::exists(proof), told.isEmpty());
        QCOMPARE(QFile::exists(KvFileUtils::updatePath() + QStringLiteral("/setup.run")),
                 told.isEmpty());
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
        const QUrl address(m_server->address(QStringLiteral("/setup")));
        QVERIFY(!dialog.download(address, KvFileUtils::updatePath() + QStringLiteral("/a"), {}));
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

private:
    void giveUpdate(const QByteArray& version, QByteArray more) {
        more.replace("<path>/", "<path>" + m_server->address().toUtf8() + "/");
        m_server->give("/WINversion.xml",
                       "<u><version>" + version + "</version><name>setup</name><type>run</type>" +
                           "<description_en>Faster\\nSafer</description_en>" + more + "</u>");
    }

    std::unique_ptr<WebServer> m_server;
};

static const orvelle::test::RegisterSuite<UpdateOfferTest> kUpdateOfferTest;
#include "update_offer_test.moc"
