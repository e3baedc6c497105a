#pragma once

#include <QWidget>

class KvDeviceSearchViewUI;

/// The welcome page, where a device code is typed. Interface thread.
class KvDeviceSearchView : public QWidget {
    Q_OBJECT
public:
    explicit KvDeviceSearchView(QWidget* parent = nullptr);

    /// Empties the code field.
    void clear();
    void setCode(const QString& code);

signals:
    void clickSearchButton(const QString& code);
    /// Return in the code field.
    void addDevice(const QString& code);

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    KvDeviceSearchViewUI* const m_ui;  ///< child
};
