#pragma once

#include "ui/dialogs/message_dialog.h"

class QLabel;
class QTextBrowser;

/// Offers a newer version: download gives 1; later, close and Esc give 0. As it comes by itself,
/// Enter means later, unless the download button has the focus.
class KvNewVersionDialog : public orvelle::MessageDialog {
    Q_OBJECT

public:
    explicit KvNewVersionDialog(QWidget* parent = nullptr);

    void setVersion(const QString& version);
    /// Plain text.
    void setNotes(const QString& notes);

private slots:
    void _onClickOkButton(bool);
    void _onClickCancelButton(bool);
    void _onClickCloseButton(bool);

private:
    QLabel* m_version;  ///< children of the body
    QTextBrowser* m_notes;
};
