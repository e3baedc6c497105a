#pragma once

#include <QColor>
#include <QPixmap>
#include <QWidget>

namespace orvelle {

/// The small sign on a picture that tells which camera it is of and how that is: name, dot of its
/// state, whether it is recorded or heard, and by how much the picture is magnified. It lies on
/// every new picture, so it is painted once and copied from then on. Interface thread.
class TileBadge : public QWidget {
    Q_OBJECT

public:
    static constexpr int kMargin = 6;  ///< left of the dot

    struct Facts {
        QString name;  ///< empty: there is no badge
        QColor dot;
        bool isRecorded = false;
        bool isHeard = false;
        double zoom = 1.0;

        bool operator==(const Facts& other) const;
    };

    explicit TileBadge(QWidget* parent);

    void setFacts(const Facts& facts);
    const Facts& facts() const { return m_facts; }
    /// The name gives way; the signs stay.
    void setMaxWidth(int width);

protected:
    void paintEvent(QPaintEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    /// Sizes the widget, too.
    void compose();

    Facts m_facts;
    int m_maxWidth = 0;
    QPixmap m_picture;  ///< null: is to be painted anew
    QString m_shownName;
};

}  // namespace orvelle
