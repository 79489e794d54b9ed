#include "qt_util/html_text_p.h"

namespace qt_util::internal::html {
namespace {

bool MatchesAt(const QChar* data, int size, int index, QLatin1String needle) {
  if (index < 0 || index + needle.size() > size) return false;
  for (int k = 0; k < needle.size(); ++k) {
    if (data[index + k] != QLatin1Char(needle.at(k))) return false;
  }
  return true;
}

// First index >= from where `needle` starts, or -1. Looks for the needle's first character with
// the vectorised single-character search and compares the rest where it finds one;
// QString::indexOf(QLatin1String) converts the needle to UTF-16 on the heap at every call.
int FindLatin1(const QString& text, int from, QLatin1String needle) {
  const QChar key = QLatin1Char(needle.at(0));
  for (int at = text.indexOf(key, std::max(from, 0)); at >= 0; at = text.indexOf(key, at + 1)) {
    if (at + needle.size() > text.size()) return -1;
    if (MatchesAt(text.constData(), text.size(), at, needle)) return at;
  }
  return -1;
}

}  // namespace

// QString::replace moves the whole tail once per 1024 hits, which is quadratic on a long run
// full of entities.
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

// Every entity holds a single "&", its first character, and no two share their second, so the
// entities of the text never overlap, and no replacement character but the "&" of "&amp;" occurs
// in an entity. The six whole-text passes therefore replace exactly the entities of the text,
// except that the "&" an "&amp;" leaves behind begins one of the four later entities when the
// text that follows completes it: "&amp;lt;" ends as "<" (but "&amp;nbsp;" as "&nbsp;", since
// "&nbsp;" was decoded before). One pass does the same.
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
    // The plain characters up to the next "&": one by one for a block's length (entities often
    // stand close together), then found a block at a time and moved at once.
    for (const int shortEnd = std::min(size, in + Chars8::kCount);
         in < shortEnd && data[in] != QLatin1Char('&');) {
      target[out++] = data[in++];
    }
    if (in < size && data[in] != QLatin1Char('&')) {
      const int ampersand = int(FindAny<u'&'>(data + in, data + size) - data);
      // In place, the plain text moves towards the front (or stays where it is).
      if (target + out != data + in) std::copy(data + in, data + ampersand, target + out);
      out += ampersand - in;
      in = ampersand;
    }
    Q_ASSERT(out <= in || target != source);
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

}  // namespace qt_util::internal::html
