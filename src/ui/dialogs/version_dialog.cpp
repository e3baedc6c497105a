#include "ui/dialogs/version_dialog.h"

#include <QCoreApplication>
#include <QLabel>
#include <QPushButton>

#include "ui/palette.h"
#include "ui/widgets/text.h"
#include "ui/widgets/widget_utils.h"

namespace {

constexpr QSize kSize(320, 224);
constexpr QRect kLogoArea(128, 40, 64, 64);
constexpr QRect kNameArea(24, 120, 272, 36);
constexpr QRect kVersionArea(24, 160, 272, 24);
constexpr QRect kCloseArea(286, 10, 24, 24);
constexpr int kNameFontPixels = 25;

QLabel* makeLabel(QWidget* parent, const QRect& area, int fontPixels, const char* color) {
    auto* label = new QLabel(parent);
    label->setGeometry(area);
    label->setAlignment(Qt::AlignCenter);
    label->setStyleSheet(QStringLiteral("QLabel{color:%1;}").arg(QLatin1String(color)));
    KvWidgetUtils::setFont(label, fontPixels);
    return label;
}

}  // namespace

KvVersionDialog::KvVersionDialog(QWidget* parent) : KvDialog(parent) {
    using namespace orvelle::palette;
    setFixedSize(kSize);
    QLabel* logo = makeLabel(this, kLogoArea, kFontPixels, kText);
    logo->setStyleSheet(
        KvWidgetUtils::labelImageStyle(KvWidgetUtils::image(QStringLiteral("app_icon"))));
    makeLabel(this, kNameArea, kNameFontPixels, kText)->setText(QStringLiteral("Orvelle"));
    const QString version = QStringLiteral("%1: %2").arg(orvelle::text("current_version"),
                                                         QCoreApplication::applicationVersion());
    makeLabel(this, kVersionArea, kFontPixels, kFaintText)->setText(version);
    setAccessibleName(version);
    auto* close = new QPushButton(this);
    KvWidgetUtils::setUpImageButton(close, QStringLiteral("close"), "close");
    close->setGeometry(kCloseArea);
    connect(close, &QPushButton::clicked, this, &KvVersionDialog::_onClickCloseButton);
}

void KvVersionDialog::_onClickCloseButton(bool) {
    reject();
}
