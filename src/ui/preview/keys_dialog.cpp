#include "ui/preview/keys_dialog.h"

#include <QGridLayout>
#include <QLabel>
#include <QPushButton>

#include "ui/palette.h"
#include "ui/preview/preview_keys.h"
#include "ui/widgets/text.h"
#include "ui/widgets/widget_utils.h"

namespace orvelle {

namespace {

constexpr int kColumnGap = 24;
constexpr int kRowGap = 8;
constexpr QSize kCloseSize(24, 24);

QLabel* makeLabel(QWidget* parent, const QString& words, int pixels, const char* colour) {
    auto* label = new QLabel(words, parent);
    label->setTextFormat(Qt::PlainText);
    label->setStyleSheet(QStringLiteral("QLabel{color:%1;}").arg(QLatin1String(colour)));
    KvWidgetUtils::setFont(label, pixels);
    return label;
}

}  // namespace

KeysDialog::KeysDialog(QWidget* parent) : KvDialog(parent) {
    using namespace palette;
    const QString title = text("keys");
    setAccessibleName(title);
    auto* grid = new QGridLayout(this);
    grid->setContentsMargins(kDialogMargin, kDialogMargin, kDialogMargin, kDialogMargin);
    grid->setHorizontalSpacing(kColumnGap);
    grid->setVerticalSpacing(kRowGap);
    grid->addWidget(makeLabel(this, title, kTitleFontPixels, kText), 0, 0);
    auto* close = new QPushButton(this);
    KvWidgetUtils::setUpImageButton(close, QStringLiteral("close"), "close");
    close->setFixedSize(kCloseSize);
    connect(close, &QPushButton::clicked, this, &QDialog::reject);
    grid->addWidget(close, 0, 1, Qt::AlignRight | Qt::AlignTop);
    int row = 1;
    for (const KeyLine& line : keyLines()) {
        QLabel* keys = makeLabel(this, line.keys, kFontPixels, kText);
        QLabel* meaning = makeLabel(this, line.meaning, kFontPixels, kFaintText);
        keys->setBuddy(meaning);
        grid->addWidget(keys, row, 0);
        grid->addWidget(meaning, row++, 1);
    }
}

}  // namespace orvelle
