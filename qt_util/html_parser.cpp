#include "qt_util/html_parser.h"

#include <QStringView>
#include <QtAlgorithms>
#include <algorithm>
#include <cstdint>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace {

// Eight characters of a text compared at once with a few given characters. A match mask has bit
// 2i set when character i is one of them (the layout of a byte mask over two-byte characters);
// Index turns its lowest set bit back into a character index. Text runs, tags and tag names are
// a few to a few dozen characters long, so a block test ends most scans after one or two blocks,
// where a character loop takes a branch per character and mispredicts its exit.
class Chars8 {
 public:
  static constexpr int kCount = 8;

  // Reads p[0, 8).
#if defined(__SSE2__)
  explicit Chars8(const QChar* p) : chars_(_mm_loadu_si128(reinterpret_cast<const __m128i*>(p))) {}
#else
  explicit Chars8(const QChar* p) : chars_(p) {}
#endif

  template <typename... C>
  unsigned Match(C... c) const {
#if defined(__SSE2__)
    __m128i any = _mm_setzero_si128();
    ((any = _mm_or_si128(any, _mm_cmpeq_epi16(chars_, _mm_set1_epi16(short(c))))), ...);
    return unsigned(_mm_movemask_epi8(any)) & 0x5555u;
#else
    unsigned mask = 0;
    for (int i = 0; i < kCount; ++i) {
      const ushort u = chars_[i].unicode();
      if (((u == ushort(c)) || ...)) mask |= 1u << (2 * i);
    }
    return mask;
#endif
  }

  // Writes the eight characters to target[0, 8), which may overlap where they were read as long
  // as it does not start behind that.
  void Store(QChar* target) const {
#if defined(__SSE2__)
    _mm_storeu_si128(reinterpret_cast<__m128i*>(target), chars_);
#else
    std::copy_n(chars_, kCount, target);
#endif
  }

  static int Index(unsigned mask) {
    return int(qCountTrailingZeroBits(mask)) >> 1;
  }
  // The number of characters in a match mask, without the library call that a population count
  // becomes on processors the build does not assume to have the instruction.
  static int Count(unsigned mask) {
    mask = (mask & 0x3333u) + ((mask >> 2) & 0x3333u);
    mask = (mask + (mask >> 4)) & 0x0f0fu;
    return int((mask + (mask >> 8)) & 0x1fu);
  }
  // The bits of the characters in front of the lowest set bit of `mask`, all when it is 0.
  static unsigned Before(unsigned mask) {
    return (mask & (0u - mask)) - 1;
  }

  // The block from its character `count` (1 or 2) on; characters moved in from behind it are
  // never read.
  Chars8 From(int count) const {
#if defined(__SSE2__)
    const __m128i two = _mm_set1_epi16(short(-(count == 2)));
    return Chars8(_mm_or_si128(_mm_andnot_si128(two, _mm_srli_si128(chars_, 2)),
                               _mm_and_si128(two, _mm_srli_si128(chars_, 4))));
#else
    return Chars8(chars_ + count);
#endif
  }

  // Characters [0, length) (length at most 8), lower-cased, one byte each in `low`, the rest 0;
  // false when one of them is not plain ASCII. Without a branch per character.
  bool PackLower(int length, uint64_t& low) const {
#if defined(__SSE2__)
    const __m128i lane = _mm_setr_epi16(0, 1, 2, 3, 4, 5, 6, 7);
    __m128i v = _mm_and_si128(chars_, _mm_cmplt_epi16(lane, _mm_set1_epi16(short(length))));
    const __m128i ascii =
        _mm_cmpeq_epi16(_mm_and_si128(v, _mm_set1_epi16(short(0xff80))), _mm_setzero_si128());
    if (_mm_movemask_epi8(ascii) != 0xffff) return false;
    const __m128i upper = _mm_and_si128(_mm_cmpgt_epi16(v, _mm_set1_epi16('A' - 1)),
                                        _mm_cmplt_epi16(v, _mm_set1_epi16('Z' + 1)));
    v = _mm_add_epi16(v, _mm_and_si128(upper, _mm_set1_epi16('a' - 'A')));
    low = uint64_t(_mm_cvtsi128_si64(_mm_packus_epi16(v, v)));
#else
    low = 0;
    for (int i = 0; i < length; ++i) {
      const ushort c = chars_[i].unicode();
      if (c >= 0x80) return false;
      low |= uint64_t(ushort(c - 'A') < 26 ? c + ('a' - 'A') : c) << (8 * i);
    }
#endif
    return true;
  }

 private:
#if defined(__SSE2__)
  explicit Chars8(__m128i chars) : chars_(chars) {}
  __m128i chars_;
#else
  const QChar* chars_;
#endif
};

inline bool IsQuote(QChar c) {
  return c == QLatin1Char('"') || c == QLatin1Char('\'');
}

inline bool MatchesAt(const QChar* data, int size, int index, QLatin1String needle) {
  if (index < 0 || index + needle.size() > size) return false;
  for (int k = 0; k < needle.size(); ++k) {
    if (data[index + k] != QLatin1Char(needle.at(k))) return false;
  }
  return true;
}

// First index >= from where `needle` starts, or -1. Looks for the needle's character at `anchor`
// with the vectorised single-character search (the rarer that character in the text, the
// faster) and compares the rest where it finds one; QString::indexOf(QLatin1String) converts the
// needle to UTF-16 on the heap at every call.
int FindLatin1(const QString& text, int from, QLatin1String needle, int anchor = 0) {
  const QChar key = QLatin1Char(needle.at(anchor));
  for (int at = text.indexOf(key, std::max(from, 0) + anchor); at >= 0;
       at = text.indexOf(key, at + 1)) {
    const int start = at - anchor;
    if (start + needle.size() > text.size()) return -1;
    if (MatchesAt(text.constData(), text.size(), start, needle)) return start;
  }
  return -1;
}

// Replaces every occurrence of `needle`, left to right and without rescanning what was put in,
// by one character. Same result as QString::replace, but in a single pass: QString::replace
// moves the whole tail once per 1024 hits, which is quadratic on a long run full of entities.
void ReplaceAll(QString& text, QLatin1String needle, QChar replacement) {
  const int first = FindLatin1(text, 0, needle);
  if (first < 0) return;
  const int size = text.size();
  QChar* data = text.data();
  int out = first;
  int in = first;
  while (in < size) {
    if (data[in] == QLatin1Char(needle.at(0)) && MatchesAt(data, size, in, needle)) {
      data[out++] = replacement;
      in += needle.size();
    } else {
      data[out++] = data[in++];
    }
  }
  text.resize(out);
}

// Replaces, in this order and each over the whole text, "&nbsp;" by " ", "&amp;" by "&", "&lt;"
// by "<", "&gt;" by ">", "&quot;" by a double quote and "&#39;" by "'", in one pass. Every
// entity holds a single "&", its first character, and no two share their second, so the
// entities of the text never overlap, and no replacement character but the "&" of "&amp;" occurs
// in an entity. The six passes therefore replace exactly the entities of the text, except that
// the "&" an "&amp;" leaves behind begins one of the four later entities when the text that
// follows completes it: "&amp;lt;" ends as "<" (but "&amp;nbsp;" as "&nbsp;", since "&nbsp;" was
// decoded before). Decodes source[0, size) into `target` and returns the decoded length;
// `target` may be `source` itself, since text only ever shortens and the pass writes behind
// where it reads.
int DecodeEntities(const QChar* source, int size, QChar* target) {
  const QChar* const data = source;
  // The character of the entity of the four later ones whose name (without its "&") starts at
  // `at`, with the name's length in `length`; NUL when none does. Told apart by their first
  // character.
  auto later = [&](int at, int& length) -> QChar {
    if (at >= size) return QChar();
    switch (data[at].unicode()) {
      case 'l':
        length = 3;
        return MatchesAt(data, size, at, QLatin1String("lt;")) ? QLatin1Char('<') : QChar();
      case 'g':
        length = 3;
        return MatchesAt(data, size, at, QLatin1String("gt;")) ? QLatin1Char('>') : QChar();
      case 'q':
        length = 5;
        return MatchesAt(data, size, at, QLatin1String("quot;")) ? QLatin1Char('"') : QChar();
      case '#':
        length = 4;
        return MatchesAt(data, size, at, QLatin1String("#39;")) ? QLatin1Char('\'') : QChar();
      default:
        return QChar();
    }
  };
  int out = 0;
  int in = 0;
  while (in < size) {
    // The plain characters up to the next "&" move one by one for a block's length (entities
    // often stand close together), then a block at a time; a block is written whole and only the
    // part in front of the "&" counts. In place, a whole block may only be written where it
    // cannot reach the characters behind the "&" that are still to be read.
    for (const int shortEnd = std::min(size, in + Chars8::kCount);
         in < shortEnd && data[in] != QLatin1Char('&');) {
      target[out++] = data[in++];
    }
    while (in < size && data[in] != QLatin1Char('&') && size - in >= Chars8::kCount &&
           (target != source || out == in || in - out >= Chars8::kCount)) {
      const Chars8 block(data + in);
      block.Store(target + out);
      const unsigned found = block.Match('&');
      const int plain = found ? Chars8::Index(found) : Chars8::kCount;
      in += plain;
      out += plain;
      if (found) break;
    }
    while (in < size && data[in] != QLatin1Char('&')) target[out++] = data[in++];
    if (in == size) break;
    int length = 0;
    if (MatchesAt(data, size, in, QLatin1String("&nbsp;"))) {
      target[out++] = QLatin1Char(' ');
      in += 6;
    } else if (MatchesAt(data, size, in, QLatin1String("&amp;"))) {
      // The "&" left behind, and what follows it as one of the later entities.
      in += 5;
      const QChar character = later(in, length);
      if (!character.isNull()) {
        target[out++] = character;
        in += length;
      } else {
        target[out++] = QLatin1Char('&');
      }
    } else if (const QChar character = later(in + 1, length); !character.isNull()) {
      target[out++] = character;
      in += 1 + length;
    } else {
      target[out++] = data[in++];
    }
  }
  return out;
}

// The lower-cased text of `view` without surrounding white space (as QString::trimmed) and,
// when `stripQuotes` is set, then without leading and trailing quote characters: `^["']+` and
// `["']+$` done by hand, since both patterns rescan a quote run from every start position, which
// is quadratic on a value made of quotes. Plain ASCII, the rule for tag attributes, is folded
// while it is copied, in one pass the compiler vectorises; other text goes through
// QString::toLower.
QString TrimmedLower(QStringView view, bool stripQuotes) {
  view = view.trimmed();
  if (stripQuotes) {
    int first = 0;
    const int size = int(view.size());
    for (; size - first >= Chars8::kCount; first += Chars8::kCount) {
      const unsigned other = ~Chars8(view.data() + first).Match('"', '\'') & 0x5555u;
      if (other) {
        first += Chars8::Index(other);
        break;
      }
    }
    while (first < size && IsQuote(view[first])) ++first;
    view = view.mid(first);
    while (!view.isEmpty() && IsQuote(view.back())) view.chop(1);
  }
  const int size = int(view.size());
  QString text(size, Qt::Uninitialized);
  const QChar* in = view.data();
  QChar* out = text.data();
  ushort any = 0;
  for (int i = 0; i < size; ++i) {
    const ushort c = in[i].unicode();
    any |= c;
    out[i] = QChar(ushort(c + (ushort(c - 'A') < 26 ? 'a' - 'A' : 0)));
  }
  if (any >= 0x80) return view.toString().toLower();
  return text;
}

// The lower-cased name of an attribute, when it is one of the common ones, shared instead of
// allocated for every tag that names it; null otherwise. `name` is trimmed; only plain letters
// match, whose lower case toLower gives as well.
const QString* CommonAttributeName(QStringView name) {
  static const QString kNames[] = {
      QStringLiteral("src"),    QStringLiteral("alt"),    QStringLiteral("width"),
      QStringLiteral("height"), QStringLiteral("align"),  QStringLiteral("color"),
      QStringLiteral("size"),   QStringLiteral("face"),   QStringLiteral("name"),
      QStringLiteral("style"),  QStringLiteral("class"),  QStringLiteral("title"),
      QStringLiteral("border"), QStringLiteral("classid")};
  for (const QString& known : kNames) {
    if (known.size() != name.size()) continue;
    int i = 0;
    while (i < name.size() && ushort(name[i].unicode() | 0x20) == known[i].unicode()) ++i;
    if (i == name.size()) return &known;
  }
  return nullptr;
}

// QChar::isSpace, with the plain ASCII case first and without a branch.
inline bool IsSpace(QChar c) {
  const unsigned u = c.unicode();
  if (u < 0x80) return (unsigned(u == ' ') | unsigned(u - '\t' < 5)) != 0;
  return c.isSpace();
}

// The index of the first `c` in data[from, size), or size.
int IndexOf(const QChar* data, int from, int size, char16_t c) {
  for (; size - from >= Chars8::kCount; from += Chars8::kCount) {
    const unsigned found = Chars8(data + from).Match(c);
    if (found) return from + Chars8::Index(found);
  }
  while (from < size && data[from] != c) ++from;
  return from;
}

// What a text run holds besides plain characters.
enum RunContent : unsigned { kLineBreak = 1, kAmpersand = 2 };

inline unsigned RunContentOf(QChar c) {
  const ushort u = c.unicode();
  return unsigned(u == '\r' || u == '\n') * kLineBreak | unsigned(u == '&') * kAmpersand;
}

// The end of the text run at `p`: the next "<", or `end`. `content` gets the RunContent bits of
// the run, so that a run without line breaks or entities is neither searched nor rewritten.
Q_ALWAYS_INLINE const QChar* ScanTextRun(const QChar* p, const QChar* end, unsigned& content) {
  unsigned breaks = 0;
  unsigned ampersands = 0;
  for (; end - p >= Chars8::kCount; p += Chars8::kCount) {
    const Chars8 block(p);
    const unsigned tag = block.Match('<');
    const unsigned before = Chars8::Before(tag);
    breaks |= block.Match('\r', '\n') & before;
    ampersands |= block.Match('&') & before;
    if (tag) {
      content = unsigned(breaks != 0) * kLineBreak | unsigned(ampersands != 0) * kAmpersand;
      return p + Chars8::Index(tag);
    }
  }
  content = unsigned(breaks != 0) * kLineBreak | unsigned(ampersands != 0) * kAmpersand;
  for (; p < end && *p != QLatin1Char('<'); ++p) content |= RunContentOf(*p);
  return p;
}

// The run, trimmed as QStringView::trimmed, without its line breaks and with its entities
// decoded, in `buffer` (which keeps its capacity from run to run, so that a run costs no
// allocation unless the sink keeps the text). False when nothing is left. Line breaks go first,
// so that an entity they split is decoded whole. `content` holds the RunContent bits of `run`.
bool PrepareTextRun(QStringView run, unsigned content, QString& buffer) {
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

// html[begin, end) holds "<" and the tag text without the closing ">"; `space` is the first " "
// in html[begin + 1, end), or -1.
struct TagSpan {
  int begin;
  int end;
  int space;
};

// Whether `c` can end a tag or open or close a quote: ">", a double or a single quote.
// Without a branch: spaces, digits and "=" below 64 mix with letters above it in no order a
// processor could predict.
inline bool IsTagSpecial(QChar c) {
  constexpr uint64_t kSpecial = uint64_t(1) << '>' | uint64_t(1) << '"' | uint64_t(1) << '\'';
  const unsigned u = c.unicode();
  return (unsigned(u < 64) & unsigned(kSpecial >> (u & 63))) != 0;
}

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
  // Every quote flips the top between the two quote characters.
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
  // `next` points at the character being read; reading at the end (after a "<" that ends the
  // text) yields NUL, as a Qt string does, without touching memory outside it. The last character
  // read (the ">", or the final character of a tag that runs to the end) is not part of the tag;
  // the text's last character ends the tag whatever it is, so blocks stop in front of it.
  const QChar* const last = data + size - 1;
  const QChar* next = data + begin + 1;
  const QChar* space = nullptr;
  bool ended = false;
  for (; !ended && last - next >= Chars8::kCount; next += Chars8::kCount) {
    const Chars8 block(next);
    if (!space) {
      const unsigned spaces = block.Match(' ');
      if (spaces) space = next + Chars8::Index(spaces);
    }
    // The usual block holds quotes of one kind only, and either stands outside quotes or inside
    // a single quote of that kind. Then the depth just alternates between 0 and 1 at each quote,
    // and the characters inside quotes are those behind an odd number of them: the ">" that
    // ends the tag is the first one behind an even number, found without a branch per quote.
    const unsigned doubles = block.Match('"');
    const unsigned singles = block.Match('\'');
    const unsigned quotes = doubles | singles;
    const QChar kind = doubles ? QLatin1Char('"') : QLatin1Char('\'');
    if (quotes == 0 ||
        ((doubles == 0 || singles == 0) && (depth == 0 || (depth == 1 && top == kind)))) {
      unsigned odd = quotes;  // after each character: odd number of quotes so far
      odd ^= odd << 2;
      odd ^= odd << 4;
      odd ^= odd << 8;
      const unsigned inside = depth != 0 ? ~odd : odd;
      const unsigned closing = block.Match('>') & ~inside & 0x5555u;
      if (closing) {
        next += Chars8::Index(closing) - Chars8::kCount;  // the loop's step brings it back
        ended = true;
      } else if ((odd >> (2 * (Chars8::kCount - 1))) & 1) {  // after the last character
        depth ^= 1;
        top = kind;
      }
      continue;
    }
    // Deeper than a block holds quotes, the stack cannot empty within the block, so no ">" ends
    // the tag there and only the quotes count. Every quote flips the top, so the top a quote
    // meets is the block's first top flipped once per quote before it; the quote pops when it
    // equals that, i.e. when its kind, flipped for an odd number of quotes before it, is the
    // first top.
    if (depth > Chars8::kCount) {
      unsigned rank = quotes;  // after each quote: odd number of quotes so far
      rank ^= rank << 2;
      rank ^= rank << 4;
      rank ^= rank << 8;
      const unsigned oddRank = (rank ^ quotes) & quotes;
      const unsigned asDouble = (doubles ^ oddRank) & quotes;
      const unsigned pops = top == QLatin1Char('"') ? asDouble : quotes & ~asDouble;
      const int count = Chars8::Count(quotes);
      depth += count - 2 * Chars8::Count(pops);
      if (count % 2 != 0) top = QChar(ushort(top.unicode() ^ kFlip));
      continue;
    }
    for (unsigned special = block.Match('"', '\'', '>'); special; special &= special - 1) {
      const int i = Chars8::Index(special);
      if (ends(next[i])) {
        next += i - Chars8::kCount;  // the loop's step brings it back onto the ">"
        ended = true;
        break;
      }
    }
  }
  for (; !ended && next < last; ++next) {
    if (!space && *next == QLatin1Char(' ')) space = next;
    if (IsTagSpecial(*next) && ends(*next)) break;
  }
  const int end = int(next - data);
  pos = end + 1;
  const int spaceAt = space && space < next ? int(space - data) : -1;
  return {begin, std::min(end, size), spaceAt};
}

// Most tags are a name alone, "<b>" or "</font>", and end within eight characters of their "<":
// one block then tells where the tag ends and that it holds no space and no quote. Reads such a
// tag at `pos` as ReadTag and SplitTag would (its key, whether it closes, `pos` behind its ">")
// and returns true; returns false, leaving everything alone, for any other tag.
// `packed` gets the key as Chars8::PackLower packs it, and `isPacked` whether it could.
inline bool ReadPlainTag(const QString& html, int& pos, QStringView& key, bool& isClose,
                         uint64_t& packed, bool& isPacked) {
  // The block stays in front of the text's last character, which ends a tag whatever it is.
  if (pos < 0 || html.size() - pos <= Chars8::kCount) return false;
  const QChar* const p = html.constData() + pos;
  if (*p != QLatin1Char('<')) return false;
  const Chars8 block(p);
  const unsigned end = block.Match('>');
  if (end == 0 || (block.Match('"', '\'', ' ') & Chars8::Before(end)) != 0) return false;
  const int length = Chars8::Index(end);
  const int skip = length > 1 && p[1] == QLatin1Char('/') ? 1 : 0;
  isClose = skip != 0;
  const int keyLength = std::max(length - skip - 1, 0);
  key = keyLength > 0 ? QStringView(p + skip + 1, keyLength) : QStringView();
  isPacked = block.From(skip + 1).PackLower(keyLength, packed);
  pos += length + 1;
  return true;
}

// QString::mid on a view: a negative or too long `length` keeps the rest.
QStringView Mid(QStringView text, int from, int length = -1) {
  if (from >= text.size()) return QStringView();
  if (length < 0 || length > text.size() - from) return text.mid(from);
  return text.mid(from, length);
}

// A tag (its text from the "<", or from the "/" of a closing tag) cut into its table key (not yet
// lower-cased) and its raw argument text, everything after the first space. A tag without a
// space has no arguments and its key is all but the first character. One whose argument text
// holds no double quote and ends with "/" is self-closing: a fixed " /" and the first character
// come off ("<br /" gives "br", "<font color /" gives "font color", which is how the
// attribute-keyed entries of the table are reached) and the handler gets no argument text.
// Replacing CRLF by a space, done later on the arguments, changes none of these tests.
struct TagParts {
  QStringView key;
  QStringView rawArgs;
  bool hasArgs = false;
  bool selfClosing = false;
};

// `space` is the index of the tag's first " ", or its size when it has none.
inline TagParts SplitTag(QStringView tag, int space) {
  TagParts parts;
  if (space == tag.size()) {
    parts.key = Mid(tag, 1);
    return parts;
  }
  parts.hasArgs = true;
  parts.rawArgs = tag.mid(space + 1);
  parts.selfClosing =
      !parts.rawArgs.isEmpty() && parts.rawArgs.back() == QLatin1Char('/') &&
      IndexOf(parts.rawArgs.data(), 0, int(parts.rawArgs.size()), u'"') == parts.rawArgs.size();
  parts.key = parts.selfClosing ? Mid(tag, 1, int(tag.size()) - 3) : Mid(tag, 1, space - 1);
  return parts;
}

TagParts SplitTag(QStringView tag) {
  int space = 0;
  while (space < tag.size() && tag[space] != QLatin1Char(' ')) ++space;
  return SplitTag(tag, space);
}

// The argument text a handler gets: none for a self-closing tag, else the arguments with CRLF
// made a space and cut before their first double quote.
QString HandlerArgs(const TagParts& parts) {
  if (!parts.hasArgs || parts.selfClosing) return QString();
  QString args = parts.rawArgs.toString();
  ReplaceAll(args, QLatin1String("\r\n"), QLatin1Char(' '));
  const int quote = args.indexOf(QLatin1Char('"'));
  if (quote >= 0) args.truncate(quote);
  return args;
}

// Removes "<!-- ... -->" comments the way repeated whole-text searches do, in one pass.
//
// Removing a comment and searching again from the start is quadratic on text with many
// comments. The search it stands for finds the first "<!--" (at s) and the first "-->" (at e) of
// the current text, stops unless e > s + 3, and else removes [s, e + 3). What lies in front of
// s holds neither marker, so the next search can only find one that starts a few characters in
// front of s, where the removal joined two pieces, or behind it. The pass therefore looks for
// the markers in order: a "-->" before any "<!--" stops it, as does a "<!--" without a "-->"
// more than three characters behind it; after a removal it checks the join first, which can
// cut up to three characters it already kept. Markers are found by their "!" and their first
// "-", a block at a time; until the first removal only by the "!", since most texts hold no
// comment but may hold many "-", and a "-->" in front of the first "<!--" is then looked for
// once.
//
// The kept text is written into a buffer the caller provides, as far as it has room; the caller
// may then take all but the last three characters out of it, move the rest to its front and ask
// for more. So a conversion can take comment-heavy text through a small buffer that stays in
// the cache instead of writing a second copy of the whole text.
class CommentRemover {
 public:
  CommentRemover(const QChar* source, int size) : source_(source), size_(size) {}

  // Reads up to the first removal without copying anything. False when the text keeps every
  // character; else the kept text is its prefix in front of the first comment, then the rest.
  bool RemovesAnything() {
    for (;;) {
      SkipToExclamationMark();
      if (in_ >= size_) return false;
      // A "<!--" whose "!" stands at in_; keptSize_ == in_ until the first removal.
      if (OpensAt(in_ - 1)) {
        const int close = FindClose(0);
        if (close >= 0 && close < in_ - 1) return false;
        if (!Remove(in_ - 1)) return false;
        joined_ = true;
        return true;
      }
      ++in_;
      keptSize_ = in_;
    }
  }

  // After RemovesAnything: appends kept text to out[keptSize, capacity), where out[0, keptSize)
  // holds what came before (at least its last three characters), until the buffer is full or
  // the text is done.
  void Fill(QChar* out, int& keptSize, int capacity) {
    out_ = out;
    keptSize_ = keptSize;
    capacity_ = capacity;
    while (!Done() && keptSize_ < capacity_) {
      if (prefix_ < prefixEnd_) {
        const int count = std::min(prefixEnd_ - prefix_, capacity_ - keptSize_);
        std::copy(source_ + prefix_, source_ + prefix_ + count, out_ + keptSize_);
        prefix_ += count;
        keptSize_ += count;
      } else if (stopped_ || in_ >= size_) {
        const int count = std::min(size_ - in_, capacity_ - keptSize_);
        std::copy(source_ + in_, source_ + in_ + count, out_ + keptSize_);
        in_ += count;
        keptSize_ += count;
      } else {
        Step();
      }
    }
    keptSize = keptSize_;
  }

  // All kept text has been handed out.
  bool Done() const { return prefix_ >= prefixEnd_ && in_ >= size_; }

 private:
  // Character k of the current text (the kept text, then the rest of the source); NUL past its
  // end, which no marker holds. Before the first removal the kept text is the source's prefix.
  QChar At(int k) const {
    if (k < keptSize_) return out_ ? out_[k] : source_[k];
    const int index = in_ + (k - keptSize_);
    return index < size_ ? source_[index] : QChar();
  }
  bool OpensAt(int k) const {
    return k >= 0 && At(k) == QLatin1Char('<') && At(k + 1) == QLatin1Char('!') &&
           At(k + 2) == QLatin1Char('-') && At(k + 3) == QLatin1Char('-');
  }
  bool ClosesAt(int k) const {
    return k >= 0 && At(k) == QLatin1Char('-') && At(k + 1) == QLatin1Char('-') &&
           At(k + 2) == QLatin1Char('>');
  }

  // The first "-->" of the current text at or behind position `from`, or -1.
  int FindClose(int from) const {
    int index = from;  // before the first removal positions are source indexes
    if (out_) {
      for (int k = from; k < keptSize_; ++k) {
        if (ClosesAt(k)) return k;
      }
      index = std::max(in_, in_ + (from - keptSize_));
    }
    for (;; ++index) {
      while (size_ - index >= Chars8::kCount) {
        const unsigned found = Chars8(source_ + index).Match('-');
        if (found) {
          index += Chars8::Index(found);
          break;
        }
        index += Chars8::kCount;
      }
      while (index < size_ && source_[index] != QLatin1Char('-')) ++index;
      if (size_ - index < 3) return -1;
      if (source_[index + 1] == QLatin1Char('-') && source_[index + 2] == QLatin1Char('>')) {
        return keptSize_ + (index - in_);
      }
    }
  }

  // Removes the comment that opens at `open`, or returns false when the search stops there.
  bool Remove(int open) {
    const int close = FindClose(open + 2);
    if (close < 0 || close <= open + 3) return false;
    // The text from `open` on comes from the source: `open` is at most a few characters in
    // front of keptSize_, and whatever of it was kept is cut off again.
    in_ += close + 3 - keptSize_;
    if (out_) {
      keptSize_ = open;
    } else {
      prefixEnd_ = open;  // the source's prefix, handed out by Fill before anything else
    }
    return true;
  }

  // Before the first removal: on to the next "!" or the end.
  void SkipToExclamationMark() {
    while (size_ - in_ >= 2 * Chars8::kCount) {
      const unsigned first = Chars8(source_ + in_).Match('!');
      const unsigned second = Chars8(source_ + in_ + Chars8::kCount).Match('!');
      if ((first | second) != 0) break;
      in_ += 2 * Chars8::kCount;
    }
    while (size_ - in_ >= Chars8::kCount) {
      const unsigned found = Chars8(source_ + in_).Match('!');
      in_ += found ? Chars8::Index(found) : Chars8::kCount;
      if (found) break;
    }
    while (in_ < size_ && source_[in_] != QLatin1Char('!')) ++in_;
    keptSize_ = in_;
  }

  // Copies source characters to the kept text up to the next "!" or "-", the end, or a full
  // buffer.
  void Advance() {
    // In locals: the compiler cannot tell that the characters written leave the members alone.
    int in = in_;
    int kept = keptSize_;
    const int blocks = std::min(size_ - in, capacity_ - kept) / Chars8::kCount;
    for (int block = 0; block < blocks; ++block) {
      const Chars8 chars(source_ + in);
      chars.Store(out_ + kept);
      const unsigned found = chars.Match('!', '-');
      const int plain = found ? Chars8::Index(found) : Chars8::kCount;
      in += plain;
      kept += plain;
      if (found) break;
    }
    while (in < size_ && kept < capacity_ && source_[in] != QLatin1Char('!') &&
           source_[in] != QLatin1Char('-')) {
      out_[kept++] = source_[in++];
    }
    in_ = in;
    keptSize_ = kept;
  }

  // One step after the first removal: the join, or the text up to the next marker character
  // and that character.
  void Step() {
    if (joined_) {
      // A marker may start in the last three kept characters and end behind them; the first
      // one there decides, as a "-->" in front of any "<!--" would.
      joined_ = false;
      for (int k = std::max(0, keptSize_ - 3); k < keptSize_; ++k) {
        if (out_[k] != QLatin1Char('-') && out_[k] != QLatin1Char('<')) continue;
        if (ClosesAt(k)) {
          stopped_ = true;
          return;
        }
        if (OpensAt(k)) {
          joined_ = Remove(k);
          stopped_ = !joined_;
          return;
        }
      }
    }
    Advance();
    if (in_ >= size_ || keptSize_ >= capacity_ ||
        (source_[in_] != QLatin1Char('!') && source_[in_] != QLatin1Char('-'))) {
      return;
    }
    // source_[in_] is a "!" or a "-", the character at position keptSize_: OpensAt(keptSize_ - 1)
    // and ClosesAt(keptSize_), with the first comparisons done cheaply.
    const QChar second = in_ + 1 < size_ ? source_[in_ + 1] : QChar();
    if (source_[in_] == QLatin1Char('!')) {
      if (second == QLatin1Char('-') && OpensAt(keptSize_ - 1)) {
        joined_ = Remove(keptSize_ - 1);
        stopped_ = !joined_;
        return;
      }
    } else if (second == QLatin1Char('-') && ClosesAt(keptSize_)) {
      stopped_ = true;
      return;
    }
    out_[keptSize_++] = source_[in_++];
  }

  const QChar* const source_;
  const int size_;
  int in_ = 0;            // source_[in_, size_) is still to read; it follows the kept text
  int keptSize_ = 0;      // out_[0, keptSize_) holds the kept text so far
  QChar* out_ = nullptr;  // null before the first removal
  int capacity_ = 0;
  int prefix_ = 0;  // source_[prefix_, prefixEnd_) is kept text still to hand out
  int prefixEnd_ = 0;
  bool joined_ = false;   // a removal has just joined two pieces
  bool stopped_ = false;  // the search has stopped: the rest is kept as it stands
};

}  // namespace

enum class CHTMLParser::TagResult : unsigned char {
  kDone,
  kDeferred,  // the attribute map was left for later
  kCut,       // the tag may go on behind the range; nothing was done
};

// The handlers of the tag table. Several keys may share one.
enum class CHTMLParser::Tag : unsigned char {
  kNone,
  kFontBgcolor,
  kUl,
  kOl,
  kLi,
  kBold,
  kFontSize,
  kFontName,
  kFontColor,
  kImage,
  kItalic,
  kSmallCaps,
  kStrike,
  kDivAlign,
  kCenter,
  kSub,
  kSup,
  kScript,
  kUnderline,
  kDiv,
  kPard,
  kBr,
  kFont,
  kTable,
  kTrCols,
  kTr,
  kTd,
  kObject,
  kParam,
  kHead,
  kBody,
};

namespace {

// A key of up to twelve ASCII characters packs into two integers, one byte a character; with
// its length (a key may hold NUL) that identifies it. The keys sit in a small open-addressing
// table, so a lookup is one multiplication and, as a rule, one comparison.
struct PackedKey {
  uint64_t low = 0;
  uint64_t high = 0;
  int length = -1;
  constexpr void Add(int i, unsigned char c) {
    if (i < 8) {
      low |= uint64_t(c) << (8 * i);
    } else {
      high |= uint64_t(c) << (8 * (i - 8));
    }
  }
  constexpr bool operator==(const PackedKey& other) const {
    return low == other.low && high == other.high && length == other.length;
  }
  constexpr int Slot() const {
    return int(((low ^ (high << 8) ^ uint64_t(length)) * 0x9E3779B97F4A7C15ull) >> 58);
  }
};
constexpr int kLongestKey = 12;

const QString& SourceKey() {
  static const QString key = QStringLiteral("src");
  return key;
}

const QString& CenterAlignment() {
  static const QString alignment = QStringLiteral("Center");
  return alignment;
}

}  // namespace

// The handler of a lower-cased key packed as PackedKey packs it. Small enough for the compiler
// to inline into the main loop; not declared inline, so that its table stays a local object
// rather than an exported symbol.
CHTMLParser::Tag CHTMLParser::FindTag(uint64_t low, uint64_t high, int length) {
  struct Entry {
    const char* key;
    int length;
    Tag tag;
  };
#define QTU_TAG(key, tag) \
  { key, int(sizeof(key)) - 1, tag }
  // Keys are lower-case and compared exactly.
  static constexpr Entry kTable[] = {
      QTU_TAG("font bgcolor", Tag::kFontBgcolor),
      QTU_TAG("ul", Tag::kUl),
      QTU_TAG("ol", Tag::kOl),
      QTU_TAG("li", Tag::kLi),
      QTU_TAG("b", Tag::kBold),
      QTU_TAG("font size", Tag::kFontSize),
      QTU_TAG("font name", Tag::kFontName),
      QTU_TAG("font color", Tag::kFontColor),
      QTU_TAG("img", Tag::kImage),
      QTU_TAG("image", Tag::kImage),
      QTU_TAG("embed", Tag::kImage),
      QTU_TAG("v:imagedata", Tag::kImage),
      QTU_TAG("i", Tag::kItalic),
      QTU_TAG("sc", Tag::kSmallCaps),
      QTU_TAG("strike", Tag::kStrike),
      QTU_TAG("div align", Tag::kDivAlign),
      QTU_TAG("center", Tag::kCenter),
      QTU_TAG("sub", Tag::kSub),
      QTU_TAG("sup", Tag::kSup),
      QTU_TAG("script", Tag::kScript),
      QTU_TAG("u", Tag::kUnderline),
      QTU_TAG("div", Tag::kDiv),
      QTU_TAG("pard", Tag::kPard),
      QTU_TAG("br", Tag::kBr),
      QTU_TAG("font", Tag::kFont),
      QTU_TAG("table", Tag::kTable),
      QTU_TAG("tr cols", Tag::kTrCols),
      QTU_TAG("tr", Tag::kTr),
      QTU_TAG("td", Tag::kTd),
      QTU_TAG("object", Tag::kObject),
      QTU_TAG("param", Tag::kParam),
      QTU_TAG("head", Tag::kHead),
      QTU_TAG("body", Tag::kBody),
  };
#undef QTU_TAG
  struct Slot {
    PackedKey key;
    Tag tag = Tag::kNone;
  };
  struct Slots {
    Slot slots[64];
  };
  static constexpr Slots kSlots = [] {
    Slots table{};
    for (const Entry& entry : kTable) {
      PackedKey key;
      key.length = entry.length;
      for (int i = 0; i < entry.length; ++i) key.Add(i, static_cast<unsigned char>(entry.key[i]));
      int slot = key.Slot();
      while (table.slots[slot].key.length >= 0) slot = (slot + 1) % 64;
      table.slots[slot] = {key, entry.tag};
    }
    return table;
  }();

  const PackedKey wanted{low, high, length};
  for (int slot = wanted.Slot();; slot = (slot + 1) % 64) {
    const Slot& entry = kSlots.slots[slot];
    if (entry.key == wanted) return entry.tag;
    if (entry.key.length < 0) return Tag::kNone;
  }
}

// The handler of a key, lower-cased first. Plain ASCII is folded by hand; a key with any other
// character goes through QString::toLower, whose mappings can turn such a character into an
// ASCII letter. Lower-casing never shortens a text, so a key longer than the longest entry
// matches nothing.
CHTMLParser::Tag CHTMLParser::FindTag(QStringView key) {
  const int length = int(key.size());
  if (length > kLongestKey) return Tag::kNone;
  PackedKey packed;
  packed.length = length;
  const QChar* chars = key.data();
  ushort any = 0;
  for (int i = 0; i < length; ++i) {
    const ushort c = chars[i].unicode();
    any |= c;
    packed.Add(i, static_cast<unsigned char>(ushort(c + (ushort(c - 'A') < 26 ? 'a' - 'A' : 0))));
  }
  if (any >= 0x80) {
    const QString lowered = key.toString().toLower();
    if (lowered.size() > kLongestKey) return Tag::kNone;
    packed = PackedKey();
    packed.length = int(lowered.size());
    for (int k = 0; k < lowered.size(); ++k) {
      if (lowered.at(k).unicode() >= 0x80) return Tag::kNone;
      packed.Add(k, static_cast<unsigned char>(lowered.at(k).unicode()));
    }
  }
  return FindTag(packed.low, packed.high, packed.length);
}

CHTMLParser::CHTMLParser(const QString& html, CParserOut* out) : output(out) {
  ProcessHTML(html);
}

bool CHTMLParser::IsValidParser(const QString& html) {
  static const char* const kNeedles[] = {"<IMG",    "<img",    "<image", "<IMAGE",
                                         "<object", "<OBJECT", "<embed", "<EMBED"};
  for (const char* needle : kNeedles) {
    if (html.contains(QLatin1String(needle))) return true;
  }
  return false;
}

void CHTMLParser::ProcessHTML(const QString& html) {
  if (!output) return;
  inUnorderedList = false;
  inOrderedList = false;
  keepAttributes = false;
  attributes.clear();
  // The attribute map of the last tag whose map was not filled, filled at the end.
  bool deferred = false;
  QStringView deferredArgs;
  int pos = 0;
  // Both hold what deferredArgs may point to at the end.
  QString buffer;
  QString keptArgs;  // the deferred argument text, once the buffer has moved on
  CommentRemover remover(html.constData(), html.size());
  if (!remover.RemovesAnything()) {
    ConvertRange(html, pos, true, deferred, deferredArgs);
  } else {
    // The text without its comments goes through a buffer of a few pages that stays in the
    // cache: filled, converted as far as its last whole tag or run, its rest moved to the front,
    // filled again. It doubles when a single tag or run does not fit in half of it.
    buffer.resize(16 * 1024);
    int filled = 0;
    for (;;) {
      remover.Fill(buffer.data(), filled, buffer.size());
      const bool done = remover.Done();
      // Until the end, the last three characters may still be cut by a removal.
      const QString range =
          QString::fromRawData(buffer.constData(), done ? filled : std::max(filled - 3, 0));
      ConvertRange(range, pos, done, deferred, deferredArgs);
      if (done) break;
      const QChar* const begin = buffer.constData();
      if (deferred && deferredArgs.data() >= begin && deferredArgs.data() < begin + filled) {
        keptArgs = deferredArgs.toString();
        deferredArgs = keptArgs.isEmpty() ? QStringView(u"", 0) : QStringView(keptArgs);
      }
      std::copy(buffer.constData() + pos, buffer.constData() + filled, buffer.data());
      filled -= pos;
      pos = 0;
      if (filled * 2 > buffer.size()) buffer.resize(buffer.size() * 2);
    }
  }
  // The map ends as the last tag left it, as if every tag had filled it.
  if (deferred) {
    attributes.clear();
    if (!deferredArgs.isNull()) FillAttributes(deferredArgs);
  }
}

Q_ALWAYS_INLINE void CHTMLParser::ConvertRange(const QString& html, int& pos, bool isWhole,
                                               bool& deferred, QStringView& deferredArgs) {
  // Each run of text between two tags is emitted as soon as it is found: the original loop
  // collected it until the next "<" or the end of the text, which comes right after it. Only a
  // tag can change inScript, so one test per run is as good as one per character.
  const int size = html.size();
  const QChar* const data = html.constData();
  while (pos < size) {
    if (data[pos] != QLatin1Char('<')) {
      unsigned content = 0;
      const int next = int(ScanTextRun(data + pos, data + size, content) - data);
      if (next == size && !isWhole) return;  // the run may go on behind the range
      if (!output->inScript && outputEnabled &&
          PrepareTextRun(QStringView(data + pos, next - pos), content, text_)) {
        output->WriteText(text_);
      }
      pos = next;
    } else {
      const TagResult result = ParseNextTag(html, pos, &deferredArgs, isWhole);
      if (result == TagResult::kCut) return;
      deferred = result == TagResult::kDeferred;
    }
  }
}

void CHTMLParser::SimplifyHTML(QString& html) {
  CommentRemover remover(html.constData(), html.size());
  if (!remover.RemovesAnything()) return;
  QString kept(html.size(), Qt::Uninitialized);
  int keptSize = 0;
  remover.Fill(kept.data(), keptSize, kept.size());
  kept.resize(keptSize);
  html.swap(kept);
}

void CHTMLParser::ParseTagFromHTML(QString& html, int& pos) {
  ParseNextTag(html, pos, nullptr, true);
}

bool CHTMLParser::ParseTag(const QString& html, int& pos, QStringView* deferredArgs) {
  return ParseNextTag(html, pos, deferredArgs, true) == TagResult::kDeferred;
}

Q_ALWAYS_INLINE CHTMLParser::TagResult CHTMLParser::ParseNextTag(const QString& html, int& pos,
                                                                 QStringView* deferredArgs,
                                                                 bool isWhole) {
  const QChar* const data = html.constData();
  TagParts parts;
  bool isClose = false;
  uint64_t packed = 0;
  uint64_t packedHigh = 0;
  bool isPacked = false;
  if (!ReadPlainTag(html, pos, parts.key, isClose, packed, isPacked)) {
    const int begin = pos;
    const TagSpan raw = ReadTag(html, pos);
    // Running into the range's last character, the tag may go on behind it.
    if (!isWhole && raw.end >= html.size() - 1) {
      pos = begin;
      return TagResult::kCut;
    }
    // A closing tag loses its "<"; the "/" stays in front for the split to cut. Index 1 of a
    // one-character tag lies past its end, where a Qt string yields NUL: not a closing tag.
    const int skip = raw.end - raw.begin > 1 ? int(data[raw.begin + 1] == QLatin1Char('/')) : 0;
    isClose = skip != 0;
    const QStringView text(data + raw.begin + skip, raw.end - raw.begin - skip);
    // The reader found the first space behind the first character; only a direct call of
    // ParseTagFromHTML can start a tag on a space.
    int space = raw.space >= 0 ? raw.space - (raw.begin + skip) : int(text.size());
    if (!text.isEmpty() && text.front() == QLatin1Char(' ')) space = 0;
    parts = SplitTag(text, space);
    // A key is packed eight characters at once where the blocks can be read.
    const int length = int(parts.key.size());
    const QChar* const key = parts.key.data();
    isPacked = length > 0 && length <= kLongestKey &&
               data + html.size() - key >= (length > Chars8::kCount ? 2 : 1) * Chars8::kCount &&
               Chars8(key).PackLower(std::min(length, Chars8::kCount), packed) &&
               (length <= Chars8::kCount ||
                Chars8(key + Chars8::kCount).PackLower(length - Chars8::kCount, packedHigh));
  }
  const Tag tag =
      isPacked ? FindTag(packed, packedHigh, int(parts.key.size())) : FindTag(parts.key);

  const bool defer = deferredArgs && !keepAttributes && tag != Tag::kImage;
  if (defer) {
    *deferredArgs = parts.hasArgs ? parts.rawArgs : QStringView();
    // A view of an empty argument text must still count as present.
    if (parts.hasArgs && deferredArgs->isNull()) *deferredArgs = QStringView(u"", 0);
  } else {
    if (!keepAttributes) attributes.clear();
    if (parts.hasArgs) FillAttributes(parts.rawArgs);
  }
  // Only the attribute-keyed entries read the argument text.
  const bool readsArgs = tag == Tag::kFontSize || tag == Tag::kFontName || tag == Tag::kDivAlign ||
                         tag == Tag::kTrCols;
  RunHandler(tag, readsArgs ? HandlerArgs(parts) : QString(), isClose);
  return defer ? TagResult::kDeferred : TagResult::kDone;
}

void CHTMLParser::GetTagFromHTML(QString& tag, const QString& html, int& pos) {
  const TagSpan raw = ReadTag(html, pos);
  tag.append(html.constData() + raw.begin, raw.end - raw.begin);
}

void CHTMLParser::ProcessArg(QString& args, QString& tag) {
  const TagParts parts = SplitTag(tag);
  if (parts.hasArgs) {
    FillAttributes(parts.rawArgs);
    args = HandlerArgs(parts);
  }
  tag = parts.key.toString();
}

void CHTMLParser::FillAttributes(QStringView rawArgs) {
  // CRLF becomes a space first; most argument texts hold none and are parsed where they stand.
  if (!rawArgs.contains(QLatin1Char('\r'))) {
    ParseAttributes(rawArgs);
    return;
  }
  QString args = rawArgs.toString();
  ReplaceAll(args, QLatin1String("\r\n"), QLatin1Char(' '));
  ParseAttributes(args);
}

void CHTMLParser::ParseAttributes(QStringView args) {
  // Pieces are separated by single spaces, and joining pieces puts back exactly the space that
  // separated them, so every token is the span args[begin, end) and is never copied.
  const int size = int(args.size());
  const QChar* data = args.data();
  int p = 0;
  // End of the space-separated piece at p; moves p behind its space, or to -1 when none is left.
  auto pieceEnd = [&]() {
    if (p < 0 || p >= size) {
      p = -1;
      return size;
    }
    const int space = IndexOf(data, p, size, u' ');
    if (space == size) {
      p = -1;
      return size;
    }
    p = space + 1;
    return space;
  };

  int begin = 0;
  int end = 0;
  do {
    begin = p < 0 ? size : std::min(p, size);
    end = pieceEnd();
    // A piece that does not end in a quote is joined with the next one, so that quoted values
    // with spaces stay whole (and an unquoted value swallows the pieces after it).
    while (p > 1 && !IsQuote(data[p - 2])) end = pieceEnd();
    const int equals = IndexOf(data, begin, end, u'=');
    if (equals < end) {
      const QStringView name = QStringView(data + begin, equals - begin).trimmed();
      const QString* common = CommonAttributeName(name);
      attributes.insert(common ? *common : TrimmedLower(name, false),
                        TrimmedLower(QStringView(data + equals + 1, end - equals - 1), true));
    }
  } while (end > begin && p >= 0);
}

void CHTMLParser::WriteText(QString& text) {
  if (text.isEmpty()) return;
  EmitText(text);
  text.clear();
}

void CHTMLParser::EmitText(QStringView text) {
  CParserOut* out = EnabledOutput();
  if (!out) return;
  unsigned content = 0;
  for (QChar c : text) content |= RunContentOf(c);
  if (PrepareTextRun(text, content, text_)) out->WriteText(text_);
}

QColor CHTMLParser::ParseColor(QString value) {
  // Colour attributes are deliberately not honoured: chat text keeps the reader's colours.
  Q_UNUSED(value);
  return QColor(Qt::black);
}

void CHTMLParser::ProcessUl(bool isClose) {
  CParserOut* out = EnabledOutput();
  if (isClose) {
    if (out) out->EndBulletList();
    inUnorderedList = false;
  } else {
    if (out) out->BeginBulletList();
    inUnorderedList = true;
  }
}

void CHTMLParser::ProcessOl(bool isClose) {
  if (isClose) {
    if (CParserOut* out = EnabledOutput()) out->EndNumberedList();
    inOrderedList = false;
  } else {
    inOrderedList = true;
  }
}

void CHTMLParser::ProcessLi(bool isClose) {
  CParserOut* out = EnabledOutput();
  if (!out) return;
  if (isClose) {
    out->NewParagraph();
  } else if (inUnorderedList) {
    out->BulletItem();
  } else if (inOrderedList) {
    out->NumberedItem(1);
  }
}

void CHTMLParser::ProcessDiv(bool isClose) {
  if (isClose) return;
  if (CParserOut* out = EnabledOutput()) out->NewParagraph();
}

void CHTMLParser::ProcessDivAlign(const QString& value) {
  CParserOut* out = EnabledOutput();
  if (!out) return;
  auto is = [&value](const char* name) {
    return value.compare(QLatin1String(name), Qt::CaseInsensitive) == 0;
  };
  if (is("right")) {
    out->SetAlignment(QStringLiteral("Right"));
  } else if (is("center")) {
    out->SetAlignment(QStringLiteral("Center"));
  } else if (is("justify")) {
    out->SetAlignment(QStringLiteral("Justify"));
  } else {
    out->SetAlignment(QStringLiteral("Left"));
  }
}

void CHTMLParser::ProcessFont() {
  if (fontAttributes.empty()) return;
  const FontAttribute attribute = fontAttributes.back();
  fontAttributes.pop_back();
  if (!output) return;
  switch (attribute) {
    case FontAttribute::kColor:
      output->textColor = QColor(Qt::black);
      break;
    case FontAttribute::kBackgroundColor:
      output->backgroundColor = QColor(Qt::white);
      break;
    case FontAttribute::kSize:
      output->fontSize = 9;
      break;
    case FontAttribute::kName:
      output->fontName = QStringLiteral("Tahoma");
      break;
  }
}

void CHTMLParser::ProcessTrCols(bool isClose, const QString& value) {
  if (isClose) return;
  CParserOut* out = EnabledOutput();
  if (!out) return;
  out->BeginRow();
  const int columns = value.toInt(nullptr, 10);
  for (int i = 1; i <= columns; ++i) out->AddColumn(2000);
}

void CHTMLParser::ProcessTr(bool isClose) {
  if (!isClose) return;
  if (CParserOut* out = EnabledOutput()) out->EndRow();
}

void CHTMLParser::ProcessTd(bool isClose) {
  CParserOut* out = EnabledOutput();
  if (!out) return;
  if (isClose) {
    out->EndCell();
  } else {
    out->BeginCell(1);
  }
}

void CHTMLParser::ProcessObject(bool isClose) {
  if (!isClose) {
    keepAttributes = true;
    return;
  }
  keepAttributes = false;
  const auto classIdIt = attributes.constFind(QStringLiteral("classid"));
  if (classIdIt == attributes.constEnd()) return;
  QString classId = *classIdIt;
  if (classId.startsWith(QLatin1String("clsid:"))) classId.remove(0, 6);
  if (CParserOut* out = EnabledOutput()) out->InsertObject(classId, attributes);
}

void CHTMLParser::Dispatch(Tag tag, const QString& args, bool isClose) {
  RunHandler(tag, args, isClose);
}

// Inlined into the main loop, which runs it once per tag. It holds no static object of its own
// (an inline function's would be exported), hence the literals' helpers above.
Q_ALWAYS_INLINE void CHTMLParser::RunHandler(Tag tag, const QString& args, bool isClose) {
  auto flag = [this, isClose](bool CParserOut::*field) {
    if (output) output->*field = !isClose;
  };
  auto call = [this](void (CParserOut::*operation)()) {
    if (CParserOut* out = EnabledOutput()) (out->*operation)();
  };
  switch (tag) {
    case Tag::kNone:
    case Tag::kParam:
      break;
    case Tag::kFontBgcolor:
      if (output) output->backgroundColor = ParseColor(args);
      fontAttributes.push_back(FontAttribute::kBackgroundColor);
      break;
    case Tag::kUl:
      ProcessUl(isClose);
      break;
    case Tag::kOl:
      ProcessOl(isClose);
      break;
    case Tag::kLi:
      ProcessLi(isClose);
      break;
    case Tag::kBold:
      flag(&CParserOut::bold);
      break;
    case Tag::kFontSize:
      // A self-closing "font size" has no argument text, which reads as 0 without the call.
      if (output) output->fontSize = args.isEmpty() ? 0 : args.toInt(nullptr, 10);
      fontAttributes.push_back(FontAttribute::kSize);
      break;
    case Tag::kFontName:
      if (output) output->fontName = args;
      fontAttributes.push_back(FontAttribute::kName);
      break;
    case Tag::kFontColor:
      if (output) output->textColor = ParseColor(args);
      fontAttributes.push_back(FontAttribute::kColor);
      break;
    case Tag::kImage: {
      const QString source = attributes[SourceKey()];
      if (CParserOut* out = EnabledOutput()) out->InsertImage(source, attributes);
      break;
    }
    case Tag::kItalic:
      flag(&CParserOut::italic);
      break;
    case Tag::kSmallCaps:
      flag(&CParserOut::smallCaps);
      break;
    case Tag::kStrike:
      flag(&CParserOut::strikeOut);
      break;
    case Tag::kDivAlign:
      ProcessDivAlign(args);
      break;
    case Tag::kCenter:
      if (CParserOut* out = EnabledOutput()) out->SetAlignment(CenterAlignment());
      break;
    case Tag::kSub:
      flag(&CParserOut::subscript);
      break;
    case Tag::kSup:
      flag(&CParserOut::superscript);
      break;
    case Tag::kScript:
      flag(&CParserOut::inScript);
      break;
    case Tag::kUnderline:
      flag(&CParserOut::underline);
      break;
    case Tag::kDiv:
      ProcessDiv(isClose);
      break;
    case Tag::kPard:
      call(&CParserOut::ResetParagraph);
      break;
    case Tag::kBr:
      call(&CParserOut::LineBreak);
      break;
    case Tag::kFont:
      ProcessFont();
      break;
    case Tag::kTable:
      call(&CParserOut::NewParagraph);
      break;
    case Tag::kTrCols:
      ProcessTrCols(isClose, args);
      break;
    case Tag::kTr:
      ProcessTr(isClose);
      break;
    case Tag::kTd:
    // Objects are laid out as a table cell on purpose; ProcessObject stays out of the table.
    case Tag::kObject:
      ProcessTd(isClose);
      break;
    case Tag::kHead:
      outputEnabled = false;
      break;
    case Tag::kBody:
      outputEnabled = !isClose;
      break;
  }
}
