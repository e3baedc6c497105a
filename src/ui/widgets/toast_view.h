#pragma once

#include "ui/widgets/widget.h"

class QLabel;

/// The box of a toast: white text on a rounded, half-transparent ground. It lets the mouse
/// through. Interface thread.
class KvToastView : public KvWidget {
    Q_OBJECT

public:
    explicit KvToastView(QWidget* parent = nullptr);

    void setTextColor(unsigned rgb);
    /// Sizes the view to the text plus the paddings on every side; text wider than `maxWidth`
    /// (of the view, in pixels) is broken into lines.
    void setText(const QString& text, int horizontalPadding, int verticalPadding, int maxWidth);

private:
    QLabel* m_label;  ///< child
};
