#include "core/configure.h"
#include "core/file_utils.h"
#include "device/device_manager.h"
#include "media/recording_reader.h"
#include "support/clerk.h"
#include "support/small_disk.h"
#include "support/suites.h"
#include "system/camera_set.h"
#include "system/event_loop_probe.h"
#include "ui/main/main_window.h"
#include "ui/main/restart_hook.h"
#include "ui/preview/device_player_view.h"
#include "ui/preview/devices_preview.h"
#include "ui/preview/devices_preview_ui.h"
#include "ui/preview/grid_layout.h"
#include "ui/preview/recording_news.h"
#include "ui/widgets/notice_bar.h"
#include "ui/widgets/push_button.h"
#include "ui/widgets/text.h"
#include "ui/widgets/toast_view.h"

#include <QDeadlineTimer>
#include <QDir>
#include <QLabel>
#include <QMenu>
#include <QTemporaryDir>
#include <QTimer>
#include <QtTest>

#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>
#include <cstring>

using orvelle::NoticeBar;
using orvelle::RecordingNews;
using orvelle::test::CameraSet;
using orvelle::test::Clerk;
using orvelle::test::EventLoopProbe;
using orvelle::test::RecordingReader;
using orvelle::test::runFor;
using orvelle::test::waitUntil;
using Tile = KvDevicePlayerViewUI;

namespace {

constexpr int kTimeoutMs = 60000;
constexpr int kCameras = 4;
constexpr int kSlowSyncMs = 2000;
/// Less than one wait for the disk; a busy machine stays below it, too.
constexpr double kMaxStallMs = kSlowSyncMs * 0.9;

std::atomic<int> s_syncDelayMs{0};
std::atomic<int> s_syncs{0};
std::atomic<int> s_folderDelayMs{0};

int syncSlowly(long call, int file) {
    ++s_syncs;
    QThread::msleep(static_cast<unsigned long>(s_syncDelayMs));
    return static_cast<int>(syscall(call, file));
}

}  // namespace

// In place of the system's own, for the whole program: a disk that takes its time.
extern "C" int fsync(int file) {
    return syncSlowly(SYS_fsync, file);
}

extern "C" int mkdir(const char* path, mode_t mode) noexcept {
    // Of the media, which may lie on a share, and not the program's own.
    if (std::strstr(path, "/Video"))
        QThread::msleep(static_cast<unsigned long>(s_folderDelayMs));
    return static_cast<int>(syscall(SYS_mkdir, path, mode));
}

extern "C" int fdatasync(int file) {
    return syncSlowly(SYS_fdatasync, file);
}

namespace {

/// The ways out of a grid of four recordings, with a disk of which every sync takes two seconds.
class RecordingsEndTest : public QObject {
    Q_OBJECT
private slots:
    void init();
    void cleanup();
    // Before the program is told to quit, after which no menu opens.
    void recordings_goOn_whileTheListChanges();
    void wayOut_asksOnce_tellsOnce_andWaitsForNoDisk_data();
    void wayOut_asksOnce_tellsOnce_andWaitsForNoDisk();
    void fullDisk_isNamed_untilItIsDismissed();

private:
    void takeWayOut(const QByteArray& way);
    KvDeviceGroup* addEntry();
    void chooseInMenu(KvDeviceGroup* entry, const char* key);
    bool recordAll();
    int recording() const;
    QStringList savedFiles() const;
    std::vector<KvDevicePlayerView*> tiles() const;
    KvDevicesPreview* preview() const { return m_window->findChild<KvDevicesPreview*>(); }
    template <class View>
    bool tells(const QString& text) const;

    std::unique_ptr<Clerk> m_clerk;
    std::unique_ptr<CameraSet> m_cameras;
    std::unique_ptr<MainWindow> m_window;
    QStringList m_uids;
    KvDeviceGroup* m_group = nullptr;
    int m_round = 0;
};

}  // namespace

void RecordingsEndTest::init() {
    s_syncDelayMs = 0;
    m_clerk = std::make_unique<Clerk>();
    m_cameras = std::make_unique<CameraSet>(
        QStringLiteral("ENDS%1X").arg(++m_round), kCameras,
        QStringList{QStringLiteral("--demo"), QStringLiteral("--size"), QStringLiteral("360p")});
    QVERIFY(m_cameras->connectAll());
    m_uids.clear();
    for (const KvDevice* device : m_cameras->devices())
        m_uids += device->uid();
    auto group = std::make_unique<KvDeviceGroup>();
    group->setType(KvDeviceGroup::kGroup);
    group->setDevices({m_cameras->devices().begin(), m_cameras->devices().end()});
    group->setLayout(orvelle::kGrid2x2);
    group->save();
    m_group = group.get();
    QVERIFY(KvDeviceManager::instance()->addGroup(std::move(group)));
    m_window = std::make_unique<MainWindow>();
    m_window->show();
    QMetaObject::invokeMethod(m_window.get(), "_onClickDevice", Q_ARG(KvDeviceGroup*, m_group));
}

void RecordingsEndTest::cleanup() {
    s_syncDelayMs = 0;
    m_window.reset();
    RecordingNews::shutDown(QDeadlineTimer(kTimeoutMs));
    m_cameras.reset();
    m_clerk.reset();
}

std::vector<KvDevicePlayerView*> RecordingsEndTest::tiles() const {
    const auto& all = m_window->findChild<KvDevicesPreviewUI*>()->tiles();
    return {all.begin(), all.begin() + kCameras};
}

int RecordingsEndTest::recording() const {
    return preview()->runningRecordings();
}

/// Until each has some pictures.
bool RecordingsEndTest::recordAll() {
    int started = 0;
    for (KvDevicePlayerView* tile : tiles()) {
        QPushButton* button = tile->findChild<Tile*>()->button(Tile::kRecord);
        if (!waitUntil(kTimeoutMs, [button] { return button->isEnabled(); }))
            return false;
        connect(tile, &KvDevicePlayerView::updateRecordTimeSignal, this,
                [&started](double seconds) { started += seconds >= 2.0 && seconds < 3.0; });
        button->click();
    }
    const bool isRecording =
        waitUntil(kTimeoutMs, [&] { return started >= kCameras && recording() == kCameras; });
    for (KvDevicePlayerView* tile : tiles())
        disconnect(tile, &KvDevicePlayerView::updateRecordTimeSignal, this, nullptr);
    return isRecording;
}

QStringList RecordingsEndTest::savedFiles() const {
    QStringList files;
    for (const QString& uid : m_uids) {
        const QDir folder(KvFileUtils::videoPath(uid));
        for (const QString& name : folder.entryList({QStringLiteral("*.mp4")}))
            files += folder.filePath(name);
    }
    return files;
}

template <class View>
bool RecordingsEndTest::tells(const QString& text) const {
    for (const View* view : m_window->findChildren<View*>()) {
        const auto* label = view->template findChild<QLabel*>();
        if (view->isVisible() && label->text().contains(text))
            return true;
    }
    return false;
}

void RecordingsEndTest::wayOut_asksOnce_tellsOnce_andWaitsForNoDisk_data() {
    QTest::addColumn<bool>("isAsked");
    QTest::newRow("tile closed") << true;
    QTest::newRow("card page") << true;
    QTest::newRow("another entry") << true;
    QTest::newRow("group removed") << true;
    QTest::newRow("camera lost") << false;
    QTest::newRow("language") << true;
    QTest::newRow("quit") << true;
}

/// The first camera's own.
KvDeviceGroup* RecordingsEndTest::addEntry() {
    KvDeviceManager* manager = KvDeviceManager::instance();
    if (!manager->findDeviceGroup(m_cameras->devices().front())) {
        auto entry = std::make_unique<KvDeviceGroup>(m_cameras->devices().front());
        entry->setName(QStringLiteral("Door"));
        entry->save();
        if (!manager->addGroup(std::move(entry)))
            return nullptr;
    }
    return manager->findDeviceGroup(m_cameras->devices().front());
}

void RecordingsEndTest::chooseInMenu(KvDeviceGroup* entry, const char* key) {
    QTimer hand;
    hand.callOnTimeout([&] {
        auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
        if (!menu)
            return;
        hand.stop();
        menu->close();
        for (QAction* action : menu->actions()) {
            if (action->text() == orvelle::text(key))
                action->trigger();
        }
    });
    hand.start(5);
    QMetaObject::invokeMethod(m_window.get(), "_onRightClickDevice", Q_ARG(KvDeviceGroup*, entry),
                              Q_ARG(int, 0), Q_ARG(int, 0));
}

void RecordingsEndTest::takeWayOut(const QByteArray& way) {
    const Tile* tile = tiles().front()->findChild<Tile*>();
    if (way == "tile closed")
        tile->button(Tile::kClose)->click();
    else if (way == "card page")
        tile->button(Tile::kSdCard)->click();
    else if (way == "another entry")
        QMetaObject::invokeMethod(m_window.get(), "_onClickDevice",
                                  Q_ARG(KvDeviceGroup*, addEntry()));
    else if (way == "group removed")
        chooseInMenu(m_group, "remove_group");
    else if (way == "camera lost")
        m_cameras->process().kill();
    else if (way == "language")
        QMetaObject::invokeMethod(m_window.get(), "_onClickLanguage",
                                  Q_ARG(QString, QStringLiteral("english")));
    else
        m_window->close();
}

void RecordingsEndTest::wayOut_asksOnce_tellsOnce_andWaitsForNoDisk() {
    QFETCH(const bool, isAsked);
    const QByteArray way = QTest::currentDataTag();
    {
        s_folderDelayMs = kSlowSyncMs;
        const EventLoopProbe probe;
        QVERIFY(recordAll());
        s_folderDelayMs = 0;
        QVERIFY2(probe.worstDelayMs() < kMaxStallMs,
                 qPrintable(QString::number(probe.worstDelayMs())));
    }
    bool isRestarting = false;
    orvelle::setRestartHook([&] { isRestarting = true; });
    // Who declines loses nothing.
    if (isAsked) {
        m_clerk->isAgreeing = false;
        takeWayOut(way);
        QCOMPARE(recording(), kCameras);
        QVERIFY(!isRestarting);
        m_clerk->isAgreeing = true;
        m_clerk->questions.clear();
    }
    s_syncDelayMs = kSlowSyncMs;
    s_syncs = 0;
    QSignalSpy news(&RecordingNews::instance(), &RecordingNews::ready);
    {
        const EventLoopProbe probe;
        takeWayOut(way);
        if (way == "language") {
            QVERIFY(waitUntil(kTimeoutMs, [&] { return isRestarting; }));
            m_window.reset();
            m_window = std::make_unique<MainWindow>();
            m_window->show();
        }
        QVERIFY(waitUntil(kTimeoutMs, [this] { return recording() == 0; }));
        QVERIFY(waitUntil(kTimeoutMs, [] { return RecordingNews::instance().pending() == 0; }));
        qInfo("%s: the event loop stood still for %.0f ms at most", way.constData(),
              probe.worstDelayMs());
        QVERIFY2(probe.worstDelayMs() < kMaxStallMs,
                 qPrintable(QString::number(probe.worstDelayMs())));
    }
    s_syncDelayMs = 0;
    orvelle::setRestartHook(nullptr);
    QVERIFY(s_syncs >= 2 * kCameras);
    QCOMPARE(m_clerk->questions.size(), int(isAsked));
    if (isAsked)
        QVERIFY(
            m_clerk->questions[0].contains(QLatin1String("recordings_are_running_and_end_now")));
    if (way == "camera lost") {
        QVERIFY(tells<NoticeBar>(
            QStringLiteral("the_recording_ended_early_and_goes_on_with_the_camera")));
        QCOMPARE(news.count(), 0);
    } else if (way != "quit") {
        QTRY_COMPARE(news.count(), 1);
        QVERIFY(tells<KvToastView>(QStringLiteral("recordings_were_saved_to")));
    }
    const QStringList files = savedFiles();
    QCOMPARE(files.size(), kCameras);
    for (const QString& file : files) {
        QCOMPARE(orvelle::test::boxesOf(file), QByteArray("ftyp mdat moov"));
        QVERIFY(RecordingReader(file).decodesAllPictures());
    }
}

void RecordingsEndTest::fullDisk_isNamed_untilItIsDismissed() {
    const QTemporaryDir folder;
    const orvelle::test::SmallDisk disk(folder.path(), 3 * 1024);
    if (!disk.isMounted())
        QSKIP("this user may not mount anything");
    KvConfigure().setString(orvelle::settings::kMediaRoot, folder.path());
    QVERIFY(recordAll());
    QVERIFY(waitUntil(kTimeoutMs, [this] { return recording() == 0; }));
    QVERIFY(waitUntil(kTimeoutMs, [] { return RecordingNews::instance().pending() == 0; }));
    // One message of all, in place of a question or a box a camera.
    QVERIFY(waitUntil(kTimeoutMs, [this] { return tells<NoticeBar>(QStringLiteral("_early")); }));
    QVERIFY(tells<NoticeBar>(QStringLiteral("the_disk_is_full")));
    QCOMPARE(m_clerk->seen, QStringList());
    QVERIFY(!savedFiles().isEmpty());
    for (const QString& file : savedFiles())
        QVERIFY(RecordingReader(file).decodesAllPictures());
    KvConfigure().remove(orvelle::settings::kMediaRoot);
}

/// What is being watched, and recorded, has nothing to do with that.
void RecordingsEndTest::recordings_goOn_whileTheListChanges() {
    KvDeviceGroup* const entry = addEntry();
    QVERIFY(recordAll());
    const std::vector<KvDevicePlayerView*> before = tiles();
    QMetaObject::invokeMethod(m_window.get(), "_onClickSearchDevice",
                              Q_ARG(KvTUTKDevice*, nullptr));
    QCOMPARE(recording(), kCameras);
    QVERIFY(preview()->isVisible() && preview()->group() == m_group);
    chooseInMenu(entry, "top");
    QCOMPARE(KvDeviceManager::instance()->groups().first(), entry);
    m_clerk->typed = QStringLiteral("Gate");
    chooseInMenu(entry, "edit_device");
    QCOMPARE(entry->name(), QStringLiteral("Gate"));
    QCOMPARE(m_cameras->devices().front()->displayName(), QStringLiteral("Gate"));
    QCOMPARE(recording(), kCameras);
    QVERIFY(preview()->isVisible() && preview()->group() == m_group);
    // Two change places, and one goes.
    m_group->swapDevices(0, 3);
    preview()->reloadGroup();
    QCOMPARE(recording(), kCameras);
    QCOMPARE(tiles()[0], before[3]);
    preview()->releaseDevice(m_cameras->devices()[1]);
    QCOMPARE(recording(), kCameras - 1);
    QCOMPARE(m_clerk->questions, QStringList());
}

static const orvelle::test::RegisterSuite<RecordingsEndTest> kRecordingsEndTest;

#include "recordings_end_test.moc"
