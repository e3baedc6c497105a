#include "ui/dialogs/device_table_model.h"

#include <QBrush>

#include <algorithm>

#include "ui/widgets/text.h"

void KvDeviceTableModel::setDevices(const std::vector<orvelle::CameraRecord>& cameras) {
    beginResetModel();
    m_nodes.clear();
    for (const orvelle::CameraRecord& camera : cameras)
        m_nodes.push_back({camera, false});
    endResetModel();
    emit onAllCheckedChanged(allChecked());
}

void KvDeviceTableModel::setAllChecked(bool checked) {
    for (KvDeviceNode& node : m_nodes)
        node.isChecked = checked;
    if (!m_nodes.empty())
        emit dataChanged(index(0, kCheckColumn), index(rowCount() - 1, kCheckColumn));
    emit onAllCheckedChanged(allChecked());
}

int KvDeviceTableModel::checkedCount() const {
    return static_cast<int>(std::count_if(m_nodes.begin(), m_nodes.end(),
                                          [](const KvDeviceNode& node) { return node.isChecked; }));
}

Qt::CheckState KvDeviceTableModel::allChecked() const {
    const int checked = checkedCount();
    if (checked == 0)
        return Qt::Unchecked;
    return checked == rowCount() ? Qt::Checked : Qt::PartiallyChecked;
}

int KvDeviceTableModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(m_nodes.size());
}

int KvDeviceTableModel::columnCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : kColumns;
}

QVariant KvDeviceTableModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid() || index.row() >= rowCount())
        return {};
    const KvDeviceNode& node = m_nodes[static_cast<size_t>(index.row())];
    if (index.column() == kCameraColumn)
        return cameraData(node.camera, role);
    if (role == Qt::CheckStateRole)
        return node.isChecked ? Qt::Checked : Qt::Unchecked;
    return {};
}

QVariant KvDeviceTableModel::cameraData(const orvelle::CameraRecord& camera, int role) {
    switch (role) {
        case Qt::DisplayRole:
            return camera.name.isEmpty() ? camera.uid
                                         : camera.name + QLatin1Char('\n') + camera.uid;
        case Qt::ToolTipRole:
            return QStringLiteral("%1:%2").arg(camera.ip).arg(camera.port);
        case Qt::TextAlignmentRole:
            return int(Qt::AlignCenter);
        case Qt::ForegroundRole:
            return QBrush(Qt::black);
        default:
            return {};
    }
}

bool KvDeviceTableModel::setData(const QModelIndex& index, const QVariant& value, int role) {
    if (!index.isValid() || index.column() != kCheckColumn || role != Qt::CheckStateRole)
        return false;
    m_nodes[static_cast<size_t>(index.row())].isChecked = value.toInt() == Qt::Checked;
    emit dataChanged(index, index);
    emit onAllCheckedChanged(allChecked());
    return true;
}

Qt::ItemFlags KvDeviceTableModel::flags(const QModelIndex& index) const {
    const Qt::ItemFlags flags = Qt::ItemIsEnabled | Qt::ItemIsSelectable;
    return index.column() == kCheckColumn ? flags | Qt::ItemIsUserCheckable : flags;
}

QVariant KvDeviceTableModel::headerData(int section, Qt::Orientation orientation, int role) const {
    if (role == Qt::TextAlignmentRole)
        return int(Qt::AlignCenter);
    if (role != Qt::DisplayRole)
        return {};
    if (orientation == Qt::Vertical)
        return section + 1;
    return section == kCameraColumn ? orvelle::text("camera").trimmed() : QString();
}
