#include <QtTest>
#include <cmath>
#include <cstring>
#include <limits>

#include "base/variant/variant.h"

using base::variant::Variant;
using base::variant::VariantType;

namespace {

// What a reader that only has the bytes sees: the low four bits of the leading word.
uint32_t LeadingTypeCode(const Variant& value) {
  uint32_t word = 0;
  std::memcpy(&word, static_cast<const void*>(&value), sizeof(word));
  return word & 0xF;
}

// Every accessor answers with the zero value of its own type.
bool AllAccessorsGiveZero(const Variant& value) {
  return !value.AsBoolean() && std::strlen(value.AsCStr()) == 0 && value.AsUint64() == 0 &&
         value.AsDouble() == 0.0 && value.AsPtr() == nullptr && value.AsArray().empty() &&
         value.AsMap().empty();
}

Variant MakeNested() {
  Variant inner(base::variant::kMap);
  inner.Set("n", Variant(7));
  Variant list(base::variant::kArray);
  list.Add(Variant("x"));
  list.Add(inner);
  Variant outer;
  outer.Set("list", list);
  outer.Set("flag", Variant(true));
  return outer;
}

}  // namespace

Q_DECLARE_METATYPE(base::variant::VariantType)

class tst_Variant : public QObject {
  Q_OBJECT

 private slots:
  void defaultIsNull() {
    const Variant value;
    QCOMPARE(value.GetType(), base::variant::kNull);
    QCOMPARE(LeadingTypeCode(value), 0u);
    QVERIFY(AllAccessorsGiveZero(value));
  }

  void typedConstructor_givesEmptyValueOfThatType_data() {
    QTest::addColumn<VariantType>("type");
    QTest::newRow("null") << base::variant::kNull;
    QTest::newRow("boolean") << base::variant::kBoolean;
    QTest::newRow("string") << base::variant::kString;
    QTest::newRow("uint64") << base::variant::kUint64;
    QTest::newRow("double") << base::variant::kDouble;
    QTest::newRow("pointer") << base::variant::kPointer;
    QTest::newRow("array") << base::variant::kArray;
    QTest::newRow("map") << base::variant::kMap;
  }
  void typedConstructor_givesEmptyValueOfThatType() {
    QFETCH(VariantType, type);
    const Variant value(type);
    QCOMPARE(value.GetType(), type);
    QCOMPARE(LeadingTypeCode(value), static_cast<uint32_t>(type));
    QVERIFY(AllAccessorsGiveZero(value));
    QVERIFY(value == Variant(type));
  }

  void unnamedCodes_keepTheirCode_codesAbove15_giveNull() {
    const Variant eight(static_cast<VariantType>(8));
    const Variant fifteen(static_cast<VariantType>(15));
    QCOMPARE(static_cast<uint32_t>(eight.GetType()), 8u);
    QCOMPARE(LeadingTypeCode(fifteen), 15u);
    QVERIFY(eight != fifteen);
    QVERIFY(eight == Variant(eight));
    QCOMPARE(Variant(static_cast<VariantType>(16)).GetType(), base::variant::kNull);
    QCOMPARE(Variant(static_cast<VariantType>(0x27)).GetType(), base::variant::kNull);
  }

  void scalarConstructorsAndAccessors() {
    QCOMPARE(Variant(true).GetType(), base::variant::kBoolean);
    QCOMPARE(Variant(true).AsBoolean(), true);
    QCOMPARE(Variant(false).AsBoolean(), false);

    QCOMPARE(Variant(42).GetType(), base::variant::kUint64);
    QCOMPARE(Variant(42).AsUint64(), uint64_t(42));
    QCOMPARE(Variant(-1).AsUint64(), std::numeric_limits<uint64_t>::max());  // sign-extended
    QCOMPARE(Variant(4000000000u).AsUint64(), uint64_t(4000000000u));
    QCOMPARE(Variant(uint64_t(1) << 40).AsUint64(), uint64_t(1) << 40);
    QCOMPARE(LeadingTypeCode(Variant(uint64_t(0xFFFFFFFFFFFFFFFFull))), 3u);

    QCOMPARE(Variant(2.5, false).GetType(), base::variant::kDouble);
    QCOMPARE(Variant(2.5, true).AsDouble(), 2.5);
    QCOMPARE(LeadingTypeCode(Variant(2.5, true)), 4u);

    int target = 0;
    QCOMPARE(Variant(static_cast<void*>(&target)).GetType(), base::variant::kPointer);
    QCOMPARE(Variant(static_cast<void*>(&target)).AsPtr(), static_cast<void*>(&target));
  }

  void stringConstructors() {
    QCOMPARE(Variant("h\xC3\xA9").GetType(), base::variant::kString);
    QCOMPARE(QString::fromUtf8(Variant("h\xC3\xA9").AsCStr()), QString::fromUtf8("hé"));
    const char* missing = nullptr;
    QCOMPARE(Variant(missing).GetType(), base::variant::kString);
    QCOMPARE(QByteArray(Variant(missing).AsCStr()), QByteArray());
    std::string moved = "moved";
    QCOMPARE(QByteArray(Variant(std::move(moved)).AsCStr()), QByteArray("moved"));
    const std::string copied = "copied";
    QCOMPARE(QByteArray(Variant(copied).AsCStr()), QByteArray("copied"));
    // Embedded zeros survive in the value even though AsCStr stops at the first.
    const std::string with_zero("a\0b", 3);
    QVERIFY(Variant(with_zero) != Variant("a"));
  }

  void accessorsOfOtherTypes_giveZeroValues() {
    const Variant text("1");
    QCOMPARE(text.AsBoolean(), false);
    QCOMPARE(text.AsUint64(), uint64_t(0));
    QCOMPARE(text.AsDouble(), 0.0);
    QCOMPARE(text.AsPtr(), nullptr);
    const Variant number(1);
    QCOMPARE(QByteArray(number.AsCStr()), QByteArray());
    QCOMPARE(number.AsBoolean(), false);
    QVERIFY(number.AsArray().empty());
    QVERIFY(number.AsMap().empty());
  }

  void copy_isDeepAndIndependent() {
    Variant original = MakeNested();
    Variant copy(original);
    QVERIFY(copy == original);
    original["list"].Add(Variant(1));
    original["flag"] = Variant(false);
    QCOMPARE(copy["list"].AsArray().size(), size_t(2));
    QCOMPARE(copy.AsMap().at("flag").AsBoolean(), true);
    QVERIFY(copy != original);

    Variant assigned;
    assigned = copy;
    copy["list"] = Variant("gone");
    QCOMPARE(assigned.AsMap().at("list").GetType(), base::variant::kArray);

    Variant text("abc");
    Variant text_copy = text;
    text = Variant("xyz");
    QCOMPARE(QByteArray(text_copy.AsCStr()), QByteArray("abc"));
  }

  void move_leavesSourceNull() {
    Variant source = MakeNested();
    const Variant expected = source;
    Variant target(std::move(source));
    QCOMPARE(source.GetType(), base::variant::kNull);  // NOLINT(bugprone-use-after-move)
    QVERIFY(target == expected);
    Variant assigned(5);
    assigned = std::move(target);
    QVERIFY(assigned == expected);
    QCOMPARE(target.GetType(), base::variant::kNull);  // NOLINT(bugprone-use-after-move)
  }

  void assigningAPartOfItself_keepsThePart() {
    Variant value = MakeNested();
    const Variant list = value.AsMap().at("list");
    value = value.AsMap().at("list");
    QVERIFY(value == list);
    Variant again = MakeNested();
    again = std::move(again["list"]);
    QVERIFY(again == list);
    Variant self = MakeNested();
    const Variant before = self;
    Variant& alias = self;
    self = alias;
    QVERIFY(self == before);
  }

  void equality_acrossTypes_data() {
    QTest::addColumn<int>("index_a");
    QTest::addColumn<int>("index_b");
    QTest::addColumn<bool>("equal");
    QTest::newRow("int vs unsigned of same value") << 0 << 1 << true;
    QTest::newRow("int vs double of same value") << 0 << 2 << false;
    QTest::newRow("double flag differs") << 2 << 3 << false;
    QTest::newRow("true vs 1") << 4 << 0 << false;
    QTest::newRow("string 1 vs int 1") << 5 << 0 << false;
    QTest::newRow("null vs empty map") << 6 << 7 << false;
    QTest::newRow("empty array vs empty map") << 8 << 7 << false;
    QTest::newRow("null vs null") << 6 << 6 << true;
  }
  void equality_acrossTypes() {
    const std::vector<Variant> values = {Variant(1),
                                         Variant(1u),
                                         Variant(1.0, false),
                                         Variant(1.0, true),
                                         Variant(true),
                                         Variant("1"),
                                         Variant(),
                                         Variant(base::variant::kMap),
                                         Variant(base::variant::kArray)};
    QFETCH(int, index_a);
    QFETCH(int, index_b);
    QFETCH(bool, equal);
    QCOMPARE(values[index_a] == values[index_b], equal);
    QCOMPARE(values[index_a] != values[index_b], !equal);
  }

  void equality_isDeepThroughNesting() {
    Variant a = MakeNested();
    Variant b = MakeNested();
    QVERIFY(a == b);
    b["list"] = Variant(base::variant::kArray);
    b["list"].Add(Variant("x"));
    Variant inner(base::variant::kMap);
    inner.Set("n", Variant(8));  // differs only two levels down
    b["list"].Add(inner);
    QVERIFY(a != b);
    // Same entries, different order of insertion: maps are ordered by key, so still equal.
    Variant c;
    c.Set("z", 1);
    c.Set("a", 2);
    Variant d;
    d.Set("a", 2);
    d.Set("z", 1);
    QVERIFY(c == d);
    // Arrays compare in order.
    Variant e;
    e.Add(1);
    e.Add(2);
    Variant f;
    f.Add(2);
    f.Add(1);
    QVERIFY(e != f);
    const double nan = std::numeric_limits<double>::quiet_NaN();
    QVERIFY(Variant(nan, false) != Variant(nan, false));
  }

  void addOnNull_makesAnArray() {
    Variant value;
    value.Add(Variant("a"));
    value.Add(Variant(2));
    QCOMPARE(value.GetType(), base::variant::kArray);
    QCOMPARE(value.AsArray().size(), size_t(2));
    QCOMPARE(QByteArray(value.AsArray()[0].AsCStr()), QByteArray("a"));
    QCOMPARE(value.AsArray()[1].AsUint64(), uint64_t(2));
  }

  void addOfItself_appendsASnapshot() {
    Variant value;
    value.Add(Variant(1));
    value.Add(value);
    QCOMPARE(value.AsArray().size(), size_t(2));
    QCOMPARE(value.AsArray()[1].AsArray().size(), size_t(1));
    value.Add(value.AsArray()[0]);  // an element of its own array
    QCOMPARE(value.AsArray()[2].AsUint64(), uint64_t(1));
  }

  void setOnNull_makesAMap_andReplacesExistingKeys() {
    Variant value;
    value.Set("b", Variant(1));
    value.Set("a", Variant("x"));
    value.Set("b", Variant(2));
    QCOMPARE(value.GetType(), base::variant::kMap);
    QCOMPARE(value.AsMap().size(), size_t(2));
    QCOMPARE(value.AsMap().begin()->first, std::string("a"));  // key order
    QCOMPARE(value.AsMap().at("b").AsUint64(), uint64_t(2));
    QVERIFY(value.Has("a"));
    QVERIFY(!value.Has("c"));
  }

  void setOfItsOwnEntry_copiesIt() {
    Variant value = MakeNested();
    value.Set("list2", value.AsMap().at("list"));
    QVERIFY(value.AsMap().at("list2") == value.AsMap().at("list"));
    value.Set("list", value.AsMap().at("list").AsArray()[0]);
    QCOMPARE(QByteArray(value.AsMap().at("list").AsCStr()), QByteArray("x"));
  }

  void addAndSetOnOtherTypes_changeNothing() {
    Variant text("keep");
    text.Add(Variant(1));
    text.Set("k", Variant(1));
    QVERIFY(text == Variant("keep"));
    Variant map(base::variant::kMap);
    map.Add(Variant(1));
    QVERIFY(map == Variant(base::variant::kMap));
    Variant array(base::variant::kArray);
    array.Set("k", Variant(1));
    QVERIFY(array == Variant(base::variant::kArray));
    QVERIFY(!array.Has("k"));
    QVERIFY(!text.Has("k"));
  }

  void subscript_createsKeys() {
    Variant value;
    value["a"]["b"] = Variant(3);
    QCOMPARE(value.GetType(), base::variant::kMap);
    QVERIFY(value.Has("a"));
    QCOMPARE(value["a"].GetType(), base::variant::kMap);
    QCOMPARE(value.GetInt32("a", -1), -1);  // a map entry is not a number
    QCOMPARE(value["a"].GetInt32("b", -1), 3);
    Variant& created = value["new"];
    QCOMPARE(created.GetType(), base::variant::kNull);
    QVERIFY(value.Has("new"));
    QCOMPARE(value.AsMap().size(), size_t(2));
  }

  void subscriptOnAnotherType_replacesItWithAMap() {
    Variant value(5);
    value["k"] = Variant("v");
    QCOMPARE(value.GetType(), base::variant::kMap);
    QCOMPARE(value.AsMap().size(), size_t(1));
  }

  void getInt32_data() {
    QTest::addColumn<int>("entry");
    QTest::addColumn<int>("expected");
    QTest::newRow("small integer") << 0 << 10;
    QTest::newRow("code 3 above 2^32 keeps the low 32 bits") << 1 << 1;
    QTest::newRow("code 3 of 2^32-1 reads as -1") << 2 << -1;
    QTest::newRow("negative int round trip") << 3 << -7;
    QTest::newRow("double toward zero") << 4 << 2;
    QTest::newRow("negative double toward zero") << 5 << -2;
    QTest::newRow("huge double clamps") << 6 << std::numeric_limits<int32_t>::max();
    QTest::newRow("NaN gives fallback") << 7 << 99;
    QTest::newRow("string gives fallback") << 8 << 99;
    QTest::newRow("boolean gives fallback") << 9 << 99;
    QTest::newRow("missing key gives fallback") << 10 << 99;
  }
  void getInt32() {
    QFETCH(int, entry);
    QFETCH(int, expected);
    Variant value(base::variant::kMap);
    value.Set("0", Variant(10));
    value.Set("1", Variant((uint64_t(1) << 32) + 1));
    value.Set("2", Variant(uint64_t(0xFFFFFFFFu)));
    value.Set("3", Variant(-7));
    value.Set("4", Variant(2.9, false));
    value.Set("5", Variant(-2.9, false));
    value.Set("6", Variant(1e300, false));
    value.Set("7", Variant(std::numeric_limits<double>::quiet_NaN(), false));
    value.Set("8", Variant("12"));
    value.Set("9", Variant(true));
    QCOMPARE(value.GetInt32(std::to_string(entry), 99), expected);
  }

  void getInt32_onNonMap_givesFallback() {
    QCOMPARE(Variant().GetInt32("x", 5), 5);
    QCOMPARE(Variant(3).GetInt32("x", 5), 5);
  }
};

QTEST_GUILESS_MAIN(tst_Variant)
#include "tst_variant.moc"
