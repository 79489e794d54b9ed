#pragma once

/// @file
/// Window and resource utilities of the client: HiDPI images and resource packages, style
/// sheets and accessibility keys, screen geometry, the home window, and window behaviour.
///
/// The interface is shared with the client's other desktop platforms. Operations that only
/// another platform's window system can carry out stay here and do nothing, or return a fixed
/// value, on Linux; their documentation says which value. Everything runs on the GUI thread.
///
/// This header includes one header per topic; a unit that needs one topic may include just
/// that one:
///
/// | Header | Topic |
/// |---|---|
/// | qt_util/ui_util_image.h | HiDPI images, SVG images, rounded pixmaps, resource packages |
/// | qt_util/ui_util_style.h | style sheets and accessibility keys |
/// | qt_util/ui_util_screen.h | screens of widgets and points, placing windows, device pixels |
/// | qt_util/ui_util_home.h | the home window and the companion application's positions |
/// | qt_util/ui_util_window.h | showing, pinning and refreshing windows, clipboard, URLs |
/// | qt_util/ui_util_platform_noops.h | other platforms' operations, which do nothing on Linux |
///
/// Types that only appear behind a pointer or in a signature are forward-declared: include
/// \<QPixmap>, \<QLocale>, "base/variant/variant.h" or "qt_util/scheme_controller.h" where a
/// call needs them complete.

#include "qt_util/ui_util_home.h"
#include "qt_util/ui_util_image.h"
#include "qt_util/ui_util_platform_noops.h"
#include "qt_util/ui_util_screen.h"
#include "qt_util/ui_util_style.h"
#include "qt_util/ui_util_window.h"
