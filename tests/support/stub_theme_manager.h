#pragma once

// A theme engine for tests and benchmarks that answers every question with a plain constant;
// a fake overrides only the operations it is about:
//
//   class VetoingManager : public test_support::StubThemeManager {
//     bool CheckSetupQss(QWidget*, const QString&) override { return false; }
//   };

#include <QColor>
#include <QString>
#include <cstdint>
#include <string>

#include "qt_util/qt_ui_custom_theme_helper.h"

namespace test_support {

class StubThemeManager : public ICustomThemeManager {
 public:
  int CurrentThemeType() override { return 1; }
  std::string GetThemeColorStr(const std::string&) override { return "#FF000000"; }
  uint32_t GetThemeColor(const std::string&) override { return 0; }
  uint32_t GetThemeColorWithReplaceAlpha(const std::string&, const std::string&) override {
    return 0;
  }
  bool InstallAppThemeEventFilter(QObject*) override { return false; }
  QColor GetThemeQColor(const std::string&) override { return QColor(Qt::black); }
  QString GetCurrentThemeResPath(const QString& path) override { return path; }
  bool IsCurrentDarkType() override { return false; }
  bool CheckThemeColorTokenValid(const QString&) override { return false; }
  bool CheckSetupQss(QWidget*, const QString&) override { return true; }
};

}  // namespace test_support
