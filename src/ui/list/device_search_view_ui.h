#pragma once

#include <QPixmap>

#include "ui/widgets/widget.h"

class QAction;
class QLabel;
class QLineEdit;

/// The widgets of KvDeviceSearchView: a greeting and the field for a device code.
class KvDeviceSearchViewUI : public KvWidget {
    Q_OBJECT
public:
    explicit KvDeviceSearchViewUI(QWidget* parent = nullptr);

    QLineEdit* codeEdit() const { return m_codeEdit; }

signals:
    void clickSearch(const QString& code);
    void addDevice(const QString& code);

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private slots:
    void _onClickSearchAction(bool checked);
    void _onEditEnded();

private:
    void setUpGreeting();
    void setUpCodeEdit();
    QRect pictureArea() const;

    QPixmap m_background;  ///< scaled to cover the view
    const QPixmap m_picture;
    QLabel* m_greeting;     ///< child
    QLineEdit* m_codeEdit;  ///< child
};
