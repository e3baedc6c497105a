#pragma once

#include "ui/widgets/cover_view.h"

class KvAnimationView;

/// A turning picture with a message over a widget that waits. Interface thread; owned by whoever
/// made it, see CoverView.
class KvLoadingMessageView : public orvelle::CoverView {
    Q_OBJECT

public:
    KvLoadingMessageView();
    ~KvLoadingMessageView() override;

protected:
    void startMoving() override;
    void stopMoving() override;

private:
    KvAnimationView* m_animation;  ///< child
};
