#include "selfcheck_api.h"

#if SELFCHECK_VERSION != 3
int Sum(const Point& point) {
  return point.x + point.y;
}
#endif

#if SELFCHECK_VERSION == 2
int Twice(const Point& point) {
  return 2 * Sum(point);
}
#endif

int Largest(const Point& point) {
  return point.x > point.y ? point.x : point.y;
}
