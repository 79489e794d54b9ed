#pragma once

// A reference UTF-8 decoder and a generator of malformed byte sequences, for the tests that pin
// what the library's text functions make of invalid input on both Qt versions.
//
// The reference decodes a well-formed sequence to its character and replaces the first byte of
// an ill-formed one with U+FFFD, going on at the next byte: a start followed by too few valid
// continuation bytes gives one U+FFFD for the start and one for each of those bytes, as every
// byte that can start no sequence gives one. (Coarser replacement, one U+FFFD for the whole
// maximal part, is what some other decoders do; clients of this library have always seen one
// per byte.)

#include <QByteArray>
#include <QList>
#include <QString>

namespace test_support {

inline QString ReferenceUtf8Decode(const QByteArray& bytes) {
  QString text;
  const int size = int(bytes.size());
  int i = 0;
  while (i < size) {
    const auto lead = static_cast<unsigned char>(bytes[i]);
    if (lead < 0x80) {
      text += QChar(lead);
      ++i;
      continue;
    }
    int length = 0;
    unsigned char low = 0x80;
    unsigned char high = 0xBF;
    char32_t value = 0;
    if (lead >= 0xC2 && lead <= 0xDF) {
      length = 2;
      value = lead & 0x1F;
    } else if (lead >= 0xE0 && lead <= 0xEF) {
      length = 3;
      value = lead & 0x0F;
      if (lead == 0xE0) low = 0xA0;   // no overlong forms
      if (lead == 0xED) high = 0x9F;  // no surrogates
    } else if (lead >= 0xF0 && lead <= 0xF4) {
      length = 4;
      value = lead & 0x07;
      if (lead == 0xF0) low = 0x90;   // no overlong forms
      if (lead == 0xF4) high = 0x8F;  // nothing above U+10FFFF
    } else {
      text += QChar(0xFFFD);
      ++i;
      continue;
    }
    int j = i + 1;
    bool complete = true;
    for (int k = 1; k < length; ++k, ++j) {
      const unsigned char lo = k == 1 ? low : 0x80;
      const unsigned char hi = k == 1 ? high : 0xBF;
      if (j >= size) {
        complete = false;
        break;
      }
      const auto byte = static_cast<unsigned char>(bytes[j]);
      if (byte < lo || byte > hi) {
        complete = false;
        break;
      }
      value = (value << 6) | (byte & 0x3F);
    }
    if (complete) {
      // Appended unit by unit: QString::fromUcs4 would take a U+FEFF for a byte-order mark.
      if (QChar::requiresSurrogates(value)) {
        text += QChar(QChar::highSurrogate(value));
        text += QChar(QChar::lowSurrogate(value));
      } else {
        text += QChar(char16_t(value));
      }
      i = j;
    } else {
      text += QChar(0xFFFD);
      ++i;
    }
  }
  return text;
}

// Byte sequences that exercise every way UTF-8 can be ill-formed, none containing NUL: every
// byte from 0x80 on alone; every lead byte with every continuation byte and with an ASCII byte
// after it; three- and four-byte leads cut short after each of their bytes; overlong forms,
// surrogates and code points above U+10FFFF; and valid sequences of each length between them.
inline QList<QByteArray> GeneratedUtf8Sequences() {
  QList<QByteArray> sequences;
  for (int b = 0x80; b <= 0xFF; ++b) sequences << QByteArray(1, char(b));
  for (int lead = 0xC0; lead <= 0xFF; ++lead) {
    for (int next = 0x01; next <= 0xFF; ++next) sequences << QByteArray{char(lead), char(next)};
  }
  const char* const kCases[] = {"\xE0\xA0\x80",
                                "\xE0\x80\x80",
                                "\xE0\x9F\xBF",
                                "\xED\x9F\xBF",
                                "\xED\xA0\x80",
                                "\xED\xBF\xBF",
                                "\xEF\xBF\xBF",
                                "\xE2\x82",
                                "\xE2\x82\x41",
                                "\xE2\x41\x82",
                                "\xF0\x90\x80\x80",
                                "\xF0\x8F\xBF\xBF",
                                "\xF4\x8F\xBF\xBF",
                                "\xF4\x90\x80\x80",
                                "\xF5\x80\x80\x80",
                                "\xF0\x9F\x98",
                                "\xF0\x9F",
                                "\xF0\x9F\x98\x41",
                                "\xF0\x41\x98\x80",
                                "\xF8\x88\x80\x80\x80",
                                "\xFC\x84\x80\x80\x80\x80",
                                "\xC0\x80",
                                "\xC1\xBF",
                                "\xC2\x80",
                                "\xDF\xBF",
                                "\x80\x80\x80",
                                "\xBF\xC2",
                                "\xEF\xBB\xBF\xEF\xBB\xBF"};
  for (const char* sequence : kCases) sequences << QByteArray(sequence);
  for (int lead : {0xE1, 0xF1}) {
    for (int cut = 1; cut < (lead >= 0xF0 ? 4 : 3); ++cut) {
      QByteArray sequence(1, char(lead));
      sequence += QByteArray(cut - 1, char(0x81));
      sequences << sequence + 'x';
    }
  }
  return sequences;
}

}  // namespace test_support
