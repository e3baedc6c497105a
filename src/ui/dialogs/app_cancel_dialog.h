#pragma once

#include "core/thread.h"
#include "ui/dialogs/busy_dialog.h"

class KvAppCancelDialog;

/// Closes every camera while the dialog that started it is shown; outlived by it.
class KvAppCancelThread : public KvThread {
public:
    explicit KvAppCancelThread(KvAppCancelDialog* dialog);
    void run() override;

private:
    KvAppCancelDialog* const m_dialog;
};

/// Says that the program is exiting until all cameras are closed. Every view has let go of its
/// camera before. Interface thread.
class KvAppCancelDialog : public orvelle::BusyDialog {
    Q_OBJECT

public:
    explicit KvAppCancelDialog(QWidget* parent = nullptr);
    ~KvAppCancelDialog() override;  ///< waits for the thread

    /// Returns when all is closed: 1, or 0 when the event loop was ended before.
    int start(int leftInset = 0);

signals:
    void _appCancelThreadEndedSignal();

private slots:
    void _onAppCancelThreadEnded();

private:
    KvAppCancelThread m_thread;
};
