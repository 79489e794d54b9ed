#pragma once

// The tag table of the HTML converter: which handler a tag name selects. Thirty handlers serve
// 33 names; "img", "image", "embed" and "v:imagedata" share one, and four names hold a space
// ("font size", "div align", ...), reached only by a self-closing tag such as "<font size />".
//
// The converter relies on this: names are lower-cased (QString::toLower beyond ASCII) and then
// compared exactly; anything not in the table is Tag::kNone. A name of up to twelve ASCII
// characters packs into two integers, one byte a character, and with its length (a name may hold
// NUL) that identifies it; the names sit in a small open-addressing table, so that a lookup is
// one multiplication and as a rule one comparison. The lookup is inline for the main loop, which
// runs it once per tag.

#include <QStringView>
#include <algorithm>
#include <cstdint>

#include "qt_util/html_blocks_p.h"

namespace qt_util::internal::html {

// The handlers of the table.
enum class Tag : unsigned char {
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

constexpr int kLongestTagName = 12;

// A lower-cased ASCII name, one byte a character: 0 to 7 in `low`, 8 to 11 in `high`.
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

struct TagSlots {
  struct Slot {
    PackedKey key;
    Tag tag = Tag::kNone;
  };
  static constexpr int kSize = 64;
  // Not "slots", which Qt defines as a macro in every file that includes QObject.
  Slot cells[kSize];
};

// Built at compile time from the names in the order of insertion.
constexpr TagSlots MakeTagSlots() {
  struct Entry {
    const char* name;
    Tag tag;
  };
  constexpr Entry kNames[] = {
      {"font bgcolor", Tag::kFontBgcolor},
      {"ul", Tag::kUl},
      {"ol", Tag::kOl},
      {"li", Tag::kLi},
      {"b", Tag::kBold},
      {"font size", Tag::kFontSize},
      {"font name", Tag::kFontName},
      {"font color", Tag::kFontColor},
      {"img", Tag::kImage},
      {"image", Tag::kImage},
      {"embed", Tag::kImage},
      {"v:imagedata", Tag::kImage},
      {"i", Tag::kItalic},
      {"sc", Tag::kSmallCaps},
      {"strike", Tag::kStrike},
      {"div align", Tag::kDivAlign},
      {"center", Tag::kCenter},
      {"sub", Tag::kSub},
      {"sup", Tag::kSup},
      {"script", Tag::kScript},
      {"u", Tag::kUnderline},
      {"div", Tag::kDiv},
      {"pard", Tag::kPard},
      {"br", Tag::kBr},
      {"font", Tag::kFont},
      {"table", Tag::kTable},
      {"tr cols", Tag::kTrCols},
      {"tr", Tag::kTr},
      {"td", Tag::kTd},
      {"object", Tag::kObject},
      {"param", Tag::kParam},
      {"head", Tag::kHead},
      {"body", Tag::kBody},
  };
  TagSlots table{};
  for (const Entry& entry : kNames) {
    PackedKey key;
    key.length = 0;
    for (; entry.name[key.length] != '\0'; ++key.length) {
      key.Add(key.length, static_cast<unsigned char>(entry.name[key.length]));
    }
    int slot = key.Slot();
    while (table.cells[slot].key.length >= 0) slot = (slot + 1) % TagSlots::kSize;
    table.cells[slot] = {key, entry.tag};
  }
  return table;
}

inline constexpr TagSlots kTagSlots = MakeTagSlots();

// The handler of a packed name.
inline Tag FindPackedTag(const PackedKey& wanted) {
  for (int slot = wanted.Slot();; slot = (slot + 1) % TagSlots::kSize) {
    const TagSlots::Slot& entry = kTagSlots.cells[slot];
    if (entry.key == wanted) return entry.tag;
    if (entry.key.length < 0) return Tag::kNone;
  }
}

// `name` lower-cased into `packed`; false when it is too long or not plain ASCII.
bool PackAsciiLower(QStringView name, PackedKey& packed);

// The handler of a name that is too long to pack or not plain ASCII: lower-casing beyond ASCII
// can turn a character into an ASCII letter, or change the length.
Tag FindUnpackedTag(QStringView name);

// The handler of `name`, lower-cased first. Blocks are read where the text holds eight
// characters from the name's start up to `readableEnd`.
Q_ALWAYS_INLINE Tag FindTag(QStringView name, const QChar* readableEnd) {
  const int length = int(name.size());
  const QChar* const chars = name.data();
  PackedKey packed;
  packed.length = length;
  const bool isPacked =
      (length > 0 && length <= kLongestTagName &&
       readableEnd - chars >= (length > Chars8::kCount ? 2 : 1) * Chars8::kCount)
          ? Chars8(chars).PackLower(std::min(length, Chars8::kCount), packed.low) &&
                (length <= Chars8::kCount ||
                 Chars8(chars + Chars8::kCount).PackLower(length - Chars8::kCount, packed.high))
          : PackAsciiLower(name, packed);
  return isPacked ? FindPackedTag(packed) : FindUnpackedTag(name);
}

}  // namespace qt_util::internal::html
