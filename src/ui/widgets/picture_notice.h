#pragma once

#include "ui/widgets/widget.h"

class QLabel;
class QPushButton;

namespace orvelle {

/// What stands where a picture should be, or over one that is not live: a sign, some lines of text
/// and one button that helps. It fills its parent and lets the mouse through beside the button.
/// Interface thread.
class PictureNotice : public KvWidget {
    Q_OBJECT

public:
    struct Content {
        QString icon;            ///< of ":/resources/"; empty for none
        QString text;            ///< of one line or more; empty for no notice at all
        QString action;          ///< on the button; empty for none
        bool isDimming = false;  ///< of the picture below

        bool operator==(const Content& other) const {
            return icon == other.icon && text == other.text && action == other.action &&
                   isDimming == other.isDimming;
        }
    };

    explicit PictureNotice(QWidget* parent);

    void setContent(const Content& content);
    void setFontPixels(int pixels);
    QPushButton* button() const { return m_button; }

signals:
    void actionClicked();

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    void setButtonText(const QString& words);
    void layOut();

    Content m_content;
    QLabel* m_icon;  ///< children, as all below
    QLabel* m_label;
    QPushButton* m_button;
};

}  // namespace orvelle
