#include <sys/resource.h>
#include <QBitArray>
#include <QBitmap>
#include <QColor>
#include <QDateTime>
#include <QIcon>
#include <QImage>
#include <QJsonDocument>
#include <QJsonValue>
#include <QLine>
#include <QPixmap>
#include <QPolygon>
#include <QProcess>
#include <QRandomGenerator>
#include <QRegion>
#include <QThread>
#include <QUuid>
#include <QVector2D>
#include <QVector3D>
#include <QVector4D>
#include <QtTest>

#include <climits>
#include <cstdint>
#include <initializer_list>
#include <limits>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "base/common/include/logger.h"
#include "base/variant/variant.h"
#include "qt_util/qt_compat_p.h"
#include "qt_util/qt_variant_utils.h"
#include "support/deep_documents.h"
#include "support/log_capture.h"

using base::variant::Variant;
using base::variant::VariantType;
using test_support::DeepQVariant;
using test_support::DeepVariant;
using test_support::QVariantDepth;
using test_support::VariantDepth;

// Every type code from 0 to 15 can be made through the framework's API: the scalars and
// containers through their constructors, code 5 through Variant(void*), and codes 8 to 15 through
// Variant(VariantType), which keeps a code of up to four bits without content.

namespace {

Variant Typed(int code) {
  return Variant(static_cast<VariantType>(code));
}

Variant Array(std::initializer_list<Variant> elements) {
  Variant array(base::variant::kArray);
  for (const Variant& element : elements) array.Add(element);
  return array;
}

Variant Map(std::initializer_list<std::pair<std::string, Variant>> entries) {
  Variant map(base::variant::kMap);
  for (const auto& [key, value] : entries) map.Set(key, value);
  return map;
}

Variant Real(double value) {
  return Variant(value, false);
}

// One line per record: "<file>|<function>|<level>|<text>".
QStringList LogLines(const LogCapture& capture) {
  QStringList lines;
  for (const auto& record : capture.Records()) {
    lines << QStringLiteral("%1|%2|%3|%4")
                 .arg(QString::fromStdString(record.file), QString::fromStdString(record.function))
                 .arg(record.level)
                 .arg(QString::fromStdString(record.text));
  }
  return lines;
}

QStringList Failures(const char* function, const char* text, int count = 1) {
  QStringList lines;
  for (int i = 0; i < count; ++i) {
    lines << QStringLiteral("qt_variant_utils.cpp|%1|%2|%3")
                 .arg(QLatin1String(function))
                 .arg(base::log::kLevelFailure)
                 .arg(QLatin1String(text));
  }
  return lines;
}

// Compact text of a Variant for failure messages: {"k":[true,"s",7,2.5,null,<ptr>]}.
QString Describe(const Variant& value) {
  switch (value.GetType()) {
    case base::variant::kNull:
      return QStringLiteral("null");
    case base::variant::kBoolean:
      return value.AsBoolean() ? QStringLiteral("true") : QStringLiteral("false");
    case base::variant::kString:
      return QStringLiteral("\"%1\"").arg(QString::fromUtf8(value.AsCStr()));
    case base::variant::kUint64:
      return QString::number(value.AsUint64());
    case base::variant::kDouble:
      return QString::number(value.AsDouble(), 'g', 17) + QStringLiteral("d");
    case base::variant::kArray: {
      QStringList parts;
      for (const Variant& element : value.AsArray()) parts << Describe(element);
      return QStringLiteral("[%1]").arg(parts.join(QLatin1Char(',')));
    }
    case base::variant::kMap: {
      QStringList parts;
      for (const auto& [key, element] : value.AsMap()) {
        parts << QStringLiteral("\"%1\":%2").arg(QString::fromUtf8(key.c_str()), Describe(element));
      }
      return QStringLiteral("{%1}").arg(parts.join(QLatin1Char(',')));
    }
    default:
      return QStringLiteral("<code %1>").arg(int(value.GetType()));
  }
}

#define COMPARE_VARIANT(actual, expected) \
  QVERIFY2(                               \
      (actual) == (expected),             \
      qPrintable(                         \
          QStringLiteral("actual %1, expected %2").arg(Describe(actual), Describe(expected))))

// A random document of the kinds a round trip keeps: null, booleans, valid UTF-8 without NUL,
// integers up to INT_MAX, finite doubles with the flag false, arrays and maps.
class DocumentGenerator {
 public:
  explicit DocumentGenerator(quint32 seed) : random_(seed) {}

  Variant Next(int depth) {
    switch (random_.bounded(depth > 0 ? 7 : 5)) {
      case 0:
        return Variant();
      case 1:
        return Variant(random_.bounded(2) == 1);
      case 2:
        return Variant(Text());
      case 3:
        return Variant(static_cast<uint64_t>(random_.bounded(INT_MAX)));
      case 4:
        return Real((random_.generateDouble() - 0.5) * 1e9);
      case 5: {
        Variant array(base::variant::kArray);
        for (int n = random_.bounded(5); n > 0; --n) array.Add(Next(depth - 1));
        return array;
      }
      default: {
        Variant map(base::variant::kMap);
        for (int n = random_.bounded(5); n > 0; --n) map.Set(Text(), Next(depth - 1));
        return map;
      }
    }
  }

 private:
  std::string Text() {
    // ASCII, Latin-1, CJK, a private-use character, U+FFFD and one beyond U+FFFF.
    static const char32_t kAlphabet[] = {U'a',      U'Z',      U'0',      U' ',         U'\u00e9',
                                         U'\u4e2d', U'\ue000', U'\ufffd', U'\U0001F600'};
    std::u32string text;
    for (int n = random_.bounded(6); n > 0; --n) {
      text += kAlphabet[random_.bounded(int(sizeof(kAlphabet) / sizeof(kAlphabet[0])))];
    }
    return QString::fromUcs4(text.data(), int(text.size())).toStdString();
  }

  QRandomGenerator random_;
};

// The floors qt_variant_utils.h states for a release build, a little below the depths measured
// there: the deepest chain that converts, per direction, container kind and stack.
struct DepthFloor {
  const char* mode;  // variant_depth_probe's: to-qt (Variant to QVariant) or to-variant
  const char* kind;  // array or map
  int depth;
  int stack_kib;  // 0: the main thread, with the process's stack limit (8 MiB by default)
};

// The floors of qt_variant_utils.h, for the Qt this build uses.
#if QT_VERSION >= QT_VERSION_CHECK(6, 0, 0)
constexpr DepthFloor kDepthFloors[] = {
    {"to-qt", "array", 43000, 0},  {"to-variant", "array", 53000, 0},
    {"to-qt", "map", 37000, 0},    {"to-variant", "map", 60000, 0},
    {"to-qt", "array", 2600, 512}, {"to-variant", "array", 3200, 512},
    {"to-qt", "map", 2200, 512},   {"to-variant", "map", 3700, 512},
};
#else
constexpr DepthFloor kDepthFloors[] = {
    {"to-qt", "array", 69000, 0},  {"to-variant", "array", 69000, 0},
    {"to-qt", "map", 60000, 0},    {"to-variant", "map", 60000, 0},
    {"to-qt", "array", 4200, 512}, {"to-variant", "array", 4200, 512},
    {"to-qt", "map", 3700, 512},   {"to-variant", "map", 3700, 512},
};
#endif

}  // namespace

class tst_QtVariantUtils : public QObject {
  Q_OBJECT

 private slots:
  // Edge cases
  void nullVariant_leavesQVariantUntouched();
  void string_replacesStringTarget();
  void string_intoIntTarget_notSupport();
  void array_becomesListOfBoolStringDouble_nullKeepsItsPlace();
  void map_nestedMapStaysMap();
  void ulonglong_truncatedThroughInt();
  void int_intoIntegerVariant_notSupport_intoNull_converts();
  void longLongAndChar_needImpl_nestedBecomeNull();
  void list_appendsBehindExistingArray();
  void map_mergesIntoExistingMap();
  void invalidQVariant_changesNothing();

  // Type tables
  void variantToQt_tableRow_data();
  void variantToQt_tableRow();
  void qtToVariant_tableRow_data();
  void qtToVariant_tableRow();
  void qtToVariant_elementsPreTypedByTable();
  void intAndUInt_intoNullOrTypedVariant();
  void intAndUInt_notInTable_intoTypedQVariant();
  void nullTypedQVariant_takesAnyType_data();
  void nullTypedQVariant_takesAnyType();
  void nullPointerTarget_takesAnyType();
  void everyBuiltInType_toVariant_convertsOrNeedsImpl();

  // Refusals
  void pointerAndCodes8To15_needImpl();
  void pointerAndCodes8To15_nested_becomeInvalidElements();
  void unsupportedCode_intoTypedQVariant_notSupportFirst();
  void mixedList_unsupportedInTheMiddle_keepsLength();
  void variantToQVariant_replacesWholeNeverMerges();
  void emptyListOrMap_leavesNullVariantNull();
  void failures_notWrittenBelowLevelOne();

  // Strings
  void strings_nonAsciiValuesAndKeys_bothWays();
  void strings_embeddedNul_cutBothWays();
  void strings_malformedUtf8_becomesReplacementCharacter();
  void mapKeyOrder_bothSides();

  // Round trip and depth
  void roundTrip_generatedDocuments_equal();
  void roundTrip_highIntegerBitsAndDoubleFlag_lost();
  void deepDocument_tenThousandLevels_bothWays_data();
  void deepDocument_tenThousandLevels_bothWays();
  void deepDocument_releaseFloors_inAChildProcess_data();
  void deepDocument_releaseFloors_inAChildProcess();

  // Concurrency
  void concurrentConversions_ofSharedSources_agree();
};

// --- Edge cases ------------------------------------------------------------------------------

void tst_QtVariantUtils::nullVariant_leavesQVariantUntouched() {
  LogCapture capture(base::log::kLevelInfo);
  const Variant null;
  QVariant target(42);
  QVariantUtil::VariantToQVariant(&null, &target);
  QCOMPARE(target.userType(), int(QMetaType::Int));
  QCOMPARE(target.toInt(), 42);

  QVariant invalid;
  QVariantUtil::VariantToQVariant(&null, &invalid);
  QVERIFY(!invalid.isValid());
  QCOMPARE(LogLines(capture), QStringList());
}

void tst_QtVariantUtils::string_replacesStringTarget() {
  LogCapture capture(base::log::kLevelInfo);
  const Variant text("new text");
  QVariant target(QStringLiteral("old"));
  QVariantUtil::VariantToQVariant(&text, &target);
  QCOMPARE(target.userType(), int(QMetaType::QString));
  QCOMPARE(target.toString(), QStringLiteral("new text"));
  QCOMPARE(LogLines(capture), QStringList());
}

void tst_QtVariantUtils::string_intoIntTarget_notSupport() {
  LogCapture capture(base::log::kLevelInfo);
  const Variant text("new text");
  QVariant target(7);
  QVariantUtil::VariantToQVariant(&text, &target);
  QCOMPARE(target.userType(), int(QMetaType::Int));
  QCOMPARE(target.toInt(), 7);
  QCOMPARE(LogLines(capture), Failures("VariantToQVariant", "not support"));
}

void tst_QtVariantUtils::array_becomesListOfBoolStringDouble_nullKeepsItsPlace() {
  LogCapture capture(base::log::kLevelInfo);
  const Variant array = Array({Variant(true), Variant("a"), Variant(), Real(2.5)});
  QVariant target;
  QVariantUtil::VariantToQVariant(&array, &target);
  QCOMPARE(target.userType(), int(QMetaType::QVariantList));
  const QVariantList list = target.toList();
  QCOMPARE(list.size(), 4);
  QCOMPARE(list[0].userType(), int(QMetaType::Bool));
  QCOMPARE(list[0].toBool(), true);
  QCOMPARE(list[1].userType(), int(QMetaType::QString));
  QCOMPARE(list[1].toString(), QStringLiteral("a"));
  QVERIFY(!list[2].isValid());
  QCOMPARE(list[3].userType(), int(QMetaType::Double));
  QCOMPARE(list[3].toDouble(), 2.5);
  QCOMPARE(LogLines(capture), QStringList());
}

void tst_QtVariantUtils::map_nestedMapStaysMap() {
  const Variant map = Map({{"outer", Map({{"inner", Variant(5)}})}, {"flag", Variant(false)}});
  QVariant target;
  QVariantUtil::VariantToQVariant(&map, &target);
  QCOMPARE(target.userType(), int(QMetaType::QVariantMap));
  const QVariantMap converted = target.toMap();
  QCOMPARE(converted.keys(), (QStringList{"flag", "outer"}));
  QCOMPARE(converted.value("flag").userType(), int(QMetaType::Bool));
  const QVariant outer = converted.value("outer");
  QCOMPARE(outer.userType(), int(QMetaType::QVariantMap));
  QCOMPARE(outer.toMap().value("inner").userType(), int(QMetaType::ULongLong));
  QCOMPARE(outer.toMap().value("inner").toULongLong(), 5ull);
}

void tst_QtVariantUtils::ulonglong_truncatedThroughInt() {
  LogCapture capture(base::log::kLevelInfo);
  struct Row {
    qulonglong input;
    uint64_t expected;
  };
  const Row rows[] = {
      {4294967296ull, 0},                      // 2^32: low 32 bits are 0
      {4294967297ull, 1},                      // 2^32 + 1
      {4294967295ull, UINT64_MAX},             // low 32 bits are int -1, sign-extended
      {2147483648ull, 0xFFFFFFFF80000000ull},  // INT_MIN, sign-extended
      {2147483647ull, 2147483647ull},          // INT_MAX survives
      {0xFFFFFFFFFFFFFFFFull, UINT64_MAX},     // 2^64 - 1 is int -1 too
      {0x123456789ull, 0x23456789ull},         // high bits dropped
  };
  for (const Row& row : rows) {
    const QVariant big(row.input);
    Variant target;
    QVariantUtil::QVariantToVariant(&big, &target);
    QCOMPARE(target.GetType(), base::variant::kUint64);
    QCOMPARE(target.AsUint64(), row.expected);
  }
  QCOMPARE(LogLines(capture), QStringList());
}

void tst_QtVariantUtils::int_intoIntegerVariant_notSupport_intoNull_converts() {
  LogCapture capture(base::log::kLevelInfo);
  const QVariant number(42);
  Variant integer(7);
  QVariantUtil::QVariantToVariant(&number, &integer);
  COMPARE_VARIANT(integer, Variant(7));
  QCOMPARE(LogLines(capture), Failures("QVariantToVariant", "not support"));

  capture.Clear();
  Variant null;
  QVariantUtil::QVariantToVariant(&number, &null);
  COMPARE_VARIANT(null, Variant(42));
  QCOMPARE(LogLines(capture), QStringList());
}

void tst_QtVariantUtils::longLongAndChar_needImpl_nestedBecomeNull() {
  LogCapture capture(base::log::kLevelInfo);
  for (const QVariant& unsupported : {QVariant(qlonglong(5)), QVariant(QChar('c'))}) {
    Variant target;
    QVariantUtil::QVariantToVariant(&unsupported, &target);
    COMPARE_VARIANT(target, Variant());
    Variant text("kept");
    QVariantUtil::QVariantToVariant(&unsupported, &text);
    COMPARE_VARIANT(text, Variant("kept"));
  }
  // Into a null target the type is refused; into a typed one the table check comes first.
  QCOMPARE(LogLines(capture), Failures("QVariantToVariant", "need impl") +
                                  Failures("QVariantToVariant", "not support") +
                                  Failures("QVariantToVariant", "need impl") +
                                  Failures("QVariantToVariant", "not support"));

  capture.Clear();
  const QVariant list(QVariantList{QVariant(qlonglong(5)), QVariant(QChar('c'))});
  Variant target;
  QVariantUtil::QVariantToVariant(&list, &target);
  COMPARE_VARIANT(target, Array({Variant(), Variant()}));
  QCOMPARE(LogLines(capture), Failures("QVariantToVariant", "need impl", 2));
}

void tst_QtVariantUtils::list_appendsBehindExistingArray() {
  LogCapture capture(base::log::kLevelInfo);
  Variant target = Array({Variant("old"), Variant(1)});
  const QVariant list(QVariantList{true, QStringLiteral("new")});
  QVariantUtil::QVariantToVariant(&list, &target);
  COMPARE_VARIANT(target, Array({Variant("old"), Variant(1), Variant(true), Variant("new")}));
  QCOMPARE(LogLines(capture), QStringList());
}

void tst_QtVariantUtils::map_mergesIntoExistingMap() {
  LogCapture capture(base::log::kLevelInfo);
  Variant target = Map({{"a", Variant("old a")}, {"b", Variant(2)}});
  const QVariant map(QVariantMap{{"a", QStringLiteral("new a")}, {"c", 3.5}});
  QVariantUtil::QVariantToVariant(&map, &target);
  COMPARE_VARIANT(target, Map({{"a", Variant("new a")}, {"b", Variant(2)}, {"c", Real(3.5)}}));
  QCOMPARE(LogLines(capture), QStringList());
}

void tst_QtVariantUtils::invalidQVariant_changesNothing() {
  LogCapture capture(base::log::kLevelInfo);
  const QVariant invalid;
  const Variant targets[] = {Variant(),
                             Variant(true),
                             Variant("s"),
                             Variant(9),
                             Real(1.5),
                             Variant(static_cast<void*>(&capture)),
                             Array({Variant(1)}),
                             Map({{"k", Variant(1)}}),
                             Typed(12)};
  for (const Variant& before : targets) {
    Variant target = before;
    QVariantUtil::QVariantToVariant(&invalid, &target);
    COMPARE_VARIANT(target, before);
  }
  QCOMPARE(LogLines(capture), QStringList());
}

// --- Type tables -----------------------------------------------------------------------------

namespace {

// One row of the table, with a Variant of its code, a non-null QVariant of its type and a
// non-null QVariant of the next row's type.
struct TableRow {
  const char* name;
  Variant variant;
  QVariant same_type;
  QVariant other_type;
  QVariant expected;
};

std::vector<TableRow> VariantToQtRows() {
  return {
      {"6 array to List", Array({Variant(1)}), QVariant(QVariantList{"old"}),
       QVariant(QVariantMap{{"old", 1}}), QVariant(QVariantList{QVariant(1ull)})},
      {"7 map to Map", Map({{"k", Variant(true)}}), QVariant(QVariantMap{{"old", 1}}),
       QVariant(QStringLiteral("old")), QVariant(QVariantMap{{"k", true}})},
      {"2 string to String", Variant("new"), QVariant(QStringLiteral("old")), QVariant(1.5),
       QVariant(QStringLiteral("new"))},
      {"4 double to Double", Real(2.5), QVariant(1.5), QVariant(9ull), QVariant(2.5)},
      {"3 uint64 to ULongLong", Variant(7), QVariant(9ull), QVariant(false), QVariant(7ull)},
      {"1 boolean to Bool", Variant(true), QVariant(false), QVariant(QVariantList{"old"}),
       QVariant(true)},
  };
}

}  // namespace

void tst_QtVariantUtils::variantToQt_tableRow_data() {
  QTest::addColumn<int>("row");
  const std::vector<TableRow> rows = VariantToQtRows();
  for (size_t i = 0; i < rows.size(); ++i) QTest::newRow(rows[i].name) << int(i);
}

void tst_QtVariantUtils::variantToQt_tableRow() {
  QFETCH(int, row);
  const TableRow test = VariantToQtRows()[size_t(row)];
  LogCapture capture(base::log::kLevelInfo);

  QVariant same = test.same_type;
  QVariantUtil::VariantToQVariant(&test.variant, &same);
  QCOMPARE(same.userType(), test.expected.userType());
  QCOMPARE(same, test.expected);
  QCOMPARE(LogLines(capture), QStringList());

  QVariant other = test.other_type;
  QVariantUtil::VariantToQVariant(&test.variant, &other);
  QCOMPARE(other.userType(), test.other_type.userType());
  QCOMPARE(other, test.other_type);
  QCOMPARE(LogLines(capture), Failures("VariantToQVariant", "not support"));
}

namespace {

// One row of the table, the other way: a QVariant of its type, a non-null Variant of its code
// (merged into or replaced), a non-null Variant of the next row's code, and the result.
struct ReverseRow {
  const char* name;
  QVariant qvariant;
  Variant same_code;
  Variant other_code;
  Variant expected;
};

std::vector<ReverseRow> QtToVariantRows() {
  return {
      {"List to 6 array", QVariant(QVariantList{1.5}), Array({Variant("old")}),
       Map({{"old", Variant(1)}}), Array({Variant("old"), Real(1.5)})},
      {"Map to 7 map", QVariant(QVariantMap{{"k", true}}), Map({{"old", Variant(1)}}),
       Variant("old"), Map({{"k", Variant(true)}, {"old", Variant(1)}})},
      {"String to 2 string", QVariant(QStringLiteral("new")), Variant("old"), Real(1.0),
       Variant("new")},
      {"Double to 4 double (flag false)", QVariant(2.5), Variant(1.0, true), Variant(9), Real(2.5)},
      {"ULongLong to 3 uint64", QVariant(7ull), Variant(9), Variant(false), Variant(7)},
      {"Bool to 1 boolean", QVariant(true), Variant(false), Array({Variant("old")}), Variant(true)},
  };
}

}  // namespace

void tst_QtVariantUtils::qtToVariant_tableRow_data() {
  QTest::addColumn<int>("row");
  const std::vector<ReverseRow> rows = QtToVariantRows();
  for (size_t i = 0; i < rows.size(); ++i) QTest::newRow(rows[i].name) << int(i);
}

void tst_QtVariantUtils::qtToVariant_tableRow() {
  QFETCH(int, row);
  const ReverseRow test = QtToVariantRows()[size_t(row)];
  LogCapture capture(base::log::kLevelInfo);

  Variant same = test.same_code;
  QVariantUtil::QVariantToVariant(&test.qvariant, &same);
  COMPARE_VARIANT(same, test.expected);
  QCOMPARE(LogLines(capture), QStringList());

  Variant other = test.other_code;
  QVariantUtil::QVariantToVariant(&test.qvariant, &other);
  COMPARE_VARIANT(other, test.other_code);
  QCOMPARE(LogLines(capture), Failures("QVariantToVariant", "not support"));
}

void tst_QtVariantUtils::qtToVariant_elementsPreTypedByTable() {
  // Each element's target is the table's empty value for its type, so an empty list or map
  // element stays an empty array or map; types outside the table start null.
  LogCapture capture(base::log::kLevelInfo);
  const QVariant list(QVariantList{QVariantList{}, QVariantMap{}, QString(), 0.0, 0ull, false, 5,
                                   6u, qlonglong(7)});
  Variant target;
  QVariantUtil::QVariantToVariant(&list, &target);
  COMPARE_VARIANT(
      target, Array({Typed(base::variant::kArray), Typed(base::variant::kMap), Variant(""),
                     Real(0.0), Variant(0), Variant(false), Variant(5), Variant(6u), Variant()}));
  QCOMPARE(LogLines(capture), Failures("QVariantToVariant", "need impl"));

  capture.Clear();
  const QVariant map(QVariantMap{{"list", QVariantList{}}, {"map", QVariantMap{}}});
  Variant map_target;
  QVariantUtil::QVariantToVariant(&map, &map_target);
  COMPARE_VARIANT(map_target, Map({{"list", Typed(base::variant::kArray)},
                                   {"map", Typed(base::variant::kMap)}}));
  QCOMPARE(LogLines(capture), QStringList());
}

void tst_QtVariantUtils::intAndUInt_intoNullOrTypedVariant() {
  LogCapture capture(base::log::kLevelInfo);
  const QVariant negative(-5);
  const QVariant large(4000000000u);

  Variant target;
  QVariantUtil::QVariantToVariant(&negative, &target);
  COMPARE_VARIANT(target, Variant(-5));  // sign-extended: 2^64 - 5
  QCOMPARE(target.AsUint64(), UINT64_MAX - 4);
  target = Variant();
  QVariantUtil::QVariantToVariant(&large, &target);
  COMPARE_VARIANT(target, Variant(static_cast<uint64_t>(4000000000u)));
  QCOMPARE(LogLines(capture), QStringList());

  // Neither type is in the table, so every typed target refuses them, an integer one too.
  for (const QVariant& number : {negative, large}) {
    for (const Variant& before : {Variant(1), Variant(true), Real(1.0), Variant("s"),
                                  Typed(base::variant::kArray), Typed(base::variant::kMap)}) {
      Variant typed = before;
      QVariantUtil::QVariantToVariant(&number, &typed);
      COMPARE_VARIANT(typed, before);
    }
  }
  QCOMPARE(LogLines(capture), Failures("QVariantToVariant", "not support", 12));
}

void tst_QtVariantUtils::intAndUInt_notInTable_intoTypedQVariant() {
  // An integer Variant maps to ULongLong, so a QVariant holding an int or uint refuses it.
  LogCapture capture(base::log::kLevelInfo);
  const Variant number(7);
  for (const QVariant& before : {QVariant(42), QVariant(42u)}) {
    QVariant target = before;
    QVariantUtil::VariantToQVariant(&number, &target);
    QCOMPARE(target.userType(), before.userType());
    QCOMPARE(target, before);
  }
  QCOMPARE(LogLines(capture), Failures("VariantToQVariant", "not support", 2));
}

void tst_QtVariantUtils::nullTypedQVariant_takesAnyType_data() {
  QTest::addColumn<QVariant>("target");
  QTest::addColumn<bool>("null");
  // A variant made from a type without a value is null on both Qt versions.
  QTest::newRow("QVariant of type int, no value")
      << qt_util::internal::VariantOfType(QMetaType::Int, nullptr) << true;
  // Values that are null by their own isNull(), which Qt 5's QVariant::isNull() asked and Qt
  // 6's no longer asks: the bridge keeps Qt 5's answer on both.
  QTest::newRow("null QString") << QVariant(QString()) << true;
  QTest::newRow("null QByteArray") << QVariant(QByteArray()) << true;
  QTest::newRow("null QChar") << QVariant(QChar()) << true;
  QTest::newRow("null QBitArray") << QVariant(QBitArray()) << true;
  QTest::newRow("null QDate") << QVariant(QDate()) << true;
  QTest::newRow("null QTime") << QVariant(QTime()) << true;
  QTest::newRow("null QDateTime") << QVariant(QDateTime()) << true;
  QTest::newRow("null QRect") << QVariant(QRect()) << true;
  QTest::newRow("null QRectF") << QVariant(QRectF()) << true;
  QTest::newRow("null QLine") << QVariant(QLine()) << true;
  QTest::newRow("null QLineF") << QVariant(QLineF()) << true;
  QTest::newRow("null QPoint") << QVariant(QPoint()) << true;
  QTest::newRow("null QPointF") << QVariant(QPointF()) << true;
  QTest::newRow("null QUuid") << QVariant(QUuid()) << true;
  QTest::newRow("QVariant holding an invalid QVariant") << QVariant::fromValue(QVariant()) << true;
  QTest::newRow("null QJsonValue") << QVariant(QJsonValue()) << true;
  QTest::newRow("null QJsonDocument") << QVariant(QJsonDocument()) << true;
  QTest::newRow("null QPixmap") << QVariant(QPixmap()) << true;
  QTest::newRow("null QIcon") << QVariant(QIcon()) << true;
  QTest::newRow("null QImage") << QVariant(QImage()) << true;
  QTest::newRow("null QPolygon") << QVariant(QPolygon()) << true;
  QTest::newRow("null QRegion") << QVariant(QRegion()) << true;
  QTest::newRow("null QBitmap") << QVariant(QBitmap()) << true;
  QTest::newRow("null QVector2D") << QVariant(QVector2D()) << true;
  QTest::newRow("null QVector3D") << QVariant(QVector3D()) << true;
  QTest::newRow("null QVector4D") << QVariant(QVector4D()) << true;
  QTest::newRow("null QPolygonF") << QVariant(QPolygonF()) << true;
  // Values of the same kinds that are not null, and types without isNull().
  QTest::newRow("empty but not null QString") << QVariant(QStringLiteral("")) << false;
  QTest::newRow("QRect at the origin, 1x1") << QVariant(QRect(0, 0, 1, 1)) << false;
  QTest::newRow("QDate 2026-11-25") << QVariant(QDate(2026, 11, 25)) << false;
  QTest::newRow("QPoint (1, 0)") << QVariant(QPoint(1, 0)) << false;
  QTest::newRow("default QSize (-1 x -1)") << QVariant(QSize()) << false;
  QTest::newRow("int 0") << QVariant(0) << false;
  QTest::newRow("empty QVariantList") << QVariant(QVariantList()) << false;
  QTest::newRow("empty QVariantMap") << QVariant(QVariantMap()) << false;
  QTest::newRow("default QColor") << QVariant(QColor()) << false;
}

void tst_QtVariantUtils::nullTypedQVariant_takesAnyType() {
  // A null target takes any type; any other keeps its own and refuses a flag with "not support".
  QFETCH(QVariant, target);
  QFETCH(bool, null);
  LogCapture capture(base::log::kLevelInfo);
  const int type_before = target.userType();
  const Variant flag(true);
  QVariantUtil::VariantToQVariant(&flag, &target);
  if (null) {
    QCOMPARE(target.userType(), int(QMetaType::Bool));
    QCOMPARE(target.toBool(), true);
    QCOMPARE(LogLines(capture), QStringList());
  } else {
    QCOMPARE(target.userType(), type_before);
    QCOMPARE(LogLines(capture), Failures("VariantToQVariant", "not support"));
  }
}

void tst_QtVariantUtils::nullPointerTarget_takesAnyType() {
  // Qt 6's QVariant::isNull() is true for a null pointer; Qt 5's was for one made with
  // fromValue. Either way the target takes any type.
  LogCapture capture(base::log::kLevelInfo);
  QVariant target = QVariant::fromValue(static_cast<QObject*>(nullptr));
  const Variant flag(true);
  QVariantUtil::VariantToQVariant(&flag, &target);
  QCOMPARE(target.userType(), int(QMetaType::Bool));
  QCOMPARE(LogLines(capture), QStringList());
}

void tst_QtVariantUtils::everyBuiltInType_toVariant_convertsOrNeedsImpl() {
  // Every type Qt registers itself, on either version: the eight the bridge knows convert, any
  // other logs "need impl" once and leaves the target alone.
  const QList<int> known = {QMetaType::Bool,        QMetaType::Int,         QMetaType::UInt,
                            QMetaType::ULongLong,   QMetaType::Double,      QMetaType::QString,
                            QMetaType::QVariantMap, QMetaType::QVariantList};
  int types = 0;
  for (int type = 1; type < QMetaType::User; ++type) {
    if (!QMetaType::isRegistered(type)) continue;
    const QVariant from = qt_util::internal::VariantOfType(type, nullptr);
    if (!from.isValid()) continue;  // void: no QVariant holds it
    ++types;
    LogCapture capture(base::log::kLevelInfo);
    Variant to;
    QVariantUtil::QVariantToVariant(&from, &to);
    const QByteArray name = QByteArray(from.typeName()) + " (" + QByteArray::number(type) + ")";
    if (known.contains(type)) {
      QVERIFY2(LogLines(capture).isEmpty(), name.constData());
    } else {
      QVERIFY2(LogLines(capture) == Failures("QVariantToVariant", "need impl"), name.constData());
      QVERIFY2(to.GetType() == base::variant::kNull, name.constData());
    }
  }
  // Both versions register several dozen; a handful would mean the loop missed them.
  QVERIFY2(types >= 50, qPrintable(QString::number(types)));
}

// --- Refusals --------------------------------------------------------------------------------

void tst_QtVariantUtils::pointerAndCodes8To15_needImpl() {
  LogCapture capture(base::log::kLevelInfo);
  int pointee = 0;
  std::vector<std::pair<int, Variant>> refused{{5, Variant(static_cast<void*>(&pointee))}};
  for (int code = 8; code <= 15; ++code) refused.push_back({code, Typed(code)});
  for (const auto& [code, value] : refused) {
    QCOMPARE(int(value.GetType()), code);
    QVariant invalid;
    QVariantUtil::VariantToQVariant(&value, &invalid);
    QVERIFY(!invalid.isValid());
  }
  QCOMPARE(LogLines(capture), Failures("VariantToQVariant", "need impl", 9));
}

void tst_QtVariantUtils::pointerAndCodes8To15_nested_becomeInvalidElements() {
  LogCapture capture(base::log::kLevelInfo);
  int pointee = 0;
  const Variant array = Array(
      {Variant(1), Variant(static_cast<void*>(&pointee)), Typed(8), Typed(15), Variant("end")});
  QVariant list;
  QVariantUtil::VariantToQVariant(&array, &list);
  const QVariantList elements = list.toList();
  QCOMPARE(elements.size(), 5);
  QCOMPARE(elements[0], QVariant(1ull));
  QVERIFY(!elements[1].isValid());
  QVERIFY(!elements[2].isValid());
  QVERIFY(!elements[3].isValid());
  QCOMPARE(elements[4], QVariant(QStringLiteral("end")));

  const Variant map = Map({{"p", Variant(static_cast<void*>(&pointee))}, {"x", Typed(9)}});
  QVariant converted;
  QVariantUtil::VariantToQVariant(&map, &converted);
  QCOMPARE(converted.toMap().keys(), (QStringList{"p", "x"}));
  QVERIFY(!converted.toMap().value("p").isValid());
  QVERIFY(!converted.toMap().value("x").isValid());
  QCOMPARE(LogLines(capture), Failures("VariantToQVariant", "need impl", 5));
}

void tst_QtVariantUtils::unsupportedCode_intoTypedQVariant_notSupportFirst() {
  // A refused code maps to 0, which no typed target has: the table check speaks first.
  LogCapture capture(base::log::kLevelInfo);
  int pointee = 0;
  const Variant pointer(static_cast<void*>(&pointee));
  QVariant target(42);
  QVariantUtil::VariantToQVariant(&pointer, &target);
  QCOMPARE(target, QVariant(42));
  QCOMPARE(LogLines(capture), Failures("VariantToQVariant", "not support"));
}

void tst_QtVariantUtils::mixedList_unsupportedInTheMiddle_keepsLength() {
  LogCapture capture(base::log::kLevelInfo);
  const QVariant list(QVariantList{true, QStringLiteral("x"), qlonglong(5), QChar('c'), 2.5,
                                   QStringList{"a"}, QVariant(), 7});
  Variant target;
  QVariantUtil::QVariantToVariant(&list, &target);
  COMPARE_VARIANT(target, Array({Variant(true), Variant("x"), Variant(), Variant(), Real(2.5),
                                 Variant(), Variant(), Variant(7)}));
  // The invalid element is skipped silently; the three others are refused.
  QCOMPARE(LogLines(capture), Failures("QVariantToVariant", "need impl", 3));
}

void tst_QtVariantUtils::variantToQVariant_replacesWholeNeverMerges() {
  const Variant array = Array({Variant(3)});
  QVariant list(QVariantList{1, 2});
  QVariantUtil::VariantToQVariant(&array, &list);
  QCOMPARE(list, QVariant(QVariantList{QVariant(3ull)}));

  const Variant map = Map({{"b", Variant(true)}});
  QVariant qmap(QVariantMap{{"a", 1}});
  QVariantUtil::VariantToQVariant(&map, &qmap);
  QCOMPARE(qmap, QVariant(QVariantMap{{"b", true}}));
}

void tst_QtVariantUtils::emptyListOrMap_leavesNullVariantNull() {
  LogCapture capture(base::log::kLevelInfo);
  for (const QVariant& empty : {QVariant(QVariantList{}), QVariant(QVariantMap{})}) {
    Variant null;
    QVariantUtil::QVariantToVariant(&empty, &null);
    COMPARE_VARIANT(null, Variant());
  }
  Variant array(base::variant::kArray);
  const QVariant empty_list(QVariantList{});
  QVariantUtil::QVariantToVariant(&empty_list, &array);
  COMPARE_VARIANT(array, Typed(base::variant::kArray));
  QCOMPARE(LogLines(capture), QStringList());
}

void tst_QtVariantUtils::failures_notWrittenBelowLevelOne() {
  LogCapture capture(0);
  const Variant text("x");
  QVariant target(1);
  QVariantUtil::VariantToQVariant(&text, &target);
  const QVariant refused(qlonglong(1));
  Variant null;
  QVariantUtil::QVariantToVariant(&refused, &null);
  QCOMPARE(target, QVariant(1));
  COMPARE_VARIANT(null, Variant());
  QCOMPARE(LogLines(capture), QStringList());
}

// --- Strings ---------------------------------------------------------------------------------

void tst_QtVariantUtils::strings_nonAsciiValuesAndKeys_bothWays() {
  const QString value =
      QStringLiteral("R\u00e9union \u4e2d\u6587 ") + QString::fromUcs4(U"\U0001F600");
  const QString key = QStringLiteral("cl\u00e9 ") + QString::fromUcs4(U"\U0001F511");
  const std::string value_utf8 = value.toUtf8().toStdString();
  const std::string key_utf8 = key.toUtf8().toStdString();

  const Variant map = Map({{key_utf8, Variant(value_utf8)}});
  QVariant qt;
  QVariantUtil::VariantToQVariant(&map, &qt);
  QCOMPARE(qt.toMap().keys(), QStringList{key});
  QCOMPARE(qt.toMap().value(key).toString(), value);

  Variant back;
  QVariantUtil::QVariantToVariant(&qt, &back);
  COMPARE_VARIANT(back, map);
  QCOMPARE(std::string(back.AsMap().at(key_utf8).AsCStr()), value_utf8);
}

void tst_QtVariantUtils::strings_embeddedNul_cutBothWays() {
  const Variant with_nul(std::string("ab\0cd", 5));
  QVariant qt;
  QVariantUtil::VariantToQVariant(&with_nul, &qt);
  QCOMPARE(qt.toString(), QStringLiteral("ab"));

  const QVariant qt_with_nul(QStringLiteral("ab") + QChar(0) + QStringLiteral("cd"));
  Variant back;
  QVariantUtil::QVariantToVariant(&qt_with_nul, &back);
  COMPARE_VARIANT(back, Variant("ab"));

  // Keys collapse: "k" and "k\0x" both become "k", which keeps the later entry of each map's own
  // order ("k\0x" after "k" in both).
  Variant map(base::variant::kMap);
  map.Set("k", Variant("first"));
  map.Set(std::string("k\0x", 3), Variant("second"));
  QVariant qmap;
  QVariantUtil::VariantToQVariant(&map, &qmap);
  QCOMPARE(qmap, QVariant(QVariantMap{{"k", QStringLiteral("second")}}));

  QVariantMap keys_with_nul;
  keys_with_nul.insert(QStringLiteral("k"), QStringLiteral("first"));
  keys_with_nul.insert(QStringLiteral("k") + QChar(0) + QStringLiteral("x"),
                       QStringLiteral("second"));
  const QVariant qt_keys(keys_with_nul);
  Variant merged;
  QVariantUtil::QVariantToVariant(&qt_keys, &merged);
  COMPARE_VARIANT(merged, Map({{"k", Variant("second")}}));
}

void tst_QtVariantUtils::strings_malformedUtf8_becomesReplacementCharacter() {
  const Variant broken(
      std::string("a\xff"
                  "b"));
  QVariant qt;
  QVariantUtil::VariantToQVariant(&broken, &qt);
  QCOMPARE(qt.toString(), QStringLiteral("a\ufffdb"));
  Variant back;
  QVariantUtil::QVariantToVariant(&qt, &back);
  COMPARE_VARIANT(back, Variant("a\xef\xbf\xbd"
                                "b"));
}

void tst_QtVariantUtils::mapKeyOrder_bothSides() {
  // UTF-8 bytes order U+FFFD (EF BF BD) before U+1F600 (F0 9F 98 80); UTF-16 code units order
  // the surrogate pair (D83D DE00) before U+FFFD.
  const QString replacement = QStringLiteral("\ufffd");
  const QString grin = QString::fromUcs4(U"\U0001F600");
  const QStringList keys{"b", "Z", QStringLiteral("\u00e9"), replacement, grin, "a"};
  Variant map(base::variant::kMap);
  for (const QString& key : keys) map.Set(key.toStdString(), Variant(key.toStdString()));

  std::vector<std::string> variant_order;
  for (const auto& entry : map.AsMap()) variant_order.push_back(entry.first);
  const std::vector<std::string> expected_variant_order{
      "Z", "a", "b", "\xc3\xa9", "\xef\xbf\xbd", "\xf0\x9f\x98\x80"};
  QCOMPARE(variant_order, expected_variant_order);

  QVariant qt;
  QVariantUtil::VariantToQVariant(&map, &qt);
  QCOMPARE(qt.toMap().keys(),
           (QStringList{"Z", "a", "b", QStringLiteral("\u00e9"), grin, replacement}));
  for (const QString& key : keys) QCOMPARE(qt.toMap().value(key).toString(), key);

  Variant back;
  QVariantUtil::QVariantToVariant(&qt, &back);
  std::vector<std::string> back_order;
  for (const auto& entry : back.AsMap()) back_order.push_back(entry.first);
  QCOMPARE(back_order, expected_variant_order);
  COMPARE_VARIANT(back, map);
}

// --- Round trip and depth --------------------------------------------------------------------

void tst_QtVariantUtils::roundTrip_generatedDocuments_equal() {
  LogCapture capture(base::log::kLevelInfo);
  DocumentGenerator generator(20261123);
  int containers = 0;
  for (int i = 0; i < 1000; ++i) {
    const Variant document = generator.Next(4);
    containers +=
        document.GetType() == base::variant::kArray || document.GetType() == base::variant::kMap;
    QVariant qt;
    QVariantUtil::VariantToQVariant(&document, &qt);
    // Back into the empty value of the document's own code, as the bridge does for elements: a
    // null target would leave an empty array or map at the top null.
    Variant back(document.GetType());
    QVariantUtil::QVariantToVariant(&qt, &back);
    QVERIFY2(back == document, qPrintable(QStringLiteral("document %1: %2 came back as %3")
                                              .arg(i)
                                              .arg(Describe(document), Describe(back))));
  }
  QVERIFY(containers > 200);  // the generator really nests (2 kinds in 7 at the top)
  QCOMPARE(LogLines(capture), QStringList());
}

void tst_QtVariantUtils::roundTrip_highIntegerBitsAndDoubleFlag_lost() {
  const Variant big(static_cast<uint64_t>(0x100000005ull));
  QVariant qt;
  QVariantUtil::VariantToQVariant(&big, &qt);
  QCOMPARE(qt, QVariant(0x100000005ull));
  Variant back;
  QVariantUtil::QVariantToVariant(&qt, &back);
  COMPARE_VARIANT(back, Variant(5));

  const Variant flagged(2.5, true);
  QVariant qt_double;
  QVariantUtil::VariantToQVariant(&flagged, &qt_double);
  Variant flag_back;
  QVariantUtil::QVariantToVariant(&qt_double, &flag_back);
  COMPARE_VARIANT(flag_back, Real(2.5));
  QVERIFY(flag_back != flagged);
}

void tst_QtVariantUtils::deepDocument_tenThousandLevels_bothWays_data() {
  QTest::addColumn<bool>("maps");
  QTest::newRow("arrays") << false;
  QTest::newRow("maps") << true;
}

void tst_QtVariantUtils::deepDocument_tenThousandLevels_bothWays() {
  QFETCH(bool, maps);
  constexpr int kDepth = 10000;
  LogCapture capture(base::log::kLevelInfo);

  const Variant document = DeepVariant(kDepth, maps ? base::variant::kMap : base::variant::kArray);
  QCOMPARE(VariantDepth(document), kDepth);
  QVariant qt;
  QVariantUtil::VariantToQVariant(&document, &qt);
  QCOMPARE(QVariantDepth(qt), kDepth);

  // Checked by walking down, not with operator==: the framework's deep comparison recurses
  // several frames per level and would overflow a sanitizer build's stack first.
  const QVariant qt_document =
      DeepQVariant(kDepth, maps ? QMetaType::QVariantMap : QMetaType::QVariantList);
  Variant back;
  QVariantUtil::QVariantToVariant(&qt_document, &back);
  QCOMPARE(VariantDepth(back), kDepth);
  QCOMPARE(LogLines(capture), QStringList());
}

void tst_QtVariantUtils::deepDocument_releaseFloors_inAChildProcess_data() {
  QTest::addColumn<QString>("mode");
  QTest::addColumn<QString>("kind");
  QTest::addColumn<int>("depth");
  QTest::addColumn<int>("stack_kib");
  for (const DepthFloor& floor : kDepthFloors) {
    const QString stack = floor.stack_kib ? QStringLiteral("%1 KiB thread").arg(floor.stack_kib)
                                          : QStringLiteral("main thread");
    QTest::addRow("%s %s, %s", floor.mode, floor.kind, qPrintable(stack))
        << QString::fromLatin1(floor.mode) << QString::fromLatin1(floor.kind) << floor.depth
        << floor.stack_kib;
  }
}

// Each floor is converted by variant_depth_probe in a process of its own: a stack that cannot
// hold it kills the probe, and this test reports that instead of dying with it.
void tst_QtVariantUtils::deepDocument_releaseFloors_inAChildProcess() {
#if !defined(NDEBUG) || !defined(__OPTIMIZE__) || defined(__SANITIZE_ADDRESS__) || \
    defined(__SANITIZE_THREAD__) || defined(__clang__)
  QSKIP(
      "The floors are those of an optimised g++ build without sanitizers; this build's frames "
      "are larger (deepDocument_tenThousandLevels_bothWays covers it).");
#else
  QFETCH(QString, mode);
  QFETCH(QString, kind);
  QFETCH(int, depth);
  QFETCH(int, stack_kib);
  QStringList arguments{mode, kind, QString::number(depth)};
  if (stack_kib) arguments << QString::number(stack_kib);
  QProcess probe;
  probe.start(QStringLiteral(VARIANT_DEPTH_PROBE), arguments);
  QVERIFY2(probe.waitForFinished(60000), qPrintable(probe.errorString()));

  rlimit limit{};
  getrlimit(RLIMIT_STACK, &limit);
  const QString stack_limit = limit.rlim_cur == RLIM_INFINITY
                                  ? QStringLiteral("unlimited")
                                  : QStringLiteral("%1 KiB").arg(limit.rlim_cur / 1024);
  const QString ending = probe.exitStatus() == QProcess::CrashExit
                             ? QStringLiteral("crashed")
                             : QStringLiteral("exit code %1").arg(probe.exitCode());
  const QString failure =
      QStringLiteral("%1 levels did not convert (%2, process stack limit %3): %4")
          .arg(depth)
          .arg(ending, stack_limit, QString::fromLocal8Bit(probe.readAllStandardError()));
  QVERIFY2(probe.exitStatus() == QProcess::NormalExit && probe.exitCode() == 0 &&
               probe.readAllStandardOutput() == "ok\n",
           qPrintable(failure));
#endif
}

// --- Concurrency ---------------------------------------------------------------------------

void tst_QtVariantUtils::concurrentConversions_ofSharedSources_agree() {
  // Threads share the two sources (read only) and the log; each converts into its own targets.
  LogCapture capture(base::log::kLevelInfo);
  DocumentGenerator generator(7);
  const Variant document =
      Map({{"a", generator.Next(4)}, {"b", generator.Next(4)}, {"c", generator.Next(4)}});
  QVariant expected_qt;
  QVariantUtil::VariantToQVariant(&document, &expected_qt);
  Variant expected_back(document.GetType());
  QVariantUtil::QVariantToVariant(&expected_qt, &expected_back);
  const QVariant refused(QVariantList{qlonglong(1), QChar('x')});

  constexpr int kThreads = 4;
  constexpr int kRounds = 200;
  std::vector<int> mismatches(kThreads, 0);
  std::vector<std::unique_ptr<QThread>> threads;
  for (int t = 0; t < kThreads; ++t) {
    threads.emplace_back(QThread::create([&, t] {
      for (int round = 0; round < kRounds; ++round) {
        QVariant qt;
        QVariantUtil::VariantToQVariant(&document, &qt);
        Variant back(document.GetType());
        QVariantUtil::QVariantToVariant(&qt, &back);
        Variant nulls;
        QVariantUtil::QVariantToVariant(&refused, &nulls);
        mismatches[size_t(t)] +=
            qt != expected_qt || back != expected_back || nulls != Array({Variant(), Variant()});
      }
    }));
    threads.back()->start();
  }
  for (auto& thread : threads) QVERIFY(thread->wait(60000));
  QCOMPARE(mismatches, std::vector<int>(kThreads, 0));
  QCOMPARE(capture.Count(base::log::kLevelFailure, "need impl"), kThreads * kRounds * 2);
  QCOMPARE(int(capture.Size()), kThreads * kRounds * 2);
}

QTEST_MAIN(tst_QtVariantUtils)
#include "tst_qt_variant_utils.moc"
