#include "ui/dialogs/new_version_dialog.h"

#include <QLabel>
#include <QPushButton>
#include <QTextBrowser>

#include "ui/palette.h"
#include "ui/widgets/text.h"
#include "ui/widgets/widget_utils.h"

namespace {

constexpr int kBodyWidth = 352;
constexpr int kVersionHeight = 24;
constexpr int kGap = 8;
constexpr int kNotesHeight = 170;

}  // namespace

KvNewVersionDialog::KvNewVersionDialog(QWidget* parent) : orvelle::MessageDialog(parent) {
    using namespace orvelle::palette;
    auto* body = new QWidget(this);
    m_version = new QLabel(body);
    m_version->setAlignment(Qt::AlignCenter);
    m_version->setTextFormat(Qt::PlainText);
    m_version->setStyleSheet(QStringLiteral("QLabel{color:#000000;}"));
    KvWidgetUtils::setFont(m_version, kFontPixels);
    m_version->setGeometry(0, 0, kBodyWidth, kVersionHeight);
    m_notes = new QTextBrowser(body);
    m_notes->setStyleSheet(QStringLiteral("QTextBrowser{color:%1;border:none;background:%2;}")
                               .arg(QLatin1String(kText), QLatin1String(kSideBar)));
    m_notes->document()->setDocumentMargin(kGap);
    KvWidgetUtils::setFont(m_notes, kFontPixels);
    m_notes->setGeometry(0, kVersionHeight + kGap, kBodyWidth, kNotesHeight);
    setMessage(orvelle::text("find_new_version"));
    setButtonTexts(orvelle::text("download"), orvelle::text("remind_me_later"));
    setBody(body, kVersionHeight + kGap + kNotesHeight);
    setTabOrder(m_notes, primaryButton());
    setTabOrder(primaryButton(), secondaryButton());
    secondaryButton()->setDefault(true);
    connect(primaryButton(), &QPushButton::clicked, this, &KvNewVersionDialog::_onClickOkButton);
    connect(secondaryButton(), &QPushButton::clicked, this,
            &KvNewVersionDialog::_onClickCancelButton);
    connect(closeButton(), &QPushButton::clicked, this, &KvNewVersionDialog::_onClickCloseButton);
}

void KvNewVersionDialog::setVersion(const QString& version) {
    m_version->setText(m_version->fontMetrics().elidedText(version.simplified(), Qt::ElideRight,
                                                           m_version->width()));
}

void KvNewVersionDialog::setNotes(const QString& notes) {
    m_notes->setPlainText(notes);
}

void KvNewVersionDialog::_onClickOkButton(bool) {
    accept();
}

void KvNewVersionDialog::_onClickCancelButton(bool) {
    reject();
}

void KvNewVersionDialog::_onClickCloseButton(bool) {
    reject();
}
