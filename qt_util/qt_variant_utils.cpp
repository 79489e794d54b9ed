#include "qt_util/qt_variant_utils.h"

#include <QString>
#include <QVariant>
#include <cstdint>

#include "base/common/include/logger.h"
#include "base/variant/variant.h"
#include "qt_util/qt_compat_p.h"
#include "qt_util/string_utils.h"

// Every level of a nested document costs one call of a public operation plus one of its
// container helper, so both are kept lean: the helpers are never inlined into the operation,
// and everything a level does not need on the way down (building scalars, the log writer) lives
// in functions of its own. The depth figures in the header depend on it.

namespace {

using base::variant::Variant;
using base::variant::VariantType;

struct TypeRow {
  int key;
  int value;
};

constexpr int kTableRows = 6;
using TypeTable = TypeRow[kTableRows];

// Variant code to QMetaType type id. Both tables are built when the library is loaded and never
// change; they only check a non-null target's type and pre-type each element's target.
const TypeTable kVariantToQVariantTable = {
    {base::variant::kArray, QMetaType::QVariantList}, {base::variant::kMap, QMetaType::QVariantMap},
    {base::variant::kString, QMetaType::QString},     {base::variant::kDouble, QMetaType::Double},
    {base::variant::kUint64, QMetaType::ULongLong},   {base::variant::kBoolean, QMetaType::Bool},
};

// The exact inverse. Int and UInt are left out on purpose although the conversion handles them:
// they look up as 0, so an int converts only into a null Variant.
const TypeTable kQVariantToVariantTable = {
    {QMetaType::QVariantList, base::variant::kArray}, {QMetaType::QVariantMap, base::variant::kMap},
    {QMetaType::QString, base::variant::kString},     {QMetaType::Double, base::variant::kDouble},
    {QMetaType::ULongLong, base::variant::kUint64},   {QMetaType::Bool, base::variant::kBoolean},
};

// 0 (QMetaType::UnknownType, or the null Variant code) for a key that is not in the table.
int Lookup(const TypeTable& table, int key) {
  for (const TypeRow& row : table) {
    if (row.key == key) return row.value;
  }
  return 0;
}

// The framework keeps the code in the low four bits of the value's leading word: 0 to 15.
int TypeCode(const Variant& value) {
  return static_cast<int>(static_cast<uint32_t>(value.GetType()) & 0xFu);
}

// A null QVariant of the table's type for `value` (an invalid one for 0): the element's
// pre-typed target.
QVariant TypedTargetFor(const Variant& value) {
  return qt_util::internal::VariantOfType(Lookup(kVariantToQVariantTable, TypeCode(value)),
                                          nullptr);
}

VariantType CodeFor(const QVariant& value) {
  return static_cast<VariantType>(Lookup(kQVariantToVariantTable, value.userType()));
}

enum class Failure { kNotSupport, kNeedImpl };

const char* FailureText(Failure failure) {
  return failure == Failure::kNotSupport ? "not support" : "need impl";
}

// Named after the operations that report through them: a record carries its function's name.
namespace report {

[[gnu::noinline, gnu::cold]] void VariantToQVariant(Failure failure) {
  QTU_LOG(base::log::kLevelFailure) << FailureText(failure);
}

[[gnu::noinline, gnu::cold]] void QVariantToVariant(Failure failure) {
  QTU_LOG(base::log::kLevelFailure) << FailureText(failure);
}

}  // namespace report

[[gnu::noinline]] void ScalarToQVariant(const Variant& from, int code, QVariant* to) {
  switch (code) {
    case base::variant::kBoolean: {
      QVariant result(from.AsBoolean());
      to->swap(result);
      return;
    }
    case base::variant::kString: {
      QVariant result(QString::fromUtf8(from.AsCStr()));
      to->swap(result);
      return;
    }
    case base::variant::kUint64: {
      QVariant result(static_cast<qulonglong>(from.AsUint64()));
      to->swap(result);
      return;
    }
    default: {
      QVariant result(from.AsDouble());
      to->swap(result);
      return;
    }
  }
}

[[gnu::noinline]] void ArrayToQVariant(const Variant& from, QVariant* to) {
  const Variant::Array& elements = from.AsArray();
  QVariantList list;
  list.reserve(static_cast<int>(elements.size()));
  for (const Variant& element : elements) {
    QVariant converted = TypedTargetFor(element);
    QVariantUtil::VariantToQVariant(&element, &converted);
    // Kept whatever the conversion did, so that the list keeps the array's length.
    list.append(converted);
  }
  QVariant result(list);
  to->swap(result);
}

[[gnu::noinline]] void MapToQVariant(const Variant& from, QVariant* to) {
  QVariantMap map;
  for (const auto& entry : from.AsMap()) {
    QVariant converted = TypedTargetFor(entry.second);
    QVariantUtil::VariantToQVariant(&entry.second, &converted);
    // Up to the key's first NUL; a later key that decodes to the same text overwrites. Byte
    // order and QString order agree for most keys, so the end is usually the right place.
    map.insert(map.cend(), QString::fromUtf8(entry.first.c_str()), converted);
  }
  QVariant result(map);
  to->swap(result);
}

[[gnu::noinline]] void ScalarToVariant(const QVariant& from, int type, Variant* to) {
  switch (type) {
    case QMetaType::Bool:
      *to = Variant(from.toBool());
      break;
    case QMetaType::Int:
      *to = Variant(from.toInt());
      break;
    case QMetaType::UInt:
      *to = Variant(from.toUInt());
      break;
    case QMetaType::ULongLong:
      // Deliberately through a signed 32-bit int: clients rely on the truncation.
      *to = Variant(from.toInt());
      break;
    case QMetaType::Double:
      *to = Variant(from.toDouble(), false);
      break;
    default:
      *to = Variant(QTStringUtils::QStr2StdStr(from.toString()));
      break;
  }
}

// Lists and maps merge into the target rather than replacing it (see the header). Each element
// is converted in its final place: Add and Set store copies, and copying every converted subtree
// once per level above it would make deep documents quadratic. The result is what converting
// into a separate value and then calling Add or Set gives.
[[gnu::noinline]] void ListToVariant(const QVariant& from, Variant* to) {
  const QVariantList list = from.toList();
  for (const QVariant& element : list) {
    to->Add(Variant(CodeFor(element)));
    // AsArray() is the target's own element vector, and nothing else changes it meanwhile.
    auto& slot = const_cast<Variant&>(to->AsArray().back());
    QVariantUtil::QVariantToVariant(&element, &slot);
  }
}

[[gnu::noinline]] void MapToVariant(const QVariant& from, Variant* to) {
  const QVariantMap map = from.toMap();
  for (auto it = map.cbegin(); it != map.cend(); ++it) {
    Variant& slot = (*to)[QTStringUtils::QStr2StdStr(it.key())];
    slot = Variant(CodeFor(it.value()));
    QVariantUtil::QVariantToVariant(&it.value(), &slot);
  }
}

}  // namespace

void QVariantUtil::VariantToQVariant(const base::variant::Variant* from, QVariant* to) {
  const int code = TypeCode(*from);
  if (code == base::variant::kNull) return;
  // A null target takes any type; a typed one only its own.
  if (!qt_util::internal::IsNullAsInQt5(*to) &&
      Lookup(kVariantToQVariantTable, code) != to->userType()) {
    report::VariantToQVariant(Failure::kNotSupport);
    return;
  }
  switch (code) {
    case base::variant::kBoolean:
    case base::variant::kString:
    case base::variant::kUint64:
    case base::variant::kDouble:
      ScalarToQVariant(*from, code, to);
      return;
    case base::variant::kArray:
      ArrayToQVariant(*from, to);
      return;
    case base::variant::kMap:
      MapToQVariant(*from, to);
      return;
    default:
      report::VariantToQVariant(Failure::kNeedImpl);
      return;
  }
}

void QVariantUtil::QVariantToVariant(const QVariant* from, base::variant::Variant* to) {
  if (!from->isValid()) return;
  const int type = from->userType();
  const int target_code = TypeCode(*to);
  if (target_code != base::variant::kNull && Lookup(kQVariantToVariantTable, type) != target_code) {
    report::QVariantToVariant(Failure::kNotSupport);
    return;
  }
  switch (type) {
    case QMetaType::Bool:
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::ULongLong:
    case QMetaType::Double:
    case QMetaType::QString:
      ScalarToVariant(*from, type, to);
      return;
    case QMetaType::QVariantMap:
      MapToVariant(*from, to);
      return;
    case QMetaType::QVariantList:
      ListToVariant(*from, to);
      return;
    default:
      report::QVariantToVariant(Failure::kNeedImpl);
      return;
  }
}
