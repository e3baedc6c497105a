#pragma once

#include "ui/widgets/widget.h"

class QLabel;
class QPushButton;
class QTextBrowser;

/// The picture over the window that explains it at the first start of a version. Interface thread.
class KvGuideView : public KvWidget {
    Q_OBJECT

public:
    /// `language` is "chinese" or "english".
    KvGuideView(const QString& language, QWidget* parent);

signals:
    void clickOkButton();

protected:
    void resizeEvent(QResizeEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    bool focusNextPrevChild(bool next) override;

private slots:
    void _onClickOKButton(bool);

private:
    QLabel* m_image;  ///< children
    QTextBrowser* m_text;
    QPushButton* m_ok;
};
