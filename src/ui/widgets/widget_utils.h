#pragma once

#include <QFont>
#include <QObject>
#include <QString>

class QKeyEvent;
class QLineEdit;
class QPushButton;
class QWidget;

namespace orvelle {

/// The paths of a button's images; all but the normal one may be empty.
struct ButtonImages {
    QString normal;
    QString hover;
    QString pressed;
    QString disabled;
};

}  // namespace orvelle

/// The looks that all views share: style sheets, fonts, images and tooltips. Interface thread.
class KvWidgetUtils : public QObject {
    Q_OBJECT

public:
    /// ":/resources/NAME.png".
    static QString image(const QString& name);
    /// The images NAME_normal, _hover, _press or _pressed, and _disable, as far as they exist.
    static orvelle::ButtonImages imagesOf(const QString& name);

    /// Style sheets, for setStyleSheet().
    static QString buttonStyle(const orvelle::ButtonImages& images);
    static QString buttonStyle(const QString& image);
    static QString labelImageStyle(const QString& image);
    /// `rgb` is 0xRRGGBB, `alpha` 0 to 255.
    static QString labelColorStyle(unsigned rgb, int alpha = 255);
    /// `className` is "QLabel" or "QPushButton".
    static QString backgroundStyle(const QString& className, unsigned rgb, int alpha = 255);
    /// White text on the accent colour, with its states.
    static QString primaryButtonStyle(int radius = 5);
    /// Accent text and outline on white, with its states.
    static QString secondaryButtonStyle(int radius = 5);
    /// A field with a grey outline; round ones turn to the accent colour with the focus.
    static QString lineEditStyle();
    static QString roundLineEditStyle();
    /// A style sheet for a field, and a placeholder fainter than the field's text.
    static void setUpLineEdit(QLineEdit* edit, const QString& style, const QString& placeholder);

    static QFont font(int pixelSize);
    static void setFont(QWidget* widget, int pixelSize);
    /// A name as the text of a tooltip: never taken for markup, and never longer than a line.
    static QString toolTipText(const QString& name);
    /// The text of `key` as tooltip and as accessible name.
    static void setToolTip(QWidget* widget, const char* key);
    /// Images, tooltip, accessible name and pointing hand of an image button.
    static void setUpImageButton(QPushButton* button, const QString& name, const char* key);
    /// Also right for a widget that has gone from under a mouse at rest, of which the toolkit hears
    /// with the next move only.
    static bool isMouseIn(const QWidget& widget);
    /// For keys that no widget of a window took: Enter presses the button that has the focus, as
    /// Space does. False when there is none, or the key is another one.
    static bool clickByEnter(const QWidget& window, const QKeyEvent& event);
};
