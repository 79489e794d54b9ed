// HiDPI images, SVG rendering, rounded pixmaps and resource packages of VxQtUiUtil.
#include <QFileInfo>
#include <QMessageLogger>
#include <QPainter>
#include <QPainterPath>
#include <QPixmap>
#include <QPixmapCache>
#include <QResource>
#include <QSvgRenderer>
#include <QWidget>

#include "qt_util/qt_ui_custom_theme_helper.h"
#include "qt_util/ui_util_image.h"
#include "qt_util/ui_util_p.h"
#include "talvex_common/utils/context.h"
#include "util/file/file_util.h"

namespace VxQtUiUtil {
namespace {

// The Qt messages of the lookups carry these as their function, the client's log tools key on
// them.
constexpr char kGetHdpiImageSignature[] =
    "QPixmap VxQtUiUtil::GetHdpiImage(qreal, const QString &)";
constexpr char kGetHdpiImageSvgSignature[] =
    "QPixmap VxQtUiUtil::GetHdpiImageSvg(qreal, const QString &, const QSize &)";

// qBound(2, qCeil(scale), 3), written so that no ratio converts out of int's range: a NaN or
// huge ratio from a broken screen would make qCeil undefined. Gives the same step for every
// ratio qCeil handles.
int ScaleStep(double scale) {
  return scale > 2 ? 3 : 2;
}

// "@%1x" for the two steps a name is ever tried with; constant text keeps the cached lookup
// free of formatting.
QLatin1String ScaleSuffix(int step) {
  return step >= 3 ? QLatin1String("@3x") : QLatin1String("@2x");
}

// The raster cache key, built in one buffer per thread that every lookup reuses, so that a
// cache hit allocates nothing. Valid until the next call on the same thread.
const QString& RasterKey(const QString& themed, int step) {
  thread_local QString key;
  key.resize(0);  // keeps the buffer unless the cache still shares it
  key.append(themed).append(ScaleSuffix(step));
  return key;
}

QString ThemedPath(const QString& path) {
  return QTUICustomThemeHelper::SharedInstance()->GetCurrentThemeResPath(path);
}

// Callers must pass a widget; a null one gets the smallest step rather than a crash.
double WindowRatio(QWidget* widget) {
  return widget ? widget->window()->devicePixelRatioF() : 1.0;
}

}  // namespace

QString GetHdpiImagePath(double scale, const QString& path, const QString& suffix) {
  const QString themed = ThemedPath(path);
  // The extension is cut by its length, not checked: callers pass the one the path ends with.
  const QString stem = themed.left(themed.length() - suffix.length());
  for (int step = ScaleStep(scale); step >= 2; --step) {
    const QString candidate = stem + ScaleSuffix(step) + suffix;
    if (QFileInfo(candidate).isFile()) return candidate;
  }
  return themed;
}

QString GetHdpiImagePath(QWidget* widget, const QString& path, const QString& suffix) {
  return GetHdpiImagePath(WindowRatio(widget), path, suffix);
}

QPixmap GetHdpiImage(double scale, const QString& name) {
  const QString themed = ThemedPath(name);
  int step = ScaleStep(scale);
  // The key keeps the step asked for, whichever file is found below.
  const QString& key = RasterKey(themed, step);
  QPixmap pixmap;
  if (QPixmapCache::find(key, &pixmap)) return pixmap;

  QString found = themed;
  for (; step >= 2; --step) {
    QString candidate = themed + ScaleSuffix(step);
    if (QFileInfo(candidate).isFile()) {
      found = std::move(candidate);
      break;
    }
  }
  // Without any variant the loop leaves step at 1: the plain file is a 1x picture.
  pixmap = QPixmap(found);
  if (pixmap.isNull()) {
    QTU_UI_UTIL_QT_MESSAGE(kGetHdpiImageSignature)
        .info("VxFind Res Invalid~(%s)", found.toLocal8Bit().constData());
    return pixmap;
  }
  pixmap.setDevicePixelRatio(step);
  QPixmapCache::insert(key, pixmap);
  return pixmap;
}

QPixmap GetHdpiImage(QWidget* widget, const QString& name) {
  return GetHdpiImage(WindowRatio(widget), name);
}

QPixmap GetHdpiImageSvg(double scale, const QString& name, const QSize& size) {
  const QString themed = ThemedPath(name);
  // The file test and the renderer come before the cache, so a removed or broken file is
  // reported even when a render of it is cached.
  if (!QFileInfo(themed).isFile()) {
    QTU_UI_UTIL_QT_MESSAGE(kGetHdpiImageSvgSignature)
        .info("Invalid image resource ~(%s)", themed.toLocal8Bit().constData());
    return QPixmap();
  }
  QSvgRenderer renderer(themed);
  if (!renderer.isValid() || size == QSize(-1, -1)) {
    // The themed path goes through the theme mapping once more in GetHdpiImage: clients rely on
    // a mapping that is applied twice.
    return GetHdpiImage(scale, themed);
  }

  const qreal step = ScaleStep(scale);
  // The size is left out of the key on purpose: the first size rendered for a path and step is
  // the one every later call gets. One arg call fills both places, so a "%1" or "%2" in the path
  // stays text instead of taking the step and another file's key.
  const QString key = QStringLiteral("svg_%1_%2").arg(themed, QString::number(step));
  QPixmap pixmap;
  if (QPixmapCache::find(key, &pixmap)) return pixmap;

  const QSize target = size * step;
  if (target.isEmpty()) return QPixmap();  // nothing to paint on; not cached
  pixmap = QPixmap(target);
  pixmap.fill(Qt::transparent);
  QPainter painter;
  painter.begin(&pixmap);
  renderer.render(&painter);
  painter.end();
  pixmap.setDevicePixelRatio(step);
  QPixmapCache::insert(key, pixmap);
  return pixmap;
}

QPixmap GetHdpiImageSvg(QWidget* widget, const QString& name, const QSize& size) {
  return GetHdpiImageSvg(WindowRatio(widget), name, size);
}

bool IsImageSvgType(const QString& path) {
  return QSvgRenderer(path).isValid();
}

QPixmap GetHasRadiusPixmap(const QPixmap& pixmap, int radius) {
  if (pixmap.isNull()) return pixmap;
  const int w = pixmap.width();
  const int h = pixmap.height();
  const QPixmap scaled =
      pixmap.scaled(w, h == 0 ? w : h, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);

  // Painted in device pixels at ratio 1, the ratio set afterwards: the radius is logical, so it
  // is scaled by the ratio here, and a ratio-1 pixmap gets exactly the pixels it always got.
  const qreal ratio = pixmap.devicePixelRatio();
  const qreal device_radius = radius * ratio;
  QPixmap result(w, h);
  result.fill(Qt::transparent);
  QPainter painter(&result);
  painter.setRenderHints(QPainter::Antialiasing | QPainter::SmoothPixmapTransform, true);
  QPainterPath clip;
  clip.addRoundedRect(QRectF(0, 0, w, h), device_radius, device_radius, Qt::AbsoluteSize);
  painter.setClipPath(clip, Qt::ReplaceClip);
  painter.drawPixmap(QRect(0, 0, w, h), scaled);
  painter.end();
  result.setDevicePixelRatio(ratio);
  return result;
}

void LoadQtModuleResource(const std::string& dir, const std::string& module) {
  const std::string asset_dir = util::file::MakeFilePath(dir, "Asset");
  // The main package is expected: its absence is a warning. The other two are optional.
  struct Package {
    const char* suffix;
    int missing_level;
  };
  const Package packages[] = {{".rcc", base::log::kLevelWarning},
                              {"_extension.rcc", base::log::kLevelInfo},
                              {"_linux.rcc", base::log::kLevelInfo}};
  for (const Package& package : packages) {
    const std::string path = util::file::MakeFilePath(asset_dir, module + package.suffix);
    if (util::file::IsFileExist(path)) {
      QResource::registerResource(QString::fromUtf8(path.c_str()), QString());
    } else {
      const int level = package.missing_level;
      QTU_UI_UTIL_LOG(level) << path << " not exist.";
    }
  }
}

QString GetAppName() {
  return QString::fromUtf8(talvex_common::utils::context::GetAppName().c_str());
}

}  // namespace VxQtUiUtil
