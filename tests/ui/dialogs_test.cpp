#include <QDir>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QScreen>
#include <QSignalSpy>
#include <QTemporaryDir>

#include <functional>

#include "core/configure.h"
#include "core/file_utils.h"
#include "core/language.h"
#include "device/worker_reaper.h"
#include "support/folder_opener.h"
#include "support/suites.h"
#include "ui/dialogs/alert_dialog.h"
#include "ui/dialogs/confirm_dialog.h"
#include "ui/dialogs/device_add_dialog.h"
#include "ui/dialogs/directory_dialog.h"
#include "ui/dialogs/file_downloader_dialog.h"
#include "ui/dialogs/input_dialog.h"
#include "ui/dialogs/media_path_dialog.h"
#include "ui/dialogs/new_version_dialog.h"
#include "ui/dialogs/version_dialog.h"
#include "ui/widgets/placement.h"
#include "ui/widgets/text.h"
#include "ui/widgets/toast_view.h"
#include "ui/widgets/widget_utils.h"

namespace {

using MakeDialog = std::function<std::unique_ptr<KvDialog>()>;

template <class Dialog, class... Arguments>
MakeDialog maker(Arguments... arguments) {
    return [=] { return std::make_unique<Dialog>(arguments...); };
}

constexpr QWidget* kNoParent = nullptr;
const QString kLong = QStringLiteral("A message that says a good deal more than what fits ") +
                      QStringLiteral("into one line of a dialog, or even into two of them");
const QString kLongPath = QStringLiteral("/x/%1/%1/20240102030405.jpg").arg(kLong);

class PathDialog : public KvMediaPathDialog {
public:
    QString choice;

protected:
    QString chooseFolder(const QString&) override { return choice; }
};

QPushButton* button(const QWidget& dialog, const char* key) {
    for (auto* each : dialog.findChildren<QPushButton*>())
        if (each->text() == orvelle::text(key) || each->accessibleName() == orvelle::text(key))
            return each;
    return nullptr;
}

bool fits(const QLabel& label) {
    if (label.wordWrap())
        return label.heightForWidth(label.width()) <= label.height();
    const QSize text = label.fontMetrics().size(0, label.text());
    return text.width() <= label.width() && text.height() <= label.height();
}

}  // namespace

class DialogsTest : public QObject {
    Q_OBJECT

private slots:
    void dialog_isWhole_inBothLanguages() {
        // The folder's path, of any length, is part of a dialog.
        const QTemporaryDir disk;
        KvConfigure().setString(orvelle::settings::kMediaRoot,
                                QStringLiteral("%1/%2/%2").arg(disk.path(), kLong));
        for (const char* language : {"chinese", "english"}) {
            KvLanguage::load(QLatin1String(language));
            for (const MakeDialog& make :
                 {maker<KvAlertDialog>(kLong, kNoParent), maker<KvConfirmDialog>(kLong, kNoParent),
                  maker<KvInputDialog>(kLong, kLong, kNoParent),
                  maker<KvDirectoryDialog>(kLong, kLongPath, kNoParent), maker<KvMediaPathDialog>(),
                  maker<KvVersionDialog>(), maker<KvNewVersionDialog>(),
                  maker<KvFileDownloaderDialog>()}) {
                const auto dialog = make();
                dialog->show();
                checkParts(*dialog);
            }
        }
        KvConfigure().remove(orvelle::settings::kMediaRoot);
    }

    void result_followsTheWayOut() {
        const MakeDialog alert = maker<KvAlertDialog>(QString(), kNoParent);
        const MakeDialog confirm = maker<KvConfirmDialog>(QString(), kNoParent);
        const MakeDialog input = maker<KvInputDialog>(QString(), QString(), kNoParent);
        orvelle::WorkerReaper reaper;
        const MakeDialog add = [&reaper] {
            return std::make_unique<KvTUTKDeviceAddDialog>(reaper);
        };
        const struct {
            const MakeDialog& make;
            const char* button;  // clicked, or with a key the one that has the focus
            Qt::Key key;
            int result;  // -1: stays open
        } ways[] = {{alert, "ok", {}, 1},
                    {alert, "cancel", {}, 0},
                    {alert, "close", {}, 0},
                    {alert, "", Qt::Key_Return, 1},
                    {alert, "", Qt::Key_Escape, 0},
                    {alert, "close", Qt::Key_Return, 0},
                    {confirm, "confirm", {}, 1},
                    {confirm, "cancel", {}, 0},
                    {confirm, "", Qt::Key_Enter, 1},
                    {input, "ok", {}, 1},
                    {input, "cancel", {}, 0},
                    {input, "", Qt::Key_Return, 1},
                    {input, "", Qt::Key_Escape, 0},
                    {maker<KvVersionDialog>(), "close", {}, 0},
                    {add, "cancel", Qt::Key_Return, -1},
                    {add, "cancel", Qt::Key_Space, 0}};
        for (const auto& way : ways) {
            const auto dialog = way.make();
            QSignalSpy finished(dialog.get(), &QDialog::finished);
            dialog->show();
            QVERIFY(QTest::qWaitForWindowActive(dialog.get()));
            QPushButton* pressed = button(*dialog, way.button);
            if (way.key == 0)
                pressed->click();
            else if (*way.button)
                pressed->setFocus();
            if (way.key != 0)
                QTest::keyClick(dialog->focusWidget(), way.key);
            QCOMPARE(finished.value(0, {-1}).value(0), QVariant(way.result));
        }
    }

    void input_keepsTheLimit_andWaitsForARealName() {
        KvInputDialog dialog(QString(), QString(), nullptr);
        dialog.setTextRequired(true);
        dialog.show();
        QVERIFY(QTest::qWaitForWindowActive(&dialog));
        auto* edit = dialog.findChild<QLineEdit*>();
        QVERIFY(edit->hasFocus());
        QTest::keyClicks(edit, QStringLiteral("   "));
        QTest::keyClick(edit, Qt::Key_Return);
        QVERIFY(dialog.isVisible());
        dialog.setText(QString(30, QChar(0x6444)));
        QCOMPARE(dialog.text().size(), 30);
        dialog.setMaxLength(20);
        QCOMPARE(dialog.text(), QString(10, QChar(0x6444)));
        edit->setCursorPosition(3);
        QTest::keyClicks(edit, QStringLiteral("ab"));
        QCOMPARE(dialog.text(),
                 QString(3, QChar(0x6444)) + QStringLiteral("ab") + QString(6, QChar(0x6444)));
        QCOMPARE(edit->cursorPosition(), 5);
        QTest::keyClick(edit, Qt::Key_Return);
        QVERIFY(!dialog.isVisible());
    }

    void input_staysWithTheReason_whenTheTextWillNotDo() {
        KvInputDialog dialog(QString(), QString(), nullptr);
        dialog.setCheck([](const QString& text) {
            return text == QLatin1String("good") ? QString()
                                                 : QStringLiteral("<b>why</b>").repeated(20);
        });
        dialog.show();
        const int height = dialog.height();
        auto* edit = dialog.findChild<QLineEdit*>();
        const auto warning = [&] { return edit->accessibleDescription(); };
        dialog.setText(QStringLiteral("bad"));
        button(dialog, "ok")->click();
        QVERIFY(dialog.isVisible() && dialog.height() > height && !warning().isEmpty());
        dialog.setText(QStringLiteral("good"));
        QVERIFY(dialog.height() == height && warning().isEmpty());
        button(dialog, "ok")->click();
        QCOMPARE(dialog.result(), int(QDialog::Accepted));
    }

    void directory_opensTheFoldersOfFiles_orStaysAndSaysSo() {
        const QTemporaryDir home;
        const QString folder = home.filePath(QStringLiteral("a folder = 50%"));
        QVERIFY(QDir().mkpath(folder));
        for (const char* name : {"", "/picture.jpg"}) {
            if (!orvelle::test::FolderOpener::isPossible())
                break;
            orvelle::test::FolderOpener opener;
            KvDirectoryDialog dialog(QString(), folder + QLatin1String(name));
            button(dialog, "open_the_folder")->click();
            QCOMPARE(dialog.result(), int(QDialog::Accepted));
            QCOMPARE(opener.takeOpened(), folder);
        }
        KvDirectoryDialog dialog(QString(), QStringLiteral("/nonexistent/x.jpg"));
        QSignalSpy finished(&dialog, &QDialog::finished);
        button(dialog, "open_the_folder")->click();
        QVERIFY(finished.isEmpty() && dialog.findChild<KvToastView*>());
        button(dialog, "cancel")->click();
        QCOMPARE(dialog.result(), int(QDialog::Rejected));
    }

    void mediaPath_isStored_whenAFileCanBeWritten() {
        const QTemporaryDir good;
        const QString before = KvFileUtils::mediaRoot();
        PathDialog dialog;
        dialog.choice = QStringLiteral("/proc");  // closed even to an administrator
        button(dialog, "select_folder")->click();
        button(dialog, "ok")->click();
        QCOMPARE(dialog.result(), int(QDialog::Rejected));
        QVERIFY(hasLabel(dialog, orvelle::text("the_folder_cannot_be_written")));
        QCOMPARE(KvFileUtils::mediaRoot(), before);
        dialog.choice = good.path();
        button(dialog, "select_folder")->click();
        QVERIFY(!hasLabel(dialog, orvelle::text("the_folder_cannot_be_written")));
        QCOMPARE(KvFileUtils::mediaRoot(), before);
        dialog.choice.clear();  // the chooser was cancelled
        button(dialog, "select_folder")->click();
        button(dialog, "ok")->click();
        QCOMPARE(dialog.result(), int(QDialog::Accepted));
        QCOMPARE(KvFileUtils::mediaRoot(), good.path());
        QVERIFY(QDir(good.path()).isEmpty(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot));
        QVERIFY(KvFileUtils::resetMediaRoot());
    }

    void dialog_standsInTheMiddle_ofTheAreaLeft() {
        QWidget owner;
        owner.move(30, 40);
        QWidget window(&owner, Qt::Dialog | Qt::FramelessWindowHint);
        window.setGeometry(200, 100, 800, 500);
        QWidget panel(&window);
        panel.setGeometry(100, 50, 400, 300);
        QWidget tile(&panel);
        tile.setGeometry(10, 20, 201, 101);
        QWidget dialog(&window, Qt::Dialog | Qt::FramelessWindowHint);
        dialog.resize(100, 60);
        orvelle::centreOver(dialog, tile);
        QCOMPARE(dialog.pos(), QPoint(200 + 110 + 50, 100 + 70 + 20));
        orvelle::centreOver(dialog, window, 295);
        QCOMPARE(dialog.pos(), QPoint(200 + 147 + 350, 100 + 220));
        window.move(-700, -400);
        orvelle::centreOver(dialog, window);
        QCOMPARE(dialog.pos(), window.screen()->availableGeometry().topLeft());
    }

    void dialog_followsTheLeftButton_whenDraggable() {
        const struct {
            bool draggable;
            Qt::MouseButton button;
            QPoint moved;
        } cases[] = {{true, Qt::LeftButton, {30, 15}},
                     {true, Qt::RightButton, {}},
                     {false, Qt::LeftButton, {}}};
        for (const auto& each : cases) {
            KvConfirmDialog dialog(kLong, nullptr);
            dialog.setDraggable(each.draggable);
            dialog.move(200, 200);
            QTest::mousePress(&dialog, each.button, {}, QPoint(40, 10));
            QMouseEvent move(QEvent::MouseMove, QPoint(), QPoint(270, 225), Qt::NoButton,
                             each.button, {});
            QCoreApplication::sendEvent(&dialog, &move);
            QCOMPARE(dialog.pos(), QPoint(200, 200) + each.moved);
            QTest::mouseRelease(&dialog, each.button, {}, QPoint(40, 10));
            dialog.move(0, 0);
            QCoreApplication::sendEvent(&dialog, &move);
            QCOMPARE(dialog.pos(), QPoint());
        }
    }

private:
    static void checkParts(const QWidget& dialog) {
        const auto parts = dialog.findChildren<QWidget*>(QString(), Qt::FindDirectChildrenOnly);
        for (const QWidget* part : parts) {
            QVERIFY(part->isHidden() || dialog.rect().contains(part->geometry()));
            for (const QWidget* other : parts)
                QVERIFY(part == other || part->isHidden() || other->isHidden() ||
                        !part->geometry().intersects(other->geometry()));
        }
        for (const auto* label : dialog.findChildren<QLabel*>())
            QVERIFY2(fits(*label), qPrintable(label->text()));
        for (const auto* each : dialog.findChildren<QPushButton*>())
            QVERIFY(each->isHidden() || each->text() != each->accessibleName());
    }

    static bool hasLabel(const QWidget& dialog, const QString& text) {
        const auto labels = dialog.findChildren<QLabel*>();
        return std::any_of(labels.begin(), labels.end(),
                           [&](const QLabel* label) { return label->text() == text; });
    }
};

static const orvelle::test::RegisterSuite<DialogsTest> kDialogsTest;
#include "dialogs_test.moc"
