#pragma once

#include <QMainWindow>
#include <QPointer>

#include "device/device.h"
#include "device/device_group.h"
#include "ui/widgets/toast.h"
#include "update/updater.h"

class KvDeviceGroupPopMenu;
class KvTUTKDevice;
class MainWindowUI;

namespace orvelle {
class EntryMenu;
class NoticeBar;
struct InstallerProof;
}  // namespace orvelle

/// The one top-level window: title bar, side bar, camera list, and either the welcome page or the
/// live pictures of one list entry. What the user does there becomes calls into the device
/// manager. Interface thread.
class MainWindow : public QMainWindow {
    Q_OBJECT

public:
    explicit MainWindow(QWidget* parent = nullptr);
    ~MainWindow() override;

    /// Stops what plays and lets go of every camera; before cameras are cleared.
    void releaseDevices();

    /// The window's size on a screen of that size, and the least it can have there.
    static QSize defaultSize(const QSize& screen);

protected:
    bool event(QEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;
    void closeEvent(QCloseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private slots:
    void _onClickAllCamera(bool);
    void _onCilckSdcard(bool);
    void _onClickDevice(KvDeviceGroup* group);
    void _onRightClickDevice(KvDeviceGroup* group, int x, int y);
    void _onDoubleClickDevice(KvDeviceGroup* group);
    void _onClickDeviceItemEdit(KvDeviceGroup* group);
    void _onRequestFullscreen(bool fullscreen);
    void _onUnbindDevice(KvDevice* device);
    void _onPreviewDeviceGroupInfoChanged(KvDeviceGroup* group);
    void _onClickCamerasAddButton();
    void _onClickSearch(const QString& code);
    void _onAddDevice(const QString& code);
    void _onClickAddGroup();
    void _onClickSearchDevice(KvTUTKDevice* device);
    void _onClickMinilizedButton(bool);
    void _onClickMaxinilizedButton(bool);
    void _onClickCloseButton(bool);
    void _onTitleViewMouseRelease();
    void _onClickHelpButton(bool);
    void _onClickLogo(bool);
    void _onClickHelpMenu();
    void _onClickLanguage(const QString& language);
    void _onClickLog();
    void _onClickEditGroup(bool);
    void _onClickRemoveGroup(bool);
    void _onClickTopGroup(bool);
    void _onClickEnterCode(bool);
    void _onEnterCode(KvDevice* device);
    void _onDeviceGroupThumbUpdate(KvDeviceGroup* group);
    void _onClickDeviceGroupMenu(KvDeviceGroup* group);
    void _onReadUpdateInfo(KvUpdateInfo* info);

private:
    void connectTitleBar();
    void connectCameras();
    void connectContent();
    void connectManager();
    void setDefaultGeometry();
    /// Where the window is, before it is maximised or fills the screen.
    void rememberPlace();
    /// What rememberPlace() saw; the default place when it was never asked.
    void restorePlace(bool wasMaximised);
    /// Shows what the manager lists. What is being watched goes on while it is listed; else the
    /// welcome page comes.
    void refresh();
    void showEntries();
    void updateEntries();
    void showGroup(KvDeviceGroup* group);
    void searchNetwork();
    /// False when the code is worth another try: it is mistyped, refused, or the user cancelled.
    bool addByCode(const QString& code);
    void showAddOutcome(int status, orvelle::DeviceState failure);
    void toastOverContent(const QString& text);
    void inform(const QString& text);
    void editGroup(KvDeviceGroup& group);
    void renameCamera(KvDeviceGroup& entry);
    void removeEntry(KvDeviceGroup* entry);
    /// How many recordings run that end when the entry is removed.
    int recordingsOf(const KvDeviceGroup& entry) const;
    bool isDownloadOf(const KvDeviceGroup& entry) const;
    /// Asks where recordings or a download run that end now.
    bool mayEndWhatRuns();
    void releaseEntry(KvDeviceGroup& entry);
    void connectRecordings();
    void tellRecordings();
    /// What went wrong with those that ended on the way out; returns once the user has read it.
    void tellLastRecordings();
    void reportUnsaved();
    void tellWriteFailure();
    void tellLink();
    void lookForUpdate();
    /// Once nothing else is in front.
    void offerUpdate();
    void downloadUpdate(const KvUpdateInfo& info);
    /// Leaves the program once the installer runs, unless the user would rather have what is being
    /// recorded go on; else what to tell the user.
    QString startInstaller(const QString& path, const orvelle::InstallerProof& proof);
    bool wantsToRetry(const QString& failure);
    /// The one way out that asks: every close button, key and menu comes here.
    void closeProgram();
    /// The same without the question.
    void exitProgram();

    MainWindowUI* m_ui;  ///< child
    KvToast m_toast;
    orvelle::NoticeBar* m_recordingNotice = nullptr;  ///< child
    orvelle::NoticeBar* m_linkNotice = nullptr;       ///< child, while no camera can be reached
    KvUpdater m_updater;
    KvUpdateInfo* m_update = nullptr;  ///< of the updater; a newer version that is to be offered
    KvDeviceGroupPopMenu* const m_groupMenu;    ///< child
    orvelle::EntryMenu* m_entryMenu = nullptr;  ///< child, made when first needed
    QPointer<KvDeviceGroup> m_menuEntry;        ///< for which the menu was last opened
    QRect m_placeBefore;                        ///< of the ordinary window
    bool m_wasMaximised = false;
    bool m_isClosing = false;
};
