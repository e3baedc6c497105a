#pragma once

#include <QPointer>
#include <QWidget>

class KvMenuLabel;

/// The help menu of the title bar: manual, language and log. Its keys are the arrows, Enter and
/// Esc. Interface thread.
class KvMenuView : public QWidget {
    Q_OBJECT

public:
    static constexpr QSize kSize{210, 80};

    explicit KvMenuView(QWidget* parent);

    /// Marks "chinese" or "english".
    void setCurrentLanguage(const QString& language);
    /// Marks the entry of a log that is being written.
    void setLogging(bool isLogging);

signals:
    void clickHelp();
    void clickLanguage(const QString& language);
    void clickLog();

protected:
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    bool focusNextPrevChild(bool next) override;

private slots:
    void _onClickHelp();
    void _onClickLanguage();
    void _onClickChinese();
    void _onClickEnglish();

private:
    void openLanguages(bool open);

    KvMenuLabel* m_help;  ///< children
    KvMenuLabel* m_language;
    KvMenuLabel* m_log;
    KvMenuLabel* m_english;
    KvMenuLabel* m_chinese;
    QPointer<QWidget> m_opener;  ///< where the keyboard was before, and goes back to
};
