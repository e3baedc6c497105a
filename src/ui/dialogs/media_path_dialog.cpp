#include "ui/dialogs/media_path_dialog.h"

#include <QDir>
#include <QFileDialog>
#include <QLabel>
#include <QPushButton>
#include <QTemporaryFile>

#include "core/configure.h"
#include "core/file_utils.h"
#include "ui/palette.h"
#include "ui/widgets/text.h"
#include "ui/widgets/widget_utils.h"

namespace {

constexpr int kPathWidth = 318;
constexpr int kPathPadding = 10;
constexpr int kSelectSize = 24;
constexpr int kWarningHeight = 22;
constexpr int kBodyWidth = 352;
constexpr int kPillRadius = 17;

// What the system says about rights is not the whole truth: disks are full and shares read-only.
bool canBeWritten(const QString& folder) {
    QTemporaryFile probe(folder + QStringLiteral("/.orvelle-XXXXXX"));
    return probe.open() && probe.write("x", 1) == 1 && probe.flush();
}

}  // namespace

KvMediaPathDialog::KvMediaPathDialog(QWidget* parent)
    : orvelle::MessageDialog(parent),
      m_folder(KvFileUtils::mediaRoot()),
      m_body(new QWidget(this)),
      m_path(new QLabel(m_body)),
      m_select(new QPushButton(m_body)),
      m_warning(new QLabel(m_body)) {
    setMessage(orvelle::text("please_choose_the_live_shooting_and_video_storage_path"));
    setButtonTexts(orvelle::text("ok"), QString());
    primaryButton()->setStyleSheet(KvWidgetUtils::primaryButtonStyle(kPillRadius));
    buildBody();
    setBody(m_body, orvelle::palette::kFieldHeight + kWarningHeight);
    setTabOrder(m_select, primaryButton());
    showFolder();
    connect(m_select, &QPushButton::clicked, this, &KvMediaPathDialog::_onClickSelectButton);
    connect(primaryButton(), &QPushButton::clicked, this, &KvMediaPathDialog::_onClickOkButton);
    connect(closeButton(), &QPushButton::clicked, this, &KvMediaPathDialog::_onClickCloseButton);
}

void KvMediaPathDialog::buildBody() {
    using namespace orvelle::palette;
    m_path->setTextFormat(Qt::PlainText);
    m_path->setStyleSheet(QStringLiteral("QLabel{color:%1;border:1px solid %2;border-radius:5px;"
                                         "padding:0 9px;}")
                              .arg(QLatin1String(kText), QLatin1String(kFrame)));
    KvWidgetUtils::setFont(m_path, kFontPixels);
    m_path->setGeometry(0, 0, kPathWidth, kFieldHeight);
    KvWidgetUtils::setUpImageButton(m_select, QStringLiteral("select"), "select_folder");
    m_select->setAutoDefault(false);
    m_select->setGeometry(kBodyWidth - kSelectSize, (kFieldHeight - kSelectSize) / 2, kSelectSize,
                          kSelectSize);
    m_warning->setStyleSheet(QStringLiteral("QLabel{color:%1;}").arg(QLatin1String(kWarningText)));
    KvWidgetUtils::setFont(m_warning, kSmallFontPixels);
    m_warning->setGeometry(0, kFieldHeight, kBodyWidth, kWarningHeight);
}

void KvMediaPathDialog::showFolder() {
    const QString shown = QDir::toNativeSeparators(m_folder);
    m_path->setText(
        m_path->fontMetrics().elidedText(shown, Qt::ElideMiddle, kPathWidth - 2 * kPathPadding));
    m_path->setToolTip(shown);
    m_path->setAccessibleName(shown);
}

bool KvMediaPathDialog::checkFolder() {
    const bool good = canBeWritten(m_folder);
    m_warning->setText(good ? QString() : orvelle::text("the_folder_cannot_be_written"));
    return good;
}

QString KvMediaPathDialog::chooseFolder(const QString& current) {
    return QFileDialog::getExistingDirectory(this, orvelle::text("select_folder"), current);
}

void KvMediaPathDialog::_onClickSelectButton(bool) {
    const QString chosen = chooseFolder(m_folder);
    if (chosen.isEmpty())
        return;
    m_folder = chosen;
    showFolder();
    checkFolder();
}

void KvMediaPathDialog::_onClickOkButton(bool) {
    if (!checkFolder())
        return;
    if (KvConfigure().setString(orvelle::settings::kMediaRoot, m_folder))
        accept();
    else
        m_warning->setText(orvelle::text("it_could_not_be_saved"));
}

void KvMediaPathDialog::_onClickCloseButton(bool) {
    reject();
}
