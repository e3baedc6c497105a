#include "ui/dialogs/device_table_view.h"

#include <QApplication>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QScrollBar>

#include "ui/dialogs/device_table_model.h"
#include "ui/palette.h"
#include "ui/widgets/scroll_bar_style.h"
#include "ui/widgets/text.h"
#include "ui/widgets/widget_utils.h"

namespace {

constexpr int kCheckWidth = 48;
constexpr int kRowHeight = 44;
constexpr int kHeaderHeight = 28;

void drawCheckBox(QPainter& painter, const QRect& area, Qt::CheckState state) {
    QStyle* style = QApplication::style();
    QStyleOptionButton box;
    const QSize size(style->pixelMetric(QStyle::PM_IndicatorWidth),
                     style->pixelMetric(QStyle::PM_IndicatorHeight));
    box.rect = QStyle::alignedRect(Qt::LeftToRight, Qt::AlignCenter, size, area);
    box.state = QStyle::State_Enabled;
    box.state |= state == Qt::Checked            ? QStyle::State_On
                 : state == Qt::PartiallyChecked ? QStyle::State_NoChange
                                                 : QStyle::State_Off;
    style->drawPrimitive(QStyle::PE_IndicatorCheckBox, &box, &painter);
}

bool isToggle(const QEvent& event) {
    if (event.type() == QEvent::MouseButtonRelease)
        return static_cast<const QMouseEvent&>(event).button() == Qt::LeftButton;
    return event.type() == QEvent::KeyPress &&
           static_cast<const QKeyEvent&>(event).key() == Qt::Key_Space;
}

QString tableStyle() {
    return QStringLiteral(
               "QTableView{border:1px solid %1;gridline-color:#e6e6e6;background:#ffffff;"
               "selection-background-color:%2;selection-color:#000000;outline:none;}"
               "QTableView QTableCornerButton::section{background:%3;border:none;border-bottom:1px "
               "solid %1;}")
        .arg(QLatin1String(orvelle::palette::kFrame), QLatin1String(orvelle::palette::kAccentTint),
             QLatin1String(orvelle::palette::kSideBar));
}

QString headerStyle() {
    return QStringLiteral(
               "QHeaderView{background:%2;border:none;}"
               "QHeaderView::section{color:%3;background:%2;border:none;padding:0 8px;"
               "border-bottom:1px solid %1;}")
        .arg(QLatin1String(orvelle::palette::kFrame), QLatin1String(orvelle::palette::kSideBar),
             QLatin1String(orvelle::palette::kText));
}

}  // namespace

void KvDeviceItemDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option,
                                 const QModelIndex& index) const {
    if (index.column() != KvDeviceTableModel::kCheckColumn) {
        QStyledItemDelegate::paint(painter, option, index);
        return;
    }
    if (option.state & QStyle::State_Selected)
        painter->fillRect(option.rect, option.palette.highlight());
    drawCheckBox(*painter, option.rect,
                 static_cast<Qt::CheckState>(index.data(Qt::CheckStateRole).toInt()));
}

bool KvDeviceItemDelegate::editorEvent(QEvent* event, QAbstractItemModel* model,
                                       const QStyleOptionViewItem& /*option*/,
                                       const QModelIndex& index) {
    if (index.column() != KvDeviceTableModel::kCheckColumn || !isToggle(*event))
        return false;
    const bool checked = index.data(Qt::CheckStateRole).toInt() == Qt::Checked;
    return model->setData(index, checked ? Qt::Unchecked : Qt::Checked, Qt::CheckStateRole);
}

KvDeviceHeaderView::KvDeviceHeaderView(QWidget* parent) : QHeaderView(Qt::Horizontal, parent) {
    setSectionsClickable(true);
    setHighlightSections(false);
}

void KvDeviceHeaderView::setState(Qt::CheckState state) {
    m_state = state;
    viewport()->update();
}

void KvDeviceHeaderView::paintSection(QPainter* painter, const QRect& rect, int section) const {
    painter->save();
    QHeaderView::paintSection(painter, rect, section);
    painter->restore();
    if (section == KvDeviceTableModel::kCheckColumn)
        drawCheckBox(*painter, rect, m_state);
}

void KvDeviceHeaderView::mouseReleaseEvent(QMouseEvent* event) {
    QHeaderView::mouseReleaseEvent(event);
    if (event->button() == Qt::LeftButton &&
        logicalIndexAt(event->pos()) == KvDeviceTableModel::kCheckColumn)
        emit onAllCheckedChanged(m_state == Qt::Checked ? Qt::Unchecked : Qt::Checked);
}

KvTUTKDeviceTableView::KvTUTKDeviceTableView(QWidget* parent)
    : QTableView(parent),
      m_model(new KvDeviceTableModel(this)),
      m_header(new KvDeviceHeaderView(this)) {
    setHorizontalHeader(m_header);
    setModel(m_model);
    setItemDelegate(new KvDeviceItemDelegate(this));
    setStyleSheet(tableStyle());
    verticalScrollBar()->setStyleSheet(QLatin1String(orvelle::kScrollBarStyle));
    KvWidgetUtils::setFont(this, orvelle::palette::kSmallFontPixels);
    setSelectionMode(QAbstractItemView::SingleSelection);
    setTabKeyNavigation(false);
    setAccessibleName(orvelle::text("search_local_network"));
    m_header->setSectionResizeMode(KvDeviceTableModel::kCheckColumn, QHeaderView::Fixed);
    m_header->resizeSection(KvDeviceTableModel::kCheckColumn, kCheckWidth);
    m_header->setSectionResizeMode(KvDeviceTableModel::kCameraColumn, QHeaderView::Stretch);
    for (QHeaderView* header : {static_cast<QHeaderView*>(m_header), verticalHeader()}) {
        header->setStyleSheet(headerStyle());
        KvWidgetUtils::setFont(header, orvelle::palette::kSmallFontPixels);
    }
    m_header->setFixedHeight(kHeaderHeight);
    verticalHeader()->setDefaultSectionSize(kRowHeight);
    verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    connect(m_model, &KvDeviceTableModel::onAllCheckedChanged, this,
            &KvTUTKDeviceTableView::_onModelAllCheckedChanged);
    connect(m_header, &KvDeviceHeaderView::onAllCheckedChanged, this,
            &KvTUTKDeviceTableView::_onHeaderViewAllCheckedChanged);
}

void KvTUTKDeviceTableView::_onModelAllCheckedChanged(int state) {
    m_header->setState(static_cast<Qt::CheckState>(state));
}

void KvTUTKDeviceTableView::_onHeaderViewAllCheckedChanged(int state) {
    m_model->setAllChecked(state == Qt::Checked);
}
