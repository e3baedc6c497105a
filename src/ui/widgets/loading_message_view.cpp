#include "ui/widgets/loading_message_view.h"

#include "ui/widgets/animation_view.h"
#include "ui/widgets/widget_utils.h"

KvLoadingMessageView::KvLoadingMessageView() : m_animation(new KvAnimationView(this)) {
    m_animation->setPixmap(QPixmap(KvWidgetUtils::image(QStringLiteral("loading"))));
    setPicture(m_animation);
}

KvLoadingMessageView::~KvLoadingMessageView() {
    hideOver();
}

void KvLoadingMessageView::startMoving() {
    m_animation->start();
}

void KvLoadingMessageView::stopMoving() {
    m_animation->stop();
}
