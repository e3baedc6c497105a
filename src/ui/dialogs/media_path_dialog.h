#pragma once

#include "ui/dialogs/message_dialog.h"

class QLabel;
class QPushButton;

/// Asks for the folder of snapshots and recordings. OK stores it in the settings and gives 1; a
/// folder in which no file can be written is refused with a reason.
class KvMediaPathDialog : public orvelle::MessageDialog {
    Q_OBJECT

public:
    explicit KvMediaPathDialog(QWidget* parent = nullptr);

protected:
    /// The folder that the user picks, empty for none.
    virtual QString chooseFolder(const QString& current);

private slots:
    void _onClickSelectButton(bool);
    void _onClickCloseButton(bool);
    void _onClickOkButton(bool);

private:
    void buildBody();
    void showFolder();
    bool checkFolder();

    QString m_folder;
    QWidget* m_body;  ///< child; it holds the three below
    QLabel* m_path;
    QPushButton* m_select;
    QLabel* m_warning;
};
