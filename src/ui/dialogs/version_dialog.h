#pragma once

#include "ui/dialogs/dialog.h"

class QLabel;
class QPushButton;

/// Logo, name and version of the program.
class KvVersionDialog : public KvDialog {
    Q_OBJECT

public:
    explicit KvVersionDialog(QWidget* parent = nullptr);

protected:
    void resizeEvent(QResizeEvent* event) override;

private slots:
    void _onClickCloseButton(bool);

private:
    QLabel* m_logo;  ///< children, as all below
    QLabel* m_name;
    QLabel* m_version;
    QPushButton* m_close;
};
