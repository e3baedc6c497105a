#pragma once

#include "ui/dialogs/dialog.h"

class QLabel;
class QPushButton;

namespace orvelle {

/// The shape that the message dialogs share: a close button at the top right, a message, a place
/// for a field, and one or two buttons below. Enter is the primary button. The height follows
/// the texts. Interface thread.
class MessageDialog : public KvDialog {
    Q_OBJECT

public:
    void setMessage(const QString& message);

protected:
    explicit MessageDialog(QWidget* parent);

    /// An empty secondary text leaves that button out.
    void setButtonTexts(const QString& primary, const QString& secondary);
    /// A child that stands below the message, as wide as that.
    void setBody(QWidget* body, int height);
    void resizeEvent(QResizeEvent* event) override;

    QPushButton* primaryButton() const { return m_primary; }
    QPushButton* secondaryButton() const { return m_secondary; }
    QPushButton* closeButton() const { return m_close; }

private:
    int messageHeight() const;
    void fit();
    void layOut();
    void layOutButtons();

    QLabel* m_message;  ///< children, as all below; in this order they take the focus
    QWidget* m_body = nullptr;
    int m_bodyHeight = 0;
    QPushButton* m_primary;
    QPushButton* m_secondary;
    QPushButton* m_close;
};

}  // namespace orvelle
