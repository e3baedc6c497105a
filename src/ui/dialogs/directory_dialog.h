#pragma once

#include "ui/dialogs/message_dialog.h"
#include "ui/widgets/toast.h"

/// Tells where a file was saved. The blue button opens its folder in the system's file browser and
/// gives 1; cancel, close and Esc give 0.
class KvDirectoryDialog : public orvelle::MessageDialog {
    Q_OBJECT

public:
    /// `path` is the file or a folder.
    KvDirectoryDialog(const QString& message, const QString& path, QWidget* parent = nullptr);

private slots:
    void _onClickOpenFolderButton(bool);
    void _onClickCancelButton(bool);

private:
    const QString m_folder;
    KvToast m_toast;
};
