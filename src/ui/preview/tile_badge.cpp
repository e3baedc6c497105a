#include "ui/preview/tile_badge.h"

#include <QEvent>
#include <QPainter>

#include "ui/palette.h"
#include "ui/widgets/text.h"
#include "ui/widgets/widget_utils.h"

namespace orvelle {

namespace {

constexpr QColor kGround(0, 0, 0, 150);
constexpr QColor kRecordColour(0xd1, 0x34, 0x3a);
constexpr int kHeight = 20;
constexpr int kRadius = 4;
constexpr int kGap = 6;
constexpr int kDotSize = 8;
constexpr int kSignPadding = 4;
constexpr int kSoundSize = 16;
constexpr int kRounding = 2;  // a text that just fits is not to be elided

QString zoomText(double zoom) {
    return zoom > 1.0 ? QString::number(zoom, 'f', 1) + QChar(0x00D7) : QString();
}

}  // namespace

bool TileBadge::Facts::operator==(const Facts& other) const {
    return name == other.name && dot == other.dot && isRecorded == other.isRecorded &&
           isHeard == other.isHeard && zoom == other.zoom;
}

TileBadge::TileBadge(QWidget* parent) : QWidget(parent) {
    setAttribute(Qt::WA_TransparentForMouseEvents);
    KvWidgetUtils::setFont(this, palette::kSmallFontPixels);
    hide();
}

void TileBadge::setFacts(const Facts& facts) {
    if (m_facts == facts)
        return;
    m_facts = facts;
    compose();
}

void TileBadge::setMaxWidth(int width) {
    if (m_maxWidth == width)
        return;
    m_maxWidth = width;
    compose();
}

void TileBadge::changeEvent(QEvent* event) {
    if (event->type() == QEvent::FontChange)
        compose();
    QWidget::changeEvent(event);
}

void TileBadge::compose() {
    const QFontMetrics metrics = fontMetrics();
    const QString zoom = zoomText(m_facts.zoom);
    int signs = 0;
    if (m_facts.isRecorded)
        signs += kGap + metrics.horizontalAdvance(text("rec")) + 2 * kSignPadding;
    if (m_facts.isHeard)
        signs += kGap + kSoundSize;
    if (!zoom.isEmpty())
        signs += kGap + metrics.horizontalAdvance(zoom);
    const int fixed = 2 * kMargin + kDotSize + kGap + signs;
    m_shownName = metrics.elidedText(m_facts.name, Qt::ElideRight, qMax(0, m_maxWidth - fixed));
    resize(fixed + metrics.horizontalAdvance(m_shownName) + kRounding, kHeight);
    m_picture = {};
    update();
}

void TileBadge::paintEvent(QPaintEvent*) {
    const qreal ratio = devicePixelRatioF();
    if (m_picture.isNull() || m_picture.devicePixelRatio() != ratio) {
        m_picture = QPixmap((QSizeF(size()) * ratio).toSize());
        m_picture.setDevicePixelRatio(ratio);
        m_picture.fill(Qt::transparent);
        QPainter painter(&m_picture);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setRenderHint(QPainter::SmoothPixmapTransform);
        painter.setFont(font());
        painter.setPen(Qt::NoPen);
        painter.setBrush(kGround);
        painter.drawRoundedRect(rect(), kRadius, kRadius);
        int left = kMargin;
        const auto next = [&left, this](int width, int height) {
            const QRect place(left, (this->height() - height) / 2, width, height);
            left += width + kGap;
            return place;
        };
        const auto write = [&](const QString& words, const QRect& place) {
            painter.setPen(Qt::white);
            painter.drawText(place, Qt::AlignCenter, words);
            painter.setPen(Qt::NoPen);
        };
        const auto widthOf = [this](const QString& words) {
            return fontMetrics().horizontalAdvance(words);
        };
        painter.setBrush(m_facts.dot);
        painter.drawEllipse(next(kDotSize, kDotSize));
        write(m_shownName, next(widthOf(m_shownName) + kRounding, kHeight));
        if (m_facts.isRecorded) {
            const QString words = text("rec");
            const QRect place = next(widthOf(words) + 2 * kSignPadding, kHeight - 4);
            painter.setBrush(kRecordColour);
            painter.drawRoundedRect(place, kRadius - 1, kRadius - 1);
            write(words, place);
        }
        if (m_facts.isHeard)
            painter.drawPixmap(next(kSoundSize, kSoundSize),
                               QPixmap(KvWidgetUtils::image(QStringLiteral("voice_normal"))));
        if (const QString zoom = zoomText(m_facts.zoom); !zoom.isEmpty())
            write(zoom, next(widthOf(zoom), kHeight));
    }
    QPainter(this).drawPixmap(0, 0, m_picture);
}

}  // namespace orvelle
