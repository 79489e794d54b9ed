#include "notice_banner.h"

#include <QPainter>
#include <QResizeEvent>

#include "qt_util/label_string_util.h"

namespace meeting {

namespace {

constexpr int kPadding = 8;
constexpr int kSpacing = 2;
// The first line starts after the marker, later lines at the left of the text area.
constexpr int kMarkerWidth = 22;

}  // namespace

NoticeBanner::NoticeBanner(QWidget* parent) : QWidget(parent) {
  setObjectName(QStringLiteral("notice_banner"));
  setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
}

void NoticeBanner::SetText(const QString& text) {
  text_ = text;
  setAccessibleDescription(text);
  Layout();
  updateGeometry();
  update();
}

void NoticeBanner::SetColors(const QColor& background, const QColor& text) {
  background_ = background;
  text_color_ = text;
  update();
}

int NoticeBanner::TextRight() const {
  return width() - kPadding;
}

int NoticeBanner::FirstLineLeft() {
  return kPadding + kMarkerWidth;
}

int NoticeBanner::LineLeft() {
  return kPadding;
}

int NoticeBanner::LineTop(int index, int line_height) {
  return kPadding + index * (line_height + kSpacing);
}

void NoticeBanner::Layout() {
  lines_.clear();
  rects_.clear();
  elided_ = false;
  const QFontMetrics fm(font());
  // Coordinates are those of the text area (origin at the padding): the first line starts at
  // the marker and has maxWidth - marker pixels, later ones start at 0 and have maxWidth.
  const int max_width = width() - 2 * kPadding;
  VxLabelStringUtil::CalculateMultiLineStringRects(QPoint(kMarkerWidth, 0), 0, kSpacing, max_width,
                                                   fm.height(), font(), fm, text_, lines_, rects_,
                                                   elided_, MaxLines());
  for (QRect& rect : rects_) rect.translate(kPadding, kPadding);
}

QSize NoticeBanner::sizeHint() const {
  const int lines = qMax(1, static_cast<int>(rects_.size()));
  const int height = lines * fontMetrics().height() + (lines - 1) * kSpacing + 2 * kPadding;
  return QSize(200, height);
}

void NoticeBanner::resizeEvent(QResizeEvent* event) {
  QWidget::resizeEvent(event);
  if (event->size().width() == event->oldSize().width()) return;
  const int lines = static_cast<int>(rects_.size());
  Layout();
  if (static_cast<int>(rects_.size()) != lines) updateGeometry();
}

void NoticeBanner::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setPen(Qt::NoPen);
  painter.setBrush(background_);
  painter.drawRoundedRect(rect().adjusted(0, 0, -1, -1), 6, 6);
  // The marker: an "i" in a ring, in the text colour, centred on the first line.
  const QFontMetrics fm(font());
  const int diameter = qMin(kMarkerWidth - 6, fm.height() - 4);
  const QRect marker(kPadding, kPadding + (fm.height() - diameter) / 2, diameter, diameter);
  painter.setPen(QPen(text_color_, 1.5));
  painter.setBrush(Qt::NoBrush);
  painter.drawEllipse(marker);
  QFont small = font();
  small.setPixelSize(qMax(8, diameter * 3 / 4));
  small.setBold(true);
  painter.setFont(small);
  painter.drawText(marker, Qt::AlignCenter, QStringLiteral("i"));
  painter.setFont(font());
  for (size_t i = 0; i < rects_.size() && i < static_cast<size_t>(lines_.size()); ++i) {
    painter.drawText(rects_[i], Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine,
                     lines_[static_cast<int>(i)]);
  }
}

}  // namespace meeting
