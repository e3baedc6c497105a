#pragma once

#include "ui/widgets/cover_view.h"

class QMovie;

/// The loading animation over a widget that waits. Interface thread; owned by whoever made it,
/// see CoverView.
class KvLoadingView : public orvelle::CoverView {
    Q_OBJECT

public:
    KvLoadingView();
    ~KvLoadingView() override;

protected:
    void startMoving() override;
    void stopMoving() override;

private:
    QMovie* m_movie;  ///< child
};
