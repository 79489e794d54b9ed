#include "qt_util/html_parser.h"

#include <QStringMatcher>
#include <QStringView>
#include <QVarLengthArray>
#include <algorithm>
#include <cstdint>

namespace {

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

// First index >= from where `needle` starts, or -1. Looks for the first character with the
// vectorised single-character search; QString::indexOf(QLatin1String) converts the needle to
// UTF-16 on the heap at every call.
int FindLatin1(const QString& text, int from, QLatin1String needle) {
  const QChar head = QLatin1Char(needle.at(0));
  for (int at = text.indexOf(head, from); at >= 0; at = text.indexOf(head, at + 1)) {
    if (at + needle.size() > text.size()) return -1;
    if (MatchesAt(text.constData(), text.size(), at, needle)) return at;
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

// QString::toLower in place, without the case tables for the plain ASCII of tag names and
// attributes.
void ToLowerInPlace(QString& text) {
  const QChar* data = text.constData();
  const int size = text.size();
  int i = 0;
  while (i < size && data[i].unicode() < 0x80 &&
         !(data[i] >= QLatin1Char('A') && data[i] <= QLatin1Char('Z'))) {
    ++i;
  }
  if (i == size) return;
  QChar* out = text.data();
  for (; i < size; ++i) {
    const ushort c = out[i].unicode();
    if (c >= 0x80) {
      text = std::move(text).toLower();
      return;
    }
    if (c >= 'A' && c <= 'Z') out[i] = QChar(ushort(c + ('a' - 'A')));
  }
}

// The lower-cased text of `view` without surrounding white space (as QString::trimmed) and,
// when `stripQuotes` is set, then without leading and trailing quote characters: `^["']+` and
// `["']+$` done by hand, since both patterns rescan a quote run from every start position, which
// is quadratic on a value made of quotes.
QString TrimmedLower(QStringView view, bool stripQuotes) {
  view = view.trimmed();
  if (stripQuotes) {
    while (!view.isEmpty() && IsQuote(view.front())) view = view.mid(1);
    while (!view.isEmpty() && IsQuote(view.back())) view.chop(1);
  }
  QString text = view.toString();
  ToLowerInPlace(text);
  return text;
}

// The open quotes of a tag, one bit each: a tag full of alternating quotes pushes one entry per
// character, and a bit keeps that stack at a sixteenth of the text it comes from.
class QuoteStack {
 public:
  bool IsEmpty() const { return depth_ == 0; }
  QChar Top() const {
    const size_t i = depth_ - 1;
    return (bits_[i / 64] >> (i % 64)) & 1 ? QLatin1Char('"') : QLatin1Char('\'');
  }
  void Push(QChar quote) {
    if (depth_ / 64 == size_t(bits_.size())) bits_.push_back(0);
    const uint64_t mask = uint64_t(1) << (depth_ % 64);
    if (quote == QLatin1Char('"')) {
      bits_[depth_ / 64] |= mask;
    } else {
      bits_[depth_ / 64] &= ~mask;
    }
    ++depth_;
  }
  void Pop() { --depth_; }

 private:
  QVarLengthArray<uint64_t, 4> bits_;
  size_t depth_ = 0;
};

struct TagSpan {
  int begin;
  int end;
};

// The span of the raw tag at `pos` (which stands on "<"): html[begin, end) holds "<" and the tag
// text without the closing ">". A ">" inside quotes does not end the tag; quotes nest as a
// stack. A tag that runs to the end of the text loses its last character. `pos` is left behind
// the last character read.
TagSpan ReadTag(const QString& html, int& pos) {
  const int size = html.size();
  if (pos < 0 || pos >= size) {
    pos = size;
    return {size, size};
  }
  const QChar* data = html.constData();
  const int begin = pos;
  QuoteStack quotes;
  auto track = [&quotes](QChar c) {
    if (!IsQuote(c)) return;
    if (!quotes.IsEmpty() && quotes.Top() == c) {
      quotes.Pop();
    } else {
      quotes.Push(c);
    }
  };
  if (IsQuote(data[begin])) track(data[begin]);
  // `next` indexes the character being read; reading at the end (after a "<" that ends the
  // text) yields NUL, as a Qt string does, without touching memory outside it. The last character
  // read (the ">", or the final character of a tag that runs to the end) is not part of the tag.
  int next = begin + 1;
  for (;; ++next) {
    const QChar c = next < size ? data[next] : QChar();
    if (quotes.IsEmpty() && c == QLatin1Char('>')) break;
    if (next + 1 >= size) break;
    if (IsQuote(c)) track(c);
  }
  pos = next + 1;
  return {begin, std::min(next, size)};
}

}  // namespace

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
  QString copy = html;
  SimplifyHTML(copy);
  inUnorderedList = false;
  inOrderedList = false;
  keepAttributes = false;
  attributes.clear();

  // The text buffer is emptied at every "<", so it only ever holds one run of characters
  // between two tags; it is kept as a span of the copy instead of being copied out.
  // Only a tag can change inScript, so one test per run is as good as one per character.
  int textBegin = 0;
  int textEnd = 0;
  int pos = 0;
  const int size = copy.size();
  while (pos < size) {
    if (copy.at(pos) != QLatin1Char('<')) {
      int next = copy.indexOf(QLatin1Char('<'), pos);
      if (next < 0) next = size;
      if (!output->inScript) {
        textBegin = pos;
        textEnd = next;
      }
      pos = next;
    } else {
      EmitText(QStringView(copy.constData() + textBegin, textEnd - textBegin));
      textBegin = textEnd = 0;
      ParseTagFromHTML(copy, pos);
    }
  }
  EmitText(QStringView(copy.constData() + textBegin, textEnd - textBegin));
}

void CHTMLParser::SimplifyHTML(QString& html) {
  // Removing a comment and searching again from the start is quadratic on text with many
  // comments. Instead the text is kept as a finished prefix kept[0, keptSize) followed by the
  // unread rest html[rest, size). Neither "<!--" nor "-->" lies wholly inside the finished prefix
  // (it is the part in front of the first "<!--", and the first "-->" comes after that), so a
  // search from the start can begin a few characters before the prefix ends, where a removal may
  // have joined a new marker. Each round consumes the text it searched, so the whole is linear
  // and the result is the same as with the repeated whole-string search. The prefix is built in
  // a buffer of its own, so that each character is copied once.
  static const QLatin1String kOpen("<!--");
  static const QLatin1String kClose("-->");
  const int size = html.size();
  const QChar* source = html.constData();
  QString kept;
  int keptSize = 0;
  int rest = 0;

  auto logicalAt = [&](int k) { return k < keptSize ? kept.at(k) : source[rest + (k - keptSize)]; };
  // Boyer-Moore: the common case is one search through a whole text that holds no comment.
  const QStringMatcher openMatcher(kOpen);
  const QStringMatcher closeMatcher(kClose);
  auto find = [&](QLatin1String needle, const QStringMatcher& matcher) {
    const int logicalSize = keptSize + (size - rest);
    for (int k = std::max(0, keptSize - (int(needle.size()) - 1)); k < keptSize; ++k) {
      if (k + needle.size() > logicalSize) return -1;
      bool match = true;
      for (int j = 0; j < needle.size() && match; ++j) {
        match = logicalAt(k + j) == QLatin1Char(needle.at(j));
      }
      if (match) return k;
    }
    const int found = matcher.indexIn(html, rest);
    return found < 0 ? -1 : keptSize + (found - rest);
  };

  for (;;) {
    const int s = find(kOpen, openMatcher);
    if (s < 0) break;
    const int e = find(kClose, closeMatcher);
    if (e < 0 || e <= s + 3) break;
    if (kept.isNull()) kept.resize(size);
    const int nextRest = rest + (e + 3 - keptSize);
    if (s > keptSize) {
      std::copy(source + rest, source + rest + (s - keptSize), kept.data() + keptSize);
    }
    keptSize = s;
    rest = nextRest;
  }
  if (kept.isNull()) return;
  std::copy(source + rest, source + size, kept.data() + keptSize);
  kept.resize(keptSize + (size - rest));
  html.swap(kept);
}

void CHTMLParser::ParseTagFromHTML(QString& html, int& pos) {
  if (!keepAttributes) attributes.clear();
  const TagSpan raw = ReadTag(html, pos);

  // A closing tag loses its "<"; the "/" stays in front for ProcessArg to cut. Index 1 of a
  // one-character tag lies past its end, where a Qt string yields NUL: not a closing tag.
  const bool isClose = raw.end - raw.begin > 1 && html.at(raw.begin + 1) == QLatin1Char('/');
  const int skip = isClose ? 1 : 0;
  // Both buffers keep their capacity from tag to tag; nothing holds on to them in between.
  QString& tag = tagBuffer_;
  tag.resize(raw.end - raw.begin - skip);
  std::copy(html.constData() + raw.begin + skip, html.constData() + raw.end, tag.data());
  QString& args = argsBuffer_;
  args.resize(0);
  ProcessArg(args, tag);
  ToLowerInPlace(tag);

  if (handlers.isEmpty()) BuildHandlers();
  const Handler* handler = handlerIndex_.value(tag, nullptr);
  if (handler) (*handler)(args, isClose);
}

void CHTMLParser::GetTagFromHTML(QString& tag, const QString& html, int& pos) {
  const TagSpan raw = ReadTag(html, pos);
  tag.append(html.constData() + raw.begin, raw.end - raw.begin);
}

void CHTMLParser::ProcessArg(QString& args, QString& tag) {
  const int space = tag.indexOf(QLatin1Char(' '));
  if (space < 0) {
    tag.remove(0, 1);
    return;
  }
  args.resize(tag.size() - (space + 1));
  std::copy(tag.constData() + space + 1, tag.constData() + tag.size(), args.data());
  ReplaceAll(args, QLatin1String("\r\n"), QLatin1Char(' '));
  ParseAttributes(args);

  // Both cuts below are tag.mid(1, length) done in place. A tag read from the text starts with
  // "<" or "/", so the length is never negative there; a caller's tag that starts with its space
  // can make it negative, and then, as with mid, the rest of the tag is kept.
  const int quote = args.indexOf(QLatin1Char('"'));
  if (quote < 0 && !args.isEmpty() && args.endsWith(QLatin1Char('/'))) {
    // Cuts a fixed " /" and the "<": "<br /" gives "br", "<font color /" gives "font color",
    // which is how the attribute-keyed entries of the table are reached.
    args.clear();
    if (tag.size() >= 3) tag.truncate(tag.size() - 2);
  } else {
    if (quote >= 0) args.truncate(quote);
    if (space >= 1) tag.truncate(space);
  }
  tag.remove(0, 1);
}

void CHTMLParser::ParseAttributes(const QString& args) {
  // Pieces are separated by single spaces, and joining pieces puts back exactly the space that
  // separated them, so every token is the span args[begin, end) and is never copied.
  const int size = args.size();
  const QChar* data = args.constData();
  int p = 0;
  // End of the space-separated piece at p; moves p behind its space, or to -1 when none is left.
  auto pieceEnd = [&]() {
    if (p < 0 || p >= size) {
      p = -1;
      return size;
    }
    const int space = args.indexOf(QLatin1Char(' '), p);
    if (space < 0) {
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
    const QStringView token(data + begin, end - begin);
    const auto equals = token.indexOf(QLatin1Char('='));
    if (equals >= 0) {
      attributes.insert(TrimmedLower(token.left(equals), false),
                        TrimmedLower(token.mid(equals + 1), true));
    }
  } while (end > begin && p >= 0);
}

void CHTMLParser::WriteText(QString& text) {
  if (text.isEmpty()) return;
  EmitText(text);
  text.clear();
}

void CHTMLParser::EmitText(QStringView text) {
  text = text.trimmed();
  if (text.isEmpty()) return;
  bool lineBreaks = false;
  bool entities = false;
  for (const QChar c : text) {
    lineBreaks |= c == QLatin1Char('\r') || c == QLatin1Char('\n');
    entities |= c == QLatin1Char('&');
  }
  QString decoded = text.toString();
  if (lineBreaks) {
    decoded.remove(QLatin1Char('\r'));
    decoded.remove(QLatin1Char('\n'));
  }
  if (entities) {
    // "&amp;" goes before the others, so "&amp;lt;" ends as "<".
    ReplaceAll(decoded, QLatin1String("&nbsp;"), QLatin1Char(' '));
    ReplaceAll(decoded, QLatin1String("&amp;"), QLatin1Char('&'));
    ReplaceAll(decoded, QLatin1String("&lt;"), QLatin1Char('<'));
    ReplaceAll(decoded, QLatin1String("&gt;"), QLatin1Char('>'));
    ReplaceAll(decoded, QLatin1String("&quot;"), QLatin1Char('"'));
    ReplaceAll(decoded, QLatin1String("&#39;"), QLatin1Char('\''));
  }
  if (decoded.isEmpty()) return;
  if (CParserOut* out = EnabledOutput()) out->WriteText(decoded);
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
  if (fontAttributes.isEmpty()) return;
  const QString name = fontAttributes.takeLast();
  if (!output) return;
  auto is = [&name](const char* attribute) {
    return name.compare(QLatin1String(attribute), Qt::CaseInsensitive) == 0;
  };
  if (is("color")) {
    output->textColor = QColor(Qt::black);
  } else if (is("bgcolor")) {
    output->backgroundColor = QColor(Qt::white);
  } else if (is("size")) {
    output->fontSize = 9;
  } else if (is("name")) {
    output->fontName = QStringLiteral("Tahoma");
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

void CHTMLParser::BuildHandlers() {
  auto flag = [this](bool CParserOut::*field) -> Handler {
    return [this, field](QString&, bool isClose) {
      if (output) output->*field = !isClose;
    };
  };
  auto call = [this](void (CParserOut::*operation)()) -> Handler {
    return [this, operation](QString&, bool) {
      if (CParserOut* out = EnabledOutput()) (out->*operation)();
    };
  };
  const Handler image = [this](QString&, bool) {
    const QString source = attributes[QStringLiteral("src")];
    if (CParserOut* out = EnabledOutput()) out->InsertImage(source, attributes);
  };

  handlers.insert(QStringLiteral("font bgcolor"), [this](QString& args, bool) {
    if (output) output->backgroundColor = ParseColor(args);
    fontAttributes.append(QStringLiteral("bgcolor"));
  });
  handlers.insert(QStringLiteral("ul"), [this](QString&, bool isClose) { ProcessUl(isClose); });
  handlers.insert(QStringLiteral("ol"), [this](QString&, bool isClose) { ProcessOl(isClose); });
  handlers.insert(QStringLiteral("li"), [this](QString&, bool isClose) { ProcessLi(isClose); });
  handlers.insert(QStringLiteral("b"), flag(&CParserOut::bold));
  handlers.insert(QStringLiteral("font size"), [this](QString& args, bool) {
    if (output) output->fontSize = args.toInt(nullptr, 10);
    fontAttributes.append(QStringLiteral("size"));
  });
  handlers.insert(QStringLiteral("font name"), [this](QString& args, bool) {
    if (output) output->fontName = args;
    fontAttributes.append(QStringLiteral("name"));
  });
  handlers.insert(QStringLiteral("font color"), [this](QString& args, bool) {
    if (output) output->textColor = ParseColor(args);
    fontAttributes.append(QStringLiteral("color"));
  });
  handlers.insert(QStringLiteral("img"), image);
  handlers.insert(QStringLiteral("image"), image);
  handlers.insert(QStringLiteral("embed"), image);
  handlers.insert(QStringLiteral("v:imagedata"), image);
  handlers.insert(QStringLiteral("i"), flag(&CParserOut::italic));
  handlers.insert(QStringLiteral("sc"), flag(&CParserOut::smallCaps));
  handlers.insert(QStringLiteral("strike"), flag(&CParserOut::strikeOut));
  handlers.insert(QStringLiteral("div align"),
                  [this](QString& args, bool) { ProcessDivAlign(args); });
  handlers.insert(QStringLiteral("center"), [this](QString&, bool) {
    if (CParserOut* out = EnabledOutput()) out->SetAlignment(QStringLiteral("Center"));
  });
  handlers.insert(QStringLiteral("sub"), flag(&CParserOut::subscript));
  handlers.insert(QStringLiteral("sup"), flag(&CParserOut::superscript));
  handlers.insert(QStringLiteral("script"), flag(&CParserOut::inScript));
  handlers.insert(QStringLiteral("u"), flag(&CParserOut::underline));
  handlers.insert(QStringLiteral("div"), [this](QString&, bool isClose) { ProcessDiv(isClose); });
  handlers.insert(QStringLiteral("pard"), call(&CParserOut::ResetParagraph));
  handlers.insert(QStringLiteral("br"), call(&CParserOut::LineBreak));
  handlers.insert(QStringLiteral("font"), [this](QString&, bool) { ProcessFont(); });
  handlers.insert(QStringLiteral("table"), call(&CParserOut::NewParagraph));
  handlers.insert(QStringLiteral("tr cols"),
                  [this](QString& args, bool isClose) { ProcessTrCols(isClose, args); });
  handlers.insert(QStringLiteral("tr"), [this](QString&, bool isClose) { ProcessTr(isClose); });
  handlers.insert(QStringLiteral("td"), [this](QString&, bool isClose) { ProcessTd(isClose); });
  // Objects are laid out as a table cell on purpose; ProcessObject stays out of the table.
  handlers.insert(QStringLiteral("object"), [this](QString&, bool isClose) { ProcessTd(isClose); });
  handlers.insert(QStringLiteral("param"), [](QString&, bool) {});
  handlers.insert(QStringLiteral("head"), [this](QString&, bool) { outputEnabled = false; });
  handlers.insert(QStringLiteral("body"),
                  [this](QString&, bool isClose) { outputEnabled = !isClose; });

  // Hashing the name beats the string compares of the ordered map on every tag; the map is never
  // changed again, so pointers to its values stay valid.
  handlerIndex_.reserve(handlers.size());
  for (auto it = handlers.cbegin(); it != handlers.cend(); ++it)
    handlerIndex_.insert(it.key(), &it.value());
}
