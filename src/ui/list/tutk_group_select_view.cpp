#include "ui/list/tutk_group_select_view.h"

#include <QPainter>

#include "ui/widgets/widget_utils.h"

namespace {

constexpr QRect kThumbnail(5, 5, KvTUTKGroupSelectView::kThumbnailWidth, 72);
constexpr QRect kName(8, 77, 174, 20);
constexpr QRect kMark(150, 29, 24, 24);

}  // namespace

KvTUTKGroupSelectView::KvTUTKGroupSelectView(orvelle::ThumbnailLoader& loader, QWidget* parent)
    : GroupItemView({kThumbnail, kName}, loader, parent) {}

void KvTUTKGroupSelectView::applySelection() {
    GroupItemView::applySelection();
    update(kMark);
}

void KvTUTKGroupSelectView::paintEvent(QPaintEvent* event) {
    GroupItemView::paintEvent(event);
    QPainter painter(this);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.drawPixmap(kMark,
                       QPixmap(KvWidgetUtils::image(isSelected() ? QStringLiteral("selected")
                                                                 : QStringLiteral("unselected"))));
}
