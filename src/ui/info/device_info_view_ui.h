#pragma once

#include <array>
#include <vector>

#include "ui/widgets/loading_view.h"
#include "ui/widgets/widget.h"

class QLabel;
class QPushButton;

/// The widgets of KvTUTKDeviceInfoView: a head with the way back, three cards of captions and
/// values, and two buttons. The loading view covers all but the head.
class KvTUTKDeviceInfoViewUI : public KvWidget {
    Q_OBJECT

public:
    enum Row {
        kCameraName,
        kDeviceType,
        kFirmwareVersion,
        kUid,
        kNetworkName,
        kIpAddress,
        kMacAddress,
        kFreeSpace,
        kTotalSpace,
        kRows
    };

    explicit KvTUTKDeviceInfoViewUI(QWidget* parent);

    /// Empties all values and the notice.
    void clear();
    /// An empty text shows as a dash.
    void setValue(Row row, const QString& value);
    void setCleanupEnabled(bool enabled);
    /// What is wrong, above the cards; empty for nothing.
    void setNotice(const QString& notice);
    void showLoading(const QString& text);
    void hideLoading();

    QPushButton* backButton() const { return m_back; }
    QPushButton* cleanupButton() const { return m_cleanup; }
    QPushButton* unbindButton() const { return m_unbind; }
    QPushButton* copyButton() const { return m_copy; }
    QString value(Row row) const;
    QString notice() const;
    bool isLoading() const { return m_loading.isOver(); }

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    struct Card {
        KvWidget* frame;
        QLabel* heading;
        Row firstRow;
        int rows;
    };

    void addCard(const char* heading, Row firstRow, const std::vector<const char*>& captions);
    void setUpButtons();
    void setButtonEnabled(QPushButton* button, bool enabled);
    void layOut();
    void layOutCard(const Card& card, int rowHeight);
    void showElided(Row row);
    QRect loadingArea() const;

    QPushButton* m_back;  ///< children, as all below
    QLabel* m_title;
    QLabel* m_notice;
    std::vector<Card> m_cards;
    std::array<QLabel*, kRows> m_captions{};
    std::array<QLabel*, kRows> m_values{};
    std::array<QString, kRows> m_texts;  ///< of the values, uncut
    QPushButton* m_copy;                 ///< of the UID
    QPushButton* m_cleanup;
    QPushButton* m_unbind;
    bool m_canCleanUp = false;
    KvLoadingView m_loading;
};
