#pragma once

#include <QList>
#include <QPointer>
#include <QTimer>
#include <QWidget>

#include "device/device_group.h"

class KvCamerasViewUI;
class KvLVItemView;

/// The camera list: entries by mode and filter, with their states. Interface thread.
///
/// Entries are borrowed; one that dies is left out from then on.
class KvCamerasView : public QWidget {
    Q_OBJECT
public:
    enum Mode { kAllCameras = 0, kSingleCameras = 1, kGroups = 2 };

    explicit KvCamerasView(QWidget* parent = nullptr);

    /// Shows the entries of the current mode, without filter and selection.
    void setGroups(const QList<KvDeviceGroup*>& groups);
    /// The same after entries came or went by themselves: filter and selection stay.
    void replaceGroups(const QList<KvDeviceGroup*>& groups);
    bool isEmpty() const { return m_groups.isEmpty(); }
    /// The states stay as they are shown: from now on no camera is looked at.
    void freezeStates();
    /// Shows an entry anew, and those that share a camera with it.
    void updateGroup(KvDeviceGroup* group);
    void setMode(int mode);
    int mode() const { return m_mode; }
    /// Highlights an entry as if it had been clicked; null for none.
    void selectGroup(KvDeviceGroup* group);
    /// The list, or the field above while that is empty. No focus proxy: the Tab key would pass
    /// over what comes before one.
    void focusList();
    /// On the screen, for the menu of an entry: the mouse when it is there, else the item's middle.
    QPoint menuPosition(const KvDeviceGroup* group) const;

signals:
    void rightClickDevice(KvDeviceGroup* group, int x, int y);
    void clickDevice(KvDeviceGroup* group);
    void doubleClickDevice(KvDeviceGroup* group);
    void clickDeviceEdit(KvDeviceGroup* group);
    void clickAddDevice();
    void clickAddGroup();
    /// The button that looks for cameras on the local network.
    void clickSearchDevices();

protected:
    void resizeEvent(QResizeEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private slots:
    void _onRightClickDevice(KvLVItemView* view, int x, int y);
    void _onClickDevice(KvLVItemView* view);
    void _onDoubleClickDevice(KvLVItemView* view);
    void _onClickAdapterEditButton(KvLVItemView* view);
    void _onClickAddDevice(bool checked);
    void _onClickGroup(bool checked);
    void _onClickSearch(bool checked);
    void _onGroupFilterEndedEdit(const QString& text);
    void _onClickTitleLabel();
    void _onClickListLabel();
    void _invokeUpdateStates();

private:
    void connectChildren();
    void takeGroups(const QList<KvDeviceGroup*>& groups);
    void clearFilter();
    bool belongsToMode(const KvDeviceGroup& group) const;
    void showEntries();
    QString noticeFor(int shown) const;
    bool updateGroupedUids();

    KvCamerasViewUI* const m_ui;  ///< child
    QList<QPointer<KvDeviceGroup>> m_groups;
    QPointer<KvDeviceGroup> m_selected;
    int m_mode = kAllCameras;
    QTimer m_stateTimer;  ///< runs while the view is shown
    bool m_areStatesFrozen = false;
};
