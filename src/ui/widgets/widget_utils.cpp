#include "ui/widgets/widget_utils.h"

#include <QCursor>
#include <QFile>
#include <QKeyEvent>
#include <QLineEdit>
#include <QPushButton>
#include <QTextDocument>

#include "ui/palette.h"
#include "ui/widgets/push_button.h"
#include "ui/widgets/text.h"

using orvelle::ButtonImages;

namespace {

constexpr char kToolTipStyle[] =
    "\nQToolTip{background-color:#ffffff;border:1px;border-color:#888888;color:#222222;}";

QString imageRule(const char* state, const QString& image) {
    if (image.isEmpty())
        return {};
    return QStringLiteral("\nQPushButton%1{border-image:url(%2);}")
        .arg(QLatin1String(state), image);
}

QString existingImage(const QString& name) {
    const QString path = KvWidgetUtils::image(name);
    return QFile::exists(path) ? path : QString();
}

int channel(unsigned rgb, int shift) {
    return static_cast<int>(rgb >> shift & 255U);
}

QString lineEditRules(int radius, const char* focusColor) {
    return QStringLiteral(
               "QLineEdit{border:1px solid;border-radius:%1px;border-color:rgb(128,128,128);"
               "color:rgb(0,0,0);background-color:rgb(255,255,255);padding:0 8px;}"
               "QLineEdit:focus{border-color:%2;}")
        .arg(QString::number(radius), QLatin1String(focusColor));
}

}  // namespace

QString KvWidgetUtils::image(const QString& name) {
    return QStringLiteral(":/resources/%1.png").arg(name);
}

ButtonImages KvWidgetUtils::imagesOf(const QString& name) {
    ButtonImages images;
    images.normal = existingImage(name + QLatin1String("_normal"));
    images.hover = existingImage(name + QLatin1String("_hover"));
    images.pressed = existingImage(name + QLatin1String("_press"));
    if (images.pressed.isEmpty())
        images.pressed = existingImage(name + QLatin1String("_pressed"));
    images.disabled = existingImage(name + QLatin1String("_disable"));
    return images;
}

QString KvWidgetUtils::buttonStyle(const ButtonImages& images) {
    return QStringLiteral("QPushButton{border-image:url(%1);outline:none;}").arg(images.normal) +
           imageRule(":hover", images.hover) + imageRule(":pressed", images.pressed) +
           imageRule(":disabled", images.disabled) + QLatin1String(kToolTipStyle);
}

QString KvWidgetUtils::buttonStyle(const QString& image) {
    return buttonStyle(ButtonImages{image, {}, {}, {}});
}

QString KvWidgetUtils::labelImageStyle(const QString& image) {
    return QStringLiteral("QLabel{border-image:url(%1)};").arg(image);
}

QString KvWidgetUtils::labelColorStyle(unsigned rgb, int alpha) {
    return QStringLiteral("QLabel{color:rgba(%1, %2, %3, %4)};")
        .arg(channel(rgb, 16))
        .arg(channel(rgb, 8))
        .arg(channel(rgb, 0))
        .arg(alpha);
}

QString KvWidgetUtils::backgroundStyle(const QString& className, unsigned rgb, int alpha) {
    return QStringLiteral("%1{background-color:rgba(%2, %3, %4, %5)};")
        .arg(className)
        .arg(channel(rgb, 16))
        .arg(channel(rgb, 8))
        .arg(channel(rgb, 0))
        .arg(alpha);
}

QString KvWidgetUtils::primaryButtonStyle(int radius) {
    using namespace orvelle::palette;
    return QStringLiteral(
               "QPushButton{background:%1;border-radius:%2px;color:#ffffff;outline:none;}"
               "QPushButton:hover{background:%3;}QPushButton:pressed{background:%4;}"
               "QPushButton:disabled{background:%5;color:%6;}")
        .arg(QLatin1String(kAccent), QString::number(radius), QLatin1String(kAccentHover),
             QLatin1String(kAccentPressed), QLatin1String(kDisabledGround),
             QLatin1String(kDisabledText));
}

QString KvWidgetUtils::secondaryButtonStyle(int radius) {
    using namespace orvelle::palette;
    return QStringLiteral(
               "QPushButton{background:#ffffff;border-radius:%2px;color:%1;"
               "border:1px solid %1;outline:none;}"
               "QPushButton:hover{background:%3;}"
               "QPushButton:pressed{color:%4;border-color:%4;}"
               "QPushButton:disabled{color:%5;border-color:%6;}")
        .arg(QLatin1String(kAccent), QString::number(radius), QLatin1String(kAccentTint),
             QLatin1String(kAccentPressed), QLatin1String(kDisabledText), QLatin1String(kFrame));
}

QString KvWidgetUtils::lineEditStyle() {
    return lineEditRules(5, "rgb(128,128,128)");
}

QString KvWidgetUtils::roundLineEditStyle() {
    return lineEditRules(15, "rgb(25,164,255)");
}

void KvWidgetUtils::setUpLineEdit(QLineEdit* edit, const QString& style,
                                  const QString& placeholder) {
    edit->setStyleSheet(style);
    edit->setPlaceholderText(placeholder);
    // The style sheet gives the placeholder the text's colour as soon as it is applied.
    edit->ensurePolished();
    QPalette colors = edit->palette();
    colors.setColor(QPalette::PlaceholderText, QColor(orvelle::palette::kPlaceholder));
    edit->setPalette(colors);
}

QFont KvWidgetUtils::font(int pixelSize) {
    QFont font{QLatin1String(orvelle::palette::kFontFamily)};
    font.setPixelSize(pixelSize);
    return font;
}

void KvWidgetUtils::setFont(QWidget* widget, int pixelSize) {
    widget->setFont(font(pixelSize));
}

QString KvWidgetUtils::toolTipText(const QString& name) {
    constexpr int kMaxCharacters = 80;
    const bool isLong = name.size() > kMaxCharacters;
    const QString text = isLong ? name.left(kMaxCharacters) + QChar(0x2026) : name;
    return Qt::mightBeRichText(text) ? text.toHtmlEscaped() : text;
}

void KvWidgetUtils::setToolTip(QWidget* widget, const char* key) {
    const QString text = orvelle::text(key);
    widget->setToolTip(text);
    widget->setAccessibleName(text);
}

void KvWidgetUtils::setUpImageButton(QPushButton* button, const QString& name, const char* key) {
    const ButtonImages images = imagesOf(name);
    if (auto* twoStates = qobject_cast<KvPushButton*>(button))
        twoStates->setImages(images);
    else
        button->setStyleSheet(buttonStyle(images));
    button->setCursor(Qt::PointingHandCursor);
    setToolTip(button, key);
}

bool KvWidgetUtils::isMouseIn(const QWidget& widget) {
    return widget.underMouse() && widget.rect().contains(widget.mapFromGlobal(QCursor::pos()));
}

bool KvWidgetUtils::clickByEnter(const QWidget& window, const QKeyEvent& event) {
    auto* button = qobject_cast<QAbstractButton*>(window.focusWidget());
    if (!button || (event.key() != Qt::Key_Return && event.key() != Qt::Key_Enter))
        return false;
    // A key that is held down was meant for what had the focus before.
    if (!event.isAutoRepeat())
        button->click();
    return true;
}
