#include "qt_util/qt_ui_monitor_helper.h"

#include <QCoreApplication>
#include <QEvent>
#include <QPoint>
#include <QRect>
#include <QWidget>
#include <atomic>
#include <mutex>

#include "base/common/include/logger.h"
#include "qt_util/scope_singleton_p.h"

namespace {

std::atomic<QTUIMonitorHelper*> g_instance{nullptr};
std::mutex g_instance_mutex;
// The instance whose filter is on the application object. A registry entry leaves only through
// that filter, so no widget may be registered while it is off; GUI thread only.
const QTUIMonitorHelper* g_filtering_instance = nullptr;

// Installs `helper` as the application's filter unless it already is; false without an
// application object.
bool EnsureApplicationFilter(QTUIMonitorHelper* helper) {
  if (g_filtering_instance == helper) return true;
  QCoreApplication* application = QCoreApplication::instance();
  if (!application) return false;
  application->installEventFilter(helper);
  g_filtering_instance = helper;
  return true;
}

}  // namespace

QTUIMonitorHelper* QTUIMonitorHelper::SharedInstance() {
  return qt_util::internal::ScopeSingletonInstance(g_instance, g_instance_mutex,
                                                   [] { return new QTUIMonitorHelper; });
}

QTUIMonitorHelper::QTUIMonitorHelper() {
  if (!EnsureApplicationFilter(this)) {
    QTU_LOG(base::log::kLevelFailure) << "[qt ui monitor helper] created before the application "
                                         "object, filtering from the first registration";
  }
}

QTUIMonitorHelper::~QTUIMonitorHelper() {
  if (g_filtering_instance != this) return;
  g_filtering_instance = nullptr;
  if (QCoreApplication* application = QCoreApplication::instance()) {
    application->removeEventFilter(this);
  }
}

bool QTUIMonitorHelper::AddMonitorRectWidget(QWidget* widget) {
  return AddMonitorWidget(rect_widgets_, widget);
}

bool QTUIMonitorHelper::AddMonitorRectWebWidget(QWidget* widget) {
  return AddMonitorWidget(rect_web_widgets_, widget);
}

bool QTUIMonitorHelper::AddMonitorWidget(QSet<QObject*>& set, QWidget* widget) {
  if (!widget) {
    QTU_LOG(base::log::kLevelFailure) << "[qt ui monitor helper] add monitor widget failed!";
    return false;
  }
  EnsureApplicationFilter(this);  // a widget implies an application object
  set.insert(widget);
  return true;
}

bool QTUIMonitorHelper::AddMonitorDontCreateNativeWidget(QWidget* widget, const QString& key) {
  if (!widget) {
    QTU_LOG(base::log::kLevelFailure)
        << "[qt ui monitor helper] add monitor dont create native widget failed!";
    return false;
  }
  EnsureApplicationFilter(this);
  if (!dont_create_native_widgets_.contains(widget))
    dont_create_native_widgets_.insert(widget, key);
  return true;
}

bool QTUIMonitorHelper::IsInUIRectInMeeting(const QPoint& point) {
  for (QObject* object : qAsConst(rect_widgets_)) {
    auto* widget = qobject_cast<QWidget*>(object);
    if (!widget || !widget->isVisible()) continue;
    const QRect rect(widget->mapTo(widget->window(), QPoint(0, 0)), widget->size());
    // right() and bottom() are the last pixel column and row, so both edges count as inside.
    if (point.x() >= rect.left() && point.x() <= rect.right() && point.y() >= rect.top() &&
        point.y() <= rect.bottom()) {
      return true;
    }
  }
  return false;
}

bool QTUIMonitorHelper::IsInWebUIRectInMeetingWithMeetingWnd(QWidget* meetingWnd,
                                                             const QPoint& point) {
  // The per-widget test answers false here; the loop stays for a platform that has a real one.
  for (QObject* object : qAsConst(rect_web_widgets_)) {
    auto* widget = qobject_cast<QWidget*>(object);
    if (!widget || !widget->isVisible()) continue;
    if (IsInWebUIRectInMeeting(meetingWnd, widget, point)) return true;
  }
  return false;
}

bool QTUIMonitorHelper::IsInWebUIRectInMeeting(QWidget* meetingWnd, QWidget* webWidget,
                                               const QPoint& point) {
  Q_UNUSED(meetingWnd)
  Q_UNUSED(webWidget)
  Q_UNUSED(point)
  return false;
}

void QTUIMonitorHelper::ShowChangeToNativeWindowAlert(const QString& key) {
  Q_UNUSED(key)
}

bool QTUIMonitorHelper::eventFilter(QObject* watched, QEvent* event) {
  // Every event of the process passes here; only a destruction can change a registry.
  if (event->type() == QEvent::Destroy) {
    HandleEventFilterForMonitorRectWidget(watched, event);
    HandleEventFilterForMonitorRectWebWidget(watched, event);
    HandleEventFilterForMonitorDontCreateNative(watched, event);
  }
  return QObject::eventFilter(watched, event);
}

void QTUIMonitorHelper::HandleEventFilterForMonitorRectWidget(QObject* watched, QEvent* event) {
  if (event->type() == QEvent::Destroy) rect_widgets_.remove(watched);
}

void QTUIMonitorHelper::HandleEventFilterForMonitorRectWebWidget(QObject* watched, QEvent* event) {
  if (event->type() == QEvent::Destroy) rect_web_widgets_.remove(watched);
}

void QTUIMonitorHelper::HandleEventFilterForMonitorDontCreateNative(QObject* watched,
                                                                    QEvent* event) {
  if (event->type() == QEvent::Destroy) dont_create_native_widgets_.remove(watched);
}
