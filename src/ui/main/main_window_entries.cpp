#include <QtDebug>

#include "core/log.h"
#include "device/device_manager.h"
#include "ui/dialogs/alert_dialog.h"
#include "ui/dialogs/device_add_dialog.h"
#include "ui/dialogs/device_delete_dialog.h"
#include "ui/dialogs/device_search_dialog.h"
#include "ui/dialogs/input_dialog.h"
#include "ui/list/cameras_view.h"
#include "ui/list/device_group_pop_menu.h"
#include "ui/list/device_group_select_dialog.h"
#include "ui/list/device_search_view.h"
#include "ui/list/device_state_text.h"
#include "ui/main/entry_menu.h"
#include "ui/main/main_window.h"
#include "ui/main/main_window_ui.h"
#include "ui/palette.h"
#include "ui/preview/devices_preview.h"
#include "ui/preview/grid_layout.h"
#include "ui/preview/recording_question.h"
#include "ui/widgets/notice_bar.h"
#include "ui/widgets/text.h"
#include "ui/widgets/toast_dialog.h"

using orvelle::kLogInfo;
using orvelle::log;
using orvelle::text;
using orvelle::textKey;

namespace {

constexpr int kToastDialogMs = 3000;
constexpr int kToastHorizontalPadding = 50;
constexpr int kToastVerticalPadding = 8;
constexpr int kLinkNoticeBottom = 76;  // above the other one

KvDeviceManager* manager() {
    return KvDeviceManager::instance();
}

// Queued clicks may come after their entry is gone.
bool isListed(const KvDeviceGroup* group) {
    return group && manager() && manager()->groups().contains(const_cast<KvDeviceGroup*>(group));
}

const char* failureKey(orvelle::DeviceState failure) {
    switch (failure) {
        case orvelle::DeviceState::kWrongPassword:
            return textKey("the_camera_refused_the_password");
        case orvelle::DeviceState::kWrongVersion:
            return textKey("the_camera_speaks_another_version");
        case orvelle::DeviceState::kFull:
            return textKey("the_camera_serves_too_many_viewers");
        case orvelle::DeviceState::kRefusedForNow:
            return textKey("the_camera_takes_no_login_for_now");
        case orvelle::DeviceState::kRefused:
            return textKey("the_camera_refused_the_connection");
        case orvelle::DeviceState::kNoNetwork:
            return textKey("this_computer_is_in_no_network");
        case orvelle::DeviceState::kNoFreeChannel:
            return textKey("too_many_cameras_are_connected");
        case orvelle::DeviceState::kNeverTried:
            return textKey("device_code_error_please_bind_the_device_on_mobile_phone_first");
        default:
            return textKey("the_camera_cannot_be_reached");
    }
}

/// Why a code is no new one of that camera; empty when it may be.
QString codeRefusal(const QString& uid, const QString& code) {
    const auto decoded = orvelle::CameraRecord::fromDeviceCode(code);
    if (decoded.uid.isEmpty() || decoded.password.isEmpty())
        return text(failureKey(orvelle::DeviceState::kNeverTried));
    if (decoded.uid != uid)
        return text("this_code_is_of_another_camera");
    const auto* device =
        qobject_cast<KvTUTKDevice*>(manager() ? manager()->findDevice(uid) : nullptr);
    return device && device->password() == decoded.password ? text("this_code_is_the_refused_one")
                                                            : QString();
}

QList<KvDeviceGroup*> groupsWith(const KvDeviceGroup& camera) {
    QList<KvDeviceGroup*> groups;
    for (KvDeviceGroup* group : manager()->groups()) {
        if (group->type() == KvDeviceGroup::kGroup &&
            group->uids().contains(camera.uids().value(0)))
            groups.append(group);
    }
    return groups;
}

}  // namespace

void MainWindow::showEntries() {
    const QList<KvDeviceGroup*> groups = manager() ? manager()->groups() : QList<KvDeviceGroup*>();
    m_ui->cameras()->setGroups(groups);
    if (isListed(m_ui->preview()->group()))
        m_ui->cameras()->selectGroup(m_ui->preview()->group());
    m_ui->showCameras(!groups.isEmpty());
}

/// What came or went by itself leaves alone what the user is at.
void MainWindow::updateEntries() {
    const QList<KvDeviceGroup*> groups = manager() ? manager()->groups() : QList<KvDeviceGroup*>();
    if (groups.isEmpty() == m_ui->cameras()->isEmpty())
        m_ui->cameras()->replaceGroups(groups);
    else
        showEntries();
}

void MainWindow::refresh() {
    KvDeviceGroup* const watched = m_ui->preview()->group();
    const bool isLeft = isListed(watched) && watched->firstDevice();
    if (isLeft)
        m_ui->preview()->updateGroup();
    else
        releaseDevices();
    showEntries();
    m_ui->showPreview(isLeft);
}

void MainWindow::showGroup(KvDeviceGroup* group) {
    if (!isListed(group))
        return;
    if (!group->firstDevice()) {
        inform(text("no_camera_of_this_entry_is_known"));
        return;
    }
    m_ui->hideHelpMenu();
    const KvDeviceGroup* const watched = m_ui->preview()->group();
    if (group != watched && !mayEndWhatRuns()) {
        showEntries();
        return;
    }
    if (!isListed(group))
        return;
    m_ui->showPreview(true);
    m_ui->preview()->setGroup(group);
}

void MainWindow::_onClickDevice(KvDeviceGroup* group) {
    qDebug("_onClickDevice");
    if (!isListed(group))
        return;
    group->setThumbnailReady(false);
    m_ui->cameras()->updateGroup(group);
    showGroup(group);
}

void MainWindow::_onDoubleClickDevice(KvDeviceGroup* group) {
    _onClickDevice(group);
}

void MainWindow::_onClickDeviceGroupMenu(KvDeviceGroup* group) {
    showGroup(group);
    if (m_ui->preview()->group() == group)
        m_ui->cameras()->selectGroup(group);
}

void MainWindow::_onDeviceGroupThumbUpdate(KvDeviceGroup* group) {
    m_ui->cameras()->updateGroup(group);
}

void MainWindow::_onPreviewDeviceGroupInfoChanged(KvDeviceGroup*) {}

void MainWindow::_onRightClickDevice(KvDeviceGroup* group, int, int) {
    if (!isListed(group))
        return;
    if (!m_entryMenu) {
        m_entryMenu = new orvelle::EntryMenu(this);
        connect(m_entryMenu->editAction(), &QAction::triggered, this,
                &MainWindow::_onClickEditGroup);
        connect(m_entryMenu->removeAction(), &QAction::triggered, this,
                &MainWindow::_onClickRemoveGroup);
        connect(m_entryMenu->topAction(), &QAction::triggered, this, &MainWindow::_onClickTopGroup);
        connect(m_entryMenu->codeAction(), &QAction::triggered, this,
                &MainWindow::_onClickEnterCode);
    }
    m_entryMenu->setGroupType(group->type());
    m_entryMenu->setCodeOffered(orvelle::needsNewCode(*group));
    m_menuEntry = group;
    m_entryMenu->exec(m_ui->cameras()->menuPosition(group));
}

void MainWindow::_onClickDeviceItemEdit(KvDeviceGroup* group) {
    if (!isListed(group))
        return;
    if (group->type() == KvDeviceGroup::kGroup) {
        _onRightClickDevice(group, 0, 0);
        return;
    }
    m_groupMenu->setGroups(groupsWith(*group));
    m_groupMenu->open(m_ui->cameras()->menuPosition(group));
}

void MainWindow::_onClickEditGroup(bool) {
    if (!isListed(m_menuEntry))
        return;
    if (m_menuEntry->type() == KvDeviceGroup::kGroup)
        editGroup(*m_menuEntry);
    else
        renameCamera(*m_menuEntry);
}

void MainWindow::editGroup(KvDeviceGroup& group) {
    KvDeviceGroupSelectDialog dialog(&group, this);
    if (dialog.execCentred(m_ui->contentLeft()) != QDialog::Accepted || !isListed(&group))
        return;
    const auto edited = dialog.takeGroup();
    const bool isWatched = m_ui->preview()->group() == &group;
    if (isWatched &&
        !orvelle::mayEndRecordings(m_ui->preview()->recordingsBut(edited->devices()), this))
        return;
    edited->setLayout(orvelle::usableLayout(group.layout(), edited->devices().size()));
    group.copyFrom(*edited);
    group.setName(edited->name());
    if (!group.saveLater())
        reportUnsaved();
    m_ui->cameras()->updateGroup(&group);
    if (isWatched && m_ui->preview()->group() == &group)
        m_ui->preview()->reloadGroup();
}

void MainWindow::renameCamera(KvDeviceGroup& entry) {
    KvInputDialog dialog(text("please_input_device_name"), text("please_input_device_name"), this);
    dialog.setMaxLength(KvDeviceGroup::kMaxNameLength);
    dialog.setTextRequired(true);
    dialog.setText(entry.name());
    if (dialog.execCentred(m_ui->contentLeft()) != QDialog::Accepted || !isListed(&entry))
        return;
    const QString name = dialog.text().trimmed();
    if (name.size() > KvDeviceGroup::kMaxNameLength) {
        m_toast.show(this, text("the_max_length_of_name_is_20_characters"), KvToast::kBottomCentre,
                     orvelle::palette::kToastMs);
        return;
    }
    KvDevice* device = entry.firstDevice();
    if (device)
        device->setName(name);
    entry.setName(name);
    const bool isEntrySaved = entry.saveLater();
    if ((device && !device->saveLater()) || !isEntrySaved)
        reportUnsaved();
    if (device && manager())
        manager()->nameMediaFolder(*device);
    m_ui->cameras()->updateGroup(&entry);
    m_ui->preview()->updateNames();
}

void MainWindow::_onClickRemoveGroup(bool) {
    if (!isListed(m_menuEntry))
        return;
    const bool isGroup = m_menuEntry->type() == KvDeviceGroup::kGroup;
    QString what =
        isGroup ? text("do_you_want_to_remove_group")
                : text(
                      "it_will_automatically_delete_all_local_information_after_the_camera_is_"
                      "unlinked");
    const QString ending =
        orvelle::endingText(recordingsOf(*m_menuEntry), isDownloadOf(*m_menuEntry));
    if (!ending.isEmpty())
        what += QLatin1Char('\n') + ending;
    KvAlertDialog question(what, this);
    if (question.execCentred(m_ui->contentLeft()) == QDialog::Accepted)
        removeEntry(m_menuEntry);
}

int MainWindow::recordingsOf(const KvDeviceGroup& entry) const {
    const KvDevicesPreview& preview = *m_ui->preview();
    if (preview.group() == &entry)
        return preview.runningRecordings();
    if (entry.type() == KvDeviceGroup::kGroup || !preview.group())
        return 0;
    QList<KvDevice*> staying = preview.group()->devices();
    staying.removeAll(entry.firstDevice());
    return preview.recordingsBut(staying);
}

bool MainWindow::isDownloadOf(const KvDeviceGroup& entry) const {
    const KvDevicesPreview& preview = *m_ui->preview();
    if (preview.group() == &entry)
        return preview.isDownloading();
    return entry.type() != KvDeviceGroup::kGroup && entry.firstDevice() &&
           preview.isDownloading(entry.firstDevice());
}

/// What else is being watched goes on.
void MainWindow::releaseEntry(KvDeviceGroup& entry) {
    if (m_ui->preview()->group() == &entry)
        releaseDevices();
    else if (entry.type() != KvDeviceGroup::kGroup)
        m_ui->preview()->releaseDevice(entry.firstDevice());
}

void MainWindow::removeEntry(KvDeviceGroup* entry) {
    if (!isListed(entry))
        return;
    releaseEntry(*entry);
    log("start remove group\n", kLogInfo);
    KvTUTKDeviceDeleteDialog dialog(entry, this);
    dialog.execCentred(m_ui->contentLeft());
    if (!dialog.areFilesGone())
        reportUnsaved();
    refresh();
}

void MainWindow::_onUnbindDevice(KvDevice* device) {
    releaseDevices();
    if (manager())
        removeEntry(manager()->findDeviceGroup(device));
}

void MainWindow::_onClickTopGroup(bool) {
    if (!isListed(m_menuEntry))
        return;
    m_menuEntry->setGroupIndex(-1);
    manager()->reorderGroups();
    refresh();
}

void MainWindow::_onClickAddGroup() {
    KvDeviceGroupSelectDialog dialog(this);
    if (dialog.execCentred(m_ui->contentLeft()) != QDialog::Accepted || !manager())
        return;
    auto group = dialog.takeGroup();
    const KvDeviceGroup* const added = group.get();
    if (manager()->addGroup(std::move(group)))
        qDebug("group -> id = %d", added->groupId());
    else
        reportUnsaved();
    refresh();
}

void MainWindow::_onClickCamerasAddButton() {
    QString code;
    do {
        KvInputDialog dialog(
            text("please_input_device_code_which_showing_on_your_phones_application"),
            text("please_input_device_code"), this);
        dialog.setText(code);
        if (dialog.execCentred(m_ui->contentLeft()) != QDialog::Accepted)
            return;
        code = dialog.text();
    } while (!addByCode(code));
}

void MainWindow::_onAddDevice(const QString& code) {
    _onClickSearch(code);
}

void MainWindow::_onClickSearch(const QString& code) {
    m_ui->welcomePage()->clear();
    if (!addByCode(code))
        m_ui->welcomePage()->setCode(code);
}

void MainWindow::_onClickEnterCode(bool) {
    if (isListed(m_menuEntry) && m_menuEntry->firstDevice())
        _onEnterCode(m_menuEntry->firstDevice());
}

void MainWindow::_onEnterCode(KvDevice* device) {
    const QString uid = device->uid();
    const QString title = text("enter_the_new_device_code_of").arg(device->displayName());
    QString code;
    do {
        KvInputDialog dialog(title, text("please_input_device_code"), this);
        dialog.setTextRequired(true);
        dialog.setText(code);
        dialog.setCheck([&uid](const QString& typed) { return codeRefusal(uid, typed); });
        if (dialog.execCentred(m_ui->contentLeft()) != QDialog::Accepted)
            return;
        code = dialog.text();
    } while (!addByCode(code));
}

bool MainWindow::addByCode(const QString& code) {
    if (!manager())
        return false;
    const auto decoded = orvelle::CameraRecord::fromDeviceCode(code);
    if (decoded.uid.isEmpty() || decoded.password.isEmpty()) {
        toastOverContent(text(failureKey(orvelle::DeviceState::kNeverTried)));
        return false;
    }
    KvTUTKDeviceAddDialog dialog(manager()->reaper(), this);
    dialog.start(code);
    if (dialog.execCentred(m_ui->contentLeft()) != QDialog::Accepted)
        return false;
    showAddOutcome(dialog.status(), dialog.failure());
    return dialog.status() != KvTUTKDeviceAddDialog::kFailed;
}

void MainWindow::showAddOutcome(int status, orvelle::DeviceState failure) {
    switch (status) {
        case KvTUTKDeviceAddDialog::kExists:
            inform(text("camera_exists"));
            break;
        case KvTUTKDeviceAddDialog::kChanged:
            // Tiles that wait for the camera find it by themselves.
            inform(text("the_new_password_is_saved"));
            break;
        case KvTUTKDeviceAddDialog::kFull:
            inform(text("at_most_32_cameras_can_be_added"));
            break;
        case KvTUTKDeviceAddDialog::kNotSaved:
            inform(text("it_could_not_be_saved"));
            break;
        case KvTUTKDeviceAddDialog::kFailed:
            toastOverContent(text(failureKey(failure)));
            break;
        default:
            refresh();
    }
}

void MainWindow::searchNetwork() {
    if (!manager())
        return;
    KvTUTKDeviceSearchDialog dialog(manager()->reaper(), this);
    if (dialog.execCentred(m_ui->contentLeft()) == QDialog::Accepted)
        _onClickCamerasAddButton();
}

void MainWindow::_onClickSearchDevice(KvTUTKDevice*) {
    refresh();
}

void MainWindow::toastOverContent(const QString& text) {
    KvToastDialog toast(this);
    toast.setPaddings(kToastHorizontalPadding, kToastVerticalPadding);
    toast.setText(text);
    toast.run(kToastDialogMs, m_ui->contentLeft());
}

void MainWindow::inform(const QString& text) {
    KvAlertDialog news(text, this);
    news.setCancelVisible(false);
    news.execCentred(m_ui->contentLeft());
}

void MainWindow::connectManager() {
    m_linkNotice = new orvelle::NoticeBar(this, kLinkNoticeBottom);
    if (!manager())
        return;
    connect(manager(), &KvDeviceManager::listChanged, this, &MainWindow::updateEntries);
    connect(manager(), &KvDeviceManager::writeFailed, this, &MainWindow::tellWriteFailure);
    connect(manager(), &KvDeviceManager::linkChanged, this, &MainWindow::tellLink);
    // What went wrong while there was no window.
    QMetaObject::invokeMethod(
        this,
        [this] {
            tellWriteFailure();
            tellLink();
        },
        Qt::QueuedConnection);
    if (manager()->devicesSnapshot().size() > KvDeviceManager::kMaxDevices)
        m_recordingNotice->add(text("more_than_32_cameras_are_listed"));
}

void MainWindow::tellWriteFailure() {
    // The next window tells, if there is one.
    if (!m_isClosing && manager() && manager()->takeWriteFailure())
        reportUnsaved();
}

void MainWindow::tellLink() {
    if (manager() && manager()->linkResult() < 0)
        m_linkNotice->add(text("no_connection_can_be_made"));
    else
        m_linkNotice->dismiss();
}

void MainWindow::reportUnsaved() {
    m_toast.show(this, text("it_could_not_be_saved"), KvToast::kBottomCentre,
                 orvelle::palette::kToastMs);
}
