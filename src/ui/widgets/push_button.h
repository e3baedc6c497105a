#pragma once

#include <QPushButton>

#include "ui/widgets/widget_utils.h"

/// A button with two states of its own, 0 (unchecked) and 1 (checked), each with its set of
/// images. The state changes only by setState(): a click does not touch it. Interface thread.
class KvPushButton : public QPushButton {
    Q_OBJECT

public:
    explicit KvPushButton(QWidget* parent = nullptr);

    /// `checked` with an empty normal image: state 1 looks like state 0.
    void setImages(const orvelle::ButtonImages& unchecked,
                   const orvelle::ButtonImages& checked = {});
    void setState(int state);
    int state() const { return m_checked ? 1 : 0; }

private:
    void applyImages();

    bool m_checked = false;
    orvelle::ButtonImages m_unchecked;
    orvelle::ButtonImages m_checkedImages;
};
