#include "ui/playback/video_time_line_view.h"

#include <QKeyEvent>
#include <QPainter>

#include "core/configure.h"
#include "ui/palette.h"
#include "ui/playback/time_line_view.h"
#include "ui/widgets/push_button.h"
#include "ui/widgets/text.h"
#include "ui/widgets/widget_utils.h"

using orvelle::ButtonImages;
using orvelle::textKey;

namespace {

constexpr int kTimeLineLeft = 100;
constexpr int kTimeLineRight = 80;
constexpr int kTimeLineMargin = 2;  // leaves room for the ring of the focus
constexpr int kButtonSize = 24;
constexpr int kPlayLeft = 25;
constexpr int kPrevLeft = 51;
constexpr int kNextLeft = 75;
constexpr int kZoomSize = 14;
// From the right edge.
constexpr int kIncreaseLeft = 59;
constexpr int kReduceLeft = 29;
constexpr QSize kSizeHint(660, 60);

ButtonImages images(const char* normal, const char* hover = nullptr) {
    const QString image = KvWidgetUtils::image(QLatin1String(normal));
    return {image, hover ? KvWidgetUtils::image(QLatin1String(hover)) : QString(), {}, {}};
}

QPushButton* makeButton(QWidget* parent, const ButtonImages& images, const char* key) {
    auto* button = new QPushButton(parent);
    button->setStyleSheet(KvWidgetUtils::buttonStyle(images));
    button->setCursor(Qt::PointingHandCursor);
    KvWidgetUtils::setToolTip(button, key);
    return button;
}

}  // namespace

KvVideoTimeLineView::KvVideoTimeLineView(QWidget* parent)
    : QWidget(parent), m_play(new KvPushButton(this)) {
    m_play->setImages(images("play", "play_over"), images("pause", "pause_over"));
    KvWidgetUtils::setToolTip(m_play, "play");
    m_prev = makeButton(this, images("prev"), textKey("previous_recording"));
    m_next = makeButton(this, images("next"), textKey("next_recording"));
    m_timeLine = new KvTimeLineView(this);
    m_increase = makeButton(this, images("increase", "increase_over"), textKey("zoom_in"));
    m_reduce = makeButton(this, images("reduce", "reduce_over"), textKey("zoom_out"));
    connectChildren();
    const int level = KvConfigure().getInt(orvelle::settings::kTimeLineLevel, 0);
    m_timeLine->setSecondsPerStep(orvelle::secondsPerStepOf(level, m_timeLine->stepsPerMajor()));
}

void KvVideoTimeLineView::connectChildren() {
    using View = KvVideoTimeLineView;
    connect(m_play, &QPushButton::clicked, this, &View::_onClickPlayButton);
    connect(m_prev, &QPushButton::clicked, this, &View::_onClickPrevButton);
    connect(m_next, &QPushButton::clicked, this, &View::_onClickNextButton);
    connect(m_increase, &QPushButton::clicked, this, &View::_onClickIncreaseButton);
    connect(m_reduce, &QPushButton::clicked, this, &View::_onClickReduceButton);
    connect(m_timeLine, &KvTimeLineView::zoomRequested, this, &View::zoom);
    connect(m_timeLine, &KvTimeLineView::valueChangeEnded, this,
            &View::_onTimeLineViewValueChangeEnded);
}

QSize KvVideoTimeLineView::sizeHint() const {
    return kSizeHint;
}

void KvVideoTimeLineView::setMinimum(int minimum) {
    m_timeLine->setMinimum(minimum);
}

void KvVideoTimeLineView::setMaximum(int maximum) {
    m_timeLine->setMaximum(maximum);
}

void KvVideoTimeLineView::setValue(int value) {
    m_timeLine->setValue(value);
}

int KvVideoTimeLineView::minimum() const {
    return m_timeLine->minimum();
}

int KvVideoTimeLineView::maximum() const {
    return m_timeLine->maximum();
}

int KvVideoTimeLineView::value() const {
    return m_timeLine->value();
}

void KvVideoTimeLineView::setMarks(const QVector<KvTimeLineMark>& marks) {
    m_timeLine->setMarks(marks);
}

const QVector<KvTimeLineMark>& KvVideoTimeLineView::marks() const {
    return m_timeLine->marks();
}

void KvVideoTimeLineView::setUnknown(const orvelle::TimeSpans& spans) {
    m_timeLine->setUnknown(spans);
}

orvelle::TimeSpan KvVideoTimeLineView::shownSpan() const {
    return m_timeLine->shownSpan();
}

bool KvVideoTimeLineView::isDragging() const {
    return m_timeLine->isDragging();
}

int KvVideoTimeLineView::level() const {
    return orvelle::levelOf(m_timeLine->secondsPerStep(), m_timeLine->stepsPerMajor());
}

void KvVideoTimeLineView::setLevel(int level) {
    zoomTo(level, m_timeLine->width() / 2);
}

void KvVideoTimeLineView::zoomTo(int level, int x) {
    const int kept = qBound(0, level, orvelle::kTimeLevels - 1);
    m_timeLine->zoomAt(x, orvelle::secondsPerStepOf(kept, m_timeLine->stepsPerMajor()));
    KvConfigure().setInt(orvelle::settings::kTimeLineLevel, kept);
}

void KvVideoTimeLineView::zoom(int levels, int x) {
    zoomTo(level() + levels, x);
}

void KvVideoTimeLineView::setPlayChecked(bool checked) {
    m_play->setState(checked ? 1 : 0);
    KvWidgetUtils::setToolTip(m_play, checked ? textKey("pause") : textKey("play"));
}

bool KvVideoTimeLineView::isPlayChecked() const {
    return m_play->state() != 0;
}

void KvVideoTimeLineView::_onClickPlayButton(bool) {
    setPlayChecked(!isPlayChecked());
    emit clickPlay(isPlayChecked());
}

void KvVideoTimeLineView::_onClickPrevButton(bool) {
    emit clickPrev();
}

void KvVideoTimeLineView::_onClickNextButton(bool) {
    emit clickNext();
}

void KvVideoTimeLineView::_onClickIncreaseButton(bool) {
    setLevel(level() - 1);
}

void KvVideoTimeLineView::_onClickReduceButton(bool) {
    setLevel(level() + 1);
}

void KvVideoTimeLineView::_onTimeLineViewValueChangeEnded(int value) {
    // What may lie there is for whoever asks the camera.
    if (orvelle::covers(m_timeLine->unknown(), value)) {
        emit selectedTime(value);
        return;
    }
    const std::optional<int> recorded = orvelle::snapped(m_timeLine->spans(), value);
    if (recorded)
        setValue(*recorded);
    emit selectedTime(recorded.value_or(value));
}

void KvVideoTimeLineView::keyPressEvent(QKeyEvent* event) {
    // The plus of the main block shares its key with the equals sign.
    if (event->key() == Qt::Key_Plus || event->key() == Qt::Key_Equal)
        setLevel(level() - 1);
    else if (event->key() == Qt::Key_Minus)
        setLevel(level() + 1);
    else
        QWidget::keyPressEvent(event);
}

void KvVideoTimeLineView::resizeEvent(QResizeEvent*) {
    const int top = (height() - kButtonSize) / 2;
    m_play->setGeometry(kPlayLeft, top, kButtonSize, kButtonSize);
    m_prev->setGeometry(kPrevLeft, top, kButtonSize, kButtonSize);
    m_next->setGeometry(kNextLeft, top, kButtonSize, kButtonSize);
    m_timeLine->setGeometry(kTimeLineLeft, kTimeLineMargin,
                            qMax(0, width() - kTimeLineLeft - kTimeLineRight),
                            qMax(0, height() - 2 * kTimeLineMargin));
    const int zoomTop = (height() - kZoomSize) / 2;
    m_increase->setGeometry(width() - kIncreaseLeft, zoomTop, kZoomSize, kZoomSize);
    m_reduce->setGeometry(width() - kReduceLeft, zoomTop, kZoomSize, kZoomSize);
}

void KvVideoTimeLineView::paintEvent(QPaintEvent*) {
    QPainter(this).fillRect(rect(), QColor(orvelle::palette::kBar));
}
