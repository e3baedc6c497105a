#include "ui/widgets/push_button.h"

using orvelle::ButtonImages;

KvPushButton::KvPushButton(QWidget* parent) : QPushButton(parent) {
    setCursor(Qt::PointingHandCursor);
}

void KvPushButton::setImages(const ButtonImages& unchecked, const ButtonImages& checked) {
    m_unchecked = unchecked;
    m_checkedImages = checked;
    applyImages();
}

void KvPushButton::setState(int state) {
    if (m_checked == (state != 0))
        return;
    m_checked = state != 0;
    applyImages();
}

void KvPushButton::applyImages() {
    const bool hasOwn = m_checked && !m_checkedImages.normal.isEmpty();
    setStyleSheet(KvWidgetUtils::buttonStyle(hasOwn ? m_checkedImages : m_unchecked));
}
