#pragma once

#include <QList>
#include <QPointer>

#include "device/device_group.h"
#include "ui/list/base_adapter.h"
#include "ui/list/thumbnail_loader.h"

namespace orvelle {

/// Base of the adapters whose items show list entries.
class GroupListAdapter : public KvBaseAdapter {
    Q_OBJECT
public:
    /// Borrowed; an entry that dies leaves an empty item until the next call.
    void setGroups(const QList<KvDeviceGroup*>& groups);
    /// Null outside the list and once the entry is gone.
    KvDeviceGroup* groupAt(int index) const;
    /// -1 when it is not in the list.
    int indexOf(const KvDeviceGroup* group) const;
    /// The entry that an item shows; null for other views.
    static KvDeviceGroup* groupOf(const KvLVItemView* view);

    int getCount() override;
    void bindItemView(int index, KvLVItemView* view) override;

protected:
    GroupListAdapter(int thumbnailWidth, QObject* parent);

    ThumbnailLoader& thumbnails() { return m_thumbnails; }

private:
    QList<QPointer<KvDeviceGroup>> m_groups;
    ThumbnailLoader m_thumbnails;
};

}  // namespace orvelle
