#pragma once

#include "ui/dialogs/dialog.h"

class QTextBrowser;

namespace orvelle {

/// The user manual, in the current language as far as there is one. Nothing is fetched from
/// anywhere: pictures come from the manual's folder only, and web links go to the user's browser.
/// Interface thread.
class ManualDialog : public KvDialog {
    Q_OBJECT

public:
    /// `room` is the largest size that it may take.
    ManualDialog(const QString& folder, const QSize& room, QWidget* parent);

    /// Whether there is a page to show.
    bool isReadable() const { return m_isReadable; }

private:
    void openLink(const QUrl& link);
    void scrollTo(const QString& anchor);

    QTextBrowser* m_page;  ///< child
    bool m_isReadable = false;
};

}  // namespace orvelle
