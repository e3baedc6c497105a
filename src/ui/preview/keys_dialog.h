#pragma once

#include "ui/dialogs/dialog.h"

namespace orvelle {

/// The keys that work while live pictures are watched. Interface thread.
class KeysDialog : public KvDialog {
    Q_OBJECT

public:
    explicit KeysDialog(QWidget* parent);
};

}  // namespace orvelle
