#pragma once

// Text runs of the HTML converter: finding where a run ends, trimming it, dropping its line breaks
// and decoding its few entities ("&nbsp;", "&amp;", "&lt;", "&gt;", "&quot;", "&#39;", in that
// fixed order, so that "&amp;lt;" ends as "<").
//
// The converter relies on this: a run ends at the next "<" or the end of the text, whatever else
// it holds; PrepareTextRun gives exactly what trimming, removing every "\r" and "\n" and the six
// whole-text replacements in their order would give, in one pass and without an allocation
// unless the buffer has to grow. The scan and the preparation are inline: the main loop runs them
// once per run.

#include <QLatin1String>
#include <QString>
#include <QStringView>
#include <algorithm>

#include "qt_util/html_blocks_p.h"

namespace qt_util::internal::html {

// What a text run holds besides plain characters.
enum RunContent : unsigned { kLineBreak = 1, kAmpersand = 2 };

inline unsigned RunContentOf(QChar c) {
  const ushort u = c.unicode();
  return unsigned(u == '\r' || u == '\n') * kLineBreak | unsigned(u == '&') * kAmpersand;
}

// QChar::isSpace, with the plain ASCII case first and without a branch.
inline bool IsSpace(QChar c) {
  const unsigned u = c.unicode();
  if (u < 0x80) return (unsigned(u == ' ') | unsigned(u - '\t' < 5)) != 0;
  return c.isSpace();
}

// Decodes the entities of source[0, size) into `target` and returns the decoded length. `target`
// may be `source` itself: text only ever shortens, and the pass writes behind where it reads.
int DecodeEntities(const QChar* source, int size, QChar* target);

// Replaces every occurrence of `needle`, left to right and without rescanning what was put in,
// by one character; what QString::replace does, in one pass.
void ReplaceAll(QString& text, QLatin1String needle, QChar replacement);

// The end of the text run at `p`: the next "<", or `end`. `content` gets the RunContent bits of
// the run, so that a run without line breaks or entities is neither searched nor rewritten.
Q_ALWAYS_INLINE const QChar* ScanTextRun(const QChar* p, const QChar* end, unsigned& content) {
  BlockMask breaks;
  BlockMask ampersands;
  unsigned single = 0;
  const QChar* const stop = Scan(
      p, end,
      [&breaks, &ampersands](const Chars8& chars, const QChar*) {
        const BlockMask tag = chars.Match('<');
        const BlockMask before = tag.Before();
        breaks = breaks | (chars.Match('\r', '\n') & before);
        ampersands = ampersands | (chars.Match('&') & before);
        return tag;
      },
      [&single](const QChar* at) {
        if (*at == QLatin1Char('<')) return true;
        single |= RunContentOf(*at);
        return false;
      });
  content = single | unsigned(bool(breaks)) * kLineBreak | unsigned(bool(ampersands)) * kAmpersand;
  return stop;
}

// The run, trimmed as QStringView::trimmed, without its line breaks and with its entities
// decoded, in `buffer` (which keeps its capacity from run to run, so that a run costs no
// allocation unless the sink keeps the text). False when nothing is left. Line breaks go first,
// so that an entity they split is decoded whole. `content` holds the RunContent bits of `run`.
inline bool PrepareTextRun(QStringView run, unsigned content, QString& buffer) {
  const QChar* begin = run.begin();
  const QChar* end = run.end();
  while (begin < end && IsSpace(*begin)) ++begin;
  while (end > begin && IsSpace(end[-1])) --end;
  if (begin == end) return false;
  buffer.resize(int(end - begin));
  QChar* data = buffer.data();
  int size = int(end - begin);
  if (content & kLineBreak) {
    size = int(std::remove_copy_if(
                   begin, end, data,
                   [](QChar c) { return c == QLatin1Char('\r') || c == QLatin1Char('\n'); }) -
               data);
    if (content & kAmpersand) size = DecodeEntities(data, size, data);
  } else if (content & kAmpersand) {
    // Decoded on the way in: a long run full of entities writes only what it keeps.
    size = DecodeEntities(begin, size, data);
  } else {
    std::copy(begin, end, data);
  }
  if (size != int(end - begin)) buffer.resize(size);
  return size > 0;
}

}  // namespace qt_util::internal::html
