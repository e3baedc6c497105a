#include "ui/dialogs/directory_dialog.h"

#include <QDir>
#include <QFileInfo>
#include <QLabel>
#include <QPushButton>

#include "core/file_utils.h"
#include "ui/palette.h"
#include "ui/widgets/text.h"
#include "ui/widgets/widget_utils.h"

namespace {

constexpr int kPathHeight = 22;
constexpr int kPathWidth = 352;

QString folderOf(const QString& path) {
    const QFileInfo info(path);
    return info.isDir() ? info.absoluteFilePath() : info.absolutePath();
}

}  // namespace

KvDirectoryDialog::KvDirectoryDialog(const QString& message, const QString& path, QWidget* parent)
    : orvelle::MessageDialog(parent), m_folder(folderOf(path)) {
    const QString shown = QDir::toNativeSeparators(path);
    auto* label = new QLabel(this);
    label->setAlignment(Qt::AlignCenter);
    label->setTextFormat(Qt::PlainText);
    label->setStyleSheet(
        QStringLiteral("QLabel{color:%1;}").arg(QLatin1String(orvelle::palette::kFaintText)));
    KvWidgetUtils::setFont(label, orvelle::palette::kSmallFontPixels);
    label->setText(label->fontMetrics().elidedText(shown, Qt::ElideMiddle, kPathWidth));
    label->setToolTip(shown);
    label->setAccessibleName(shown);
    m_toast.setColors(QColor(0, 0, 0, orvelle::palette::kToastAlphaOnWhite), 0xffffff);
    setMessage(message);
    setBody(label, kPathHeight);
    setButtonTexts(orvelle::text("open_the_folder"), orvelle::text("cancel"));
    connect(primaryButton(), &QPushButton::clicked, this,
            &KvDirectoryDialog::_onClickOpenFolderButton);
    connect(secondaryButton(), &QPushButton::clicked, this,
            &KvDirectoryDialog::_onClickCancelButton);
    connect(closeButton(), &QPushButton::clicked, this, &KvDirectoryDialog::_onClickCancelButton);
}

void KvDirectoryDialog::_onClickOpenFolderButton(bool) {
    if (KvFileUtils::openFolder(m_folder))
        accept();
    else
        m_toast.show(this, orvelle::text("the_folder_cannot_be_opened"));
}

void KvDirectoryDialog::_onClickCancelButton(bool) {
    reject();
}
