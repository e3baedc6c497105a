#pragma once

#include <array>

#include "ui/widgets/widget.h"

class ClickLabel;

namespace orvelle {

/// The drop-down below the camera list's title with the two modes that are not shown. It closes
/// with Esc, with a click elsewhere and when it loses the focus. Interface thread.
class ModeMenu : public KvWidget {
    Q_OBJECT
public:
    /// `titleKeys` are the language keys of the modes, in their order.
    ModeMenu(const std::array<const char*, 3>& titleKeys, QWidget* parent);
    ~ModeMenu() override;

    /// Offers the modes other than `mode`, with its top left corner at `corner` of the parent.
    void open(const QPoint& corner, int mode);
    void close();
    /// A click on this widget does not close the menu by itself.
    void setOpener(QWidget* opener) { m_opener = opener; }

    /// Each with the mode that it selects as its tag.
    const std::array<ClickLabel*, 2>& labels() const { return m_labels; }

    bool eventFilter(QObject* watched, QEvent* event) override;

protected:
    bool focusNextPrevChild(bool next) override;

private:
    bool handleKey(int key);
    bool isOutside(QObject* watched) const;

    const std::array<const char*, 3> m_titleKeys;
    std::array<ClickLabel*, 2> m_labels;  ///< children
    QWidget* m_opener = nullptr;
};

}  // namespace orvelle
