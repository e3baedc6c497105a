#pragma once

#include "ui/widgets/cover_view.h"

class QLabel;
class QMovie;

/// The loading animation with an optional text below, over a widget that waits. Its ground is
/// transparent. Interface thread; owned by whoever made it, see CoverView.
class KvLoadingView : public orvelle::CoverView {
    Q_OBJECT

public:
    KvLoadingView();
    ~KvLoadingView() override;

    /// Empty for none.
    void setText(const QString& text);

protected:
    void resizeEvent(QResizeEvent* event) override;
    void startMoving() override;
    void stopMoving() override;

private:
    QMovie* m_movie;  ///< child, as those below
    QLabel* m_picture;
    QLabel* m_label;
};
