#pragma once

#include "ui/widgets/widget.h"

class KvDevice;
class QLabel;
class QPushButton;

namespace orvelle {

/// A page over the preview grid about one camera, with a title and the way back. Interface thread.
class PreviewPage : public KvWidget {
    Q_OBJECT
public:
    explicit PreviewPage(const QString& title, QWidget* parent);

    /// Borrowed; null for none. The page lets go of it when it is left.
    void setDevice(KvDevice* device);
    KvDevice* device() const { return m_device; }

signals:
    void clickBackButton();

protected:
    void resizeEvent(QResizeEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    const QString m_titleText;
    KvDevice* m_device = nullptr;
    QPushButton* m_backButton;  ///< children, as the one below
    QLabel* m_title;
};

}  // namespace orvelle
