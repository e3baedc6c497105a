#pragma once

#include "ui/widgets/widget.h"

class ClickLabel;
class KvClickLabel;
class KvDeviceGroupAdapter;
class KvListView;
class QLabel;
class QLineEdit;
class QPushButton;

namespace orvelle {
class ModeMenu;
}

/// The widgets of KvCamerasView.
class KvCamerasViewUI : public KvWidget {
    Q_OBJECT
public:
    explicit KvCamerasViewUI(QWidget* parent = nullptr);

    /// 0 all cameras, 1 single cameras, 2 groups.
    void showMode(int mode);
    /// Opens the drop-down, or closes it.
    void toggleModeMenu(int mode);
    void closeModeMenu();
    /// Shows a text in place of the list; empty for the list.
    void showNotice(const QString& text);

    KvClickLabel* title() const { return m_title; }
    orvelle::ModeMenu* modeMenu() const { return m_modeMenu; }
    QPushButton* searchButton() const { return m_searchButton; }
    QPushButton* addButton() const { return m_addButton; }
    QPushButton* groupButton() const { return m_groupButton; }
    QLineEdit* filter() const { return m_filter; }
    KvListView* list() const { return m_list; }
    KvDeviceGroupAdapter* adapter() const { return m_adapter; }
    const QLabel* notice() const { return m_notice; }

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    void setUpTitle();
    void setUpFilter();
    void setUpNotice();
    void layOut();
    void layOutTitle();

    KvClickLabel* m_title;  ///< children, as all below; in this order they take the focus
    QLabel* m_titleArrow;
    QPushButton* m_searchButton;
    QPushButton* m_addButton;
    QPushButton* m_groupButton;
    QLineEdit* m_filter;
    KvDeviceGroupAdapter* m_adapter;
    KvListView* m_list;
    QLabel* m_notice;
    orvelle::ModeMenu* m_modeMenu;
};
