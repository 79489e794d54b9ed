#include "qt_util/label_string_util.h"

#include <QFont>
#include <QFontMetrics>
#include <QFontMetricsF>
#include <QLabel>
#include <QPoint>
#include <QRect>
#include <QTextLayout>
#include <QTextOption>
#include <algorithm>
#include <climits>
#include <cmath>

namespace {

// QTextLine keeps its width in 26.6 fixed point; wider values are cut to this by Qt itself, and
// we cut very negative ones the same way so that an absurd indent cannot overflow inside Qt.
constexpr qreal kMaxLineWidth = INT_MAX / 256;

// Truncates like a cast, but gives a defined answer for values no int can hold.
int TruncateToInt(double value) {
  if (std::isnan(value)) return 0;
  if (value >= double(INT_MAX)) return INT_MAX;
  if (value <= double(INT_MIN)) return INT_MIN;
  return static_cast<int>(value);
}

int ClampToInt(qint64 value) {
  return int(std::clamp<qint64>(value, INT_MIN, INT_MAX));
}

qreal BoundedLineWidth(qint64 width) {
  return std::clamp<qreal>(qreal(width), -kMaxLineWidth, kMaxLineWidth);
}

// The pixel size when the font has one, else the point size at the metrics' resolution. It is
// only a guess at one character's width (and, for the anywhere-wrap, the line pitch); the real
// layout always comes from the font metrics.
double CharacterWidthEstimate(const QFont& font, const QFontMetrics& fm) {
  if (font.pixelSize() >= 1) return font.pixelSize();
  return font.pointSizeF() * fm.fontDpi() / 72.0;
}

// A rectangle whose right and bottom edges stay representable, however far out the line was
// pushed by the caller's origin, spacing and line height. Built from its corners, since the
// size-taking constructor adds in int.
QRect LineRect(const QPoint& top_left, int width, int height) {
  const auto far_edge = [](int start, int extent) {
    return ClampToInt(qint64(start) + extent - 1);
  };
  return QRect(top_left, QPoint(far_edge(top_left.x(), width), far_edge(top_left.y(), height)));
}

// The first guess at how many characters fit, as an index into a text of `length` characters.
// Anything past the end behaves like the end, anything below one like nothing; both are clamped
// so that no guess overflows an int.
int InitialCount(double available, double estimate, int length) {
  const double guess = available / estimate;
  if (std::isnan(guess) || guess <= 0) return 0;
  if (guess >= double(length) + 1) return length + 1;
  return static_cast<int>(guess);
}

// Lays `text` out in `font` line by line, wrapping in `mode`, and hands each new line with its
// index to `place_line`, which sets its width and position, until the text is used up.
template <typename PlaceLine>
void LayOutLines(const QString& text, const QFont& font, QTextOption::WrapMode mode,
                 PlaceLine place_line) {
  QTextLayout layout(text, font);
  layout.setCacheEnabled(true);
  QTextOption option;
  option.setWrapMode(mode);
  layout.setTextOption(option);
  layout.beginLayout();
  for (int index = 0;; ++index) {
    QTextLine line = layout.createLine();
    if (!line.isValid()) break;
    place_line(line, index);
  }
  layout.endLayout();
  layout.clearLayout();
}

}  // namespace

void VxLabelStringUtil::SplitMultiLineStrings(int maxWidth, const QFont& font,
                                              const QFontMetrics& fm, const QString& text,
                                              QStringList& lines, int firstLineIndent) {
  if (maxWidth < 1 || text.isEmpty()) return;

  const int pitch = TruncateToInt(CharacterWidthEstimate(font, fm));
  LayOutLines(text, font, QTextOption::WrapAnywhere, [&](QTextLine& line, int index) {
    const qint64 width = index == 0 ? qint64(maxWidth) - firstLineIndent : qint64(maxWidth);
    line.setLineWidth(BoundedLineWidth(width));
    line.setPosition(QPointF(0, qreal(index) * pitch));
    lines.append(text.mid(line.textStart(), line.textLength()));
  });
}

void VxLabelStringUtil::SplitMultiLineStringsByWord(const QFont& font, const QString& text,
                                                    int maxWidth, QStringList& lines) {
  if (maxWidth < 1 || text.isEmpty()) return;

  const qreal leading = QFontMetricsF(font).leading();
  qreal y = -leading;
  LayOutLines(text, font, QTextOption::WordWrap, [&](QTextLine& line, int) {
    line.setLineWidth(qreal(maxWidth));
    y += leading;
    y = std::ceil(y);
    line.setPosition(QPointF(0, y));
    y += line.height();
    lines.append(text.mid(line.textStart(), line.textLength()));
  });
}

bool VxLabelStringUtil::SplitLineByWholeWord(const QFont& font, const QString& text, int maxWidth,
                                             QStringList& lines) {
  if (maxWidth <= 0 || text.isEmpty()) return false;

  const QStringList words = text.split(QLatin1Char(' '), Qt::KeepEmptyParts, Qt::CaseSensitive);
  const QFontMetrics fm(font);
  if (fm.horizontalAdvance(words.first()) > maxWidth) {
    // Nothing whole fits on the first line, so packing words would only give an overflowing
    // first line; breaking anywhere at least keeps the text inside the width.
    SplitMultiLineStrings(maxWidth, font, fm, text, lines, 0);
    return true;
  }

  QString current;
  for (QString word : words) {
    word.replace(QLatin1Char('\t'), QLatin1Char(' '));
    QString candidate = current;
    if (!current.isEmpty()) candidate += QLatin1Char(' ');
    candidate += word;
    if (fm.horizontalAdvance(candidate) > maxWidth && !current.isEmpty()) {
      // The blank that separated the words stays with the full line, so the lines joined
      // together keep their word separators.
      lines.append(current + QLatin1Char(' '));
      current = word;
    } else {
      current = candidate;
    }
  }
  if (!current.isEmpty()) lines.append(current);
  return true;
}

void VxLabelStringUtil::CalculateMultiLineStringRects(const QPoint& origin, int x, int spacing,
                                                      int maxWidth, int lineHeight,
                                                      const QFont& font, const QFontMetrics& fm,
                                                      const QString& text, QStringList& lines,
                                                      std::vector<QRect>& rects, bool& elided,
                                                      int maxLines) {
  if (maxWidth < 1 || text.isEmpty()) return;

  const double estimate = CharacterWidthEstimate(font, fm);
  // One pass per line. The rest of the text is tracked as an offset rather than copied, and the
  // passes run in a loop rather than nested calls, so that a long text at a tiny width (one
  // character per line) costs neither quadratic copying nor a deep stack.
  QPoint line_origin = origin;
  int offset = 0;
  for (;;) {
    const int length = text.size() - offset;
    const auto advance = [&](int count) { return fm.horizontalAdvance(text.mid(offset, count)); };

    qint64 available = maxWidth;
    if (lines.isEmpty()) available -= line_origin.x();

    // Grow or shrink the first guess until the line is as long as fits. Growing doubles its step
    // over characters that add no width, and backs off when it overshoots.
    int n = InitialCount(double(available), estimate, length);
    int width = advance(n);
    // The width at the count the current growing step started from, which is known to fit.
    int width_before_step = width;
    bool growing = false;
    bool shrunk = false;
    int step = 1;
    int next_step = 1;
    while (n > 0 && n <= length) {
      if (width > available) {
        if (!growing) {
          n -= 1;
          shrunk = true;
        } else if (step == 1) {
          // Overshot by one character: the line ends one character before the last count that
          // fitted and keeps the overshooting width. Kept as it always behaved, since changing it
          // would move the line breaks of every caller's painted text.
          n -= 2;
          break;
        } else {
          // A long step over zero-width characters overshot. The count it started from fitted,
          // so the search would measure it again only to stop there; reuse that width instead.
          n -= step;
          width = width_before_step;
          break;
        }
      } else if (width >= available || shrunk || n == length) {
        break;
      } else {
        step = next_step;
        width_before_step = width;
        n += step;
        growing = true;
      }
      const int previous = width;
      width = advance(n);
      if (growing) {
        if (width == previous) {
          next_step = int(std::min<qint64>(2 * qint64(step), length - n));
          if (next_step <= 0) break;
        } else {
          next_step = 1;
        }
      }
    }
    if (n < 1) {
      // Not even one character fits; take it anyway so that every pass makes progress.
      n = 1;
      // The character's own advance: measured as a one-character string, a tab would span a
      // whole tab stop and a line break would measure nothing.
      width = fm.horizontalAdvance(text.at(offset));
    }

    const QRect rect = LineRect(line_origin, width, lineHeight);
    const bool has_rest = n < length;

    if (maxLines > 0 && rects.size() == size_t(maxLines - 1) && has_rest) {
      const QString rest = text.mid(offset);
      const int elide_width = lines.isEmpty() ? ClampToInt(available) : maxWidth;
      const QString last_line = fm.elidedText(rest, Qt::ElideRight, elide_width);
      elided = last_line != rest;
      lines.append(last_line);
      rects.push_back(rect);
      return;
    }

    lines.append(text.mid(offset, n));
    rects.push_back(rect);
    if (!has_rest) return;
    offset += n;
    line_origin = QPoint(x, ClampToInt(qint64(line_origin.y()) + lineHeight + spacing));
  }
}

void VxLabelStringUtil::UpdateElidedText(QLabel* label, Qt::TextElideMode mode) {
  // A hidden label may not have its final width yet; eliding to a stale width would lose text
  // for nothing.
  if (!label || !label->isVisible()) return;
  const QFontMetrics fm(label->font());
  const QString text = label->text();
  if (fm.horizontalAdvance(text) > label->width()) {
    label->setText(fm.elidedText(text, mode, label->width(), 0));
  }
}
