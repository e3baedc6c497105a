#include "core/configure.h"
#include "core/file_utils.h"
#include "device/device.h"
#include "render/video_surface.h"
#include "support/suites.h"
#include "system/camera_set.h"
#include "ui/dialogs/alert_dialog.h"
#include "ui/dialogs/directory_dialog.h"
#include "ui/preview/device_player_view.h"
#include "ui/preview/device_record_view.h"
#include "ui/widgets/push_button.h"
#include "ui/widgets/toast_view.h"

#include <QDir>
#include <QImage>
#include <QLabel>
#include <QtTest>

using orvelle::test::CameraSet;
using orvelle::test::waitUntil;
using Tile = KvDevicePlayerViewUI;

namespace {

constexpr int kTimeoutMs = 30000;
constexpr QLatin1Char kGap(' ');

/// Closes the modal dialogs that come up, and remembers of which kind they were.
class Clerk : public QObject {
public:
    Clerk() { qApp->installEventFilter(this); }
    QStringList seen;
    bool isAgreeing = true;  ///< to questions

    bool eventFilter(QObject* shown, QEvent* event) override {
        auto* dialog = event->type() == QEvent::Show ? qobject_cast<QDialog*>(shown) : nullptr;
        if (!dialog)
            return false;
        seen.append(QLatin1String(dialog->metaObject()->className()));
        const bool isQuestion = qobject_cast<KvAlertDialog*>(dialog) != nullptr;
        // Later: the dialog's own loop has not begun.
        QMetaObject::invokeMethod(
            dialog,
            [dialog, isAccepted = isQuestion && isAgreeing] {
                isAccepted ? dialog->accept() : dialog->reject();
            },
            Qt::QueuedConnection);
        return false;
    }
};

/// A tile's buttons, with a real camera.
class TileActionsTest : public QObject {
    Q_OBJECT
private slots:
    void initTestCase();
    void init();
    void cleanupTestCase();
    void recording_endsAsAskedFor_data();
    void recording_endsAsAskedFor();
    void snapshot_isSaved_alsoWhenItsFolderIsGone();
    void lostPicture_stays_underItsSign();

private:
    Tile* ui() const { return m_tile->findChild<Tile*>(); }
    QLabel* label(const QString& text) const;
    QStringList files(QString (*folderOf)(const QString&), const char* pattern) const;

    Clerk m_clerk;
    std::unique_ptr<CameraSet> m_cameras;
    std::unique_ptr<KvDevicePlayerView> m_tile;
};

}  // namespace

void TileActionsTest::initTestCase() {
    m_cameras = std::make_unique<CameraSet>(
        QStringLiteral("TILE1"), 1,
        QStringList{QStringLiteral("--demo"), QStringLiteral("--size"), QStringLiteral("360p")});
    QVERIFY(m_cameras->connectAll());
    m_tile = std::make_unique<KvDevicePlayerView>();
    m_tile->resize(640, 400);
    m_tile->show();
}

void TileActionsTest::init() {
    if (m_tile->device())
        m_tile->setDevice(nullptr);
    QTRY_VERIFY(!ui()->button(Tile::kRecord)->isEnabled());
    m_tile->setDevice(m_cameras->devices().front());
    // With the first picture.
    QTRY_VERIFY_WITH_TIMEOUT(ui()->button(Tile::kRecord)->isEnabled(), kTimeoutMs);
    m_clerk.seen.clear();
}

void TileActionsTest::cleanupTestCase() {
    m_tile.reset();
    m_cameras.reset();
}

QLabel* TileActionsTest::label(const QString& text) const {
    for (QLabel* label : m_tile->findChildren<QLabel*>()) {
        if (label->isVisible() && label->text().startsWith(text))
            return label;
    }
    return nullptr;
}

QStringList TileActionsTest::files(QString (*folderOf)(const QString&), const char* pattern) const {
    return QDir(folderOf(m_tile->device()->uid())).entryList({QLatin1String(pattern)});
}

void TileActionsTest::recording_endsAsAskedFor_data() {
    QTest::addColumn<double>("seconds");
    QTest::addColumn<QString>("ending");
    QTest::addColumn<QString>("told");  // by a toast, else by the dialog
    QTest::addColumn<bool>("isKept");
    QTest::newRow("saved") << 4.5 << "save" << QString() << true;
    QTest::newRow("dropped") << 4.5 << "drop" << QString() << false;
    QTest::newRow("too short") << 0.5 << "save"
                               << "recording_too_short" << false;
    QTest::newRow("tile closed") << 4.5 << "leave"
                                 << "the_video_you_recorded_is_save_to" << true;
}

void TileActionsTest::recording_endsAsAskedFor() {
    QFETCH(const double, seconds);
    QFETCH(const QString, ending);
    QFETCH(const QString, told);
    QFETCH(const bool, isKept);
    const int before = files(KvFileUtils::videoPath, "*.mp4").size();
    double recorded = 0.0;
    const auto connection = connect(m_tile.get(), &KvDevicePlayerView::updateRecordTimeSignal, this,
                                    [&recorded](double now) { recorded = now; });
    ui()->button(Tile::kRecord)->click();
    QVERIFY(ui()->recordView()->isVisible());
    QTRY_VERIFY_WITH_TIMEOUT(recorded >= int(seconds), kTimeoutMs);
    QTest::qWait(int(1000 * (seconds - int(seconds))));
    disconnect(connection);
    if (ending == QLatin1String("save"))
        ui()->recordView()->saveButton()->click();
    else if (ending == QLatin1String("drop"))
        ui()->recordView()->cancelButton()->click();
    else
        m_tile->stopPlay();
    QTRY_VERIFY(ui()->recordView()->isHidden() && ui()->button(Tile::kRecord)->state() == 1);
    if (!told.isEmpty())
        QTRY_VERIFY(label(told));
    else if (isKept)
        QTRY_COMPARE(m_clerk.seen.join(kGap), QStringLiteral("KvDirectoryDialog"));
    QTRY_COMPARE(files(KvFileUtils::videoPath, "*.mp4").size() - before, int(isKept));
}

void TileActionsTest::snapshot_isSaved_alsoWhenItsFolderIsGone() {
    KvPushButton* capture = ui()->button(Tile::kCapture);
    capture->click();
    QCOMPARE(m_clerk.seen.join(kGap), QStringLiteral("KvDirectoryDialog"));
    const QStringList saved = files(KvFileUtils::screenshotPath, "*.jpg");
    QCOMPARE(saved.size(), 1);
    const QString folder = KvFileUtils::screenshotPath(m_tile->device()->uid());
    QCOMPARE(QImage(folder + QLatin1Char('/') + saved[0]).size(), QSize(640, 360));

    QVERIFY(QDir(folder).removeRecursively());
    KvConfigure().setString(orvelle::settings::kMediaRoot, QStringLiteral("/proc/nowhere"));
    m_clerk.isAgreeing = false;
    capture->click();
    QCOMPARE(m_clerk.seen.join(kGap), QStringLiteral("KvDirectoryDialog KvAlertDialog"));
    m_clerk.seen.clear();
    m_clerk.isAgreeing = true;
    capture->click();
    QCOMPARE(m_clerk.seen.join(kGap), QStringLiteral("KvAlertDialog KvDirectoryDialog"));
    QCOMPARE(files(KvFileUtils::screenshotPath, "*.jpg").size(), 1);
}

void TileActionsTest::lostPicture_stays_underItsSign() {
    const auto hasPicture = [this] {
        const QImage picture = ui()->videoView()->grabView();
        return qGray(picture.pixel(picture.width() / 2, picture.height() / 2)) > 32;
    };
    QTRY_VERIFY(hasPicture());
    m_cameras->process().kill();
    QTRY_VERIFY_WITH_TIMEOUT(label(QStringLiteral("reconnecting")), kTimeoutMs);
    QVERIFY(hasPicture());
    QVERIFY(m_cameras->process().start());
    QTRY_VERIFY_WITH_TIMEOUT(!label(QStringLiteral("reconnecting")), kTimeoutMs);
    QVERIFY(hasPicture() && m_tile->device()->isOnline());
}

static const orvelle::test::RegisterSuite<TileActionsTest> kTileActionsTest;

#include "tile_actions_test.moc"
