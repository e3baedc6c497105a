#include "ui/list/cameras_view.h"

#include <QCursor>
#include <QLineEdit>
#include <QPushButton>
#include <QSet>
#include <QSignalBlocker>
#include <QtDebug>

#include <algorithm>

#include "ui/list/cameras_view_ui.h"
#include "ui/list/device_group_adapter.h"
#include "ui/list/group_item_view.h"
#include "ui/list/list_view.h"
#include "ui/list/mode_menu.h"
#include "ui/widgets/click_label.h"
#include "ui/widgets/text.h"

namespace {

constexpr int kStateIntervalMs = 1000;

bool shareCamera(const KvDeviceGroup& left, const KvDeviceGroup& right) {
    const QStringList uids = left.uids();
    const QStringList others = right.uids();
    return std::any_of(uids.begin(), uids.end(),
                       [&others](const QString& uid) { return others.contains(uid); });
}

}  // namespace

KvCamerasView::KvCamerasView(QWidget* parent) : QWidget(parent), m_ui(new KvCamerasViewUI(this)) {
    m_stateTimer.setInterval(kStateIntervalMs);
    m_ui->showMode(m_mode);
    connectChildren();
    showEntries();
}

void KvCamerasView::connectChildren() {
    const KvListView* list = m_ui->list();
    connect(list, &KvListView::clickItemView, this, &KvCamerasView::_onClickDevice);
    connect(list, &KvListView::doubleClickItemView, this, &KvCamerasView::_onDoubleClickDevice);
    connect(list, &KvListView::rightClickItemView, this, &KvCamerasView::_onRightClickDevice);
    connect(m_ui->adapter(), &KvDeviceGroupAdapter::clickEditButton, this,
            &KvCamerasView::_onClickAdapterEditButton);
    connect(m_ui->addButton(), &QPushButton::clicked, this, &KvCamerasView::_onClickAddDevice);
    connect(m_ui->groupButton(), &QPushButton::clicked, this, &KvCamerasView::_onClickGroup);
    connect(m_ui->searchButton(), &QPushButton::clicked, this, &KvCamerasView::_onClickSearch);
    connect(m_ui->filter(), &QLineEdit::textChanged, this, &KvCamerasView::_onGroupFilterEndedEdit);
    connect(m_ui->title(), &KvClickLabel::click, this, &KvCamerasView::_onClickTitleLabel);
    for (const ClickLabel* label : m_ui->modeMenu()->labels())
        connect(label, &ClickLabel::click, this, &KvCamerasView::_onClickListLabel);
    connect(&m_stateTimer, &QTimer::timeout, this, &KvCamerasView::_invokeUpdateStates);
}

void KvCamerasView::setGroups(const QList<KvDeviceGroup*>& groups) {
    m_selected.clear();
    clearFilter();
    takeGroups(groups);
}

void KvCamerasView::replaceGroups(const QList<KvDeviceGroup*>& groups) {
    takeGroups(groups);
}

void KvCamerasView::takeGroups(const QList<KvDeviceGroup*>& groups) {
    m_groups.clear();
    for (KvDeviceGroup* group : groups)
        m_groups.append(group);
    updateGroupedUids();
    showEntries();
}

void KvCamerasView::freezeStates() {
    m_areStatesFrozen = true;
    m_stateTimer.stop();
}

void KvCamerasView::setMode(int mode) {
    m_mode = std::clamp<int>(mode, kAllCameras, kGroups);
    m_ui->closeModeMenu();
    m_ui->showMode(m_mode);
    clearFilter();
    showEntries();
}

void KvCamerasView::clearFilter() {
    const QSignalBlocker blocker(m_ui->filter());
    m_ui->filter()->clear();
}

bool KvCamerasView::belongsToMode(const KvDeviceGroup& group) const {
    const bool isGroup = group.type() == KvDeviceGroup::kGroup;
    return m_mode == kAllCameras || isGroup == (m_mode == kGroups);
}

void KvCamerasView::showEntries() {
    const QString filter = m_ui->filter()->text().toLower();
    QList<KvDeviceGroup*> shown;
    for (const QPointer<KvDeviceGroup>& group : std::as_const(m_groups)) {
        if (group && belongsToMode(*group) && group->name().toLower().contains(filter))
            shown.append(group);
    }
    m_ui->adapter()->setGroups(shown);
    m_ui->showNotice(noticeFor(shown.size()));
    m_ui->list()->selectItem(m_ui->adapter()->indexOf(m_selected));
}

QString KvCamerasView::noticeFor(int shown) const {
    if (shown > 0)
        return {};
    if (!m_ui->filter()->text().isEmpty())
        return orvelle::text("nothing_found");
    return orvelle::text(
        m_mode == kGroups && !m_groups.isEmpty()
            ? orvelle::textKey("no_groups_yet")
            : orvelle::textKey(
                  "no_cameras_are_currently_attached_please_bind_the_device_on_the_phone"));
}

bool KvCamerasView::updateGroupedUids() {
    QSet<QString> uids;
    for (const QPointer<KvDeviceGroup>& group : std::as_const(m_groups)) {
        if (!group || group->type() != KvDeviceGroup::kGroup)
            continue;
        for (const QString& uid : group->uids())
            uids.insert(uid);
    }
    if (uids == m_ui->adapter()->groupedUids())
        return false;
    m_ui->adapter()->setGroupedUids(uids);
    return true;
}

void KvCamerasView::updateGroup(KvDeviceGroup* group) {
    const KvDeviceGroupAdapter* adapter = m_ui->adapter();
    const int index = adapter->indexOf(group);
    qDebug("update index (%d)", index);
    const bool isKnown = group && m_groups.contains(group);
    const bool all = isKnown && updateGroupedUids();
    for (const KvLVItemView* view : m_ui->list()->itemViews()) {
        const int i = m_ui->list()->indexOf(view);
        const KvDeviceGroup* other = adapter->groupAt(i);
        if (i == index || all || (isKnown && other && shareCamera(*other, *group)))
            m_ui->list()->updateItem(i);
    }
}

void KvCamerasView::selectGroup(KvDeviceGroup* group) {
    m_selected = group;
    m_ui->list()->clearSelection();
    m_ui->list()->selectItem(m_ui->adapter()->indexOf(group));
}

void KvCamerasView::focusList() {
    QWidget* list = m_ui->list();
    (list->isHidden() ? m_ui->filter() : list)->setFocus();
}

QPoint KvCamerasView::menuPosition(const KvDeviceGroup* group) const {
    const QPoint mouse = QCursor::pos();
    const int index = m_ui->adapter()->indexOf(group);
    const KvLVItemView* item = m_ui->list()->itemView(index);
    if (!item || item->rect().contains(item->mapFromGlobal(mouse)))
        return mouse;
    return item->mapToGlobal(item->rect().center());
}

void KvCamerasView::_onClickDevice(KvLVItemView* view) {
    m_selected = KvDeviceGroupAdapter::groupOf(view);
    if (m_selected)
        emit clickDevice(m_selected);
}

void KvCamerasView::_onDoubleClickDevice(KvLVItemView* view) {
    m_selected = KvDeviceGroupAdapter::groupOf(view);
    if (m_selected)
        emit doubleClickDevice(m_selected);
}

void KvCamerasView::_onRightClickDevice(KvLVItemView* view, int x, int y) {
    if (KvDeviceGroup* group = KvDeviceGroupAdapter::groupOf(view))
        emit rightClickDevice(group, x, y);
}

void KvCamerasView::_onClickAdapterEditButton(KvLVItemView* view) {
    if (KvDeviceGroup* group = KvDeviceGroupAdapter::groupOf(view))
        emit clickDeviceEdit(group);
}

void KvCamerasView::_onClickAddDevice(bool /*checked*/) {
    emit clickAddDevice();
}

void KvCamerasView::_onClickGroup(bool /*checked*/) {
    emit clickAddGroup();
}

void KvCamerasView::_onClickSearch(bool /*checked*/) {
    emit clickSearchDevices();
}

void KvCamerasView::_onGroupFilterEndedEdit(const QString& text) {
    qDebug() << "filter ->" << text;
    showEntries();
}

void KvCamerasView::_onClickTitleLabel() {
    m_ui->toggleModeMenu(m_mode);
}

void KvCamerasView::_onClickListLabel() {
    const auto* label = qobject_cast<const ClickLabel*>(sender());
    if (label)
        setMode(label->tag());
}

void KvCamerasView::_invokeUpdateStates() {
    for (KvLVItemView* view : m_ui->list()->itemViews()) {
        if (auto* item = qobject_cast<orvelle::GroupItemView*>(view))
            item->refreshState();
    }
}

void KvCamerasView::resizeEvent(QResizeEvent* /*event*/) {
    m_ui->setGeometry(rect());
}

void KvCamerasView::showEvent(QShowEvent* /*event*/) {
    if (m_areStatesFrozen)
        return;
    _invokeUpdateStates();
    m_stateTimer.start();
}

void KvCamerasView::hideEvent(QHideEvent* /*event*/) {
    m_stateTimer.stop();
}
