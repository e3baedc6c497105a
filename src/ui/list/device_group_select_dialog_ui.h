#pragma once

#include "ui/widgets/widget.h"

class KvDeviceGroupRemoveAdapter;
class KvDeviceGroupSelectAdapter;
class KvListView;
class QLabel;
class QLineEdit;
class QPushButton;

/// The widgets of KvDeviceGroupSelectDialog.
class KvDeviceGroupSelectDialogUI : public KvWidget {
    Q_OBJECT
public:
    static constexpr QSize kSize{560, 620};

    explicit KvDeviceGroupSelectDialogUI(QWidget* parent);

    void setTitle(const QString& title);
    void showCount(int chosen, int most);

    QPushButton* closeButton() const { return m_closeButton; }
    QLineEdit* nameEdit() const { return m_nameEdit; }
    QPushButton* okButton() const { return m_okButton; }
    KvListView* cameraList() const { return m_cameraList; }
    KvListView* chosenList() const { return m_chosenList; }
    KvDeviceGroupSelectAdapter* cameraAdapter() const { return m_cameraAdapter; }
    KvDeviceGroupRemoveAdapter* chosenAdapter() const { return m_chosenAdapter; }
    const QLabel* counter() const { return m_counter; }

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    void setUpLabels();
    void setUpLists();
    void setUpOkButton();
    void layOutColumn(int left, QLabel* heading, KvWidget* frame, KvListView* list) const;

    QLabel* m_title;  ///< children, as all below; in this order they take the focus
    QLineEdit* m_nameEdit;
    QLabel* m_cameraHeading;
    QLabel* m_counter;
    KvWidget* m_cameraFrame;
    KvWidget* m_chosenFrame;
    KvDeviceGroupSelectAdapter* m_cameraAdapter;
    KvDeviceGroupRemoveAdapter* m_chosenAdapter;
    KvListView* m_cameraList;
    KvListView* m_chosenList;
    QLabel* m_chosenHint;  ///< in the list's place while nothing is chosen
    QPushButton* m_okButton;
    QPushButton* m_closeButton;
};
