#include "core/configure.h"
#include "core/file_utils.h"
#include "device/device.h"
#include "render/video_surface.h"
#include "support/clerk.h"
#include "support/suites.h"
#include "system/camera_set.h"
#include "ui/preview/device_player_view.h"
#include "ui/preview/device_record_view.h"
#include "ui/preview/recording_news.h"
#include "ui/widgets/notice_bar.h"
#include "ui/widgets/push_button.h"
#include "ui/widgets/toast_view.h"
#include "ui/widgets/zoom_control.h"

#include <QDir>
#include <QImage>
#include <QLabel>
#include <QtTest>

using orvelle::RecordingNews;
using orvelle::test::CameraSet;
using orvelle::test::Clerk;
using orvelle::test::waitUntil;
using Tile = KvDevicePlayerViewUI;

namespace {

constexpr int kTimeoutMs = 30000;
constexpr QLatin1Char kGap(' ');

/// A tile's buttons, with a real camera.
class TileActionsTest : public QObject {
    Q_OBJECT
private slots:
    void initTestCase();
    void init();
    void cleanupTestCase();
    void recording_endsAsAskedFor_data();
    void recording_endsAsAskedFor();
    void recording_saysThatItWaits_forItsFolder();
    void recording_goesOn_whenTheCameraIsBack();
    void snapshot_isSaved_alsoWhenItsFolderIsGone();
    void pausedPicture_saysSo_andCanBeSaved();
    void recording_showsItsTime_whileThePictureIsPaused();
    void lostPicture_stays_underItsSign();

private:
    Tile* ui() const { return m_tile->findChild<Tile*>(); }
    /// Starts a recording and waits until it is that long.
    void record(int seconds);
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

void TileActionsTest::record(int seconds) {
    double recorded = 0.0;
    const auto connection = connect(m_tile.get(), &KvDevicePlayerView::updateRecordTimeSignal, this,
                                    [&recorded](double now) { recorded = now; });
    ui()->button(Tile::kRecord)->click();
    QTRY_VERIFY_WITH_TIMEOUT(m_tile->isRecording() && recorded >= seconds, kTimeoutMs);
    disconnect(connection);
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
    QTest::addColumn<int>("seconds");
    QTest::addColumn<QString>("ending");
    QTest::addColumn<bool>("isKept");
    QTest::newRow("saved") << 4 << "save" << true;
    // There is a picture from before the click.
    QTest::newRow("saved at once") << 0 << "save" << true;
    QTest::newRow("dropped") << 4 << "drop" << false;
    QTest::newRow("tile closed") << 4 << "leave" << true;
}

void TileActionsTest::recording_endsAsAskedFor() {
    QFETCH(const int, seconds);
    QFETCH(const QString, ending);
    QFETCH(const bool, isKept);
    const QStringList before = files(KvFileUtils::videoPath, "*.mp4");
    QSignalSpy news(&RecordingNews::instance(), &RecordingNews::ready);
    // Some pictures after the first one.
    QSignalSpy speed(m_tile.get(), &KvDevicePlayerView::updateSpeedLabelSignal);
    QTRY_VERIFY(speed.count() >= 2);
    const QString label =
        KvFileUtils::mediaPath(m_tile->device()->uid()) + QStringLiteral("/Camera.txt");
    QFile::remove(label);
    record(seconds);
    QTRY_VERIFY(QFile::exists(label));
    QVERIFY(ui()->recordView()->isVisible() && m_tile->isRecording());
    if (ending == QLatin1String("save"))
        ui()->recordView()->saveButton()->click();
    else if (ending == QLatin1String("drop"))
        ui()->recordView()->cancelButton()->click();
    else
        m_tile->stopPlay();
    QTRY_VERIFY(ui()->recordView()->isHidden() && ui()->button(Tile::kRecord)->state() == 1);
    if (ending == QLatin1String("leave"))
        QTRY_COMPARE(news.count(), 1);
    else if (isKept)
        QTRY_COMPARE(m_clerk.seen.join(kGap), QStringLiteral("KvDirectoryDialog"));
    QTRY_COMPARE(RecordingNews::instance().pending(), 0);
    QStringList now = files(KvFileUtils::videoPath, "*.mp4");
    for (const QString& name : before)
        now.removeOne(name);
    QCOMPARE(now.size(), int(isKept));
    const RecordingNews::Message message = RecordingNews::instance().takeMessage();
    if (ending == QLatin1String("leave"))
        QVERIFY(message.text.endsWith(now.first()) && !message.isWarning);
    else
        QVERIFY(message.text.isEmpty());
}

void TileActionsTest::recording_saysThatItWaits_forItsFolder() {
    KvPushButton* button = ui()->button(Tile::kRecord);
    button->click();
    button->click();
    QVERIFY(label(QStringLiteral("the_folder_does_not_answer_yet")));
    QTRY_VERIFY(m_tile->isRecording());
    m_tile->stopPlay();
    QTRY_COMPARE(RecordingNews::instance().pending(), 0);
    RecordingNews::instance().takeMessage();
}

void TileActionsTest::recording_goesOn_whenTheCameraIsBack() {
    const int before = files(KvFileUtils::videoPath, "*.mp4").size();
    record(2);
    m_cameras->process().kill();
    const QString notice = QStringLiteral("the_recording_ended_early_and_goes_on_with_the_camera");
    QTRY_VERIFY_WITH_TIMEOUT(label(notice), kTimeoutMs);
    QVERIFY(!m_tile->isRecording());
    QVERIFY(m_cameras->process().start());
    QTRY_VERIFY_WITH_TIMEOUT(m_tile->isRecording(), kTimeoutMs);
    // It stays until it is dismissed.
    QVERIFY(label(notice));
    auto* bar = m_tile->findChild<orvelle::NoticeBar*>();
    bar->findChild<QPushButton*>()->click();
    QVERIFY(!label(notice));
    QTRY_COMPARE(files(KvFileUtils::videoPath, "*.mp4").size(), before + 2);
    m_tile->stopPlay();
    QTRY_COMPARE(RecordingNews::instance().pending(), 0);
    RecordingNews::instance().takeMessage();
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

void TileActionsTest::pausedPicture_saysSo_andCanBeSaved() {
    // One of the same second has the same name.
    QDir folder(KvFileUtils::screenshotPath(m_tile->device()->uid()));
    for (const QString& name : files(KvFileUtils::screenshotPath, "*.jpg"))
        QVERIFY(folder.remove(name));
    QTest::keyClick(m_tile.get(), Qt::Key_Plus);
    QVERIFY(ui()->zoom().isActive());
    QTest::keyClick(m_tile.get(), Qt::Key_Space);
    QVERIFY(label(QStringLiteral("paused_since")));
    QVERIFY(!ui()->button(Tile::kCapture)->isEnabled());
    QTest::keyClick(m_tile.get(), Qt::Key_S);
    QCOMPARE(m_clerk.seen.join(kGap), QStringLiteral("KvDirectoryDialog"));
    QCOMPARE(files(KvFileUtils::screenshotPath, "*.jpg").size(), 1);
    QTest::keyClick(m_tile.get(), Qt::Key_Space);
    QVERIFY(!label(QStringLiteral("paused_since")));
    QVERIFY(ui()->button(Tile::kCapture)->isEnabled() && ui()->zoom().isActive());
    QTest::keyClick(m_tile.get(), Qt::Key_0);
    QVERIFY(!ui()->zoom().isActive());
}

void TileActionsTest::recording_showsItsTime_whileThePictureIsPaused() {
    const auto shown = [this] {
        QStringList texts;
        for (const QLabel* part : ui()->recordView()->findChildren<QLabel*>())
            texts += part->text();
        return texts;
    };
    record(1);
    QTest::keyClick(m_tile.get(), Qt::Key_Space);
    QVERIFY(label(QStringLiteral("paused_since")));
    // The first may still have come with a picture.
    for (int change = 0; change < 2; ++change) {
        const QStringList before = shown();
        QTRY_VERIFY_WITH_TIMEOUT(shown() != before, kTimeoutMs);
    }
    ui()->recordView()->cancelButton()->click();
    QTRY_VERIFY_WITH_TIMEOUT(ui()->recordView()->isHidden(), kTimeoutMs);
    QTest::keyClick(m_tile.get(), Qt::Key_Space);
    QVERIFY(!label(QStringLiteral("paused_since")));
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
