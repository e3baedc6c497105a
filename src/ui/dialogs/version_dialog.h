#pragma once

#include "ui/dialogs/dialog.h"

/// Logo, name and version of the program.
class KvVersionDialog : public KvDialog {
    Q_OBJECT

public:
    explicit KvVersionDialog(QWidget* parent = nullptr);

private slots:
    void _onClickCloseButton(bool);
};
