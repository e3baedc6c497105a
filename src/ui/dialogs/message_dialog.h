#pragma once

#include "ui/dialogs/dialog.h"

class QLabel;
class QPushButton;

namespace orvelle {

/// The shape that the message dialogs share: a close button at the top right, a message, a place
/// for a field, and one or two buttons below. It grows with its texts. Interface thread.
class MessageDialog : public KvDialog {
    Q_OBJECT

public:
    explicit MessageDialog(QWidget* parent);

    void setMessage(const QString& message);

protected:
    void resizeEvent(QResizeEvent* event) override;
    void showEvent(QShowEvent* event) override;

    /// Keys of the buttons' texts; null for no second button.
    void setButtons(const char* primaryKey, const char* secondaryKey);
    /// A child that stands below the message, across the dialog.
    void setBody(QWidget* body, int height);
    /// Sizes the dialog anew after a text has changed.
    void fit();

    QPushButton* primaryButton() const { return m_primary; }
    QPushButton* secondaryButton() const { return m_secondary; }
    QPushButton* closeButton() const { return m_close; }

private:
    int messageHeight() const;
    void layOutButtons();

    QPushButton* m_close;  ///< children, as all below
    QLabel* m_message;
    QWidget* m_body = nullptr;
    int m_bodyHeight = 0;
    QPushButton* m_primary;
    QPushButton* m_secondary;
};

}  // namespace orvelle
