#include "ui/main/menu_view.h"

#include <QKeyEvent>

#include "ui/main/menu_label.h"
#include "ui/widgets/text.h"

using orvelle::text;

namespace {

constexpr QRect kHelpArea(0, 0, 104, 25);
constexpr QRect kLanguageArea(0, 25, 104, 25);
constexpr QRect kEnglishArea(106, 25, 104, 25);
constexpr QRect kChineseArea(106, 50, 104, 25);
constexpr int kLine = 2;

}  // namespace

KvMenuView::KvMenuView(QWidget* parent)
    : QWidget(parent),
      m_help(new KvMenuLabel(text("user_manual"), this)),
      m_language(new KvMenuLabel(text("language"), this)),
      m_english(new KvMenuLabel(text("english"), this)),
      m_chinese(new KvMenuLabel(text("chinese"), this)) {
    resize(kSize);
    m_help->setGeometry(kHelpArea);
    m_help->setEdges({kLine, kLine, kLine, 0});
    m_language->setGeometry(kLanguageArea);
    m_language->setEdges({kLine, kLine, kLine, kLine});
    m_language->setArrowVisible(true);
    m_english->setGeometry(kEnglishArea);
    m_english->setEdges({kLine, kLine, kLine, 0});
    m_chinese->setGeometry(kChineseArea);
    m_chinese->setEdges({kLine, kLine, kLine, kLine});
    for (KvMenuLabel* label : {m_english, m_chinese}) {
        label->setCentred(true);
        label->hide();
    }
    connect(m_help, &KvMenuLabel::click, this, &KvMenuView::_onClickHelp);
    connect(m_language, &KvMenuLabel::click, this, &KvMenuView::_onClickLanguage);
    connect(m_chinese, &KvMenuLabel::click, this, &KvMenuView::_onClickChinese);
    connect(m_english, &KvMenuLabel::click, this, &KvMenuView::_onClickEnglish);
}

void KvMenuView::setCurrentLanguage(const QString& language) {
    const bool isChinese = language == QLatin1String("chinese");
    m_chinese->setFlag(isChinese ? 1 : 0);
    m_english->setFlag(isChinese ? 0 : 1);
}

void KvMenuView::openLanguages(bool open) {
    m_language->setFlag(open ? 1 : 0);
    m_english->setVisible(open);
    m_chinese->setVisible(open);
}

void KvMenuView::showEvent(QShowEvent*) {
    raise();
    m_help->setFocus(Qt::PopupFocusReason);
}

void KvMenuView::hideEvent(QHideEvent*) {
    openLanguages(false);
}

void KvMenuView::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Escape)
        hide();
    else if (event->key() == Qt::Key_Down || event->key() == Qt::Key_Up)
        focusNextPrevChild(event->key() == Qt::Key_Down);
    else
        QWidget::keyPressEvent(event);
}

void KvMenuView::_onClickHelp() {
    emit clickHelp();
}

void KvMenuView::_onClickLanguage() {
    openLanguages(m_language->flag() == 0);
}

void KvMenuView::_onClickChinese() {
    openLanguages(false);
    emit clickLanguage(QStringLiteral("chinese"));
}

void KvMenuView::_onClickEnglish() {
    openLanguages(false);
    emit clickLanguage(QStringLiteral("english"));
}
