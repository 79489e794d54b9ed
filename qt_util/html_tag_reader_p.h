#pragma once

// Tags of the HTML converter: where a tag ends, how it splits into its table key and its
// argument text, and its attributes.
//
// The converter relies on this: a tag starts at "<" and ends at the first ">" outside quotes,
// quotes nesting as a stack (a "'" inside a double-quoted value must close before the double
// quote does); a tag that runs to the end of the text loses its last character; a key is
// everything up to the first space (or, for a self-closing tag, all but a fixed " /"), so that
// "<font size />" reaches the "font size" entry. The readers are inline: the main loop runs them
// once per tag.

#include <QMap>
#include <QString>
#include <QStringView>
#include <algorithm>
#include <cstdint>

#include "qt_util/html_blocks_p.h"

namespace qt_util::internal::html {

inline bool IsQuote(QChar c) {
  return c == QLatin1Char('"') || c == QLatin1Char('\'');
}

// Whether `c` can end a tag or open or close a quote: ">", a double or a single quote.
// Without a branch: spaces, digits and "=" below 64 mix with letters above it in no order a
// processor could predict.
inline bool IsTagSpecial(QChar c) {
  constexpr uint64_t kSpecial = uint64_t(1) << '>' | uint64_t(1) << '"' | uint64_t(1) << '\'';
  const unsigned u = c.unicode();
  return (unsigned(u < 64) & unsigned(kSpecial >> (u & 63))) != 0;
}

// html[begin, end) holds "<" and the tag text without the closing ">"; `space` is the first " "
// in html[begin + 1, end), or -1.
struct TagSpan {
  int begin;
  int end;
  int space;
};

// The span of the raw tag at `pos` (which stands on "<"). A ">" inside quotes does not end the
// tag. A tag that runs to the end of the text loses its last character. `pos` is left behind the
// last character read. The first space comes with it, found in the same pass.
//
// Quotes nest as a stack: a quote pops the top when it equals it and is pushed otherwise. So
// neighbouring entries always differ, the stack alternates between the two quote characters, and
// its depth and top say all there is to it; every quote flips the top. A tag full of alternating
// quotes, which pushes one entry per character, costs no memory.
Q_ALWAYS_INLINE TagSpan ReadTag(const QString& html, int& pos) {
  const int size = html.size();
  if (pos < 0 || pos >= size) {
    pos = size;
    return {size, size, -1};
  }
  const QChar* const data = html.constData();
  const int begin = pos;
  int depth = 0;
  QChar top;
  constexpr ushort kFlip = ushort('"') ^ ushort('\'');
  if (IsQuote(data[begin])) {
    depth = 1;
    top = data[begin];
  }
  // A ">", or a quote; true at the ">" that ends the tag. Outside quotes only a quote or ">"
  // matters, inside them only a quote.
  auto ends = [&depth, &top](QChar c) {
    if (c == QLatin1Char('>')) return depth == 0;
    if (depth == 0) {
      depth = 1;
      top = c;
    } else {
      depth += c == top ? -1 : 1;
      top = QChar(ushort(top.unicode() ^ kFlip));
    }
    return false;
  };
  // Reading at the end (after a "<" that ends the text) yields NUL, as a Qt string does, without
  // touching memory outside it. The last character read (the ">", or the final character of a
  // tag that runs to the end) is not part of the tag; the text's last character ends the tag
  // whatever it is, so the scan stops in front of it.
  const QChar* const last = data + size - 1;
  const QChar* space = nullptr;
  auto block = [&](const Chars8& chars, const QChar* at) -> BlockMask {
    if (!space) {
      if (const BlockMask spaces = chars.Match(' ')) space = at + spaces.First();
    }
    // The usual block holds quotes of one kind only, and either stands outside quotes or inside
    // a single quote of that kind. Then the depth just alternates between 0 and 1 at each quote,
    // and the characters inside quotes are those behind an odd number of them: the ">" that
    // ends the tag is the first one behind an even number, found without a branch per quote.
    const BlockMask doubles = chars.Match('"');
    const BlockMask singles = chars.Match('\'');
    const BlockMask quotes = doubles | singles;
    const QChar kind = doubles ? QLatin1Char('"') : QLatin1Char('\'');
    if (!quotes || ((!doubles || !singles) && (depth == 0 || (depth == 1 && top == kind)))) {
      const BlockMask odd = quotes.PrefixParity();
      const BlockMask closing = chars.Match('>') & (depth != 0 ? odd : ~odd);
      if (closing) return closing;
      if (odd.Has(Chars8::kCount - 1)) {
        depth ^= 1;
        top = kind;
      }
      return BlockMask();
    }
    // Deeper than a block holds quotes, the stack cannot empty within the block, so no ">" ends
    // the tag there and only the quotes count. Every quote flips the top, so the top a quote
    // meets is the block's first top flipped once per quote before it; the quote pops when it
    // equals that, i.e. when its kind, flipped for an odd number of quotes before it, is the
    // first top.
    if (depth > Chars8::kCount) {
      const BlockMask oddRank = (quotes.PrefixParity() ^ quotes) & quotes;
      const BlockMask asDouble = (doubles ^ oddRank) & quotes;
      const BlockMask pops = top == QLatin1Char('"') ? asDouble : quotes & ~asDouble;
      const int count = quotes.Count();
      depth += count - 2 * pops.Count();
      Q_ASSERT(depth > 0);
      if (count % 2 != 0) top = QChar(ushort(top.unicode() ^ kFlip));
      return BlockMask();
    }
    for (BlockMask special = chars.Match('"', '\'', '>'); special;
         special = special.WithoutFirst()) {
      if (ends(at[special.First()])) return special.Lowest();
    }
    return BlockMask();
  };
  auto single = [&](const QChar* at) {
    if (!space && *at == QLatin1Char(' ')) space = at;
    return IsTagSpecial(*at) && ends(*at);
  };
  const QChar* const next = Scan(data + begin + 1, std::max(last, data + begin + 1), block, single);
  Q_ASSERT(depth >= 0);
  const int end = int(next - data);
  pos = end + 1;
  const int spaceAt = space && space < next ? int(space - data) : -1;
  return {begin, std::min(end, size), spaceAt};
}

// Most tags are a name alone, "<b>" or "</font>", and end within eight characters of their "<":
// one block then tells where the tag ends and that it holds no space and no quote. Reads such a
// tag at `pos` as ReadTag and SplitTag would (its key, whether it closes, `pos` behind its ">")
// and returns true; returns false, leaving everything alone, for any other tag. `packed` gets the
// key as Chars8::PackLower packs it, and `isPacked` whether it could.
Q_ALWAYS_INLINE bool ReadPlainTag(const QString& html, int& pos, QStringView& key, bool& isClose,
                                  uint64_t& packed, bool& isPacked) {
  // The block stays in front of the text's last character, which ends a tag whatever it is.
  if (pos < 0 || html.size() - pos <= Chars8::kCount) return false;
  const QChar* const p = html.constData() + pos;
  if (*p != QLatin1Char('<')) return false;
  const Chars8 block(p);
  const BlockMask end = block.Match('>');
  if (!end || (block.Match('"', '\'', ' ') & end.Before())) return false;
  const int length = end.First();
  const int skip = length > 1 && p[1] == QLatin1Char('/') ? 1 : 0;
  isClose = skip != 0;
  const int keyLength = std::max(length - skip - 1, 0);
  key = keyLength > 0 ? QStringView(p + skip + 1, keyLength) : QStringView();
  isPacked = block.From(skip + 1).PackLower(keyLength, packed);
  pos += length + 1;
  return true;
}

// QString::mid on a view: a negative or too long `length` keeps the rest.
inline QStringView Mid(QStringView text, int from, int length = -1) {
  if (from >= text.size()) return QStringView();
  if (length < 0 || length > text.size() - from) return text.mid(from);
  return text.mid(from, length);
}

// A tag (its text from the "<", or from the "/" of a closing tag) cut into its table key (not yet
// lower-cased) and its raw argument text, everything after the first space. A tag without a
// space has no arguments and its key is all but the first character. One whose argument text
// holds no double quote and ends with "/" is self-closing: a fixed " /" and the first character
// come off ("<br /" gives "br", "<font color /" gives "font color") and the handler gets no
// argument text. Replacing CRLF by a space, done later on the arguments, changes none of these
// tests.
struct TagParts {
  QStringView key;
  QStringView rawArgs;
  bool hasArgs = false;
  bool selfClosing = false;
};

// `space` is the index of the tag's first " ", or its size when it has none.
Q_ALWAYS_INLINE TagParts SplitTag(QStringView tag, int space) {
  TagParts parts;
  if (space == tag.size()) {
    parts.key = Mid(tag, 1);
    return parts;
  }
  parts.hasArgs = true;
  parts.rawArgs = tag.mid(space + 1);
  parts.selfClosing =
      !parts.rawArgs.isEmpty() && parts.rawArgs.back() == QLatin1Char('/') &&
      FindAny<u'"'>(parts.rawArgs.begin(), parts.rawArgs.end()) == parts.rawArgs.end();
  parts.key = parts.selfClosing ? Mid(tag, 1, int(tag.size()) - 3) : Mid(tag, 1, space - 1);
  return parts;
}

// The same, finding the first space itself.
TagParts SplitTag(QStringView tag);

// The argument text a handler gets: none for a self-closing tag, else the arguments with CRLF
// made a space and cut before their first double quote.
QString HandlerArgs(const TagParts& parts);

// Parses the attributes of a raw argument text into `attributes`, keys and values trimmed and
// lower-cased, values without surrounding quotes; a later duplicate overwrites. Pieces are split
// at single spaces, and a piece that does not end in a quote joins the next one.
void ParseAttributes(QStringView rawArgs, QMap<QString, QString>& attributes);

}  // namespace qt_util::internal::html
