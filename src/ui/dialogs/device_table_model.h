#pragma once

#include <QAbstractTableModel>

#include <vector>

#include "device/camera_record.h"

/// One row of the search results: a found camera and whether it is checked.
struct KvDeviceNode {
    orvelle::CameraRecord camera;
    bool isChecked = false;
};

/// The cameras that a search found. Interface thread.
class KvDeviceTableModel : public QAbstractTableModel {
    Q_OBJECT

public:
    enum Column { kCheckColumn, kCameraColumn, kColumns };

    using QAbstractTableModel::QAbstractTableModel;

    /// Shows them, all unchecked.
    void setDevices(const std::vector<orvelle::CameraRecord>& cameras);
    void setAllChecked(bool checked);
    int checkedCount() const;
    /// Qt::Checked when every row is, Qt::Unchecked when none is.
    Qt::CheckState allChecked() const;

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    bool setData(const QModelIndex& index, const QVariant& value, int role) override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

signals:
    /// A Qt::CheckState.
    void onAllCheckedChanged(int state);

private:
    static QVariant cameraData(const orvelle::CameraRecord& camera, int role);

    std::vector<KvDeviceNode> m_nodes;
};
