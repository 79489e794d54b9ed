#pragma once

/// @file
/// base::variant::Variant, the framework's dynamic value.

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "talvex_framework_export.h"

namespace base::variant {

/// The type code of a Variant. Codes 8 to 15 fit the four bits the code is kept in; a Variant
/// built with one of them carries that code and no content.
enum VariantType : uint32_t {
  kNull = 0,
  kBoolean = 1,
  kString = 2,
  kUint64 = 3,
  kDouble = 4,
  kPointer = 5,
  kArray = 6,
  kMap = 7
};

/// The framework's dynamic value: null, boolean, UTF-8 string, unsigned 64-bit integer,
/// double, raw pointer, array of values or map from string keys to values.
///
/// Copies are deep; a moved-from Variant is null. The type code sits in the low four bits of
/// the object's leading 32-bit word, so code that only has the bytes can still tell the type.
/// Accessors never fail: asking for the wrong type gives the zero value of the asked type
/// (false, "", 0, nullptr, an empty container). A Variant is not synchronised; share it between
/// threads only when nobody writes to it.
class TALVEX_FRAMEWORK_EXPORT Variant {
 public:
  /// The elements of an array value.
  using Array = std::vector<Variant>;
  /// The entries of a map value, in key order.
  using Map = std::map<std::string, Variant>;

  /// A null value.
  Variant();
  /// An empty value of the given code: null, false, "", 0, 0.0 (flag false), nullptr, an empty
  /// array or an empty map. Codes 8 to 15 give a value of that code without content; codes
  /// above 15 give null.
  explicit Variant(VariantType type);
  /// A boolean.
  explicit Variant(bool value);
  /// An unsigned 64-bit value; negative numbers are sign-extended (-1 holds 2^64 - 1).
  Variant(int value);
  /// An unsigned 64-bit value.
  Variant(unsigned int value);
  /// An unsigned 64-bit value.
  Variant(uint64_t value);
  /// A double. The flag travels with the value and takes part in comparison; the framework
  /// gives it no meaning of its own.
  Variant(double value, bool flag);
  /// A UTF-8 string; nullptr gives the empty string.
  Variant(const char* utf8);
  /// A UTF-8 string, taking over `utf8`'s bytes.
  Variant(std::string&& utf8);
  /// A UTF-8 string, copied.
  Variant(const std::string& utf8);
  /// A raw pointer, never dereferenced or freed by the value.
  explicit Variant(void* pointer);

  /// A deep copy of `other`.
  Variant(const Variant& other);
  /// Takes over `other`'s content; `other` becomes null.
  Variant(Variant&& other) noexcept;
  /// Replaces the content with a deep copy of `other`'s.
  Variant& operator=(const Variant& other);
  /// Replaces the content with `other`'s; `other` becomes null.
  Variant& operator=(Variant&& other) noexcept;
  ~Variant();

  /// Same type code and the same content, compared element by element for arrays and maps.
  /// Doubles compare with ==, so a NaN is unequal even to itself.
  bool operator==(const Variant& other) const;
  /// The negation of operator==.
  bool operator!=(const Variant& other) const { return !(*this == other); }

  /// The type code, the low four bits of the leading 32-bit word.
  VariantType GetType() const;

  /// The boolean; false for other types.
  bool AsBoolean() const;
  /// The string's bytes, zero-terminated, valid until this value changes or dies; "" for other
  /// types.
  const char* AsCStr() const;
  /// The unsigned 64-bit value; 0 for other types.
  uint64_t AsUint64() const;
  /// The double; 0.0 for other types.
  double AsDouble() const;
  /// The pointer; nullptr for other types.
  void* AsPtr() const;
  /// The elements of an array; an empty array for any other type.
  const Array& AsArray() const;
  /// The entries of a map in key order; an empty map for any other type.
  const Map& AsMap() const;

  /// Appends a copy of `element`. A null value becomes an empty array first; values of other
  /// types are left unchanged.
  void Add(const Variant& element);
  /// Inserts or replaces the entry under `key`. A null value becomes an empty map first; values
  /// of other types are left unchanged.
  void Set(const std::string& key, const Variant& value);
  /// True when this is a map holding `key`.
  bool Has(const std::string& key) const;
  /// The entry under `key` as a 32-bit integer: a code-3 value keeps its low 32 bits, a code-4
  /// value is converted toward zero and clamped to the int32 range (NaN gives the fallback).
  /// A missing key, an entry of any other type, or a value that is not a map gives `fallback`.
  int32_t GetInt32(const std::string& key, int32_t fallback) const;
  /// The entry under `key`, created null when missing. A null value becomes a map first; a
  /// value of any other type is replaced by an empty map, since a writable entry is owed.
  Variant& operator[](const std::string& key);

 private:
  void Release();
  void CopyFrom(const Variant& other);
  void BecomeEmpty(VariantType type);

  // Low four bits: the type code. Bit 4: the double's flag. Must stay the first member.
  uint32_t header_;
  union {
    bool boolean;
    uint64_t uint64;
    double real;
    void* pointer;
    std::string* string;
    Array* array;
    Map* map;
  } value_;
};

}  // namespace base::variant
