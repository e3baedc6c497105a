#include "ui/list/device_search_view.h"

#include <QLineEdit>

#include "ui/list/device_search_view_ui.h"

KvDeviceSearchView::KvDeviceSearchView(QWidget* parent)
    : QWidget(parent), m_ui(new KvDeviceSearchViewUI(this)) {
    setFocusProxy(m_ui->codeEdit());
    connect(m_ui, &KvDeviceSearchViewUI::clickSearch, this, &KvDeviceSearchView::clickSearchButton);
    connect(m_ui, &KvDeviceSearchViewUI::addDevice, this, &KvDeviceSearchView::addDevice);
}

void KvDeviceSearchView::clear() {
    m_ui->codeEdit()->clear();
}

void KvDeviceSearchView::setCode(const QString& code) {
    m_ui->codeEdit()->setText(code);
}

void KvDeviceSearchView::resizeEvent(QResizeEvent* /*event*/) {
    m_ui->setGeometry(rect());
}
