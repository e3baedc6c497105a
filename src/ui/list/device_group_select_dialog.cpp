#include "ui/list/device_group_select_dialog.h"

#include <QLineEdit>
#include <QPushButton>
#include <QScreen>
#include <QtDebug>

#include <algorithm>

#include "device/device_manager.h"
#include "ui/list/device_group_remove_adapter.h"
#include "ui/list/device_group_select_adapter.h"
#include "ui/list/device_group_select_dialog_ui.h"
#include "ui/list/list_view.h"
#include "ui/list/lv_item_view.h"
#include "ui/list/tutk_group_remove_view.h"
#include "ui/palette.h"
#include "ui/widgets/name_width.h"
#include "ui/widgets/text.h"

using orvelle::GroupListAdapter;
using orvelle::textKey;

namespace {

constexpr int kMaxNameWidth = 20;
constexpr int kMinMembers = 2;

struct LayoutRoom {
    int cameras;
    int layout;
};
constexpr LayoutRoom kLayouts[] = {{4, 1}, {6, 3}, {9, 2}, {13, 4}};
constexpr int kLargestLayout = 5;

QList<KvDeviceGroup*> usableCameras() {
    QList<KvDeviceGroup*> cameras;
    if (const auto* manager = KvDeviceManager::instance()) {
        for (KvDeviceGroup* entry : manager->singleCameraGroups()) {
            if (entry->firstDevice())
                cameras.append(entry);
        }
    }
    return cameras;
}

}  // namespace

KvDeviceGroupSelectDialog::KvDeviceGroupSelectDialog(QWidget* parent)
    : KvDeviceGroupSelectDialog(nullptr, parent) {}

KvDeviceGroupSelectDialog::KvDeviceGroupSelectDialog(KvDeviceGroup* group, QWidget* parent)
    : KvDialog(parent), m_ui(new KvDeviceGroupSelectDialogUI(this)), m_cameras(usableCameras()) {
    const QString title = orvelle::text(group ? textKey("edit_group") : textKey("add_group"));
    setAccessibleName(title);
    m_ui->setTitle(title);
    const QSize most = KvDeviceGroupSelectDialogUI::kSize;
    const int room = (parent ? parent : this)->screen()->availableGeometry().height();
    setFixedSize(most.width(), std::min(most.height(), room));
    m_ui->setGeometry(rect());
    m_ui->cameraAdapter()->setGroups(m_cameras);
    if (group)
        showGroup(*group);
    showChosen();
    connectChildren();
    m_ui->nameEdit()->setFocus();
}

void KvDeviceGroupSelectDialog::connectChildren() {
    using Self = KvDeviceGroupSelectDialog;
    connect(m_ui->okButton(), &QPushButton::clicked, this, &Self::_onClickOkButton);
    connect(m_ui->closeButton(), &QPushButton::clicked, this, &Self::_onClickCloseButton);
    connect(m_ui->nameEdit(), &QLineEdit::textChanged, this, &Self::_onNameTextChanged);
    connect(m_ui->cameraList(), &KvListView::clickItemView, this, &Self::_onClickCamera);
    connect(m_ui->cameraList(), &KvListView::doubleClickItemView, this, &Self::_onClickCamera);
    connect(m_ui->chosenAdapter(), &KvDeviceGroupRemoveAdapter::clickItemViewRemove, this,
            &Self::_onClickRemove);
}

void KvDeviceGroupSelectDialog::showGroup(const KvDeviceGroup& group) {
    m_ui->nameEdit()->setText(group.name());
    _onNameTextChanged(group.name());
    for (const KvDevice* device : group.devices()) {
        for (int i = 0; i < m_cameras.size(); ++i) {
            if (m_cameras[i]->firstDevice() != device)
                continue;
            m_ui->cameraList()->selectItem(i);
            m_chosen.append(m_cameras[i]);
        }
    }
}

void KvDeviceGroupSelectDialog::showChosen() {
    m_ui->chosenAdapter()->setGroups(m_chosen);
    m_ui->showCount(m_chosen.size(), KvDeviceGroup::kMaxMembers);
}

void KvDeviceGroupSelectDialog::_onClickCamera(KvLVItemView* view) {
    KvDeviceGroup* camera = GroupListAdapter::groupOf(view);
    const int index = m_ui->cameraAdapter()->indexOf(camera);
    if (!m_ui->cameraList()->isSelected(index))
        drop(camera);
    else if (m_chosen.size() < KvDeviceGroup::kMaxMembers)
        choose(camera);
    else {
        m_ui->cameraList()->deselectItem(index);
        toast("support_16_devices_at_most");
    }
}

void KvDeviceGroupSelectDialog::choose(KvDeviceGroup* camera) {
    if (!camera || m_chosen.contains(camera))
        return;
    m_chosen.append(camera);
    showChosen();
}

void KvDeviceGroupSelectDialog::drop(KvDeviceGroup* camera) {
    m_chosen.removeOne(camera);
    showChosen();
}

void KvDeviceGroupSelectDialog::_onClickRemove(KvTUTKGroupRemoveView* view) {
    KvDeviceGroup* camera = GroupListAdapter::groupOf(view);
    m_ui->cameraList()->deselectItem(m_ui->cameraAdapter()->indexOf(camera));
    drop(camera);
}

void KvDeviceGroupSelectDialog::_onNameTextChanged(const QString& /*text*/) {
    orvelle::cutToWidth(*m_ui->nameEdit(), kMaxNameWidth);
}

void KvDeviceGroupSelectDialog::_onClickOkButton(bool /*checked*/) {
    const QString name = m_ui->nameEdit()->text().trimmed();
    qDebug() << "name =" << name;
    if (name.size() > KvDeviceGroup::kMaxNameLength)
        return toast("the_max_length_of_name_is_20_characters");
    if (name.isEmpty()) {
        m_ui->nameEdit()->setFocus();
        return toast("please_input_group_name");
    }
    if (m_chosen.size() < kMinMembers)
        return toast("select_two_camera_at_least");
    QList<KvDevice*> devices;
    for (const KvDeviceGroup* camera : std::as_const(m_chosen))
        devices.append(camera->firstDevice());
    m_result = std::make_unique<KvDeviceGroup>();
    m_result->setType(KvDeviceGroup::kGroup);
    m_result->setName(name);
    m_result->setDevices(devices);
    m_result->setLayout(layoutFor(devices.size()));
    accept();
}

void KvDeviceGroupSelectDialog::_onClickCloseButton(bool /*checked*/) {
    reject();
}

std::unique_ptr<KvDeviceGroup> KvDeviceGroupSelectDialog::takeGroup() {
    return std::move(m_result);
}

int KvDeviceGroupSelectDialog::layoutFor(int cameras) {
    for (const LayoutRoom& room : kLayouts) {
        if (cameras <= room.cameras)
            return room.layout;
    }
    return kLargestLayout;
}

void KvDeviceGroupSelectDialog::toast(const char* key) {
    // The usual place, at the bottom, would cover the button.
    m_toast.show(this, orvelle::text(key), KvToast::kMiddle, orvelle::palette::kToastMs);
}
