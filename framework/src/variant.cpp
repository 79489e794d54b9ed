#include "base/variant/variant.h"

#include <cmath>
#include <cstddef>
#include <limits>
#include <type_traits>
#include <utility>

namespace base::variant {
namespace {

constexpr uint32_t kTypeMask = 0xF;
constexpr uint32_t kDoubleFlag = 0x10;

const Variant::Array& EmptyArray() {
  static const Variant::Array empty;
  return empty;
}

const Variant::Map& EmptyMap() {
  static const Variant::Map empty;
  return empty;
}

}  // namespace

static_assert(std::is_standard_layout<Variant>::value,
              "the type code must be readable from the leading word");

Variant::Variant() : header_(kNull) {
  value_.uint64 = 0;
}

Variant::Variant(VariantType type) : header_(kNull) {
  value_.uint64 = 0;
  BecomeEmpty(type);
}

Variant::Variant(bool value) : header_(kBoolean) {
  value_.uint64 = 0;
  value_.boolean = value;
}

Variant::Variant(int value) : header_(kUint64) {
  value_.uint64 = static_cast<uint64_t>(static_cast<int64_t>(value));
}

Variant::Variant(unsigned int value) : header_(kUint64) {
  value_.uint64 = value;
}

Variant::Variant(uint64_t value) : header_(kUint64) {
  value_.uint64 = value;
}

Variant::Variant(double value, bool flag) : header_(kDouble | (flag ? kDoubleFlag : 0)) {
  value_.real = value;
}

Variant::Variant(const char* utf8) : header_(kString) {
  value_.string = new std::string(utf8 ? utf8 : "");
}

Variant::Variant(std::string&& utf8) : header_(kString) {
  value_.string = new std::string(std::move(utf8));
}

Variant::Variant(const std::string& utf8) : header_(kString) {
  value_.string = new std::string(utf8);
}

Variant::Variant(void* pointer) : header_(kPointer) {
  value_.pointer = pointer;
}

Variant::Variant(const Variant& other) : header_(kNull) {
  value_.uint64 = 0;
  CopyFrom(other);
}

Variant::Variant(Variant&& other) noexcept : header_(other.header_), value_(other.value_) {
  other.header_ = kNull;
  other.value_.uint64 = 0;
}

Variant& Variant::operator=(const Variant& other) {
  if (this != &other) {
    // Copy first: `other` may live inside this value (an element of our own array).
    Variant copy(other);
    *this = std::move(copy);
  }
  return *this;
}

Variant& Variant::operator=(Variant&& other) noexcept {
  if (this != &other) {
    // Take the other value before releasing ours, which may own it.
    const uint32_t header = other.header_;
    const auto value = other.value_;
    other.header_ = kNull;
    other.value_.uint64 = 0;
    Release();
    header_ = header;
    value_ = value;
  }
  return *this;
}

Variant::~Variant() {
  Release();
}

void Variant::Release() {
  switch (GetType()) {
    case kString:
      delete value_.string;
      break;
    case kArray:
      delete value_.array;
      break;
    case kMap:
      delete value_.map;
      break;
    default:
      break;
  }
  header_ = kNull;
  value_.uint64 = 0;
}

void Variant::CopyFrom(const Variant& other) {
  // Called on a null value only.
  switch (other.GetType()) {
    case kString:
      value_.string = new std::string(*other.value_.string);
      break;
    case kArray:
      value_.array = new Array(*other.value_.array);
      break;
    case kMap:
      value_.map = new Map(*other.value_.map);
      break;
    default:
      value_ = other.value_;
      break;
  }
  header_ = other.header_;
}

void Variant::BecomeEmpty(VariantType type) {
  Release();
  // Each code starts its own union member, so that its accessor reads the member it wrote.
  switch (type) {
    case kBoolean:
      value_.boolean = false;
      break;
    case kDouble:
      value_.real = 0.0;
      break;
    case kPointer:
      value_.pointer = nullptr;
      break;
    case kString:
      value_.string = new std::string();
      break;
    case kArray:
      value_.array = new Array();
      break;
    case kMap:
      value_.map = new Map();
      break;
    default:
      if (static_cast<uint32_t>(type) > kTypeMask) return;  // stays null
      break;
  }
  header_ = static_cast<uint32_t>(type);
}

bool Variant::operator==(const Variant& other) const {
  if (header_ != other.header_) return false;
  switch (GetType()) {
    case kBoolean:
      return value_.boolean == other.value_.boolean;
    case kString:
      return *value_.string == *other.value_.string;
    case kUint64:
      return value_.uint64 == other.value_.uint64;
    case kDouble:
      return value_.real == other.value_.real;
    case kPointer:
      return value_.pointer == other.value_.pointer;
    case kArray:
      return *value_.array == *other.value_.array;
    case kMap:
      return *value_.map == *other.value_.map;
    default:
      return true;  // null and the content-free codes
  }
}

VariantType Variant::GetType() const {
  return static_cast<VariantType>(header_ & kTypeMask);
}

bool Variant::AsBoolean() const {
  return GetType() == kBoolean && value_.boolean;
}

const char* Variant::AsCStr() const {
  return GetType() == kString ? value_.string->c_str() : "";
}

uint64_t Variant::AsUint64() const {
  return GetType() == kUint64 ? value_.uint64 : 0;
}

double Variant::AsDouble() const {
  return GetType() == kDouble ? value_.real : 0.0;
}

void* Variant::AsPtr() const {
  return GetType() == kPointer ? value_.pointer : nullptr;
}

const Variant::Array& Variant::AsArray() const {
  return GetType() == kArray ? *value_.array : EmptyArray();
}

const Variant::Map& Variant::AsMap() const {
  return GetType() == kMap ? *value_.map : EmptyMap();
}

void Variant::Add(const Variant& element) {
  if (GetType() == kNull) {
    // The element may be ourselves; keep a copy before we change.
    Variant copy(element);
    BecomeEmpty(kArray);
    value_.array->push_back(std::move(copy));
    return;
  }
  if (GetType() != kArray) return;
  if (&element == this) {
    Variant copy(element);
    value_.array->push_back(std::move(copy));
    return;
  }
  // push_back of an element of our own array is safe: the vector copies before reallocating.
  value_.array->push_back(element);
}

void Variant::Set(const std::string& key, const Variant& value) {
  if (GetType() != kNull && GetType() != kMap) return;
  // The value or the key may live inside this map (or be this value); copy both first.
  Variant copy(value);
  std::string key_copy(key);
  if (GetType() == kNull) BecomeEmpty(kMap);
  (*value_.map)[std::move(key_copy)] = std::move(copy);
}

bool Variant::Has(const std::string& key) const {
  return GetType() == kMap && value_.map->count(key) > 0;
}

int32_t Variant::GetInt32(const std::string& key, int32_t fallback) const {
  if (GetType() != kMap) return fallback;
  const auto it = value_.map->find(key);
  if (it == value_.map->end()) return fallback;
  const Variant& entry = it->second;
  switch (entry.GetType()) {
    case kUint64:
      return static_cast<int32_t>(static_cast<uint32_t>(entry.value_.uint64));
    case kDouble: {
      const double real = entry.value_.real;
      if (std::isnan(real)) return fallback;
      if (real <= static_cast<double>(std::numeric_limits<int32_t>::min())) {
        return std::numeric_limits<int32_t>::min();
      }
      if (real >= static_cast<double>(std::numeric_limits<int32_t>::max())) {
        return std::numeric_limits<int32_t>::max();
      }
      return static_cast<int32_t>(real);
    }
    default:
      return fallback;
  }
}

Variant& Variant::operator[](const std::string& key) {
  if (GetType() != kMap) BecomeEmpty(kMap);
  return (*value_.map)[key];
}

}  // namespace base::variant
