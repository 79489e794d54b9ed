#pragma once

/// @file
/// VxLabelStringUtil, label text wrapping, packing and elision.

#include <QString>
#include <QStringList>
#include <Qt>
#include <vector>

#include "qt_util/qt_util_export.h"

class QFont;
class QFontMetrics;
class QLabel;
class QPoint;
class QRect;

/// Breaks label text into lines that fit a pixel width, computes the rectangles of such lines
/// for self-painted text, and elides a label's text in place.
///
/// Stateless and silent: bad input (an empty text, a width below 1) leaves the outputs as they
/// were. Output containers are only ever appended to, so a caller can collect several texts into
/// one list, and must clear them itself between unrelated calls.
class QT_UTIL_EXPORT VxLabelStringUtil {
 public:
  /// Wraps `text` anywhere (between any two characters) to lines of `maxWidth` pixels; the first
  /// line is `firstLineIndent` pixels narrower. Trailing blanks may hang past the width.
  static void SplitMultiLineStrings(int maxWidth, const QFont& font, const QFontMetrics& fm,
                                    const QString& text, QStringList& lines, int firstLineIndent);

  /// Wraps `text` at word boundaries to lines of `maxWidth` pixels. A word wider than the width
  /// stays whole and overflows its line.
  static void SplitMultiLineStringsByWord(const QFont& font, const QString& text, int maxWidth,
                                          QStringList& lines);

  /// Packs the blank-separated words of `text` greedily into lines of `maxWidth` pixels. Every
  /// line that was closed because the next word did not fit keeps one trailing blank; tabs inside
  /// words become blanks. When the first word alone is too wide, the whole text is wrapped
  /// anywhere instead (SplitMultiLineStrings). A later word that is too wide gets a line of its
  /// own and overflows it. Returns false, and appends nothing, for an empty text or a width
  /// below 1.
  static bool SplitLineByWholeWord(const QFont& font, const QString& text, int maxWidth,
                                   QStringList& lines);

  /// Lays `text` out line by line for painting: the first line starts at `origin` and has
  /// `maxWidth - origin.x()` pixels when `lines` is empty on entry; every later line starts at
  /// `x`, `lineHeight + spacing` pixels below the previous one, with `maxWidth` pixels. Appends
  /// each line to `lines` and a `lineHeight`-high rectangle of its measured width to `rects`.
  ///
  /// When `maxLines` > 0 and `rects` reaches `maxLines` entries with text left over, the last
  /// line holds the rest of the text elided at its right end and `elided` is set to whether that
  /// changed it. `elided` is never written otherwise, so the caller initialises it.
  /// A line always takes at least one character, even when that character is wider than the
  /// width; its rectangle is then as wide as that character's own advance. `fm` measures; `font`
  /// only supplies the starting guess.
  static void CalculateMultiLineStringRects(const QPoint& origin, int x, int spacing, int maxWidth,
                                            int lineHeight, const QFont& font,
                                            const QFontMetrics& fm, const QString& text,
                                            QStringList& lines, std::vector<QRect>& rects,
                                            bool& elided, int maxLines);

  /// If `label` is visible and its text is wider than the label, replaces the text by its
  /// elided form for `mode` at the label's width. The full text is not kept: widening the label
  /// afterwards does not bring it back. Does nothing for a null or hidden label.
  static void UpdateElidedText(QLabel* label, Qt::TextElideMode mode);
};
