#include "ui/preview/recording_news.h"

#include <QPushButton>
#include <QSignalSpy>
#include <QTimer>
#include <QtTest>

#include "support/clerk.h"
#include "support/suites.h"
#include "ui/main/main_window.h"
#include "ui/widgets/notice_bar.h"

using namespace orvelle;

namespace {

using Fault = RecordingFault;

RecordingResult result(int camera, Fault fault, bool lacksSound = false) {
    return {{QStringLiteral("/media/CAM%1/Video/a.mp4").arg(camera)}, fault, lacksSound};
}

class RecordingNewsTest : public QObject {
    Q_OBJECT
private slots:
    void init() { RecordingNews::instance().takeMessage(); }

    void message_tellsOfAllAtOnce() {
        struct Row {
            std::vector<RecordingResult> results;
            QStringList parts;
            bool isWarning;
        };
        const std::vector<Row> rows = {
            {{result(1, Fault::kNone)},
             {QStringLiteral("saved to"), QStringLiteral("/media/CAM1/Video/a.mp4")},
             false},
            {{result(1, Fault::kNone), result(2, Fault::kNone)},
             {QStringLiteral("2 recordings were saved to\n/media")},
             false},
            {{result(1, Fault::kDiskFull), result(2, Fault::kDiskFull),
              result(3, Fault::kDiskFull)},
             {QStringLiteral("The disk is full.\n3 recordings ended early")},
             true},
            {{result(1, Fault::kNone), result(2, Fault::kDiskFull), result(3, Fault::kNone)},
             {QStringLiteral("The disk is full.\nThe recording ended early"),
              QStringLiteral("/media/CAM2/Video/a.mp4\n2 recordings were saved to\n/media")},
             true},
            {{{{}, Fault::kDiskFull, false}},
             {QStringLiteral("disk is full"), QStringLiteral("could not be saved")},
             true},
            {{result(1, Fault::kQuota), result(2, Fault::kFileTooLarge)},
             {QStringLiteral("space allowed to you"), QStringLiteral("no larger file")},
             true},
            {{result(1, Fault::kNone, true)}, {QStringLiteral("sound could not")}, false},
        };
        for (const Row& row : rows) {
            QSignalSpy ready(&RecordingNews::instance(), &RecordingNews::ready);
            for (const RecordingResult& one : row.results)
                RecordingNews::instance().add(one);
            QTRY_COMPARE(ready.count(), 1);
            const RecordingNews::Message message = RecordingNews::instance().takeMessage();
            for (const QString& part : row.parts)
                QVERIFY2(message.text.contains(part), qPrintable(message.text));
            QCOMPARE(message.isWarning, row.isWarning);
            QVERIFY(RecordingNews::instance().takeMessage().text.isEmpty());
        }
        QSignalSpy ready(&RecordingNews::instance(), &RecordingNews::ready);
        RecordingNews::instance().add({});  // dropped, or too short
        QVERIFY(!ready.wait(500));
    }

    void failure_staysOnTheNextWindow_untilItIsDismissed() {
        RecordingNews::instance().add(result(1, Fault::kDiskFull));
        MainWindow window;
        window.show();
        auto* notice = window.findChild<NoticeBar*>();
        QTRY_VERIFY(notice->isVisible());
        RecordingNews::instance().add(result(2, Fault::kDiskTooSlow));
        QTRY_VERIFY(notice->text().contains(QStringLiteral("does not keep up")));
        QVERIFY(notice->text().contains(QStringLiteral("The disk is full")));
        QVERIFY(window.rect().contains(notice->geometry()));
        notice->findChild<QPushButton*>()->click();
        QVERIFY(!notice->isVisible());
    }

    void failure_isTold_beforeTheProgramEnds() {
        for (const Fault fault : {Fault::kDiskFull, Fault::kNone}) {
            test::Clerk clerk;
            MainWindow window;
            window.show();
            QTimer::singleShot(0, &window, [&] {
                RecordingNews::instance().add(result(1, fault));
                window.close();
            });
            QCOMPARE(QApplication::exec(), 0);
            const bool isWarning = fault != Fault::kNone;
            QCOMPARE(clerk.questions.size(), isWarning ? 2 : 1);
            QCOMPARE(clerk.questions.last().contains(QStringLiteral("The disk is full")),
                     isWarning);
        }
    }
};

}  // namespace

static const orvelle::test::RegisterSuite<RecordingNewsTest> kRecordingNewsTest;

#include "recording_news_test.moc"
