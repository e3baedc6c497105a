#pragma once

#include <QDialog>

#include <memory>

class KvLoadingView;

/// The loading animation as a modal dialog; its owner accepts or rejects it. Interface thread.
class KvLoadingDialog : public QDialog {
    Q_OBJECT

public:
    explicit KvLoadingDialog(QWidget* parent = nullptr);
    ~KvLoadingDialog() override;

    void setText(const QString& text);

protected:
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    std::unique_ptr<KvLoadingView> m_loadingView;
};
