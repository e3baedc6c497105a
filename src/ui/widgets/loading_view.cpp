#include "ui/widgets/loading_view.h"

#include <QMovie>
#include <QPainter>

namespace {

/// Shows a movie at the size of the widget, on screens of every density.
class MoviePicture : public QWidget {
public:
    MoviePicture(QMovie& movie, QWidget* parent) : QWidget(parent), m_movie(movie) {
        connect(&movie, &QMovie::frameChanged, this, [this] { update(); });
    }

protected:
    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        painter.setRenderHint(QPainter::SmoothPixmapTransform);
        painter.drawPixmap(rect(), m_movie.currentPixmap());
    }

private:
    QMovie& m_movie;
};

}  // namespace

KvLoadingView::KvLoadingView() : m_movie(new QMovie(this)) {
    const bool dense = devicePixelRatioF() > 1.0;
    m_movie->setFileName(dense ? QStringLiteral(":/resources/loading@2x.gif")
                               : QStringLiteral(":/resources/loading.gif"));
    setPicture(new MoviePicture(*m_movie, this));
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
