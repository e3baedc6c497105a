#include "ui/main/menu_view.h"

#include <QKeyEvent>

#include "ui/main/menu_label.h"
#include "ui/widgets/text.h"

using orvelle::text;

namespace {

constexpr QRect kHelpArea(0, 0, 104, 25);
constexpr QRect kLanguageArea(0, 25, 104, 25);
constexpr QRect kLogArea(0, 50, 104, 25);
constexpr QRect kEnglishArea(106, 25, 104, 25);
constexpr QRect kChineseArea(106, 50, 104, 25);
constexpr int kLine = 2;

}  // namespace

KvMenuView::KvMenuView(QWidget* parent)
    : QWidget(parent),
      m_help(new KvMenuLabel(text("user_manual"), this)),
      m_language(new KvMenuLabel(text("language"), this)),
      m_log(new KvMenuLabel(text("log"), this)),
      m_english(new KvMenuLabel(text("english"), this)),
      m_chinese(new KvMenuLabel(text("chinese"), this)) {
    resize(kSize);
    m_help->setGeometry(kHelpArea);
    m_help->setEdges({kLine, kLine, kLine, 0});
    m_language->setGeometry(kLanguageArea);
    m_language->setEdges({kLine, kLine, kLine, kLine});
    m_language->setArrowVisible(true);
    m_log->setGeometry(kLogArea);
    m_log->setEdges({kLine, 0, kLine, kLine});
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
    connect(m_log, &KvMenuLabel::click, this, &KvMenuView::clickLog);
    connect(m_chinese, &KvMenuLabel::click, this, &KvMenuView::_onClickChinese);
    connect(m_english, &KvMenuLabel::click, this, &KvMenuView::_onClickEnglish);
}

void KvMenuView::setCurrentLanguage(const QString& language) {
    const bool isChinese = language == QLatin1String("chinese");
    m_chinese->setFlag(isChinese ? 1 : 0);
    m_english->setFlag(isChinese ? 0 : 1);
}

void KvMenuView::setLogging(bool isLogging) {
    m_log->setFlag(isLogging ? 1 : 0);
}

void KvMenuView::openLanguages(bool open) {
    m_language->setFlag(open ? 1 : 0);
    m_english->setVisible(open);
    m_chinese->setVisible(open);
}

void KvMenuView::showEvent(QShowEvent*) {
    raise();
    m_opener = window()->focusWidget();
    m_help->setFocus(Qt::TabFocusReason);
}

void KvMenuView::hideEvent(QHideEvent*) {
    openLanguages(false);
    if (m_opener && isAncestorOf(window()->focusWidget()))
        m_opener->setFocus(Qt::PopupFocusReason);
}

/// The focus goes round in the menu for as long as that is open.
bool KvMenuView::focusNextPrevChild(bool next) {
    QList<KvMenuLabel*> shown;
    for (KvMenuLabel* label : {m_help, m_language, m_english, m_chinese, m_log}) {
        if (!label->isHidden())
            shown.append(label);
    }
    const int now = shown.indexOf(qobject_cast<KvMenuLabel*>(focusWidget()));
    const int index = (now + (next ? 1 : shown.size() - 1)) % shown.size();
    shown[index]->setFocus(next ? Qt::TabFocusReason : Qt::BacktabFocusReason);
    return true;
}

void KvMenuView::keyPressEvent(QKeyEvent* event) {
    switch (event->key()) {
        case Qt::Key_Escape:
            hide();
            break;
        case Qt::Key_Down:
        case Qt::Key_Up:
            focusNextPrevChild(event->key() == Qt::Key_Down);
            break;
        case Qt::Key_Right:
            openLanguages(true);
            m_english->setFocus(Qt::TabFocusReason);
            break;
        case Qt::Key_Left:
            openLanguages(false);
            m_language->setFocus(Qt::TabFocusReason);
            break;
        default:
            QWidget::keyPressEvent(event);
    }
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
