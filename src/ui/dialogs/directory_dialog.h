#pragma once

#include "ui/dialogs/message_dialog.h"
#include "ui/widgets/toast.h"

class QLabel;

/// Tells where a file was saved and opens its folder in the system's file browser: that gives 1,
/// the rest 0.
class KvDirectoryDialog : public orvelle::MessageDialog {
    Q_OBJECT

public:
    /// `path` is the file or a folder.
    KvDirectoryDialog(const QString& message, const QString& path, QWidget* parent = nullptr);

protected:
    void resizeEvent(QResizeEvent* event) override;

private slots:
    void _onClickOpenFolderButton(bool);
    void _onClickCancelButton(bool);

private:
    QString folder() const;

    const QString m_path;
    QLabel* m_pathLabel;  ///< child
    KvToast m_toast;
};
