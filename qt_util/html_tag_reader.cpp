#include "qt_util/html_tag_reader_p.h"

#include "qt_util/html_text_p.h"

namespace qt_util::internal::html {
namespace {

// The lower-cased text of `view` without surrounding white space (as QString::trimmed) and,
// when `stripQuotes` is set, then without leading and trailing quote characters: `^["']+` and
// `["']+$` done by hand, since both patterns rescan a quote run from every start position, which
// is quadratic on a value made of quotes. Plain ASCII, the rule for tag attributes, is folded
// while it is copied, in one pass the compiler vectorises; other text goes through
// QString::toLower.
QString TrimmedLower(QStringView view, bool stripQuotes) {
  view = view.trimmed();
  if (stripQuotes) {
    const QChar* const first = Scan(
        view.begin(), view.end(),
        [](const Chars8& chars, const QChar*) { return ~chars.Match('"', '\''); },
        [](const QChar* at) { return !IsQuote(*at); });
    view = view.mid(first - view.begin());
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
    out[i] = QChar(AsciiLower(c));
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
    while (i < name.size() && AsciiLower(name[i].unicode()) == known[i].unicode()) ++i;
    if (i == name.size()) return &known;
  }
  return nullptr;
}

// Attribute parsing once CRLF has become a space.
void ParseSpacedAttributes(QStringView args, QMap<QString, QString>& attributes) {
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
    const int space = int(FindAny<u' '>(data + p, data + size) - data);
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
    const int equals = int(FindAny<u'='>(data + begin, data + end) - data);
    if (equals < end) {
      const QStringView name = QStringView(data + begin, equals - begin).trimmed();
      const QString* common = CommonAttributeName(name);
      attributes.insert(common ? *common : TrimmedLower(name, false),
                        TrimmedLower(QStringView(data + equals + 1, end - equals - 1), true));
    }
  } while (end > begin && p >= 0);
}

}  // namespace

TagParts SplitTag(QStringView tag) {
  const int space = int(FindAny<u' '>(tag.begin(), tag.end()) - tag.begin());
  return SplitTag(tag, space);
}

QString HandlerArgs(const TagParts& parts) {
  if (!parts.hasArgs || parts.selfClosing) return QString();
  QString args = parts.rawArgs.toString();
  ReplaceAll(args, QLatin1String("\r\n"), QLatin1Char(' '));
  const int quote = args.indexOf(QLatin1Char('"'));
  if (quote >= 0) args.truncate(quote);
  return args;
}

void ParseAttributes(QStringView rawArgs, QMap<QString, QString>& attributes) {
  // CRLF becomes a space first; most argument texts hold none and are parsed where they stand.
  if (!rawArgs.contains(QLatin1Char('\r'))) {
    ParseSpacedAttributes(rawArgs, attributes);
    return;
  }
  QString args = rawArgs.toString();
  ReplaceAll(args, QLatin1String("\r\n"), QLatin1Char(' '));
  ParseSpacedAttributes(args, attributes);
}

}  // namespace qt_util::internal::html
