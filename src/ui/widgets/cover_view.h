#pragma once

#include "ui/widgets/widget.h"

class QLabel;

namespace orvelle {

/// A dark, half-transparent ground with something that moves and a white text below it, over a
/// widget for as long as that waits. It belongs to whoever made it and is a child of that widget
/// only while it is shown, so it must go or be hidden before the widget goes. Interface thread.
class CoverView : public KvWidget {
    Q_OBJECT

public:
    /// Covers `area` of the parent or, when that is empty, the rectangle of the parent's children.
    void showOver(QWidget* parent, const QRect& area = QRect());
    /// Hides and leaves the parent; without effect when not shown.
    void hideOver();
    bool isOver() const { return parentWidget() != nullptr; }
    /// Empty for none.
    void setText(const QString& text);

protected:
    CoverView();

    /// A child that stands in the middle.
    void setPicture(QWidget* picture);
    void resizeEvent(QResizeEvent* event) override;

    virtual void startMoving() = 0;
    virtual void stopMoving() = 0;

private:
    void layOut();

    QWidget* m_picture = nullptr;  ///< child, as the one below
    QLabel* m_label;
};

}  // namespace orvelle
