#pragma once

// The example theme engine: an ICustomThemeManager that reads its colour tokens and its
// resource rule from a JSON file and switches between a light and a dark theme at run time.
// The library ships no theme engine; a client injects its own the same way:
//
//   example_theme::LoadResources();                         // the example's rcc packages
//   auto manager = example_theme::JsonThemeManager::FromFile(":/example_theme/theme.json");
//   example_theme::JsonThemeManager* engine = manager.get();
//   QTUICustomThemeHelper::SharedInstance()->SetThemeManager(std::move(manager));
//   engine->SetTheme("dark");   // objects given to InstallAppThemeEventFilter get ThemeChange
//
// The JSON file:
//   { "resource_rule": { "from": ":/light/", "to": ":/dark/" },
//     "themes": { "light": { "type": 1, "dark": false, "colors": { "<token>": "#RRGGBB" } },
//                 "dark":  { "type": 2, "dark": true,  "colors": { ... } } } }
// Colours are "#RRGGBB" or "#AARRGGBB". In a dark theme a resource path that starts with the
// rule's "from" starts with its "to" instead.

#include <QColor>
#include <QHash>
#include <QList>
#include <QPointer>
#include <QString>
#include <memory>

#include "qt_util/qt_ui_custom_theme_helper.h"

namespace example_theme {

/// Registers the example module's resource packages ("example_theme.rcc" and its extension and
/// platform packages, built next to this library) through VxQtUiUtil::LoadQtModuleResource.
/// Only the first call registers.
void LoadResources();

class JsonThemeManager : public ICustomThemeManager {
 public:
  /// The engine described by the JSON file at `path`, starting in its "light" theme; null with
  /// `error` set when the file cannot be read or lacks a light and a dark theme.
  static std::unique_ptr<JsonThemeManager> FromFile(const QString& path, QString* error = nullptr);

  /// Makes `name` ("light" or "dark") the current theme and sends QEvent::ThemeChange to every
  /// live object given to InstallAppThemeEventFilter. False, and nothing changes, for an unknown
  /// name.
  bool SetTheme(const QString& name);
  /// The current theme's name.
  QString ThemeName() const { return current_; }

  int CurrentThemeType() override;
  std::string GetThemeColorStr(const std::string& token) override;
  /// ARGB packed as QColor::rgba(); 0 for an unknown token.
  uint32_t GetThemeColor(const std::string& token) override;
  /// `alpha` is 0 to 255, in decimal or with "0x" in hex; an unreadable alpha keeps the colour's.
  uint32_t GetThemeColorWithReplaceAlpha(const std::string& token,
                                         const std::string& alpha) override;
  bool InstallAppThemeEventFilter(QObject* object) override;
  QColor GetThemeQColor(const std::string& token) override;
  QString GetCurrentThemeResPath(const QString& path) override;
  bool IsCurrentDarkType() override;
  bool CheckThemeColorTokenValid(const QString& token) override;
  /// Vetoes style sheets for widgets whose property "theme-locked" is true.
  bool CheckSetupQss(QWidget* widget, const QString& qss) override;

 private:
  struct Theme {
    int type = 0;
    bool dark = false;
    QHash<QString, QString> colors;  // token -> colour text as written
  };

  JsonThemeManager() = default;
  // current_ always names one of themes_ (FromFile and SetTheme see to it).
  const Theme& Current() const { return themes_.constFind(current_).value(); }
  QColor Color(const std::string& token) const;

  QHash<QString, Theme> themes_;
  QString current_;
  QString rule_from_;
  QString rule_to_;
  QList<QPointer<QObject>> watchers_;
};

}  // namespace example_theme
