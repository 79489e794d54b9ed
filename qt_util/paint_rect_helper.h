#pragma once

/// @file
/// QTPaintRectHelper, where a bound widget really is on screen and whether it may be painted.
///
/// Behaviour on X11, Wayland and the offscreen platform: docs/platforms.md.

#include <QEvent>
#include <QList>
#include <QObject>
#include <QPointer>
#include <QRect>
#include <functional>

#include "qt_util/qt_util_export.h"

class QWidget;

/// Tracks where one bound widget really is on screen and whether it may be painted, for code
/// that draws into the widget through a native surface (a video renderer, say).
///
/// The helper filters the bound widget, each of its QObject ancestors and the whole
/// application, recomputes the widget's global rectangle and a visible flag when something
/// relevant happens, and calls the callback only when either changed. It never consumes an
/// event. The application filter decides from the event type first, so that an event which
/// cannot concern the helper costs a few comparisons and allocates nothing; only the types it
/// acts on are looked up in the list of watched objects.
///
/// On Linux no native point is ever inside a window (VxQtUiUtil::IsNativePointInWindow
/// answers false), so with CheckTopWindowState a widget whose window is inactive, or that is
/// recomputed after an application deactivation, is reported not visible.
///
/// An event of the widget or an ancestor reaches the helper twice, through the application's
/// filter and through the object's own; the second computation finds nothing changed and
/// reports nothing.
///
/// The bound widget should have a parent widget: its position is mapped to the screen through
/// it. A bound top-level widget is reported with its own geometry.
///
/// GUI thread only. The callback may call BindWidget, UnbindWidget, ReUpdate or ResetData on
/// the helper; delete the helper from the callback with deleteLater(), never directly.
class QT_UTIL_EXPORT QTPaintRectHelper : public QObject {
  Q_OBJECT

 public:
  /// Which visibility rules apply; combine the flags with `|`.
  enum BindType : int {
    /// Visible also requires that neither the widget nor any ancestor widget is hidden.
    CheckParentVisible = 1,
    /// Visibility follows the top-level window: not visible when it is hidden or minimised,
    /// and when it is inactive or the application is being deactivated, visible only if the
    /// widget's centre is inside the native window. Application deactivations and native
    /// mouse-downs cause recomputations.
    CheckTopWindowState = 2,
    /// With CheckTopWindowState: a mouse press in the widget's top-level window, or on the
    /// widget or an ancestor, is reported as not visible while the window is active; the next
    /// recomputation for another reason reports it again.
    HideOnMousePress = 4,
  };

  /// The callback: the bound widget, the visible flag and the rectangle in Qt's global
  /// (screen) coordinates. Those are logical pixels at every scale factor: under
  /// QT_SCALE_FACTOR 1.25, 1.5 or 2 the rectangle has the numbers it has at 1, on Qt 5.15 and
  /// Qt 6 alike, and moves by exactly as many pixels as the window does. Device pixels come from
  /// VxQtUiUtil::TranslatePointFromQt and VxQtUiUtil::GetWindowPixelRect.
  using Callback = std::function<void(QWidget*, bool, QRect)>;

  /// An unbound helper.
  explicit QTPaintRectHelper(QObject* parent = nullptr);

  /// Removes every event filter the helper installed.
  ~QTPaintRectHelper() override;

  /// Binds `widget`, replacing any earlier binding. The earlier widget, if it still exists
  /// and a callback was set, is reported first as (old widget, false, QRect(0, 0, 0, 0)).
  /// Then the filters are installed and the widget is computed at once, so a set callback is
  /// called with the first result. With an empty callback nothing is ever computed. When
  /// the widget is destroyed it is reported the same way as a replaced one, once, and the
  /// helper is unbound.
  void BindWidget(QWidget* widget, Callback callback,
                  BindType type = BindType(CheckParentVisible | CheckTopWindowState));

  /// Unbinds without a final callback: clears the widget and the callback and removes every
  /// event filter.
  void UnbindWidget();

  /// Recomputes now, for an owner that knows something changed which no event announces.
  void ReUpdate();

  /// Forgets what was last reported, so that the next computation reports whatever it finds.
  void ResetData();

  /// Whether the widget has been reported visible since the last ResetData (or binding).
  bool EverVisible() const { return ever_visible_; }

  /// The objects filtered besides the application: the bound widget first, then each
  /// QObject::parent() up to the root. An object leaves the list when it is destroyed.
  const QList<QPointer<QObject>>& WatchedObjects() const { return watched_; }

  /// Installs the filters: on the application object and on the bound widget and every
  /// QObject::parent() up to the root. Does nothing while unbound.
  void AttachEvent();

  /// Removes the filters from the application object and from the watched objects that still
  /// exist, and forgets the watched objects.
  void DetachEvent();

  /// Computes the visible flag and the global rectangle, and calls the callback when either
  /// differs from what was last reported. `cause` is the event type that led here
  /// (QEvent::None for any other reason); it matters for QEvent::MouseButtonPress and for
  /// ApplicationDeactiveEvent::QEventType(). Without a callback or a widget, does nothing.
  /// Before the top-level window has a native window, reports false with QRect(0, 0, 0, 0).
  void NotifyPaintRectChanged(QEvent::Type cause);

  /// Recomputes on the events that can change the result; always passes the event on.
  bool eventFilter(QObject* watched, QEvent* event) override;

 private slots:
  void OnBoundWidgetDestroyed(QObject* object);
  void OnWatchedObjectDestroyed(QObject* object);

 private:
  bool IsWatched(const QObject* object) const;
  void ReleaseWidget();
  void HandleFilteredEvent(QObject* object, QEvent::Type type);

  QPointer<QWidget> widget_;
  QList<QPointer<QObject>> watched_;
  Callback callback_;
  BindType bind_type_ = BindType(CheckParentVisible | CheckTopWindowState);
  bool ever_visible_ = false;
  bool last_visible_ = false;
  QRect last_rect_ = QRect(0, 0, 0, 0);
};

/// Combines BindType flags.
constexpr QTPaintRectHelper::BindType operator|(QTPaintRectHelper::BindType a,
                                                QTPaintRectHelper::BindType b) {
  return QTPaintRectHelper::BindType(int(a) | int(b));
}
