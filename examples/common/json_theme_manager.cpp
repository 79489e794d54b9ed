#include "json_theme_manager.h"

#include <QCoreApplication>
#include <QEvent>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QVariant>
#include <QWidget>

#include "qt_util/ui_util.h"

namespace example_theme {

void LoadResources() {
  static bool loaded = false;
  if (loaded) return;
  loaded = true;
  VxQtUiUtil::LoadQtModuleResource(EXAMPLE_THEME_ASSET_ROOT, "example_theme");
}

std::unique_ptr<JsonThemeManager> JsonThemeManager::FromFile(const QString& path, QString* error) {
  auto fail = [error](const QString& why) {
    if (error) *error = why;
    return nullptr;
  };
  QFile file(path);
  if (!file.open(QIODevice::ReadOnly)) return fail(path + ": " + file.errorString());
  QJsonParseError parse_error;
  const QJsonDocument document = QJsonDocument::fromJson(file.readAll(), &parse_error);
  if (!document.isObject()) return fail(path + ": " + parse_error.errorString());

  std::unique_ptr<JsonThemeManager> manager(new JsonThemeManager);
  const QJsonObject root = document.object();
  const QJsonObject rule = root.value("resource_rule").toObject();
  manager->rule_from_ = rule.value("from").toString();
  manager->rule_to_ = rule.value("to").toString();
  const QJsonObject themes = root.value("themes").toObject();
  for (auto it = themes.begin(); it != themes.end(); ++it) {
    const QJsonObject object = it.value().toObject();
    Theme theme;
    theme.type = object.value("type").toInt();
    theme.dark = object.value("dark").toBool();
    const QJsonObject colors = object.value("colors").toObject();
    for (auto color = colors.begin(); color != colors.end(); ++color) {
      theme.colors.insert(color.key(), color.value().toString());
    }
    manager->themes_.insert(it.key(), theme);
  }
  if (!manager->themes_.contains("light") || !manager->themes_.contains("dark")) {
    return fail(path + ": needs a \"light\" and a \"dark\" theme");
  }
  manager->current_ = QStringLiteral("light");
  return manager;
}

bool JsonThemeManager::SetTheme(const QString& name) {
  if (!themes_.contains(name)) return false;
  current_ = name;
  for (const QPointer<QObject>& watcher : watchers_) {
    if (!watcher) continue;
    QEvent change(QEvent::ThemeChange);
    QCoreApplication::sendEvent(watcher, &change);
  }
  return true;
}

QColor JsonThemeManager::Color(const std::string& token) const {
  return QColor(Current().colors.value(QString::fromStdString(token)));
}

int JsonThemeManager::CurrentThemeType() {
  return Current().type;
}

std::string JsonThemeManager::GetThemeColorStr(const std::string& token) {
  return Current().colors.value(QString::fromStdString(token)).toStdString();
}

uint32_t JsonThemeManager::GetThemeColor(const std::string& token) {
  const QColor color = Color(token);
  return color.isValid() ? color.rgba() : 0;
}

uint32_t JsonThemeManager::GetThemeColorWithReplaceAlpha(const std::string& token,
                                                         const std::string& alpha) {
  QColor color = Color(token);
  if (!color.isValid()) return 0;
  bool ok = false;
  const int value = QString::fromStdString(alpha).toInt(&ok, 0);
  if (ok && value >= 0 && value <= 255) color.setAlpha(value);
  return color.rgba();
}

bool JsonThemeManager::InstallAppThemeEventFilter(QObject* object) {
  if (!object) return false;
  watchers_.removeAll(QPointer<QObject>());  // forget the ones that died
  if (!watchers_.contains(object)) watchers_.append(object);
  return true;
}

QColor JsonThemeManager::GetThemeQColor(const std::string& token) {
  return Color(token);
}

QString JsonThemeManager::GetCurrentThemeResPath(const QString& path) {
  if (!Current().dark || rule_from_.isEmpty() || !path.startsWith(rule_from_)) return path;
  return rule_to_ + path.mid(rule_from_.size());
}

bool JsonThemeManager::IsCurrentDarkType() {
  return Current().dark;
}

bool JsonThemeManager::CheckThemeColorTokenValid(const QString& token) {
  return QColor(Current().colors.value(token)).isValid();
}

bool JsonThemeManager::CheckSetupQss(QWidget* widget, const QString&) {
  return !(widget && widget->property("theme-locked").toBool());
}

}  // namespace example_theme
