#include "ui/widgets/loading_dialog.h"

#include "ui/widgets/loading_view.h"

static constexpr QSize kSize(200, 140);

KvLoadingDialog::KvLoadingDialog(QWidget* parent)
    : QDialog(parent, Qt::Dialog | Qt::FramelessWindowHint),
      m_loadingView(std::make_unique<KvLoadingView>()) {
    setStyleSheet(QStringLiteral("QDialog{background-color:#2d2d2d;}"));
    setFixedSize(kSize);
}

KvLoadingDialog::~KvLoadingDialog() = default;

void KvLoadingDialog::setText(const QString& text) {
    m_loadingView->setText(text);
}

void KvLoadingDialog::showEvent(QShowEvent* event) {
    QDialog::showEvent(event);
    m_loadingView->showOver(this, rect());
}

void KvLoadingDialog::hideEvent(QHideEvent* event) {
    m_loadingView->hideOver();
    QDialog::hideEvent(event);
}
