#pragma once

#include <memory>

#include "ui/dialogs/dialog.h"

class KvLoadingMessageView;
class KvTUTKDeviceTableView;
class QLabel;
class QPushButton;
class TUTKDeviceSearchThread;

namespace orvelle {
class WorkerReaper;
}

/// Shows the cameras that answer on the local network. They carry no password, so exec() giving
/// 1 means: ask for the code of a checked one. Interface thread.
class KvTUTKDeviceSearchDialog : public KvDialog {
    Q_OBJECT

public:
    /// Searches at once. The reaper, which is borrowed, ends a search that is left behind.
    explicit KvTUTKDeviceSearchDialog(orvelle::WorkerReaper& reaper, QWidget* parent = nullptr);
    ~KvTUTKDeviceSearchDialog() override;

protected:
    void resizeEvent(QResizeEvent* event) override;

private slots:
    void _onSearchEnded();
    void _onClickAddButton(bool);
    void _onClickSearchButton(bool);
    void _onClickCloseButton(bool);

private:
    void setUpButtons();
    void search();
    void updateNotice();
    QRect tableArea() const;

    orvelle::WorkerReaper& m_reaper;
    QLabel* m_title;  ///< children, as all below; in this order they take the focus
    KvTUTKDeviceTableView* m_table;
    QLabel* m_notice;
    QPushButton* m_add;
    QPushButton* m_search;
    QPushButton* m_close;
    std::unique_ptr<KvLoadingMessageView> m_loading;
    std::unique_ptr<TUTKDeviceSearchThread> m_thread;
};
