#pragma once

#include <QHeaderView>
#include <QStyledItemDelegate>
#include <QTableView>

class KvDeviceTableModel;

/// Draws a check box in the middle of its column; a click, or the space bar, toggles it.
class KvDeviceItemDelegate : public QStyledItemDelegate {
    Q_OBJECT

public:
    using QStyledItemDelegate::QStyledItemDelegate;

    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override;
    bool editorEvent(QEvent* event, QAbstractItemModel* model, const QStyleOptionViewItem& option,
                     const QModelIndex& index) override;
};

/// A header whose first section is a check box for all rows.
class KvDeviceHeaderView : public QHeaderView {
    Q_OBJECT

public:
    explicit KvDeviceHeaderView(QWidget* parent = nullptr);

    void setState(Qt::CheckState state);

signals:
    /// The user wants all rows Qt::Checked, or Qt::Unchecked.
    void onAllCheckedChanged(int state);

protected:
    void paintSection(QPainter* painter, const QRect& rect, int section) const override;
    void mouseReleaseEvent(QMouseEvent* event) override;

private:
    Qt::CheckState m_state = Qt::Unchecked;
};

/// The table of found cameras. Interface thread.
class KvTUTKDeviceTableView : public QTableView {
    Q_OBJECT

public:
    explicit KvTUTKDeviceTableView(QWidget* parent = nullptr);

    KvDeviceTableModel* devices() const { return m_model; }

private slots:
    void _onModelAllCheckedChanged(int state);
    void _onHeaderViewAllCheckedChanged(int state);

private:
    KvDeviceTableModel* m_model;  ///< child, as the header
    KvDeviceHeaderView* m_header;
};
