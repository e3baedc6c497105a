#include "ui/widgets/loading_view.h"

#include <QLabel>
#include <QMovie>

KvLoadingView::KvLoadingView() : m_movie(new QMovie(this)) {
    const bool dense = devicePixelRatioF() > 1.0;
    m_movie->setFileName(dense ? QStringLiteral(":/resources/loading@2x.gif")
                               : QStringLiteral(":/resources/loading.gif"));
    auto* picture = new QLabel(this);
    picture->setScaledContents(true);
    picture->setMovie(m_movie);
    setPicture(picture);
}

KvLoadingView::~KvLoadingView() {
    hideOver();
}

void KvLoadingView::startMoving() {
    m_movie->start();
}

void KvLoadingView::stopMoving() {
    m_movie->stop();
}
