#pragma once

#include "ui/widgets/widget.h"

class KvClickLabel;
class QLabel;

/// What stands in place of the picture when the camera has no memory card. Interface thread.
class KvNoSdcardView : public KvWidget {
    Q_OBJECT

public:
    explicit KvNoSdcardView(QWidget* parent = nullptr);

    /// The way back; emits KvClickLabel::click(bool).
    KvClickLabel* backLabel() const { return m_back; }

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    QLabel* m_sign;  ///< children, as the two below
    QLabel* m_text;
    KvClickLabel* m_back;
};
