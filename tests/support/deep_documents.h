#pragma once

// Deeply nested documents for the Variant bridge's depth tests: a chain of single-element
// arrays (lists) or single-entry maps (key "k") with `true` at the bottom, built and measured
// without recursion, so that only the code under test goes deep.
//
//   const base::variant::Variant document = test_support::DeepVariant(10000, kArray);
//   QCOMPARE(test_support::VariantDepth(document), 10000);
//
// Destroying such a chain recurses in the framework and in Qt; see qt_variant_utils.h.

#include <QString>
#include <QVariant>

#include "base/variant/variant.h"

namespace test_support {

// Builds `depth` nested containers, each level in place: Add and Set store copies, and copying
// the tail once per level would take quadratic time.
inline base::variant::Variant DeepVariant(int depth, base::variant::VariantType container) {
  base::variant::Variant root;
  base::variant::Variant* level = &root;
  for (int i = 0; i < depth; ++i) {
    if (container == base::variant::kMap) {
      level = &(*level)["k"];
    } else {
      level->Add(base::variant::Variant());
      level = &const_cast<base::variant::Variant&>(level->AsArray().back());
    }
  }
  *level = base::variant::Variant(true);
  return root;
}

inline QVariant DeepQVariant(int depth, QMetaType::Type container) {
  QVariant value(true);
  for (int i = 0; i < depth; ++i) {
    value = container == QMetaType::QVariantMap
                ? QVariant(QVariantMap{{QStringLiteral("k"), value}})
                : QVariant(QVariantList{value});
  }
  return value;
}

// Walks down the first element of each level; the depth of the chain, or -1 when it is not a
// chain ending in `true`.
inline int VariantDepth(const base::variant::Variant& root) {
  int depth = 0;
  const base::variant::Variant* level = &root;
  for (;;) {
    if (level->GetType() == base::variant::kArray && level->AsArray().size() == 1) {
      level = &level->AsArray().front();
    } else if (level->GetType() == base::variant::kMap && level->AsMap().size() == 1 &&
               level->Has("k")) {
      level = &level->AsMap().begin()->second;
    } else {
      return level->GetType() == base::variant::kBoolean && level->AsBoolean() ? depth : -1;
    }
    ++depth;
  }
}

inline int QVariantDepth(const QVariant& root) {
  int depth = 0;
  QVariant level = root;
  for (;;) {
    if (level.userType() == QMetaType::QVariantList && level.toList().size() == 1) {
      level = level.toList().constFirst();
    } else if (level.userType() == QMetaType::QVariantMap && level.toMap().size() == 1 &&
               level.toMap().contains(QStringLiteral("k"))) {
      level = level.toMap().value(QStringLiteral("k"));
    } else {
      return level.userType() == QMetaType::Bool && level.toBool() ? depth : -1;
    }
    ++depth;
  }
}

}  // namespace test_support
