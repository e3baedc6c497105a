#include "ui/list/device_search_view_ui.h"

#include <QAction>
#include <QLabel>
#include <QLineEdit>
#include <QPainter>

#include "ui/palette.h"
#include "ui/widgets/text.h"
#include "ui/widgets/widget_utils.h"

namespace {

constexpr QSize kPictureSize(240, 240);
constexpr int kPictureGap = 12;
constexpr int kGreetingHeight = 40;
constexpr int kGreetingPixels = 26;
constexpr int kGreetingGap = 24;
constexpr QSize kEditSize(380, 40);
// The group of picture, greeting and field stands a little above the middle.
constexpr int kLift = 30;

}  // namespace

KvDeviceSearchViewUI::KvDeviceSearchViewUI(QWidget* parent)
    : KvWidget(parent),
      m_picture(KvWidgetUtils::image(QStringLiteral("camera_cartoon"))),
      m_greeting(new QLabel(this)),
      m_codeEdit(new QLineEdit(this)) {
    setUpGreeting();
    setUpCodeEdit();
}

void KvDeviceSearchViewUI::setUpGreeting() {
    m_greeting->setText(orvelle::text("welcome_to_pc_version_orvelle_camera"));
    m_greeting->setAlignment(Qt::AlignCenter);
    KvWidgetUtils::setFont(m_greeting, kGreetingPixels);
    m_greeting->setStyleSheet(KvWidgetUtils::labelColorStyle(0xffffff));
}

void KvDeviceSearchViewUI::setUpCodeEdit() {
    const QString prompt = orvelle::text("please_input_device_code");
    KvWidgetUtils::setUpLineEdit(m_codeEdit, KvWidgetUtils::roundLineEditStyle(), prompt);
    m_codeEdit->setAccessibleName(prompt);
    KvWidgetUtils::setFont(m_codeEdit, orvelle::palette::kFontPixels);
    m_codeEdit
        ->addAction(QIcon(KvWidgetUtils::image(QStringLiteral("input_normal"))),
                    QLineEdit::LeadingPosition)
        ->setText(prompt);
    QAction* search = m_codeEdit->addAction(
        QIcon(KvWidgetUtils::image(QStringLiteral("search_normal"))), QLineEdit::TrailingPosition);
    search->setText(orvelle::text("add_device"));
    connect(search, &QAction::triggered, this, &KvDeviceSearchViewUI::_onClickSearchAction);
    connect(m_codeEdit, &QLineEdit::returnPressed, this, &KvDeviceSearchViewUI::_onEditEnded);
}

void KvDeviceSearchViewUI::_onClickSearchAction(bool /*checked*/) {
    emit clickSearch(m_codeEdit->text());
}

void KvDeviceSearchViewUI::_onEditEnded() {
    emit addDevice(m_codeEdit->text());
}

QRect KvDeviceSearchViewUI::pictureArea() const {
    const int height =
        kPictureSize.height() + kPictureGap + kGreetingHeight + kGreetingGap + kEditSize.height();
    const int top = std::max(0, (this->height() - height) / 2 - kLift);
    return {QPoint((width() - kPictureSize.width()) / 2, top), kPictureSize};
}

void KvDeviceSearchViewUI::resizeEvent(QResizeEvent* /*event*/) {
    m_background = QPixmap();
    const QRect picture = pictureArea();
    const int greetingTop = picture.bottom() + 1 + kPictureGap;
    m_greeting->setGeometry(0, greetingTop, width(), kGreetingHeight);
    m_codeEdit->setGeometry((width() - kEditSize.width()) / 2,
                            greetingTop + kGreetingHeight + kGreetingGap, kEditSize.width(),
                            kEditSize.height());
}

void KvDeviceSearchViewUI::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    if (m_background.isNull()) {
        m_background = QPixmap(KvWidgetUtils::image(QStringLiteral("home_bg")))
                           .scaled(size() * devicePixelRatioF(), Qt::KeepAspectRatioByExpanding,
                                   Qt::SmoothTransformation);
        m_background.setDevicePixelRatio(devicePixelRatioF());
    }
    QRectF ground(QPointF(), QSizeF(m_background.size()) / m_background.devicePixelRatio());
    ground.moveCenter(QRectF(rect()).center());
    painter.drawPixmap(ground.topLeft(), m_background);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.drawPixmap(pictureArea(), m_picture);
}
