#pragma once

#include <QObject>
#include <QString>

class QLineEdit;

/// Hides a field's placeholder while the field has the focus. A child of the field. Interface
/// thread.
class QLineEditFilter : public QObject {
    Q_OBJECT

public:
    /// Takes the placeholder that the field has now.
    explicit QLineEditFilter(QLineEdit* edit);

    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    QLineEdit* m_edit;
    const QString m_placeholder;
};
