#pragma once

#include <QSet>
#include <QString>

#include "ui/list/group_list_adapter.h"

/// The camera list's items: KvTUTKGroupView.
class KvDeviceGroupAdapter : public orvelle::GroupListAdapter {
    Q_OBJECT
public:
    explicit KvDeviceGroupAdapter(QObject* parent = nullptr);

    /// The cameras that belong to some group: their items get a button. Taken over by items that
    /// are bound afterwards.
    void setGroupedUids(const QSet<QString>& uids) { m_groupedUids = uids; }
    const QSet<QString>& groupedUids() const { return m_groupedUids; }

    KvLVItemView* createItemView(int index, QWidget* parent) override;
    void bindItemView(int index, KvLVItemView* view) override;
    QSize getItemSize(int index) override;

signals:
    void clickEditButton(KvLVItemView* view);

private:
    QSet<QString> m_groupedUids;
};
