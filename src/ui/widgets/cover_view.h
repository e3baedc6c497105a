#pragma once

#include "ui/widgets/widget.h"

namespace orvelle {

/// Something that lies over a widget for as long as that waits. It belongs to whoever made it
/// and has a parent only while it is shown. Interface thread.
class CoverView : public KvWidget {
    Q_OBJECT

public:
    CoverView();

    /// Covers `area` of the parent or, when that is empty, the rectangle of the parent's children.
    void showOver(QWidget* parent, const QRect& area = QRect());
    /// Hides and leaves the parent; without effect when not shown.
    void hideOver();
    bool isOver() const { return parentWidget() != nullptr; }

protected:
    virtual void startMoving() = 0;
    virtual void stopMoving() = 0;
};

}  // namespace orvelle
