#pragma once

/// @file
/// QTUIMonitorHelper, the registry of the widgets laid over the meeting window.
///
/// Behaviour on X11, Wayland and the offscreen platform: docs/platforms.md.

#include <QMap>
#include <QObject>
#include <QSet>
#include <QString>

#include "qt_util/qt_util_export.h"

class QEvent;
class QPoint;
class QWidget;

/// The process-wide registry of the widgets that the meeting window's own UI lays over the
/// meeting area. Code that handles input on the meeting area (a native video surface that
/// receives clicks, say) asks IsInUIRectInMeeting whether a point falls on one of them and
/// then leaves the click to Qt.
///
/// A registered widget leaves its registry by itself when it is destroyed: the helper filters
/// the application object and drops the entry on the widget's QEvent::Destroy. That filter
/// looks at the event type alone for every other event. GUI thread only; only the creation of
/// the instance is locked.
class QT_UTIL_EXPORT QTUIMonitorHelper : public QObject {
  Q_OBJECT

 public:
  /// The instance, created on first use and registered with base::RegisterScopeSingleton, so
  /// it is deleted when the framework's singleton scope ends; the next call after that creates
  /// a fresh, empty one. Made before the QApplication, it logs a level-1 line and starts
  /// filtering the application with the first registration (a widget needs the application).
  static QTUIMonitorHelper* SharedInstance();

  /// Stops filtering the application; the registries go with the helper.
  ~QTUIMonitorHelper() override;

  /// Registers `widget` as UI over the meeting area. Returns false only for a null widget
  /// (with the level-1 line "[qt ui monitor helper] add monitor widget failed!"); registering
  /// a widget twice keeps one entry and returns true.
  bool AddMonitorRectWidget(QWidget* widget);

  /// Registers `widget` as web content over the meeting area; the same answers as
  /// AddMonitorRectWidget.
  bool AddMonitorRectWebWidget(QWidget* widget);

  /// Adds `widget` to `set`: the common body of the two registrations above, with their
  /// answers and their log line.
  bool AddMonitorWidget(QSet<QObject*>& set, QWidget* widget);

  /// Registers `widget` as one that must never become a native window, described by `key`.
  /// The first key given for a widget is kept. Returns false only for a null widget (with the
  /// level-1 line "[qt ui monitor helper] add monitor dont create native widget failed!").
  /// Nothing in the library reads these keys on this platform; they are kept for the client.
  bool AddMonitorDontCreateNativeWidget(QWidget* widget, const QString& key);

  /// Whether `point`, in the coordinates of the registered widgets' top-level window, falls
  /// on a visible registered widget. Edges are inclusive: a 100x40 widget at (10, 20) is hit
  /// from (10, 20) to (109, 59). Hidden widgets are never hit; false when none is registered.
  bool IsInUIRectInMeeting(const QPoint& point);

  /// Whether `point` falls on a visible registered web widget of `meetingWnd`, as far as
  /// IsInWebUIRectInMeeting can tell: always false on this platform, whose per-widget test
  /// answers false.
  bool IsInWebUIRectInMeetingWithMeetingWnd(QWidget* meetingWnd, const QPoint& point);

  /// The per-widget web hit test. This platform has none: always false.
  bool IsInWebUIRectInMeeting(QWidget* meetingWnd, QWidget* webWidget, const QPoint& point);

  /// Would warn that a widget registered with AddMonitorDontCreateNativeWidget became native;
  /// this platform shows nothing, so it does nothing.
  void ShowChangeToNativeWindowAlert(const QString& key);

  /// The widgets registered with AddMonitorRectWidget that still exist.
  const QSet<QObject*>& MonitorRectWidgets() const { return rect_widgets_; }

  /// The widgets registered with AddMonitorRectWebWidget that still exist.
  const QSet<QObject*>& MonitorRectWebWidgets() const { return rect_web_widgets_; }

  /// The widgets registered with AddMonitorDontCreateNativeWidget that still exist, each with
  /// the first key given for it: where a client that does consult the keys reads them.
  const QMap<QObject*, QString>& DontCreateNativeWidgets() const {
    return dont_create_native_widgets_;
  }

  /// Drops destroyed widgets from the registries; never consumes an event.
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  QTUIMonitorHelper();

  void HandleEventFilterForMonitorRectWidget(QObject* watched, QEvent* event);
  void HandleEventFilterForMonitorRectWebWidget(QObject* watched, QEvent* event);
  void HandleEventFilterForMonitorDontCreateNative(QObject* watched, QEvent* event);

  QSet<QObject*> rect_widgets_;
  QSet<QObject*> rect_web_widgets_;
  QMap<QObject*, QString> dont_create_native_widgets_;
};
