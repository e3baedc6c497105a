#pragma once

#include <QMenu>

#include "device/device_group.h"

namespace orvelle {

/// The right-click menu of a list entry. Interface thread.
class EntryMenu : public QMenu {
    Q_OBJECT

public:
    explicit EntryMenu(QWidget* parent);

    /// Names the actions for a group or for a single camera.
    void setGroupType(int type);
    /// Whether a new device code can be entered.
    void setCodeOffered(bool offered);

    const QAction* codeAction() const { return m_code; }
    const QAction* topAction() const { return m_top; }
    const QAction* editAction() const { return m_edit; }
    const QAction* removeAction() const { return m_remove; }

private:
    QAction* m_code;  ///< children, as all below
    QAction* m_codeSeparator;
    QAction* m_top;
    QAction* m_edit;
    QAction* m_remove;
};

}  // namespace orvelle
