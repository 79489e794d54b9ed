#pragma once

/// @file
/// QVariantUtil, conversions between base::variant::Variant and QVariant.

#include "qt_util/qt_util_export.h"

class QVariant;

namespace base::variant {
class Variant;
}

/// Converts values between the framework's `base::variant::Variant` and `QVariant`, both ways
/// and recursively through lists and maps.
///
/// The type codes map one to one through a fixed table:
///
///   Variant code        QVariant type
///   1 boolean           Bool
///   2 string (UTF-8)    String
///   3 unsigned 64-bit   ULongLong
///   4 double            Double
///   6 array             List
///   7 map               Map
///
/// Neither operation returns a result or throws. A failure writes one log line at level 1
/// ("not support" or "need impl", with the operation's name as the function) and leaves the
/// target as it was. Neither pointer may be null.
///
/// **Strings** cross as UTF-8 both ways, map keys included. A Variant string is read up to its
/// first NUL byte (malformed UTF-8 becomes U+FFFD), and a QString is written up to its first
/// U+0000: whatever follows an embedded NUL is dropped in both directions. Two Variant keys that
/// become the same QString ("a" and "a\0b") leave one entry, the value of the later key in the
/// Variant map's byte order; two QString keys that become the same UTF-8 key leave the value of
/// the later one in the QVariantMap's order. The two maps order their keys differently (UTF-8
/// bytes against UTF-16 code units), so a key beyond U+FFFF and one in U+E000 to U+FFFF swap
/// places on the way across.
///
/// **What a round trip keeps.** Variant → QVariant → Variant gives back an equal value
/// (`operator==`) when the document holds only null, booleans, valid UTF-8 strings without NUL,
/// integers up to 2^31 - 1, doubles whose flag is false (NaN is equal to nothing, itself
/// included), arrays and maps; elements of code 5 or 8 to 15 come back null, and an empty array
/// or map at the top comes back null unless the target is already an empty array or map (see
/// QVariantToVariant).
///
/// **Deep documents.** Recursion follows the nesting of the input, with no depth limit and no
/// cycle detection; destroying a document recurses as well, in the framework and in Qt. The
/// deepest chains of single-element arrays or single-entry maps that convert and whose document
/// and result are then destroyed, measured with g++ 12 on the default 8 MiB main-thread stack
/// (on a 512 KiB `QThread::setStackSize` stack in brackets), and the floors the tests hold each
/// case to, each in a process of its own, built against Qt 5.15:
///
///   direction            kind    RelWithDebInfo (-O2)   Release (-O3)    floor
///   Variant → QVariant   array   74,800 (4,600)         74,800 (4,600)   69,000 (4,200)
///   QVariant → Variant   array   74,800 (4,600)         74,800 (4,600)   69,000 (4,200)
///   Variant → QVariant   map     65,400 (4,000)         65,400 (4,000)   60,000 (3,700)
///   QVariant → Variant   map     65,400 (4,000)         74,700 (4,600)   60,000 (3,700)
///
/// Built against Qt 6.4, whose containers and QVariant take more stack per level to convert and
/// to destroy, the same measurements give (RelWithDebInfo and Release alike):
///
///   direction            kind    measured          floor
///   Variant → QVariant   array   47,500 (2,800)    43,000 (2,600)
///   QVariant → Variant   array   58,100 (3,500)    53,000 (3,200)
///   Variant → QVariant   map     40,200 (2,400)    37,000 (2,200)
///   QVariant → Variant   map     65,400 (4,000)    60,000 (3,700)
///
/// With Qt 5.15, a level of an array takes less stack than one of a map (with -O2 about 110
/// bytes against 130). The QVariantList at one end limits arrays: with -O3 the conversion alone
/// reaches about 87,000 levels both ways, but a QVariantList chain is destroyed only up to about
/// 74,700 levels in either build, so a deeper one converts and then overflows the stack when it
/// goes. A Variant chain is destroyed deeper (with -O2, 87,000 levels of maps and 130,000 of
/// arrays). Other stack sizes scale in proportion: plan on 140 bytes per level with Qt 5.15 and 220
/// with Qt 6.
///
/// Debug and sanitizer builds need more stack per level (a debug build with AddressSanitizer
/// still converts 10,000 levels of either kind on 8 MiB, which the tests check). A document from
/// an untrusted source that may be deeper than the floors overflows the stack: bound its depth
/// first, or convert and destroy it on a thread with a larger stack.
///
/// Both operations are reentrant; a target must not be used by another thread meanwhile.
class QT_UTIL_EXPORT QVariantUtil {
 public:
  /// Writes the Qt form of `*from` into `*to`.
  ///
  /// A null Variant leaves `*to` untouched. A `*to` that is not null (`QVariant::isNull()`
  /// false) must already have the type the table gives for `from`'s code, otherwise "not
  /// support" is logged and `*to` kept. Codes 5 and 8 to 15 log "need impl" and keep `*to`.
  /// Otherwise `*to` is replaced whole: an integer becomes a `qulonglong`, an array a
  /// `QVariantList` (a null element becomes an invalid QVariant in its place, so the list keeps
  /// its length) and a map a `QVariantMap`. Elements that cannot be converted are logged and
  /// become invalid QVariants.
  static void VariantToQVariant(const base::variant::Variant* from, QVariant* to);

  /// Writes the framework form of `*from` into `*to`.
  ///
  /// An invalid QVariant leaves `*to` untouched. A `*to` that is not null must already have the
  /// code the table gives for `from`'s type, otherwise "not support" is logged and `*to` kept;
  /// `int` and `uint` are not in the table, so they convert only into a null Variant. Bool,
  /// Int, UInt, Double and String replace `*to`. ULongLong goes through `QVariant::toInt()`:
  /// only its low 32 bits survive, sign-extended (4294967296 gives 0, 4294967295 gives
  /// 2^64 - 1). Any other type (LongLong, Char, StringList, ...) logs "need impl" and keeps
  /// `*to`.
  ///
  /// Lists and maps are merged into `*to`, not replaced: the converted elements are appended
  /// behind an existing array's elements, and the converted entries are set into an existing map
  /// (equal keys overwritten, other keys kept). A null `*to` becomes an array or map with the
  /// first element, so an empty list or map leaves a null `*to` null. An element that cannot be
  /// converted is logged and still takes its place, as a null Variant or as the empty value of
  /// the code its type maps to.
  static void QVariantToVariant(const QVariant* from, base::variant::Variant* to);
};
