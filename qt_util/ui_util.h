#pragma once

/// @file
/// Window and resource utilities of the client: HiDPI images and resource packages, style
/// sheets and accessibility keys, screen geometry, the home window, and window behaviour.
///
/// The interface is shared with the client's other desktop platforms. Operations that only
/// another platform's window system can carry out stay here and do nothing, or return a fixed
/// value, on Linux; their documentation says which value. Everything runs on the GUI thread.
///
/// Types that only appear behind a pointer or in a signature are forward-declared: include
/// \<QPixmap>, \<QLocale>, "base/variant/variant.h" or "qt_util/scheme_controller.h" where a
/// call needs them complete.

#include <QMargins>
#include <QPoint>
#include <QRect>
#include <QSize>
#include <QString>
#include <memory>
#include <string>

#include "qt_util/qt_util_export.h"

class QListWidgetItem;
class QLocale;
class QPixmap;
class QScreen;
class QWidget;

namespace base::variant {
class Variant;
}
namespace framework {
class Controller;
}

/// Free functions for windows, screens, images and style sheets of the client's widgets.
namespace VxQtUiUtil {

// --- HiDPI images and resource packages (qt_util/ui_util_image.cpp) ---

/// The path of the best existing scale variant of the themed `path`: with
/// `step = qBound(2, qCeil(scale), 3)`, the "@3x" then the "@2x" file (only "@2x" for a scale
/// up to 2), formed by cutting `suffix` (the extension with its dot, e.g. ".png") off the end by
/// length and appending "@<step>x" + `suffix`. Gives the themed path itself when no variant
/// file exists.
QT_UTIL_EXPORT QString GetHdpiImagePath(double scale, const QString& path, const QString& suffix);

/// GetHdpiImagePath with the device pixel ratio of `widget`'s top-level window. Pass a widget:
/// a null one counts as ratio 1 (the "@2x" step).
QT_UTIL_EXPORT QString GetHdpiImagePath(QWidget* widget, const QString& path,
                                        const QString& suffix);

/// The best scale variant ("<themed name>@3x", "@2x", else the name itself) loaded as a pixmap
/// whose device pixel ratio is the step found (1 for the unsuffixed file), kept in
/// QPixmapCache under "<themed name>@<step of scale>x". A missing image gives a null pixmap and
/// the Qt info message "VxFind Res Invalid~(<path>)"; misses are not cached.
QT_UTIL_EXPORT QPixmap GetHdpiImage(double scale, const QString& name);

/// GetHdpiImage with the device pixel ratio of `widget`'s top-level window. Pass a widget: a
/// null one counts as ratio 1 (the "@2x" step).
QT_UTIL_EXPORT QPixmap GetHdpiImage(QWidget* widget, const QString& name);

/// The themed SVG `name` rendered at `size` times the scale step, with that step as its device
/// pixel ratio, cached under "svg_<themed path>_<step>". The size is not part of the cache key:
/// the first size rendered for a path and step is the one every later call gets. A missing file
/// gives a null pixmap and the Qt info message "Invalid image resource ~(<path>)"; a file that
/// is not a valid SVG, or a `size` of (-1, -1), gives GetHdpiImage(scale, themed path). The file
/// is tested and parsed before the cache is asked, so every call reads the file: keep the result
/// where a widget paints often. Any other size without area gives a null pixmap, not cached.
QT_UTIL_EXPORT QPixmap GetHdpiImageSvg(double scale, const QString& name, const QSize& size);

/// GetHdpiImageSvg with the device pixel ratio of `widget`'s top-level window. Pass a widget: a
/// null one counts as ratio 1 (the "@2x" step).
QT_UTIL_EXPORT QPixmap GetHdpiImageSvg(QWidget* widget, const QString& name, const QSize& size);

/// Whether `path` holds a valid SVG image; false for a missing or unreadable file.
QT_UTIL_EXPORT bool IsImageSvgType(const QString& path);

/// A copy of `pixmap` with transparent corners rounded by `radius` (radius 0 gives an unrounded
/// copy of the same size). A null pixmap is returned as it is. The copy has the input's size in
/// device pixels and a device pixel ratio of 1, whatever the input's ratio: set it again on a
/// pixmap from GetHdpiImage.
QT_UTIL_EXPORT QPixmap GetHasRadiusPixmap(const QPixmap& pixmap, int radius);

/// Registers the resource packages "<module>.rcc", "<module>_extension.rcc" and
/// "<module>_linux.rcc" found in "<dir>/Asset". Each missing package is logged ("<path> not
/// exist.", level 4 for the main package, 6 for the two optional ones) and skipped.
QT_UTIL_EXPORT void LoadQtModuleResource(const std::string& dir, const std::string& module);

/// The application's name as the framework reports it, converted from UTF-8.
QT_UTIL_EXPORT QString GetAppName();

// --- Style sheets and accessibility keys (qt_util/ui_util_style.cpp) ---

/// Loads the style sheet file at `path` onto `widget` and sets the widget's property
/// "widget-config" to "widget__config--main". With `checkTheme`, the theme helper may veto the
/// sheet first; a veto sets neither. A file that cannot be opened logs "qss not found" (level
/// 1), keeps the widget's style sheet and still sets the property. Nothing for a null widget.
QT_UTIL_EXPORT void SetupQss(QWidget* widget, const QString& path, bool checkTheme);

/// The text of the style sheet file at `path` (UTF-8); an empty string, without a log line,
/// when it cannot be opened.
QT_UTIL_EXPORT QString GetQss(const QString& path);

/// Sets the accessible name "atg__<key>__name" and description "atg__<key>" of `widget`, with
/// the widget's object name standing in for an empty `key`. Nothing for a null widget; both
/// empty logs "key & objectName is empty" (level 1) and sets nothing.
QT_UTIL_EXPORT void SetAccessibleKey(QWidget* widget, const QString& key);

/// Sets the data roles Qt::AccessibleTextRole to "atg__<key>" and Qt::UserRole to
/// "atg__<key>__name" of `item`. Nothing for a null item; an empty key logs
/// "key & objectName is empty" (level 1) and sets nothing.
QT_UTIL_EXPORT void SetAccessibleKey(QListWidgetItem* item, const QString& key);

/// The accessibility key of a resource path: everything after its last "/" (empty for a path
/// ending in "/"), or the path itself without one. An empty `res` logs "res is empty" (level 1)
/// and is returned empty.
QT_UTIL_EXPORT QString AccessibleKeyOfRes(const QString& res);

/// Sets the accessible name of a non-null widget; nothing for a null one.
QT_UTIL_EXPORT void SetAccessibleName(QWidget* widget, const QString& name);

/// Sets the accessible description of a non-null widget; nothing for a null one.
QT_UTIL_EXPORT void SetAccessibleDesc(QWidget* widget, const QString& desc);

/// SetAccessibleName(widget, name), then SetAccessibleDesc(widget, desc).
QT_UTIL_EXPORT void SetAccessibleInfo(QWidget* widget, const QString& name, const QString& desc);

// --- Screen geometry (qt_util/ui_util_screen.cpp) ---

/// The screen `widget` is on by QDesktopWidget::screenNumber (a null widget included), else
/// the primary screen; null when the application has no screen.
QT_UTIL_EXPORT QScreen* GetScreen(QWidget* widget);

/// The geometry of GetScreen(widget); a null QRect when there is no screen.
QT_UTIL_EXPORT QRect GetScreenRect(QWidget* widget);

/// The available geometry of GetScreen(widget); a null QRect when there is no screen.
QT_UTIL_EXPORT QRect GetScreenAvailableRect(QWidget* widget);

/// Exactly GetScreenAvailableRect(widget).
QT_UTIL_EXPORT QRect GetWorkingScreenRect(QWidget* widget);

/// GetScreenAvailableRect(widget) with the top kept and the height reduced by 40 pixels.
QT_UTIL_EXPORT QRect GetWidgetFitScreenRect(QWidget* widget);

/// `rect` moved, size kept, inside the available area of the screen under the mouse cursor
/// (the primary screen when the cursor is on none) less `margins`: right, bottom, left, then
/// top edge, with Qt's inclusive edges. A rect larger than the area therefore ends at the left
/// and top margins. All-zero margins return `rect` unchanged, even off every screen. With no
/// screen at all, `rect` is returned unchanged.
QT_UTIL_EXPORT QRect CorrectRect(const QRect& rect, QMargins margins);

/// A rect of `size` centred on `rect.center()`, then CorrectRect with `margins`.
QT_UTIL_EXPORT QRect CenterRect(const QRect& rect, QSize size, QMargins margins);

/// Moves `widget` so that its centre is `rect`'s centre; `rect` is in the coordinates
/// QWidget::move uses (no mapping). Nothing for a null widget.
QT_UTIL_EXPORT void CenterWidgetToRect(QWidget* widget, const QRect& rect);

/// Centres `widget` over `target` on both axes, with truncating integer halves, mapped into the
/// widget's parent when it has one. Nothing unless both are non-null.
QT_UTIL_EXPORT void CenterToWidget(QWidget* widget, QWidget* target);

/// CenterToWidget on the vertical axis only: the widget's x is kept.
QT_UTIL_EXPORT void VerticalCenterToWidget(QWidget* widget, QWidget* target);

/// CenterToWidget on the horizontal axis only: the widget's y is kept.
QT_UTIL_EXPORT void HorizontalCenterToWidget(QWidget* widget, QWidget* target);

/// The screen holding the global `point`, else the screen whose centre (integer halves) is
/// nearest by squared distance, the earlier one in QGuiApplication::screens() on ties. Null
/// when there is no screen.
QT_UTIL_EXPORT QScreen* GetPointNearestScreen(const QPoint& point);

/// A global logical point in device pixels: on the first screen whose geometry holds it (edges
/// included), origin + (point - origin) * ratio, truncated toward zero; the origin itself is not
/// scaled. A point on no screen gives (0, 0).
QT_UTIL_EXPORT QPoint TranslatePointFromQt(const QPoint& point);

/// The framework's UIHelper::QPointFromNative(point), unchanged: the inverse of
/// TranslatePointFromQt on screens of ratio 1 or more.
QT_UTIL_EXPORT QPoint QPointFromNative(const QPoint& point);

/// The geometry of a window in device pixels, position and size each multiplied by its screen's
/// ratio (the primary screen's when it has none) and rounded to nearest. A null QRect for a null
/// widget, one that is not a window, or no screen at all.
QT_UTIL_EXPORT QRect GetWindowPixelRect(QWidget* widget);

/// The scale factor in force when the process started (DPIHelper::GetStartUpDPI).
QT_UTIL_EXPORT float GetDPIScale();

/// The scale factor of the screen `widget` is on; GetDPIScale() for a null widget.
QT_UTIL_EXPORT float GetWidgetScreenDPI(QWidget* widget);

// --- Home window (qt_util/ui_util_home.cpp) ---

/// The home window's geometry: on the new home page the geometry of the widget that the host
/// controller "talvex://page/nxui/host" answers to "get_qt_window"; on the classic one the
/// rectangle of the home view information, whose end point is inclusive. QRect(0, 0, 0, 0) when
/// neither is available (no host, an answer that is not a non-null pointer, no "start_x").
QT_UTIL_EXPORT QRect GetHomeWindowRect();

/// The available geometry of the home window's screen on the new home page; on the classic
/// home page the same rectangle as GetHomeWindowRect. QRect(0, 0, 0, 0) when not available.
QT_UTIL_EXPORT QRect GetHomeScreenRect();

/// The home window's native handle as the home page reports it ("get_qt_window_handle" to the
/// host, "get_window_handle" to the classic home page), passed on as it comes; an empty pointer
/// when the page has none.
QT_UTIL_EXPORT std::unique_ptr<base::variant::Variant> GetHomeWindowHandle();

// --- Window behaviour (qt_util/ui_util_window.cpp) ---

/// Runs the platform initialisation (empty on Linux) once and sets the process-wide flag;
/// later calls do nothing until UnInitUIUtil.
QT_UTIL_EXPORT void InitUIUtil();

/// Clears the flag InitUIUtil set.
QT_UTIL_EXPORT void UnInitUIUtil();

/// Shows `widget` in its remembered state (show(); showMaximized() for a minimised window that
/// was maximised; showNormal() for a minimised one only), then with `activate` raises it,
/// activates it and gives it the window-system input focus, in that order. Nothing for null.
QT_UTIL_EXPORT void ShowWindow(QWidget* widget, bool activate);

/// Makes `widget` a frameless, always-on-top tool window that bypasses the window manager,
/// replacing all its window flags, and stacks it on top with a translucent background.
/// Nothing for a null widget. Call it before showing the widget: on a shown window the new flags
/// make Qt hide it, and it stays hidden until shown again.
QT_UTIL_EXPORT void SetupToolWindow(QWidget* widget);

/// Sets or clears Qt::WindowStaysOnTopHint, shows the widget when `show`, then asks the window
/// system to keep its top-level window above others (or release it), also when not shown.
/// Nothing for a null widget. Changing the hint of a shown window makes Qt hide it and replace
/// its native window; pass `show` = true to keep such a window on screen (the request then goes
/// to the new window).
QT_UTIL_EXPORT void SetupTopMost(QWidget* widget, bool onTop, bool show);

/// raise() when `front`, else lower(). Nothing for a null widget.
QT_UTIL_EXPORT void BringToFront(QWidget* widget, bool front);

/// update() for a widget that has a native window; for a null widget or one without a native
/// window yet, only the log line "update widget window should has a winId" (level 4).
QT_UTIL_EXPORT void UpdateWidgetWindow(QWidget* widget);

/// show() when `visible`, else hide(). Nothing for a null widget.
QT_UTIL_EXPORT void UpdateWidgetVisible(QWidget* widget, bool visible);

/// Whether `data` differs from the data last recorded on `widget` (property
/// "widget-update-data-Ha6z6e"); a difference records a copy of `data`. True exactly once per
/// change of data, and always for null `data` or a null widget, which record nothing.
QT_UTIL_EXPORT bool IsWidgetNeedUpdate(QWidget* widget, const base::variant::Variant* data);

/// Decodes standard base64 into an image (format from the content) and puts it on the
/// clipboard. False, with the clipboard unchanged, for empty text or bytes that are no image.
QT_UTIL_EXPORT bool SaveImageToClipBoard(const std::string& base64);

/// The Unix time `seconds` (narrowed to 32 bits) formatted by `locale` with the UTF-8 `format`
/// (QLocale::toString syntax). An empty string for 0 seconds or a null format.
QT_UTIL_EXPORT QString FormatTimeStamp(unsigned long seconds, const char* format, QLocale locale);

/// QDesktopServices::openUrl of `url` read in tolerant mode; its answer.
QT_UTIL_EXPORT bool OpenURL(const QString& url);

/// Keeps `above` over `widget` through SetWidgetOwnerShip, which changes nothing on Linux.
QT_UTIL_EXPORT void MakeWidgetAbove(QWidget* widget, QWidget* above);

/// The current thread's call stack as text; an empty string on Linux.
QT_UTIL_EXPORT QString CurrentThreadCallStackSymbols();

// --- Operations of another platform's window system: no effect on Linux ---

/// No effect on Linux.
QT_UTIL_EXPORT void ActivateCurrentApp();
/// No effect on Linux.
QT_UTIL_EXPORT void SupportAutoSplitScreen(QWidget* widget, bool support);
/// No effect on Linux.
QT_UTIL_EXPORT void SetWidgetOwnerShip(QWidget* widget, QWidget* owner, bool own);
/// No effect on Linux.
QT_UTIL_EXPORT void SetFixedPositonProp(QWidget* widget, bool fixed);
/// No effect on Linux.
QT_UTIL_EXPORT void BeginSheet(QWidget* sheet, QWidget* parent);
/// No effect on Linux.
QT_UTIL_EXPORT void EndSheet(QWidget* sheet);
/// No effect on Linux.
QT_UTIL_EXPORT void EndAllSheet(QWidget* parent);
/// No effect on Linux.
QT_UTIL_EXPORT void ClearWindowBackground(QWidget* widget);
/// No effect on Linux.
QT_UTIL_EXPORT void TitleBarFullSizeContentView(QWidget* widget, bool on);
/// No effect on Linux.
QT_UTIL_EXPORT void SetWindowShowShadow(QWidget* widget, bool show);
/// No effect on Linux.
QT_UTIL_EXPORT void SetDisableVisualEffect(QWidget* widget, bool disable);
/// No effect on Linux.
QT_UTIL_EXPORT void ShowMediaNotAccessible(QWidget* widget, const base::variant::Variant* info);
/// No effect on Linux.
QT_UTIL_EXPORT void OpenSystemPreference(const base::variant::Variant* info);
/// No effect on Linux.
QT_UTIL_EXPORT void SetTitleVisible(QWidget* widget, bool visible);
/// No effect on Linux.
QT_UTIL_EXPORT void SetTitleBarVisible(QWidget* widget, bool visible);
/// No effect on Linux.
QT_UTIL_EXPORT void WidgetAppearOnlyOneSpace(QWidget* widget);
/// No effect on Linux.
QT_UTIL_EXPORT void WidgetShowAllWorkSapceWithoutFullScreen(QWidget* widget);
/// No effect on Linux.
QT_UTIL_EXPORT void RelativeToTrackWindow(QWidget* widget, unsigned long windowId);
/// No effect on Linux.
QT_UTIL_EXPORT void AddNSPanelMask(QWidget* widget, bool add);
/// No effect on Linux.
QT_UTIL_EXPORT void MinimizeWindow(QWidget* widget);
/// No effect on Linux.
QT_UTIL_EXPORT void DeminimizeWindow(QWidget* widget);
/// No effect on Linux.
QT_UTIL_EXPORT void SetWindowResizable(QWidget* widget, bool resizable);
/// No effect on Linux.
QT_UTIL_EXPORT void SetWindowMovable(QWidget* widget, bool movable);
/// No effect on Linux.
QT_UTIL_EXPORT void SetWindowFullScreenState(QWidget* widget);
/// No effect on Linux.
QT_UTIL_EXPORT void SetWindowNoFullScreenMode(QWidget* widget);
/// No effect on Linux.
QT_UTIL_EXPORT void NativeWindowToggleFullScreen(QWidget* widget);
/// No effect on Linux.
QT_UTIL_EXPORT void SetTitleBarMinBtnVisible(QWidget* widget, bool visible);
/// No effect on Linux.
QT_UTIL_EXPORT void SetTitleBarZoomBtnVisible(QWidget* widget, bool visible);
/// No effect on Linux.
QT_UTIL_EXPORT void SetTitleBarCloseBtnVisible(QWidget* widget, bool visible);
/// No effect on Linux.
QT_UTIL_EXPORT void SetupTitleBarStyle(QWidget* widget);
/// No effect on Linux.
QT_UTIL_EXPORT void SetupTitleBarOnlyCloseStyle(QWidget* widget);
/// No effect on Linux.
QT_UTIL_EXPORT void SetupTitleBarCloseAndMinStyle(QWidget* widget);
/// No effect on Linux.
QT_UTIL_EXPORT void SetupTitleBarBackgroundColor(QWidget* widget, unsigned int color);
/// No effect on Linux.
QT_UTIL_EXPORT void SetupTitleBarTitleColor(QWidget* widget, unsigned int color);
/// No effect on Linux.
QT_UTIL_EXPORT void SetupTitleBarTitleSize(QWidget* widget, int size);
/// No effect on Linux.
QT_UTIL_EXPORT void SetupWndNormalLevel(QWidget* widget);
/// No effect on Linux.
QT_UTIL_EXPORT void SetupWndMediumLevel(QWidget* widget);
/// No effect on Linux.
QT_UTIL_EXPORT void SetupWndHeightLevel(QWidget* widget);
/// No effect on Linux.
QT_UTIL_EXPORT void SetupWndDockLevel(QWidget* widget);
/// No effect on Linux.
QT_UTIL_EXPORT void MakeKeyAndOrderFront(QWidget* widget);
/// No effect on Linux.
QT_UTIL_EXPORT void MakeFirstResponder(QWidget* widget);
/// No effect on Linux.
QT_UTIL_EXPORT void NativeWindowOrderOut(QWidget* widget);
/// No effect on Linux.
QT_UTIL_EXPORT void UpdateTrackingArea(QWidget* widget, const QRect& rect);
/// No effect on Linux.
QT_UTIL_EXPORT void RemoveAllTrackingArea(QWidget* widget);
/// No effect on Linux.
QT_UTIL_EXPORT void WidgetAddAccessibleParent(QWidget* widget, unsigned long long parent);
/// No effect on Linux.
QT_UTIL_EXPORT void WidgetRemoveAccessibleParent(unsigned long long parent);
/// No effect on Linux.
QT_UTIL_EXPORT void ChildWidgetAddSubView(QWidget* parent, QWidget* child, bool add);
/// No effect on Linux.
QT_UTIL_EXPORT void RemoveWidgetFromQTWindow(QWidget* window, QWidget* widget);
/// No effect on Linux.
QT_UTIL_EXPORT void AddWidgetToNativeWindow(const void* nativeWindow, QWidget* widget, bool add);
/// No effect on Linux.
QT_UTIL_EXPORT void RemoveWidgetFromNativeWindow(const void* nativeWindow, QWidget* widget);
/// No effect on Linux.
QT_UTIL_EXPORT void updateSupportWindowShareIfNeeded(unsigned long long windowId, bool support);
/// No effect on Linux.
QT_UTIL_EXPORT void MakeNativeWindowKeyAndOrderFront(const std::string& windowKey);
/// No effect on Linux.
QT_UTIL_EXPORT void ChangeAppIconWithTitle(const std::string& title);
/// No effect on Linux.
QT_UTIL_EXPORT void BindSchemeTopCenter(std::shared_ptr<framework::Controller> top,
                                        std::shared_ptr<framework::Controller> center, int level,
                                        std::string topScheme, std::string centerScheme);
/// No effect on Linux.
QT_UTIL_EXPORT void SetSchemeTopCenter(std::shared_ptr<framework::Controller> top,
                                       std::shared_ptr<framework::Controller> center, int level,
                                       std::string topScheme, std::string centerScheme);
/// No effect on Linux.
QT_UTIL_EXPORT void UnBindSchemeTopCenter(std::shared_ptr<framework::Controller> top,
                                          std::shared_ptr<framework::Controller> center,
                                          std::string topScheme, std::string centerScheme);
/// No effect on Linux.
QT_UTIL_EXPORT void SetOwnerShipByScheme(std::shared_ptr<framework::Controller> top,
                                         std::shared_ptr<framework::Controller> center,
                                         std::string topScheme, std::string centerScheme);

/// Always false on Linux.
QT_UTIL_EXPORT bool IsCalendarApplicationInstalled(const std::string& application);
/// Always false on Linux: no native window is asked, so callers treat the point as outside.
QT_UTIL_EXPORT bool IsNativePointInWindow(QPoint point, unsigned long long windowId);
/// Always false on Linux.
QT_UTIL_EXPORT bool IsFullSizeContent(QWidget* widget);
/// Always false on Linux.
QT_UTIL_EXPORT bool IsWindowOutOfScreenWithOffset(QWidget* widget, int dx, int dy);
/// Always false on Linux.
QT_UTIL_EXPORT bool RefreshWindowAppearance(QWidget* widget, bool dark);
/// Always false on Linux: the widget is not added.
QT_UTIL_EXPORT bool AddWidgetToQTWindow(QWidget* window, QWidget* widget, bool add);
/// Always false on Linux: the widget is not added.
QT_UTIL_EXPORT bool AddWidgetToQTWindowWithCheckWinId(QWidget* window, QWidget* widget, bool add,
                                                      bool checkWinId);
/// Always true on Linux, so that callers keyed by window name go on as if it succeeded.
QT_UTIL_EXPORT bool AddWidgetToNativeWindow(const std::string& windowKey, QWidget* widget);
/// Always true on Linux, so that callers keyed by window name go on as if it succeeded.
QT_UTIL_EXPORT bool RemoveWidgetFromNativeWindow(const std::string& windowKey, QWidget* widget);
/// Always 0 on Linux.
QT_UTIL_EXPORT int GetTitlebarHeight(QWidget* widget);
/// Always 0 on Linux.
QT_UTIL_EXPORT unsigned long long GetPositionWndId(unsigned long long windowId);
/// Always a null pixmap on Linux.
QT_UTIL_EXPORT QPixmap GetAppResourceImage(const char* name);
/// Always QRect(0, 0, 0, 0) on Linux.
QT_UTIL_EXPORT QRect GetTitleBarCloseButtonRect(QWidget* widget);

}  // namespace VxQtUiUtil

/// Positions handed to the companion desktop application, in global coordinates. Both take the
/// reference point widget->mapToGlobal(widget->geometry().topLeft()), which counts a top-level
/// window's own position twice; the companion application expects exactly that.
namespace VxTransQtUiUtil {

/// The reference point plus half the widget's size (integer halves); (0, 0) for a null widget.
QT_UTIL_EXPORT QPoint GetCommonPosToDravik(QWidget* widget);

/// Where the companion's 320-pixel panel goes beside `widget`: right of it, or left of it when
/// it would not fit on the widget's screen (with the rules for windows partly or wholly left
/// of 0 and beyond the primary screen); y measured upward from the bottom of the primary
/// screen. (0, 0) for a null widget.
QT_UTIL_EXPORT QPoint GetRealPosToDravik(QWidget* widget);

}  // namespace VxTransQtUiUtil

/// System permission prompts of another platform; no effect on Linux.
class QT_UTIL_EXPORT VxQtPermissionUtil {
 public:
  /// Always 0 on Linux: no alert is shown.
  static int ShowPermissionAlert(const base::variant::Variant* info);
  /// No effect on Linux.
  static void GoToSystemSettingForMicPermission();
  /// No effect on Linux.
  static void GoToSystemSetting(const QString& page);
  /// Always false on Linux.
  static bool RequestPPTAnnotationPermission();
};

/// System commands of another platform; no effect on Linux.
class QT_UTIL_EXPORT VxQtCmdUtil {
 public:
  /// No effect on Linux.
  static void RebootAudioDriver(const char* driver);
};

/// Devices and companion applications of the client's machine.
namespace qt_util::device {

/// Always false on Linux.
QT_UTIL_EXPORT bool IsOutlookReady();

}  // namespace qt_util::device
