#pragma once

#include <QAction>
#include <QList>
#include <QObject>
#include <QPointer>

#include <memory>

#include "device/device_group.h"

class QMenu;

/// A menu entry that stands for a group.
class KvDeviceGroupAction : public QAction {
    Q_OBJECT
public:
    KvDeviceGroupAction(KvDeviceGroup* group, QObject* parent);

signals:
    void clickDeviceGroup(KvDeviceGroup* group);

private slots:
    void _onClickAction(bool checked);

private:
    const QPointer<KvDeviceGroup> m_group;
};

/// A menu of groups. Interface thread.
class KvDeviceGroupPopMenu : public QObject {
    Q_OBJECT
public:
    explicit KvDeviceGroupPopMenu(QObject* parent = nullptr);
    ~KvDeviceGroupPopMenu() override;

    /// Makes a new menu; the groups are borrowed.
    void setGroups(const QList<KvDeviceGroup*>& groups);
    /// Shows it and returns when it is closed; without effect when there are no groups.
    void open(const QPoint& globalPosition);

signals:
    void clickDeviceGroup(KvDeviceGroup* group);

private:
    std::unique_ptr<QMenu> m_menu;
};
