#include "ui/list/group_item_view.h"

#include <QPainter>

#include "ui/list/thumbnail_loader.h"
#include "ui/widgets/widget_utils.h"

namespace orvelle {

namespace {

constexpr QColor kGround(0xdf, 0xdf, 0xdf);
constexpr QColor kNameColour(0x2b, 0x2b, 0x2b);
constexpr QColor kPictureGround(0x2d, 0x2d, 0x2d);
constexpr QColor kPillGround(0, 0, 0, 165);
constexpr qreal kOfflineOpacity = 0.4;  // an old picture is not taken for a live one
constexpr int kNamePixels = 12;
constexpr int kMaxShownName = 200;  // a hostile file may hold any length
constexpr int kStatePixels = 11;
constexpr int kPillHeight = 18;
constexpr int kPillMargin = 4;
constexpr int kPillPadding = 6;
constexpr int kDotSize = 7;
constexpr int kDotGap = 5;

}  // namespace

GroupItemView::GroupItemView(const Areas& areas, ThumbnailLoader& loader, QWidget* parent)
    : KvLVItemView(parent), m_areas(areas), m_loader(loader), m_thumbnail(loader.pixmap({})) {
    setBackgroundColor(kGround);
    connect(&loader, &ThumbnailLoader::changed, this, &GroupItemView::takeThumbnail);
}

void GroupItemView::setNameArea(const QRect& area) {
    m_areas.name = area;
    update();
}

void GroupItemView::showData() {
    if (!m_group)
        return;
    m_name = m_group->name().left(kMaxShownName);
    m_state = entryState(*m_group);
    m_needsThumbnail = true;
    describe();
    update();
}

void GroupItemView::refreshState() {
    if (!m_group)
        return;
    const EntryState state = entryState(*m_group);
    if (state == m_state)
        return;
    m_state = state;
    describe();
    update(m_areas.thumbnail);
}

void GroupItemView::describe() {
    setToolTip(m_name.toHtmlEscaped() + QStringLiteral("<br>") + m_state.text);
    setAccessibleName(m_name + QStringLiteral(", ") + m_state.text);
}

void GroupItemView::requestThumbnail() {
    m_needsThumbnail = false;
    if (!m_group)
        return;
    const EntryThumbnail thumbnail = m_group->claimThumbnail();
    m_thumbnailPath = thumbnail.path;
    m_thumbnail = m_loader.pixmap(m_thumbnailPath);
    m_loader.request(thumbnail);
}

void GroupItemView::takeThumbnail(const QString& path) {
    if (path != m_thumbnailPath)
        return;
    m_thumbnail = m_loader.pixmap(path);
    update(m_areas.thumbnail);
}

void GroupItemView::paintEvent(QPaintEvent* event) {
    KvLVItemView::paintEvent(event);
    if (m_needsThumbnail)
        requestThumbnail();
    QPainter painter(this);
    painter.setRenderHints(QPainter::Antialiasing | QPainter::SmoothPixmapTransform);
    drawThumbnail(painter);
    drawState(painter);
    drawName(painter);
}

// As wide as the area; what is too high is cut off at both ends.
void GroupItemView::drawThumbnail(QPainter& painter) const {
    const QSizeF size = QSizeF(m_thumbnail.size()) / m_thumbnail.devicePixelRatio();
    QRectF picture(QPointF(), size);
    picture.moveCenter(QRectF(m_areas.thumbnail).center());
    painter.fillRect(m_areas.thumbnail, kPictureGround);
    painter.save();
    painter.setClipRect(m_areas.thumbnail);
    painter.setOpacity(m_state.isOnline ? 1.0 : kOfflineOpacity);
    painter.drawPixmap(picture, m_thumbnail, QRectF(m_thumbnail.rect()));
    painter.restore();
}

void GroupItemView::drawState(QPainter& painter) const {
    painter.setFont(KvWidgetUtils::font(kStatePixels));
    const int most =
        m_areas.thumbnail.width() - 2 * (kPillMargin + kPillPadding) - kDotSize - kDotGap;
    const QString text = painter.fontMetrics().elidedText(m_state.text, Qt::ElideRight, most);
    const int width = painter.fontMetrics().horizontalAdvance(text);
    const QRect pill(m_areas.thumbnail.left() + kPillMargin,
                     m_areas.thumbnail.bottom() + 1 - kPillMargin - kPillHeight,
                     2 * kPillPadding + kDotSize + kDotGap + width, kPillHeight);
    painter.setPen(Qt::NoPen);
    painter.setBrush(kPillGround);
    painter.drawRoundedRect(pill, kPillHeight / 2, kPillHeight / 2);
    painter.setBrush(m_state.colour);
    painter.drawEllipse(QRectF(pill.left() + kPillPadding,
                               pill.top() + (kPillHeight - kDotSize) / 2.0, kDotSize, kDotSize));
    painter.setPen(Qt::white);
    painter.drawText(pill.adjusted(kPillPadding + kDotSize + kDotGap, 0, 0, 0),
                     Qt::AlignLeft | Qt::AlignVCenter, text);
}

void GroupItemView::drawName(QPainter& painter) const {
    painter.setFont(KvWidgetUtils::font(kNamePixels));
    painter.setPen(kNameColour);
    const QString name =
        painter.fontMetrics().elidedText(m_name, Qt::ElideRight, m_areas.name.width());
    painter.drawText(m_areas.name, Qt::AlignLeft | Qt::AlignVCenter, name);
}

}  // namespace orvelle
