#include "qt_util/html_tag_table_p.h"

#include <QString>

namespace qt_util::internal::html {

bool PackAsciiLower(QStringView name, PackedKey& packed) {
  const int length = int(name.size());
  if (length > kLongestTagName) return false;
  packed = PackedKey();
  packed.length = length;
  ushort any = 0;
  for (int i = 0; i < length; ++i) {
    const ushort c = name[i].unicode();
    any |= c;
    packed.Add(i, static_cast<unsigned char>(AsciiLower(c)));
  }
  return any < 0x80;
}

// Lower-casing never shortens a text, so a name longer than the longest entry matches nothing.
Tag FindUnpackedTag(QStringView name) {
  if (name.size() > kLongestTagName) return Tag::kNone;
  PackedKey packed;
  if (!PackAsciiLower(name.toString().toLower(), packed)) return Tag::kNone;
  return FindPackedTag(packed);
}

}  // namespace qt_util::internal::html
