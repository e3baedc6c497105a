#pragma once

#include "ui/widgets/cover_view.h"

class KvAnimationView;
class QLabel;

/// A dark cover with a turning picture and a message. Interface thread; owned by whoever made it,
/// see CoverView.
class KvLoadingMessageView : public orvelle::CoverView {
    Q_OBJECT

public:
    KvLoadingMessageView();
    ~KvLoadingMessageView() override;

    void setText(const QString& text);

protected:
    void resizeEvent(QResizeEvent* event) override;
    void startMoving() override;
    void stopMoving() override;

private:
    KvAnimationView* m_animation;  ///< child, as the one below
    QLabel* m_label;
};
