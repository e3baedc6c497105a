#pragma once

#include <QList>

#include <memory>

#include "device/device_group.h"
#include "ui/dialogs/dialog.h"
#include "ui/widgets/toast.h"

class KvDeviceGroupSelectDialogUI;
class KvLVItemView;
class KvTUTKGroupRemoveView;

/// Puts a group together from the cameras that have entries of their own: for a new group, or
/// to edit one, which itself is not touched. Interface thread.
class KvDeviceGroupSelectDialog : public KvDialog {
    Q_OBJECT
public:
    explicit KvDeviceGroupSelectDialog(QWidget* parent = nullptr);
    /// Borrowed, may be null.
    KvDeviceGroupSelectDialog(KvDeviceGroup* group, QWidget* parent);

    /// After exec() returned 1: name, cameras and a layout that has room for them. Once.
    std::unique_ptr<KvDeviceGroup> takeGroup();

    /// The smallest grid layout that has room for `cameras`.
    static int layoutFor(int cameras);

private slots:
    void _onClickOkButton(bool checked);
    void _onClickCloseButton(bool checked);
    void _onNameTextChanged(const QString& text);
    void _onClickCamera(KvLVItemView* view);
    void _onClickRemove(KvTUTKGroupRemoveView* view);

private:
    void connectChildren();
    void showGroup(const KvDeviceGroup& group);
    void choose(KvDeviceGroup* camera);
    void drop(KvDeviceGroup* camera);
    void showChosen();
    void toast(const char* key);

    KvDeviceGroupSelectDialogUI* const m_ui;  ///< child
    KvToast m_toast;
    QList<KvDeviceGroup*> m_cameras;  ///< the entries on the left
    QList<KvDeviceGroup*> m_chosen;   ///< those on the right, in the group's order
    std::unique_ptr<KvDeviceGroup> m_result;
};
