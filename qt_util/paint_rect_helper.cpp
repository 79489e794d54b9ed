#include "qt_util/paint_rect_helper.h"

#include <QCoreApplication>
#include <QTimer>
#include <QWidget>
#include <algorithm>

#include "qt_util/custom_event_util.h"
#include "qt_util/ui_util.h"

namespace {

// After an application deactivation the window system needs a moment to settle before the
// window's state can be read; two looks catch both a fast and a slower window manager.
constexpr int kFirstLookAfterDeactivationMs = 100;
constexpr int kSecondLookAfterDeactivationMs = 200;

// The built-in event types the helper acts on. Every other built-in type is decided by this
// switch alone, before the watched list is looked at.
bool IsBuiltInTypeOfInterest(QEvent::Type type) {
  switch (type) {
    case QEvent::MouseButtonPress:
    case QEvent::Move:
    case QEvent::Resize:
    case QEvent::Show:
    case QEvent::Hide:
    case QEvent::ParentChange:
    case QEvent::WindowActivate:
    case QEvent::WindowDeactivate:
    case QEvent::WindowStateChange:
      return true;
    default:
      return false;
  }
}

bool AllAncestorsShown(const QWidget* widget) {
  if (!widget) return false;
  for (const QWidget* w = widget; w; w = w->parentWidget()) {
    if (w->isHidden()) return false;
  }
  return true;
}

}  // namespace

QTPaintRectHelper::QTPaintRectHelper(QObject* parent) : QObject(parent) {}

QTPaintRectHelper::~QTPaintRectHelper() {
  DetachEvent();
}

void QTPaintRectHelper::BindWidget(QWidget* widget, Callback callback, BindType type) {
  ResetData();
  ReleaseWidget();
  widget_ = widget;
  bind_type_ = type;
  callback_ = std::move(callback);
  if (widget) {
    // One connection per widget however often it is bound; the handler ignores a widget that
    // is no longer the bound one.
    connect(widget, &QObject::destroyed, this, &QTPaintRectHelper::OnBoundWidgetDestroyed,
            Qt::UniqueConnection);
  }
  DetachEvent();
  AttachEvent();
  NotifyPaintRectChanged(QEvent::None);
}

void QTPaintRectHelper::UnbindWidget() {
  widget_.clear();
  callback_ = nullptr;
  DetachEvent();
}

void QTPaintRectHelper::ReUpdate() {
  NotifyPaintRectChanged(QEvent::None);
}

void QTPaintRectHelper::ResetData() {
  ever_visible_ = false;
  last_visible_ = false;
  last_rect_ = QRect(0, 0, 0, 0);
}

void QTPaintRectHelper::AttachEvent() {
  if (!widget_) return;
  if (QCoreApplication* application = QCoreApplication::instance()) {
    application->installEventFilter(this);
  }
  // QObject::parent(), not parentWidget(): a widget kept by a plain QObject still moves with it.
  for (QObject* object = widget_.data(); object; object = object->parent()) {
    object->installEventFilter(this);
    watched_.append(object);
    connect(object, &QObject::destroyed, this, &QTPaintRectHelper::OnWatchedObjectDestroyed,
            Qt::UniqueConnection);
  }
}

void QTPaintRectHelper::DetachEvent() {
  if (QCoreApplication* application = QCoreApplication::instance()) {
    application->removeEventFilter(this);
  }
  for (const QPointer<QObject>& object : qAsConst(watched_)) {
    if (object) object->removeEventFilter(this);
  }
  watched_.clear();
}

void QTPaintRectHelper::NotifyPaintRectChanged(QEvent::Type cause) {
  if (!callback_ || !widget_) return;
  QWidget* widget = widget_.data();
  bool visible = last_visible_;

  const QRect geometry = widget->geometry();
  const QWidget* parent = widget->parentWidget();
  QRect rect(parent ? parent->mapToGlobal(geometry.topLeft()) : geometry.topLeft(),
             geometry.size());

  const bool parents_rule = bind_type_ & CheckParentVisible;
  QWidget* top = widget->topLevelWidget();
  if (top->effectiveWinId() == 0) {
    visible = false;
    rect = QRect(0, 0, 0, 0);
  } else if (!(bind_type_ & CheckTopWindowState)) {
    visible = parents_rule ? AllAncestorsShown(widget) : !widget->isHidden();
  } else if (top->isMinimized() || top->isHidden() || widget->isHidden()) {
    visible = false;
  } else if (!top->isActiveWindow() || cause == ApplicationDeactiveEvent::QEventType()) {
    const QPoint native_centre = VxQtUiUtil::TranslatePointFromQt(rect.center());
    if (!VxQtUiUtil::IsNativePointInWindow(native_centre, top->effectiveWinId())) {
      visible = false;
    } else {
      visible = !parents_rule || AllAncestorsShown(widget);
    }
  } else if (cause == QEvent::MouseButtonPress && (bind_type_ & HideOnMousePress)) {
    visible = false;
  } else {
    visible = !parents_rule || AllAncestorsShown(widget);
  }

  if (visible == last_visible_ && rect == last_rect_) return;
  if (visible) ever_visible_ = true;
  last_visible_ = visible;
  last_rect_ = rect;
  // A copy, because the callback may rebind or unbind and so replace the stored function
  // while it runs.
  const Callback callback = callback_;
  callback(widget, visible, rect);
}

bool QTPaintRectHelper::eventFilter(QObject* watched, QEvent* event) {
  // Every event of the process passes here, once per bound helper: the type decides first.
  const QEvent::Type type = event->type();
  if (IsBuiltInTypeOfInterest(type) || type == ApplicationDeactiveEvent::QEventType() ||
      type == NativeMouseDownEvent::QEventType()) {
    HandleFilteredEvent(watched, type);
  }
  return QObject::eventFilter(watched, event);
}

void QTPaintRectHelper::HandleFilteredEvent(QObject* object, QEvent::Type type) {
  switch (type) {
    case QEvent::Resize:
      // Only the bound widget's own size matters; the bound widget is always watched.
      if (object == widget_.data()) NotifyPaintRectChanged(QEvent::None);
      return;
    case QEvent::ParentChange:
      if (!IsWatched(object)) return;
      DetachEvent();
      AttachEvent();
      NotifyPaintRectChanged(QEvent::None);
      return;
    case QEvent::Move:
    case QEvent::Show:
    case QEvent::Hide:
    case QEvent::WindowActivate:
    case QEvent::WindowDeactivate:
    case QEvent::WindowStateChange:
      if (IsWatched(object)) NotifyPaintRectChanged(QEvent::None);
      return;
    case QEvent::MouseButtonPress: {
      if (!(bind_type_ & HideOnMousePress) || !widget_) return;
      const bool in_bound_window =
          object->isWidgetType() &&
          static_cast<QWidget*>(object)->topLevelWidget() == widget_->topLevelWidget();
      if (in_bound_window || IsWatched(object)) NotifyPaintRectChanged(QEvent::MouseButtonPress);
      return;
    }
    default:
      break;
  }
  // An application deactivation or a native mouse-down, which concern the helper only when
  // they reach an object it does not watch.
  if (!(bind_type_ & CheckTopWindowState) || IsWatched(object)) return;
  if (type == ApplicationDeactiveEvent::QEventType()) {
    const auto look = [this] { NotifyPaintRectChanged(ApplicationDeactiveEvent::QEventType()); };
    QTimer::singleShot(kFirstLookAfterDeactivationMs, this, look);
    QTimer::singleShot(kSecondLookAfterDeactivationMs, this, look);
  } else {
    NotifyPaintRectChanged(QEvent::None);
  }
}

bool QTPaintRectHelper::IsWatched(const QObject* object) const {
  for (const QPointer<QObject>& entry : watched_) {
    if (entry.data() == object) return true;
  }
  return false;
}

void QTPaintRectHelper::ReleaseWidget() {
  const QPointer<QWidget> old_widget = widget_;
  widget_.clear();
  DetachEvent();
  if (!callback_ || !old_widget) return;
  const Callback callback = callback_;
  callback(old_widget.data(), false, QRect(0, 0, 0, 0));
}

void QTPaintRectHelper::OnBoundWidgetDestroyed(QObject* object) {
  // A widget emits destroyed() while its QPointers still see it, so the report can name it.
  if (object == widget_.data()) ReleaseWidget();
}

void QTPaintRectHelper::OnWatchedObjectDestroyed(QObject* object) {
  // A plain QObject's guards are cleared before it emits destroyed(), so its entry may already
  // read null; dead entries are dropped with it.
  watched_.erase(std::remove_if(watched_.begin(), watched_.end(),
                                [object](const QPointer<QObject>& entry) {
                                  return entry.isNull() || entry.data() == object;
                                }),
                 watched_.end());
}
