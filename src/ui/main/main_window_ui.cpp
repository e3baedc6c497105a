#include "ui/main/main_window_ui.h"

#include <QCoreApplication>
#include <QPushButton>

#include "core/configure.h"
#include "core/language.h"
#include "ui/list/cameras_view.h"
#include "ui/list/device_search_view.h"
#include "ui/main/guide_view.h"
#include "ui/main/menu_view.h"
#include "ui/main/title_view.h"
#include "ui/preview/devices_preview.h"
#include "ui/widgets/click_label.h"
#include "ui/widgets/push_button.h"
#include "ui/widgets/text.h"
#include "ui/widgets/widget.h"
#include "ui/widgets/widget_utils.h"

namespace {

constexpr int kTitleHeight = 70;
constexpr int kSideBarWidth = 85;
constexpr int kCamerasWidth = 210;
constexpr QRect kLogoArea(50, 19, 27, 32);
constexpr QRect kTitleArea(95, 17, 200, 35);
constexpr int kTitlePixels = 25;
constexpr int kHelpRight = 195;
constexpr QRect kHelpArea(0, 27, 18, 16);
constexpr int kWindowButtonTop = 22;
constexpr int kWindowButtonSize = 25;
constexpr int kMinimiseRight = 150;
constexpr int kMaximiseRight = 110;
constexpr int kCloseRight = 60;
constexpr int kMenuLeftOfHelp = 52;
constexpr int kMenuBelowHelp = 5;
constexpr int kSideButtonLeft = 27;
constexpr int kSideButtonSize = 30;
constexpr int kAllCamerasTop = 50;
constexpr int kMediaPathBottom = 135;

// The widget in `root` that the Tab key reaches last, or `root` when there is none.
QWidget* lastFocusIn(QWidget* root) {
    QWidget* last = root;
    for (QWidget* next = root->nextInFocusChain(); root->isAncestorOf(next);
         next = next->nextInFocusChain()) {
        if (next->focusPolicy() & Qt::TabFocus)
            last = next;
    }
    return last;
}

}  // namespace

MainWindowUI::MainWindowUI(QWidget* window)
    : QWidget(window),
      m_titleView(new KvTitleView(window, this)),
      m_logo(new KvClickLabel(m_titleView)),
      m_title(new KvClickLabel(QStringLiteral("Orvelle"), m_titleView)),
      m_minimise(new QPushButton(m_titleView)),
      m_maximise(new QPushButton(m_titleView)),
      m_close(new QPushButton(m_titleView)),
      m_help(new QPushButton(m_titleView)),
      m_central(new KvWidget(this)),
      m_sideBar(new KvWidget(m_central)),
      m_camerasPanel(new KvWidget(m_central)),
      m_content(new KvWidget(m_central)),
      m_allCameras(new KvPushButton(m_sideBar)),
      m_mediaPath(new KvPushButton(m_sideBar)),
      m_cameras(new KvCamerasView(m_camerasPanel)),
      m_welcomePage(new KvDeviceSearchView(m_content)),
      m_preview(new KvDevicesPreview(m_content)),
      m_helpMenu(new KvMenuView(this)) {
    setMouseTracking(true);
    setUpTitleBar();
    setUpSideBar();
    m_preview->hide();
    m_helpMenu->hide();
    setTabOrder(lastFocusIn(m_preview), m_logo);
    setTabOrder(m_logo, m_help);
    setTabOrder(m_help, m_minimise);
    setTabOrder(m_minimise, m_maximise);
    setTabOrder(m_maximise, m_close);
    showGuideOnce();
}

void MainWindowUI::setUpTitleBar() {
    m_logo->setStyleSheet(
        KvWidgetUtils::labelImageStyle(KvWidgetUtils::image(QStringLiteral("logo_white"))));
    m_logo->setFocusPolicy(Qt::TabFocus);
    m_logo->setAccessibleName(orvelle::text("current_version"));
    m_title->setStyleSheet(KvWidgetUtils::labelColorStyle(0xffffff));
    KvWidgetUtils::setFont(m_title, kTitlePixels);
    KvWidgetUtils::setUpImageButton(m_minimise, QStringLiteral("minimized"), "minimize_window");
    KvWidgetUtils::setUpImageButton(m_maximise, QStringLiteral("maximized"), "maximize_window");
    KvWidgetUtils::setUpImageButton(m_close, QStringLiteral("home_close"), "close");
    KvWidgetUtils::setUpImageButton(m_help, QStringLiteral("helplist"), "help");
}

void MainWindowUI::setUpSideBar() {
    // Shows where parts meet within a pixel of a scaled screen.
    m_central->setBackgroundColor(0xf6f6f6, 255);
    m_sideBar->setBackgroundColor(0xf6f6f6, 255);
    m_camerasPanel->setBackgroundColor(0xffffff, 255);
    KvWidgetUtils::setUpImageButton(m_allCameras, QStringLiteral("allcamera"), "split_screen");
    const auto images = KvWidgetUtils::imagesOf(QStringLiteral("allcamera"));
    m_allCameras->setImages(images, {images.pressed, images.pressed, images.pressed, {}});
    KvWidgetUtils::setUpImageButton(m_mediaPath, QStringLiteral("save"), "save_path");
}

void MainWindowUI::showGuideOnce() {
    KvConfigure settings;
    const QString key = QCoreApplication::applicationVersion();
    if (!settings.getBool(key, true))
        return;
    m_guide = new KvGuideView(KvLanguage::getLanguage(), this);
    connect(m_guide, &KvGuideView::clickOkButton, this, &MainWindowUI::_onClickGuideViewOkButton);
    if (!settings.setBool(key, false))
        qWarning("the guide will come again");
}

void MainWindowUI::_onClickGuideViewOkButton() {
    if (!m_guide)
        return;
    m_guide->hide();
    m_guide->setGeometry(QRect());
    m_guide->deleteLater();
    m_guide = nullptr;
    m_welcomePage->setFocus();
}

void MainWindowUI::showCameras(bool visible) {
    const bool focusGoes = !visible && m_camerasPanel->isAncestorOf(window()->focusWidget());
    m_camerasShown = visible;
    m_allCameras->setState(visible ? 1 : 0);
    layOut();
    if (focusGoes)
        focusStart();
}

void MainWindowUI::showPreview(bool visible) {
    const bool wasShown = m_previewShown;
    m_previewShown = visible;
    m_preview->setVisible(visible);
    // What it covers is out of the keyboard's reach as well.
    m_welcomePage->setVisible(!visible);
    layOut();
    if (wasShown && !visible)
        focusStart();
}

void MainWindowUI::focusStart() {
    if (m_camerasShown)
        m_cameras->focusList();
    else
        m_welcomePage->setFocus();
}

void MainWindowUI::toggleHelpMenu() {
    m_helpMenu->setVisible(m_helpMenu->isHidden());
}

void MainWindowUI::hideHelpMenu() {
    m_helpMenu->hide();
}

void MainWindowUI::showMaximised(bool maximised) {
    using orvelle::textKey;
    KvWidgetUtils::setToolTip(m_maximise,
                              maximised ? textKey("restore_window") : textKey("maximize_window"));
}

int MainWindowUI::contentLeft() const {
    return kSideBarWidth + (m_camerasShown ? kCamerasWidth : 0);
}

void MainWindowUI::resizeEvent(QResizeEvent*) {
    layOut();
}

void MainWindowUI::layOut() {
    const bool fullscreen = m_previewShown && m_preview->isFullscreen();
    for (QWidget* part : {static_cast<QWidget*>(m_titleView), static_cast<QWidget*>(m_sideBar)})
        part->setVisible(!fullscreen);
    m_camerasPanel->setVisible(!fullscreen && m_camerasShown);
    if (fullscreen) {
        m_helpMenu->hide();
        m_central->setGeometry(rect());
        m_content->setGeometry(rect());
        m_preview->setGeometry(rect());
    } else {
        layOutTitleBar();
        layOutCentral();
    }
    if (m_guide)
        m_guide->setGeometry(rect());
}

void MainWindowUI::layOutTitleBar() {
    m_titleView->setGeometry(0, 0, width(), kTitleHeight);
    m_logo->setGeometry(kLogoArea);
    m_title->setGeometry(QRect(kTitleArea.topLeft(), QSize(m_title->sizeHint().width(), 35)));
    m_help->setGeometry(kHelpArea.translated(width() - kHelpRight, 0));
    int right = kMinimiseRight;
    for (QPushButton* button : {m_minimise, m_maximise, m_close}) {
        button->setGeometry(width() - right, kWindowButtonTop, kWindowButtonSize,
                            kWindowButtonSize);
        right = button == m_minimise ? kMaximiseRight : kCloseRight;
    }
    const QRect help = m_help->geometry();
    m_helpMenu->move(help.left() + help.width() / 2 - kMenuLeftOfHelp,
                     help.top() + help.height() + kMenuBelowHelp);
}

void MainWindowUI::layOutCentral() {
    const int height = this->height() - kTitleHeight;
    m_central->setGeometry(0, kTitleHeight, width(), height);
    m_sideBar->setGeometry(0, 0, kSideBarWidth, height);
    m_allCameras->setGeometry(kSideButtonLeft, kAllCamerasTop, kSideButtonSize, kSideButtonSize);
    m_mediaPath->setGeometry(kSideButtonLeft, height - (kMediaPathBottom - kTitleHeight),
                             kSideButtonSize, kSideButtonSize);
    m_camerasPanel->setGeometry(kSideBarWidth, 0, m_camerasShown ? kCamerasWidth : 0, height);
    m_cameras->setGeometry(m_camerasPanel->rect());
    const int left = contentLeft();
    m_content->setGeometry(left, 0, width() - left, height);
    m_welcomePage->setGeometry(m_content->rect());
    if (m_previewShown)
        m_preview->setGeometry(m_content->rect());
}
