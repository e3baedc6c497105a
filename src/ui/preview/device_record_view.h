#pragma once

#include "ui/widgets/widget.h"

class QLabel;
class QPushButton;

/// What a running recording shows: how long it is, and the buttons that drop or keep it.
/// Interface thread.
class KvDeviceRecordView : public KvWidget {
    Q_OBJECT
public:
    explicit KvDeviceRecordView(QWidget* parent = nullptr);

    void setTime(double seconds);
    /// They come and go with the bars: each picture below paints anew what lies on it. The size
    /// changes, too.
    void setButtonsVisible(bool visible);
    /// The size in which nothing is cut off, no wider than `maxWidth` allows.
    QSize sizeWithin(int maxWidth) const;

    QPushButton* cancelButton() const { return m_cancelButton; }
    QPushButton* saveButton() const { return m_saveButton; }

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    static int buttonWidth(const QPushButton& button);
    int wordWidth() const;

    KvWidget* m_light;  ///< children, as all below
    QLabel* m_word;
    QLabel* m_time;
    QPushButton* m_cancelButton;
    QPushButton* m_saveButton;
};
