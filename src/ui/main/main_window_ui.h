#pragma once

#include <QWidget>

class KvCamerasView;
class KvClickLabel;
class KvDeviceSearchView;
class KvDevicesPreview;
class KvGuideView;
class KvMenuView;
class KvPushButton;
class KvTitleView;
class KvWidget;
class QPushButton;

/// The client area of the main window with all its widgets. Interface thread.
class MainWindowUI : public QWidget {
    Q_OBJECT

public:
    /// `window` is the main window, the parent.
    explicit MainWindowUI(QWidget* window);

    /// The camera list panel; its button shows the same.
    void showCameras(bool visible);
    bool areCamerasShown() const { return m_camerasShown; }
    /// The preview grid in front of the welcome page.
    void showPreview(bool visible);
    /// Where the keyboard begins while nothing is watched: the list, or the field for a code.
    void focusStart();
    bool isPreviewShown() const { return m_previewShown; }
    void toggleHelpMenu();
    void hideHelpMenu();
    void showMaximised(bool maximised);
    /// Where the content begins, that is what dialogs are not centred on.
    int contentLeft() const;
    void layOut();

    KvTitleView* titleView() const { return m_titleView; }
    KvClickLabel* logo() const { return m_logo; }
    KvClickLabel* title() const { return m_title; }
    QPushButton* minimiseButton() const { return m_minimise; }
    QPushButton* maximiseButton() const { return m_maximise; }
    QPushButton* closeButton() const { return m_close; }
    QPushButton* helpButton() const { return m_help; }
    KvPushButton* allCamerasButton() const { return m_allCameras; }
    KvPushButton* mediaPathButton() const { return m_mediaPath; }
    KvCamerasView* cameras() const { return m_cameras; }
    KvDeviceSearchView* welcomePage() const { return m_welcomePage; }
    KvDevicesPreview* preview() const { return m_preview; }
    KvMenuView* helpMenu() const { return m_helpMenu; }
    KvGuideView* guide() const { return m_guide; }  ///< null when none is shown

protected:
    void resizeEvent(QResizeEvent* event) override;

private slots:
    void _onClickGuideViewOkButton();

private:
    void setUpTitleBar();
    void setUpSideBar();
    void showGuideOnce();
    void layOutTitleBar();
    void layOutCentral();

    KvTitleView* m_titleView;  ///< children, as all below
    KvClickLabel* m_logo;
    KvClickLabel* m_title;
    QPushButton* m_minimise;
    QPushButton* m_maximise;
    QPushButton* m_close;
    QPushButton* m_help;
    KvWidget* m_central;
    KvWidget* m_sideBar;
    KvWidget* m_camerasPanel;
    KvWidget* m_content;
    KvPushButton* m_allCameras;
    KvPushButton* m_mediaPath;
    KvCamerasView* m_cameras;
    KvDeviceSearchView* m_welcomePage;
    KvDevicesPreview* m_preview;
    KvMenuView* m_helpMenu;
    KvGuideView* m_guide = nullptr;
    bool m_camerasShown = false;
    bool m_previewShown = false;
};
