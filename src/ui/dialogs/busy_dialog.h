#pragma once

#include "ui/dialogs/dialog.h"

class KvAnimationView;
class QLabel;

namespace orvelle {

/// A turning picture and a text over the program while something takes its time. The user cannot
/// close it. Interface thread.
class BusyDialog : public KvDialog {
    Q_OBJECT

public:
    void reject() override {}
    void done(int result) override;

protected:
    BusyDialog(const QString& text, QWidget* parent);

    void setText(const QString& text);
    void resizeEvent(QResizeEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    KvAnimationView* m_animation;  ///< child, as the label
    QLabel* m_label;
};

}  // namespace orvelle
