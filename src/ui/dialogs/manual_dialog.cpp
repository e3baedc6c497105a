#include "ui/dialogs/manual_dialog.h"

#include <QDesktopServices>
#include <QDir>
#include <QFileInfo>
#include <QImageReader>
#include <QLabel>
#include <QPushButton>
#include <QScrollBar>
#include <QTextBlock>
#include <QTextBrowser>
#include <QTextTable>

#include "core/language.h"
#include "ui/logging.h"
#include "ui/palette.h"
#include "ui/widgets/scroll_bar_style.h"
#include "ui/widgets/text.h"
#include "ui/widgets/widget_utils.h"

namespace orvelle {

namespace {

constexpr QSize kSize(820, 620);
constexpr int kHeadHeight = 44;
constexpr int kCloseSize = 24;
constexpr int kCloseMargin = 10;
constexpr int kPageMargin = 24;
constexpr int kScrollBarWidth = 24;  // at most; it comes after the pictures
constexpr int kLineHeightPercent = 135;
constexpr int kHeadingMargin = 18;
constexpr int kTableMargin = 8;
constexpr int kCellPadding = 6;
constexpr qint64 kMaxBytes = 4 << 20;
constexpr int kMaxPictureSide = 8192;

/// A page whose pictures are those of a folder, no wider than the page.
class Page : public QTextBrowser {
public:
    Page(const QString& folder, QWidget* parent) : QTextBrowser(parent), m_folder(folder) {}

protected:
    QVariant loadResource(int type, const QUrl& name) override {
        if (type != QTextDocument::ImageResource)
            return {};
        const QImage picture = read(QDir::cleanPath(m_folder + QLatin1Char('/') + name.path()));
        // A picture that is not there leaves a gap, no sign of a fault.
        QImage gap(1, 1, QImage::Format_ARGB32);
        gap.fill(Qt::transparent);
        return picture.isNull() ? gap : picture;
    }

private:
    QImage read(const QString& path) const {
        if (!path.startsWith(m_folder + QLatin1Char('/')) || !QFileInfo::exists(path))
            return {};
        QImageReader reader(path);
        const QSize size = reader.size();
        if (size.isEmpty() || size.width() > kMaxPictureSide || size.height() > kMaxPictureSide)
            return {};
        const double ratio = devicePixelRatioF();
        const int room = qRound((width() - 2 * kPageMargin - kScrollBarWidth) * ratio);
        QImage picture = reader.read();
        if (picture.width() > room)
            picture = picture.scaledToWidth(room, Qt::SmoothTransformation);
        picture.setDevicePixelRatio(ratio);
        return picture;
    }

    const QString m_folder;
};

QString pageIn(const QString& folder) {
    const QString english = folder + QStringLiteral("/manual.md");
    const QString chinese = folder + QStringLiteral("/manual.zh.md");
    const bool isChinese = KvLanguage::getLanguage() == QLatin1String("chinese");
    return isChinese && QFileInfo::exists(chinese) ? chinese : english;
}

// As links within a page are written for this text.
QString anchorOf(const QString& heading) {
    QString anchor;
    for (const QChar character : heading.toLower()) {
        if (character.isLetterOrNumber() || character == QLatin1Char('-'))
            anchor += character;
        else if (character.isSpace())
            anchor += QLatin1Char('-');
    }
    return anchor;
}

void setUpTables(QTextDocument& page) {
    for (QTextFrame* frame : page.rootFrame()->childFrames()) {
        auto* table = qobject_cast<QTextTable*>(frame);
        if (!table)
            continue;
        QTextTableFormat format = table->format();
        format.setCellPadding(kCellPadding);
        format.setCellSpacing(0);
        format.setBorderCollapse(true);
        format.setBorderStyle(QTextFrameFormat::BorderStyle_Solid);
        format.setBorderBrush(QColor(palette::kFrame));
        format.setTopMargin(kTableMargin);
        format.setBottomMargin(kTableMargin);
        table->setFormat(format);
    }
}

void setUpLines(QTextDocument& page) {
    for (QTextBlock block = page.begin(); block.isValid(); block = block.next()) {
        // It would stretch a picture's line as well.
        if (block.text().contains(QChar::ObjectReplacementCharacter))
            continue;
        QTextCursor cursor(block);
        QTextBlockFormat format = block.blockFormat();
        if (format.headingLevel() > 1)
            format.setTopMargin(kHeadingMargin);
        format.setLineHeight(kLineHeightPercent, QTextBlockFormat::ProportionalHeight);
        cursor.setBlockFormat(format);
    }
}

}  // namespace

ManualDialog::ManualDialog(const QString& folder, const QSize& room, QWidget* parent)
    : KvDialog(parent), m_page(new Page(QDir::cleanPath(folder), this)) {
    setFixedSize(kSize.boundedTo(room));
    auto* title = new QLabel(text("user_manual"), this);
    title->setAlignment(Qt::AlignCenter);
    title->setStyleSheet(QStringLiteral("QLabel{color:%1;}").arg(QLatin1String(palette::kText)));
    KvWidgetUtils::setFont(title, palette::kTitleFontPixels);
    title->setGeometry(kHeadHeight, 0, width() - 2 * kHeadHeight, kHeadHeight);
    setAccessibleName(title->text());
    auto* close = new QPushButton(this);
    KvWidgetUtils::setUpImageButton(close, QStringLiteral("close"), "close");
    close->setAutoDefault(false);
    close->setGeometry(width() - kCloseMargin - kCloseSize, kCloseMargin, kCloseSize, kCloseSize);
    connect(close, &QPushButton::clicked, this, &QDialog::reject);

    m_page->setStyleSheet(QStringLiteral("QTextBrowser{color:%1;border:none;background:#ffffff;}")
                              .arg(QLatin1String(palette::kText)));
    m_page->verticalScrollBar()->setStyleSheet(QLatin1String(kScrollBarStyle));
    KvWidgetUtils::setFont(m_page, palette::kFontPixels);
    m_page->setGeometry(1, kHeadHeight, width() - 2, height() - kHeadHeight - 1);
    m_page->setOpenLinks(false);
    m_page->setFocus();
    connect(m_page, &QTextBrowser::anchorClicked, this, &ManualDialog::openLink);

    QFile file(pageIn(folder));
    m_isReadable = file.open(QIODevice::ReadOnly) && file.size() <= kMaxBytes;
    if (!m_isReadable) {
        qCWarning(lcUi) << "no manual at" << file.fileName();
        return;
    }
    m_page->setMarkdown(QString::fromUtf8(file.readAll()));
    m_page->document()->setDocumentMargin(kPageMargin);
    setUpLines(*m_page->document());
    setUpTables(*m_page->document());
    m_page->moveCursor(QTextCursor::Start);
}

void ManualDialog::openLink(const QUrl& link) {
    const bool isWeb =
        link.scheme() == QLatin1String("https") || link.scheme() == QLatin1String("http");
    if (isWeb)
        QDesktopServices::openUrl(link);
    else if (link.path().isEmpty())
        scrollTo(link.fragment(QUrl::FullyDecoded));
}

void ManualDialog::scrollTo(const QString& anchor) {
    const QTextDocument* page = m_page->document();
    for (QTextBlock block = page->begin(); block.isValid(); block = block.next()) {
        if (block.blockFormat().headingLevel() == 0 || anchorOf(block.text()) != anchor)
            continue;
        m_page->moveCursor(QTextCursor::End);
        m_page->setTextCursor(QTextCursor(block));
        return;
    }
}

}  // namespace orvelle
