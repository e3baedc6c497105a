#pragma once

#include "ui/widgets/widget.h"

class QLabel;
class QPushButton;

namespace orvelle {

/// News that stay over a widget, at its bottom, until the user has read them. Interface thread.
class NoticeBar : public KvWidget {
    Q_OBJECT

public:
    /// `bottom` is the distance from the parent's lower edge.
    explicit NoticeBar(QWidget* parent, int bottom);

    /// What is shown already stays above it.
    void add(const QString& text);
    QString text() const;
    void dismiss();

signals:
    void dismissed();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void layOut();

    const int m_bottom;
    QLabel* m_label;  ///< child, as the one below
    QPushButton* m_button;
};

}  // namespace orvelle
