#include "qt_util/version.h"

namespace qt_util {

const char* Version() {
  return QT_UTIL_VERSION_STRING;
}

}  // namespace qt_util
