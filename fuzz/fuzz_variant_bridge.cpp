// Builds a nested Variant (every type code from 0 to 15, any bytes in strings and keys) and a
// nested QVariant (the types the bridge converts and others it refuses, strings with NULs and
// lone surrogates) from the input bytes, converts each into a null target and into a target
// chosen by the input (typed, holding content, of the wrong type), and compares the result and
// the log lines written with a model of the conversion built here from the header's promises.
// Documents that the header promises to keep must also survive a round trip unchanged. A broken
// promise aborts, and libFuzzer keeps the input that did it.
#include <QString>
#include <QStringList>
#include <QVariant>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "base/common/include/logger.h"
#include "base/log/log.h"
#include "base/variant/variant.h"
#include "qt_util/qt_compat_p.h"
#include "qt_util/qt_variant_utils.h"

namespace {

using base::variant::Variant;
using base::variant::VariantType;

// Deep enough to exercise the recursion; the cap keeps a sanitizer build's large frames well
// inside the 8 MiB stack (the harness, the model and the conversion all recurse).
constexpr int kMaxDepth = 1500;

[[noreturn]] void Fail(const char* what) {
  std::fprintf(stderr, "fuzz_variant_bridge: broken promise: %s\n", what);
  std::abort();
}

#define FUZZ_CHECK(condition)           \
  do {                                  \
    if (!(condition)) Fail(#condition); \
  } while (0)

class Reader {
 public:
  Reader(const uint8_t* data, size_t size) : data_(data), size_(size) {}
  bool AtEnd() const { return pos_ >= size_; }
  uint8_t Byte() { return pos_ < size_ ? data_[pos_++] : 0; }
  uint64_t Bytes(int count) {
    uint64_t value = 0;
    for (int i = 0; i < count; ++i) value = (value << 8) | Byte();
    return value;
  }
  std::string Text() {
    std::string text;
    for (int n = Byte() % 12; n > 0; --n) text.push_back(static_cast<char>(Byte()));
    return text;
  }
  QString QtText() {
    QString text;
    // Any UTF-16 units: NULs, lone surrogates, pairs.
    for (int n = Byte() % 8; n > 0; --n) text.append(QChar(static_cast<ushort>(Bytes(2))));
    return text;
  }

 private:
  const uint8_t* data_;
  size_t size_;
  size_t pos_ = 0;
};

double RealFrom(uint64_t bits) {
  double value;
  std::memcpy(&value, &bits, sizeof(value));
  return value;
}

// --- Input documents ------------------------------------------------------------------------

Variant MakeVariant(Reader& in, int depth) {
  const uint8_t tag = in.Byte();
  const int code = tag & 0xF;
  const bool option = (tag & 0x10) != 0;
  switch (code) {
    case base::variant::kNull:
      return option ? Variant(base::variant::kNull) : Variant();
    case base::variant::kBoolean:
      return Variant(option);
    case base::variant::kString:
      return Variant(in.Text());
    case base::variant::kUint64:
      return Variant(option ? in.Bytes(8) : uint64_t{in.Byte()});
    case base::variant::kDouble:
      return Variant(option ? RealFrom(in.Bytes(8)) : double(int8_t(in.Byte())) / 4, tag & 0x20);
    case base::variant::kPointer:
      return Variant(reinterpret_cast<void*>(static_cast<uintptr_t>(in.Bytes(8))));
    case base::variant::kArray: {
      Variant array(base::variant::kArray);
      if (depth >= kMaxDepth) return array;
      for (int n = in.Byte() % 5; n > 0 && !in.AtEnd(); --n) {
        array.Add(Variant());
        // Moved into its slot: Add copies, which makes deep inputs quadratic.
        const_cast<Variant&>(array.AsArray().back()) = MakeVariant(in, depth + 1);
      }
      return array;
    }
    case base::variant::kMap: {
      Variant map(base::variant::kMap);
      if (depth >= kMaxDepth) return map;
      for (int n = in.Byte() % 5; n > 0 && !in.AtEnd(); --n) {
        const std::string key = in.Text();
        map[key] = MakeVariant(in, depth + 1);
      }
      return map;
    }
    default:
      return Variant(static_cast<VariantType>(code));  // 8 to 15: a code without content
  }
}

QVariant MakeQVariant(Reader& in, int depth) {
  const uint8_t tag = in.Byte();
  switch (tag % 16) {
    case 0:
      return QVariant();
    case 1:
      return QVariant((tag & 0x10) != 0);
    case 2:
      return QVariant(static_cast<int>(in.Bytes(4)));
    case 3:
      return QVariant(static_cast<uint>(in.Bytes(4)));
    case 4:
      return QVariant(static_cast<qlonglong>(in.Bytes(8)));
    case 5:
      return QVariant(static_cast<qulonglong>(in.Bytes(8)));
    case 6:
      return QVariant(RealFrom(in.Bytes(8)));
    case 7:
      return QVariant(QChar(static_cast<ushort>(in.Bytes(2))));
    case 8: {
      QVariantMap map;
      for (int n = in.Byte() % 5; n > 0 && !in.AtEnd() && depth < kMaxDepth; --n) {
        const QString key = in.QtText();
        map.insert(key, MakeQVariant(in, depth + 1));
      }
      return QVariant(map);
    }
    case 9: {
      QVariantList list;
      for (int n = in.Byte() % 5; n > 0 && !in.AtEnd() && depth < kMaxDepth; --n) {
        list.append(MakeQVariant(in, depth + 1));
      }
      return QVariant(list);
    }
    case 10:
      return QVariant(in.QtText());
    case 11:
      return QVariant(QStringList{in.QtText()});
    case 12:
      return QVariant(QByteArray::fromStdString(in.Text()));
    case 13:
      return qt_util::internal::VariantOfType(QMetaType::Int, nullptr);  // valid, typed, null
    case 14:
      return QVariant(QVariantHash{{in.QtText(), true}});
    default:
      return QVariant(QString());  // valid, null string
  }
}

// A target of VariantToQVariant: null, typed but null, or holding a value of some type. A string
// variant holding a null string is null by Qt 5's isNull() and not by Qt 6's; the bridge treats
// it as null on both.
QVariant MakeQtTarget(Reader& in) {
  switch (in.Byte() % 11) {
    case 0:
      return QVariant();
    case 1:
      return qt_util::internal::VariantOfType(QMetaType::QVariantList, nullptr);
    case 2:
      return QVariant(true);
    case 3:
      return QVariant(3);
    case 4:
      return QVariant(9ull);
    case 5:
      return QVariant(0.5);
    case 6:
      return QVariant(QStringLiteral("old"));
    case 7:
      return QVariant(QVariantList{1, QStringLiteral("old")});
    case 8:
      return QVariant(QVariantMap{{QStringLiteral("old"), 1}});
    case 9:
      return QVariant(QString());
    default:
      return QVariant(QChar('c'));
  }
}

// A target of QVariantToVariant: null, the empty value of any code, or one holding content.
Variant MakeFrameworkTarget(Reader& in) {
  const uint8_t choice = in.Byte();
  if (choice < 128) return Variant(static_cast<VariantType>(choice % 16));
  switch (choice % 4) {
    case 0: {
      Variant array(base::variant::kArray);
      array.Add(Variant("old"));
      return array;
    }
    case 1: {
      Variant map(base::variant::kMap);
      map.Set("old", Variant(1));
      map.Set("", Variant(true));
      return map;
    }
    case 2:
      return Variant(7);
    default:
      return Variant(1.5, true);
  }
}

// --- The model ------------------------------------------------------------------------------

struct Failures {
  int not_support = 0;
  int need_impl = 0;
};

// The QVariant type id a Variant code converts to; UnknownType (an invalid QVariant's) for the
// codes that are refused.
int QtTypeOfCode(int code) {
  switch (code) {
    case base::variant::kBoolean:
      return QMetaType::Bool;
    case base::variant::kString:
      return QMetaType::QString;
    case base::variant::kUint64:
      return QMetaType::ULongLong;
    case base::variant::kDouble:
      return QMetaType::Double;
    case base::variant::kArray:
      return QMetaType::QVariantList;
    case base::variant::kMap:
      return QMetaType::QVariantMap;
    default:
      return QMetaType::UnknownType;
  }
}

// The Variant code a QVariant type converts to; null for every type outside the six (Int and
// UInt included).
VariantType CodeOfQtType(int type) {
  for (int code = 1; code < 8; ++code) {
    if (code != base::variant::kPointer && QtTypeOfCode(code) == type) {
      return static_cast<VariantType>(code);
    }
  }
  return base::variant::kNull;
}

QVariant ExpectedQt(const Variant& from, const QVariant& target, Failures& failures) {
  const int code = from.GetType();
  if (code == base::variant::kNull) return target;
  if (!qt_util::internal::IsNullAsInQt5(target) && QtTypeOfCode(code) != target.userType()) {
    ++failures.not_support;
    return target;
  }
  switch (code) {
    case base::variant::kBoolean:
      return QVariant(from.AsBoolean());
    case base::variant::kString:
      return QVariant(QString::fromUtf8(from.AsCStr()));
    case base::variant::kUint64:
      return QVariant(static_cast<qulonglong>(from.AsUint64()));
    case base::variant::kDouble:
      return QVariant(from.AsDouble());
    case base::variant::kArray: {
      QVariantList list;
      for (const Variant& element : from.AsArray()) {
        list.append(ExpectedQt(element, QVariant(), failures));
      }
      return QVariant(list);
    }
    case base::variant::kMap: {
      QVariantMap map;
      for (const auto& [key, value] : from.AsMap()) {
        map.insert(QString::fromUtf8(key.c_str()), ExpectedQt(value, QVariant(), failures));
      }
      return QVariant(map);
    }
    default:
      ++failures.need_impl;
      return target;
  }
}

// UTF-8 up to the first NUL character.
std::string Utf8UpToNul(const QString& text) {
  const int nul = text.indexOf(QChar(0));
  return (nul < 0 ? text : text.left(nul)).toUtf8().toStdString();
}

Variant ExpectedFramework(const QVariant& from, const Variant& target, Failures& failures) {
  if (!from.isValid()) return target;
  if (target.GetType() != base::variant::kNull &&
      CodeOfQtType(from.userType()) != target.GetType()) {
    ++failures.not_support;
    return target;
  }
  switch (from.userType()) {
    case QMetaType::Bool:
      return Variant(from.toBool());
    case QMetaType::Int:
      return Variant(from.toInt());
    case QMetaType::UInt:
      return Variant(from.toUInt());
    case QMetaType::ULongLong:
      // Low 32 bits, sign-extended.
      return Variant(static_cast<int>(
          static_cast<int32_t>(static_cast<uint32_t>(from.toULongLong() & 0xFFFFFFFFu))));
    case QMetaType::Double:
      return Variant(from.toDouble(), false);
    case QMetaType::QString:
      return Variant(Utf8UpToNul(from.toString()));
    case QMetaType::QVariantList: {
      Variant result = target;
      for (const QVariant& element : from.toList()) {
        result.Add(Variant());
        const_cast<Variant&>(result.AsArray().back()) =
            ExpectedFramework(element, Variant(CodeOfQtType(element.userType())), failures);
      }
      return result;
    }
    case QMetaType::QVariantMap: {
      Variant result = target;
      const QVariantMap map = from.toMap();
      for (auto it = map.cbegin(); it != map.cend(); ++it) {
        result[Utf8UpToNul(it.key())] =
            ExpectedFramework(it.value(), Variant(CodeOfQtType(it.value().userType())), failures);
      }
      return result;
    }
    default:
      ++failures.need_impl;
      return target;
  }
}

// --- Comparison: exact, with a NaN equal to a NaN of the same bits --------------------------

bool SameBits(double a, double b) {
  return std::memcmp(&a, &b, sizeof(a)) == 0;
}

bool SameQt(const QVariant& a, const QVariant& b) {
  if (a.userType() != b.userType() || a.isValid() != b.isValid()) return false;
  switch (a.userType()) {
    case QMetaType::UnknownType:
      return true;
    case QMetaType::Double:
      return SameBits(a.toDouble(), b.toDouble());
    case QMetaType::QVariantList: {
      const QVariantList x = a.toList(), y = b.toList();
      if (x.size() != y.size()) return false;
      for (int i = 0; i < x.size(); ++i) {
        if (!SameQt(x[i], y[i])) return false;
      }
      return true;
    }
    case QMetaType::QVariantMap: {
      const QVariantMap x = a.toMap(), y = b.toMap();
      if (x.keys() != y.keys()) return false;
      for (auto it = x.cbegin(), jt = y.cbegin(); it != x.cend(); ++it, ++jt) {
        if (!SameQt(it.value(), jt.value())) return false;
      }
      return true;
    }
    default:
      return a == b;
  }
}

bool SameFramework(const Variant& a, const Variant& b) {
  if (a.GetType() != b.GetType()) return false;
  switch (a.GetType()) {
    case base::variant::kDouble:
      // operator== compares the flag too, but is false for any NaN.
      return SameBits(a.AsDouble(), b.AsDouble()) && (a == b || std::isnan(a.AsDouble()));
    case base::variant::kArray: {
      const auto& x = a.AsArray();
      const auto& y = b.AsArray();
      if (x.size() != y.size()) return false;
      for (size_t i = 0; i < x.size(); ++i) {
        if (!SameFramework(x[i], y[i])) return false;
      }
      return true;
    }
    case base::variant::kMap: {
      const auto& x = a.AsMap();
      const auto& y = b.AsMap();
      if (x.size() != y.size()) return false;
      for (auto it = x.begin(), jt = y.begin(); it != x.end(); ++it, ++jt) {
        if (it->first != jt->first || !SameFramework(it->second, jt->second)) return false;
      }
      return true;
    }
    default:
      return a == b;
  }
}

// What the header promises a round trip keeps.
bool Kept(const Variant& value) {
  switch (value.GetType()) {
    case base::variant::kNull:
    case base::variant::kBoolean:
      return true;
    case base::variant::kString: {
      // Equal to its own text up to the first NUL: there is no NUL inside.
      const std::string bytes = value.AsCStr();
      return value == Variant(bytes) &&
             QString::fromUtf8(bytes.c_str()).toUtf8().toStdString() == bytes;
    }
    case base::variant::kUint64:
      return value.AsUint64() <= uint64_t{INT32_MAX};
    case base::variant::kDouble:
      return value == Variant(value.AsDouble(), false);  // flag false, not NaN
    case base::variant::kArray:
      for (const Variant& element : value.AsArray()) {
        if (!Kept(element)) return false;
      }
      return true;
    case base::variant::kMap:
      for (const auto& [key, element] : value.AsMap()) {
        if (!Kept(Variant(key)) || !Kept(element)) {
          return false;
        }
      }
      return true;
    default:
      return false;
  }
}

// Counts the bridge's log lines; anything else it writes is a broken promise.
class LogCounter {
 public:
  LogCounter() {
    base::log::SetLogLevel(base::log::kLevelFailure);
    base::log::SetLogSink([this](const base::log::LogRecord& record) {
      FUZZ_CHECK(record.level == 1 && record.file == "qt_variant_utils.cpp");
      const bool to_qt = record.function == "VariantToQVariant";
      FUZZ_CHECK(to_qt || record.function == "QVariantToVariant");
      Failures& counts = to_qt ? to_qt_ : to_framework_;
      if (record.text == "not support") {
        ++counts.not_support;
      } else {
        FUZZ_CHECK(record.text == "need impl");
        ++counts.need_impl;
      }
    });
  }
  void Expect(const Failures& to_qt, const Failures& to_framework) {
    FUZZ_CHECK(to_qt_.not_support == to_qt.not_support);
    FUZZ_CHECK(to_qt_.need_impl == to_qt.need_impl);
    FUZZ_CHECK(to_framework_.not_support == to_framework.not_support);
    FUZZ_CHECK(to_framework_.need_impl == to_framework.need_impl);
    to_qt_ = Failures();
    to_framework_ = Failures();
  }

 private:
  Failures to_qt_;
  Failures to_framework_;
};

void CheckToQt(const Variant& from, const QVariant& target, LogCounter& log) {
  Failures expected;
  const QVariant model = ExpectedQt(from, target, expected);
  QVariant actual = target;
  QVariantUtil::VariantToQVariant(&from, &actual);
  FUZZ_CHECK(SameQt(actual, model));
  log.Expect(expected, Failures());
}

void CheckToFramework(const QVariant& from, const Variant& target, LogCounter& log) {
  Failures expected;
  const Variant model = ExpectedFramework(from, target, expected);
  Variant actual = target;
  QVariantUtil::QVariantToVariant(&from, &actual);
  FUZZ_CHECK(SameFramework(actual, model));
  log.Expect(Failures(), expected);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static LogCounter* log = new LogCounter;
  Reader in(data, size);
  const Variant variant = MakeVariant(in, 0);
  const QVariant qvariant = MakeQVariant(in, 0);
  const QVariant qt_target = MakeQtTarget(in);
  const Variant framework_target = MakeFrameworkTarget(in);

  CheckToQt(variant, QVariant(), *log);
  CheckToQt(variant, qt_target, *log);
  CheckToFramework(qvariant, Variant(), *log);
  CheckToFramework(qvariant, framework_target, *log);

  // Back from Qt, the converted document is what the model of the other direction says.
  QVariant converted;
  QVariantUtil::VariantToQVariant(&variant, &converted);
  Failures to_qt;
  ExpectedQt(variant, QVariant(), to_qt);
  log->Expect(to_qt, Failures());
  CheckToFramework(converted, Variant(variant.GetType()), *log);

  if (Kept(variant)) {
    Variant back(variant.GetType());
    QVariantUtil::QVariantToVariant(&converted, &back);
    FUZZ_CHECK(back == variant);
  }
  return 0;
}
