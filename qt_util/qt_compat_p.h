#pragma once

// What Qt 5.15 and Qt 6 spell or answer differently, for the library's sources that build
// against both. The other differences stay in the one file each concerns: text encoding in
// file_text.cpp, the X11 connection in the framework's x_utils.cpp.

#include <QVariant>
#include <QtGlobal>

namespace qt_util::internal {

/// A QVariant of the meta type `type_id` holding a copy of `*copy`, or a null one of that type
/// when `copy` is null; an invalid QVariant for QMetaType::UnknownType.
inline QVariant VariantOfType(int type_id, const void* copy) {
#if QT_VERSION >= QT_VERSION_CHECK(6, 0, 0)
  // Qt 6 takes the type as a QMetaType instead of its id.
  return QVariant(QMetaType(type_id), copy);
#else
  // Qt 5's constructor from an id marks even a default-constructed value as set; the one from a
  // QVariant::Type leaves the variant null, as Qt 6's does without a copy.
  return copy ? QVariant(type_id, copy) : QVariant(static_cast<QVariant::Type>(type_id));
#endif
}

/// QVariant::isNull() as Qt 5 answers it, on either Qt: true for a variant without a value and
/// for one whose value is null by its own isNull() (a null QString, QDate, QRect, QImage...). Qt
/// 6's isNull() no longer asks the value. A null pointer counts as null on both (in Qt 5 for
/// one made with QVariant::fromValue, which is how pointers get into variants).
bool IsNullAsInQt5(const QVariant& value);

}  // namespace qt_util::internal
