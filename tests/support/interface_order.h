#pragma once

// The order of a class's virtual functions and signals, for tests that pin it: clients compiled
// against an older header call virtual functions by vtable slot and signals by index.
//
//   QCOMPARE(test_support::VirtualSlot(&Widget::Paint), 2);  // after the two destructor slots
//   QCOMPARE(test_support::DeclaredSignals(Widget::staticMetaObject),
//            (QStringList{"Painted()", "Resized(QSize)"}));
//
// The slot is read from the pointer-to-member representation of the Itanium C++ ABI used by
// g++ and clang on x86-64: {ptr, adj}, where a virtual function has ptr = 1 + the byte offset of
// its slot. Other targets lay this out differently; there kHasVirtualSlots is false and tests
// should skip.

#include <QMetaMethod>
#include <QMetaObject>
#include <QStringList>
#include <cstddef>
#include <cstring>

namespace test_support {

#if defined(__x86_64__) && (defined(__GNUC__) || defined(__clang__))
inline constexpr bool kHasVirtualSlots = true;
#else
inline constexpr bool kHasVirtualSlots = false;
#endif

/// The vtable slot (0-based, counting both destructor entries) of a pointer to a virtual member
/// function; -1 for a non-virtual one or where kHasVirtualSlots is false.
template <typename MemberFunction>
int VirtualSlot(MemberFunction function) {
  if constexpr (!kHasVirtualSlots) {
    return -1;
  } else {
    struct Representation {
      std::ptrdiff_t ptr;
      std::ptrdiff_t adj;
    };
    static_assert(sizeof(MemberFunction) == sizeof(Representation),
                  "not an Itanium pointer to member function");
    Representation representation;
    std::memcpy(&representation, &function, sizeof representation);
    if ((representation.ptr & 1) == 0) return -1;
    return static_cast<int>((representation.ptr - 1) / static_cast<std::ptrdiff_t>(sizeof(void*)));
  }
}

/// The normalized signatures of the signals the class itself declares (not its bases'), in
/// index order.
inline QStringList DeclaredSignals(const QMetaObject& meta) {
  QStringList signatures;
  for (int i = meta.methodOffset(); i < meta.methodCount(); ++i) {
    const QMetaMethod method = meta.method(i);
    if (method.methodType() == QMetaMethod::Signal) {
      signatures << QString::fromLatin1(method.methodSignature());
    }
  }
  return signatures;
}

}  // namespace test_support
