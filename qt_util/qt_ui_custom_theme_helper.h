#pragma once

/// @file
/// QTUICustomThemeHelper and ICustomThemeManager: theme colours, themed resource paths and
/// style sheets from the client's theme engine.
///
/// Behaviour on X11, Wayland and the offscreen platform: docs/platforms.md.

#include <QColor>
#include <QObject>
#include <QString>
#include <cstdint>
#include <memory>
#include <string>

#include "qt_util/qt_util_export.h"

class QWidget;

/// The client's colour-theme engine, implemented by the client and injected once with
/// QTUICustomThemeHelper::SetThemeManager. Clients compiled against this header call the
/// operations by vtable slot: their order is part of the contract and never changes.
class QT_UTIL_EXPORT ICustomThemeManager {
 public:
  /// Called when the helper replaces or drops the manager, or when the helper itself goes.
  virtual ~ICustomThemeManager();

  /// The engine's code for the current theme; the codes are the engine's own.
  virtual int CurrentThemeType() = 0;
  /// The colour of `token` as text, in the engine's format.
  virtual std::string GetThemeColorStr(const std::string& token) = 0;
  /// The colour of `token` packed into 32 bits, in the engine's packing.
  virtual uint32_t GetThemeColor(const std::string& token) = 0;
  /// The colour of `token` with its alpha replaced by `alpha` (in the engine's format).
  virtual uint32_t GetThemeColorWithReplaceAlpha(const std::string& token,
                                                 const std::string& alpha) = 0;
  /// Lets the engine watch `object` for theme changes; true when it did.
  virtual bool InstallAppThemeEventFilter(QObject* object) = 0;
  /// The colour of `token`.
  virtual QColor GetThemeQColor(const std::string& token) = 0;
  /// The path of the resource `path` for the current theme.
  virtual QString GetCurrentThemeResPath(const QString& path) = 0;
  /// True while a dark theme is current.
  virtual bool IsCurrentDarkType() = 0;
  /// True when the engine knows the colour token.
  virtual bool CheckThemeColorTokenValid(const QString& token) = 0;
  /// False vetoes applying the style sheet `qss` to `widget`.
  virtual bool CheckSetupQss(QWidget* widget, const QString& qss) = 0;
};

/// The library's single access point to the client's theme engine. Every operation forwards to
/// the injected ICustomThemeManager unchanged; while none is injected, each writes one level-1
/// log line and returns a fixed fallback, so that widgets built before the engine is ready
/// still get usable values. Call it on the GUI thread; only SharedInstance() is thread-safe.
class QT_UTIL_EXPORT QTUICustomThemeHelper : public QObject {
  Q_OBJECT

 public:
  /// The process-wide helper, created on the first call (from any thread) and destroyed with
  /// the manager when the framework's singleton scope ends; the next call after that makes a
  /// new one, without a manager.
  static QTUICustomThemeHelper* SharedInstance();

  /// Takes ownership of `manager`, deleting the previous one; an empty pointer removes the
  /// manager so that the fallbacks apply again. Always returns true.
  bool SetThemeManager(std::unique_ptr<ICustomThemeManager> manager);

  /// The manager's theme type; 1 without a manager.
  int CurrentThemeType() const;
  /// The manager's colour text for `token`; "#FF000000" (opaque black) without a manager.
  std::string GetThemeColorStr(const std::string& token) const;
  /// The manager's packed colour for `token`; 0 without a manager.
  uint32_t GetThemeColor(const std::string& token) const;
  /// The manager's packed colour for `token` with `alpha`; 0 without a manager.
  uint32_t GetThemeColorWithReplaceAlpha(const std::string& token, const std::string& alpha) const;
  /// The manager's answer; false without a manager.
  bool InstallAppThemeEventFilter(QObject* object) const;
  /// The manager's colour for `token`; QColor(Qt::black) without a manager.
  QColor GetThemeQColor(const std::string& token) const;
  /// The manager's path of `path` for the current theme; `path` unchanged without a manager.
  QString GetCurrentThemeResPath(const QString& path) const;
  /// In a dark theme, `path` + "_dark" when that file can be opened, else `path`. The suffix
  /// goes after the whole text ("main.qss" gives "main.qss_dark"). `path` unchanged without a
  /// manager. Opens (and closes) the candidate file, so keep it off hot paths.
  QString GenCurrentThemeQssPath(const QString& path) const;
  /// The manager's answer; false without a manager.
  bool IsCurrentDarkType() const;
  /// The manager's answer; false without a manager.
  bool CheckThemeColorTokenValid(const QString& token) const;
  /// The manager's veto on applying `qss` to `widget`; true (allowed) without a manager.
  bool CheckSetupQss(QWidget* widget, const QString& qss);

  /// Writes "qt ui custom theme helper dealloc" (level 6) and deletes the manager. Only the
  /// end of the framework's singleton scope deletes the helper.
  ~QTUICustomThemeHelper() override;

 private:
  QTUICustomThemeHelper();

  std::unique_ptr<ICustomThemeManager> manager_;
};
