#include "icons/contact_sheet.h"

#include <QPainter>

#include <algorithm>

namespace orvelle::icons {
namespace {

constexpr int kWidth = 1200;
constexpr int kCellWidth = 150;
constexpr int kCellHeight = 64;
constexpr int kLabelHeight = 16;
constexpr int kLargest = 400;  // side of a picture that is still shown at its real size

QSize shownSize(const Icon& icon) {
    const QSize largest(kLargest, kLargest);
    const bool fits = icon.size.width() <= kLargest && icon.size.height() <= kLargest;
    return fits ? icon.size : icon.size.scaled(largest, Qt::KeepAspectRatio);
}

QSize cellSize(const Icon& icon) {
    const QSize shown = shownSize(icon);
    return QSize(std::max(kCellWidth, shown.width() + 16),
                 std::max(kCellHeight, shown.height() + kLabelHeight + 16));
}

// Places cells row by row; returns their rectangles.
std::vector<QRect> layOut(const std::vector<Specimen>& specimens) {
    std::vector<QRect> cells;
    QPoint next;
    int rowHeight = 0;
    for (const Specimen& specimen : specimens) {
        const QSize size = cellSize(specimen.icon);
        if (next.x() + size.width() > kWidth) {
            next = QPoint(0, next.y() + rowHeight);
            rowHeight = 0;
        }
        cells.emplace_back(next, size);
        next.rx() += size.width();
        rowHeight = std::max(rowHeight, size.height());
    }
    return cells;
}

void paintSpecimen(QPainter* painter, const Specimen& specimen, const QRect& cell) {
    const QColor ground = specimen.icon.ground;
    painter->fillRect(cell, ground);
    const QSize shown = shownSize(specimen.icon);
    const int top = cell.top() + (cell.height() - kLabelHeight - shown.height()) / 2;
    painter->drawImage(QRect(QPoint(cell.left() + (cell.width() - shown.width()) / 2, top), shown),
                       specimen.image);
    painter->setPen(ground.lightness() > 140 ? Qt::black : Qt::white);
    const QRect label(cell.left(), cell.bottom() - kLabelHeight, cell.width(), kLabelHeight);
    painter->drawText(label, Qt::AlignCenter, specimen.icon.name);
}

}  // namespace

QImage paintContactSheet(const std::vector<Specimen>& specimens, int scale) {
    const std::vector<QRect> cells = layOut(specimens);
    int height = 0;
    for (const QRect& cell : cells)
        height = std::max(height, cell.bottom() + 1);
    QImage sheet(QSize(kWidth, height) * scale, QImage::Format_RGB32);
    sheet.setDevicePixelRatio(scale);
    sheet.fill(Qt::white);
    QPainter painter(&sheet);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    QFont font = painter.font();
    font.setPixelSize(10);
    painter.setFont(font);
    for (std::size_t i = 0; i < cells.size(); ++i)
        paintSpecimen(&painter, specimens[i], cells[i]);
    return sheet;
}

}  // namespace orvelle::icons
