#include "ui/dialogs/busy_dialog.h"

#include <QLabel>
#include <QPainter>

#include "ui/palette.h"
#include "ui/widgets/animation_view.h"
#include "ui/widgets/widget_utils.h"

namespace orvelle {

namespace {

constexpr QSize kSize(300, 280);
constexpr int kPictureSize = 100;
constexpr int kPictureLift = 180;
constexpr QSize kLabelSize(260, 30);
constexpr int kLabelBottom = 80;
constexpr int kLabelPixels = 15;

// The picture is drawn white, for dark grounds; here it lies on white.
QPixmap turningPicture() {
    QPixmap picture(KvWidgetUtils::image(QStringLiteral("loading@2x")));
    picture.setDevicePixelRatio(1.0);
    QPainter painter(&picture);
    painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
    painter.fillRect(picture.rect(), QColor(palette::kAccent));
    return picture;
}

}  // namespace

BusyDialog::BusyDialog(const QString& text, QWidget* parent)
    : KvDialog(parent), m_animation(new KvAnimationView(this)), m_label(new QLabel(this)) {
    setMinimumSize(kSize);
    resize(kSize);
    m_animation->setPixmap(turningPicture());
    m_label->setAlignment(Qt::AlignCenter);
    m_label->setStyleSheet(QStringLiteral("QLabel{color:%1;}").arg(QLatin1String(palette::kText)));
    KvWidgetUtils::setFont(m_label, kLabelPixels);
    setText(text);
}

void BusyDialog::setText(const QString& text) {
    m_label->setText(text);
    setAccessibleName(text);
}

void BusyDialog::done(int result) {
    doneOnceActive(result);
}

void BusyDialog::resizeEvent(QResizeEvent*) {
    m_animation->setGeometry((width() - kPictureSize) / 2, (height() - kPictureLift) / 2,
                             kPictureSize, kPictureSize);
    m_label->setGeometry((width() - kLabelSize.width()) / 2, height() - kLabelBottom,
                         kLabelSize.width(), kLabelSize.height());
}

void BusyDialog::showEvent(QShowEvent* event) {
    KvDialog::showEvent(event);
    m_animation->start();
}

void BusyDialog::hideEvent(QHideEvent*) {
    m_animation->stop();
}

}  // namespace orvelle
