// A tiny library in four versions, built by tests/abi/selfcheck.sh to prove that
// scripts/abi-check tells compatible from incompatible changes. SELFCHECK_VERSION:
//   1 the baseline; 2 adds a function (compatible); 3 removes Sum (incompatible);
//   4 adds a member to Point, changing its size (incompatible).
#pragma once

#define SELFCHECK_EXPORT __attribute__((visibility("default")))

/// A point passed by reference, so that its layout is part of the interface.
struct SELFCHECK_EXPORT Point {
  int x;  ///< Horizontal coordinate.
  int y;  ///< Vertical coordinate.
#if SELFCHECK_VERSION == 4
  int z;  ///< Depth, added in version 4.
#endif
};

#if SELFCHECK_VERSION != 3
/// The sum of the coordinates.
SELFCHECK_EXPORT int Sum(const Point& point);
#endif
#if SELFCHECK_VERSION == 2
/// Twice the sum of the coordinates, added in version 2.
SELFCHECK_EXPORT int Twice(const Point& point);
#endif
/// The larger coordinate.
SELFCHECK_EXPORT int Largest(const Point& point);
