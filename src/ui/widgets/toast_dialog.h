#pragma once

#include <QDialog>
#include <QTimer>

class QLabel;

/// A message that covers the program for a while: modal, without buttons, closed by its timer, a
/// click or a key. Interface thread.
class KvToastDialog : public QDialog {
    Q_OBJECT

public:
    explicit KvToastDialog(QWidget* parent = nullptr);

    /// Paddings and text size the dialog.
    void setPaddings(int horizontal, int vertical);
    void setText(const QString& text);
    /// Centres it over its parent, `leftInset` as in orvelle::centreOver(), and runs it modally.
    int run(int ms, int leftInset = 0);

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;

private:
    void fitText();

    QLabel* m_label;  ///< child
    QTimer m_timer;
    int m_horizontalPadding = 10;
    int m_verticalPadding = 5;
};
