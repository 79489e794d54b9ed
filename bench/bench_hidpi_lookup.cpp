// The HiDPI image lookups of VxQtUiUtil beside what they must cost at least:
//   - a cached GetHdpiImage hit (theme manager set) beside a bare QPixmapCache::find with a
//     prebuilt key;
//   - a first, uncached GetHdpiImage beside QPixmap(path) of the file it finds;
//   - a cached GetHdpiImageSvg hit beside the steps it must take anyway (the file test, a
//     QSvgRenderer on the file, the cache find, done by hand) and beside rendering afresh.
// The SVG lookup tests the file and opens the renderer before it asks the cache, so its cached
// hit costs a parse of the file: that order is kept and measured here.
#include <benchmark/benchmark.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QPainter>
#include <QPixmap>
#include <QPixmapCache>
#include <QSvgRenderer>
#include <QTemporaryDir>
#include <memory>

#include "bench_support.h"
#include "qt_util/qt_ui_custom_theme_helper.h"
#include "qt_util/ui_util.h"
#include "support/stub_theme_manager.h"

namespace {

// A theme engine doing what a real one does for a path: in the dark theme a path under the
// light tree is mapped to the dark tree (one prefix test and one new string); in the light
// theme the path comes back as it is.
class PrefixThemeManager : public test_support::StubThemeManager {
 public:
  PrefixThemeManager(QString from, QString to, bool dark)
      : from_(std::move(from)), to_(std::move(to)), dark_(dark) {}
  QString GetCurrentThemeResPath(const QString& path) override {
    if (!dark_ || !path.startsWith(from_)) return path;
    return to_ + path.mid(from_.size());
  }
  bool IsCurrentDarkType() override { return dark_; }

 private:
  QString from_;
  QString to_;
  bool dark_;
};

// Light and dark copies of the test icons and logo, the raster ones under the extensionless
// names the lookup takes.
struct Fixture {
  QTemporaryDir dir;
  QString light;  // <dir>/light/
  QString dark;   // <dir>/dark/
};

Fixture& Files() {
  static Fixture fixture;
  return fixture;
}

bool Prepare() {
  Fixture& files = Files();
  if (!files.dir.isValid()) return false;
  files.light = files.dir.filePath("light/");
  files.dark = files.dir.filePath("dark/");
  const QString data = QStringLiteral(QT_UTIL_BENCH_DATA_DIR "/theme/");
  bool ok = QDir().mkpath(files.light) && QDir().mkpath(files.dark);
  for (const char* theme : {"light/", "dark/"}) {
    const QString to = files.dir.filePath(theme);
    ok = ok && QFile::copy(data + theme + "icon@2x.png", to + "icon@2x") &&
         QFile::copy(data + theme + "icon@3x.png", to + "icon@3x") &&
         QFile::copy(data + theme + "logo.svg", to + "logo.svg");
  }
  return ok;
}

void UseTheme(bool dark) {
  QTUICustomThemeHelper::SharedInstance()->SetThemeManager(
      std::make_unique<PrefixThemeManager>(Files().light, Files().dark, dark));
}

QString ThemeName(bool dark) {
  return dark ? QStringLiteral("dark") : QStringLiteral("light");
}

// ---------------------------------------------------------------------------------------------
// Raster, cached
// ---------------------------------------------------------------------------------------------

void BM_Baseline_PixmapCacheFind(benchmark::State& state) {
  QPixmapCache::clear();
  const QString key = Files().light + "icon@2x";
  QPixmapCache::insert(key, QPixmap(Files().light + "icon@2x"));
  bench::LoopTimer timer(state);
  for (auto _ : state) {
    QPixmap pixmap;
    benchmark::DoNotOptimize(QPixmapCache::find(key, &pixmap));
  }
  timer.RecordBaseline("cache_find");
}

// Argument: 0 light theme (the path maps to itself), 1 dark theme (mapped to the dark tree).
void BM_GetHdpiImage_Cached(benchmark::State& state) {
  const bool dark = state.range(0) != 0;
  UseTheme(dark);
  QPixmapCache::clear();
  const QString name = Files().light + "icon";
  if (VxQtUiUtil::GetHdpiImage(1.0, name).isNull()) state.SkipWithError("icon not found");
  bench::LoopTimer timer(state);
  for (auto _ : state) benchmark::DoNotOptimize(VxQtUiUtil::GetHdpiImage(1.0, name));
  timer.ReportRatio("cache_find");
  state.SetLabel(ThemeName(dark).toStdString() + " theme");
}

// ---------------------------------------------------------------------------------------------
// Raster, first lookup: every iteration finds the cache without the entry
// ---------------------------------------------------------------------------------------------

void BM_Baseline_LoadPixmap(benchmark::State& state) {
  QPixmapCache::clear();
  const QString path = Files().light + "icon@2x";
  const QString key = path;
  bench::LoopTimer timer(state);
  for (auto _ : state) {
    QPixmapCache::remove(key);  // as in the lookup's loop, so both pay for it
    benchmark::DoNotOptimize(QPixmap(path));
  }
  timer.RecordBaseline("load_file");
}

void BM_GetHdpiImage_First(benchmark::State& state) {
  const bool dark = state.range(0) != 0;
  UseTheme(dark);
  QPixmapCache::clear();
  const QString name = Files().light + "icon";
  const QString key = (dark ? Files().dark : Files().light) + "icon@2x";
  bench::LoopTimer timer(state);
  for (auto _ : state) {
    QPixmapCache::remove(key);
    benchmark::DoNotOptimize(VxQtUiUtil::GetHdpiImage(1.0, name));
  }
  timer.ReportRatio("load_file");
  state.SetLabel(ThemeName(dark).toStdString() + " theme");
}

// ---------------------------------------------------------------------------------------------
// SVG
// ---------------------------------------------------------------------------------------------

const QSize kSvgSize(24, 24);

// What every call must do before its cache find, by hand: test the file, open the renderer,
// find the cached render.
void BM_Baseline_SvgRequiredSteps(benchmark::State& state) {
  QPixmapCache::clear();
  const QString path = Files().light + "logo.svg";
  const QString key = QStringLiteral("svg_%1_2").arg(path);
  QPixmapCache::insert(key, QPixmap(kSvgSize * 2));
  bench::LoopTimer timer(state);
  for (auto _ : state) {
    benchmark::DoNotOptimize(QFileInfo(path).isFile());
    QSvgRenderer renderer(path);
    benchmark::DoNotOptimize(renderer.isValid());
    QPixmap pixmap;
    benchmark::DoNotOptimize(QPixmapCache::find(key, &pixmap));
  }
  timer.RecordBaseline("svg_steps");
}

void BM_Baseline_SvgRenderAfresh(benchmark::State& state) {
  const QString path = Files().light + "logo.svg";
  bench::LoopTimer timer(state);
  for (auto _ : state) {
    QSvgRenderer renderer(path);
    QPixmap pixmap(kSvgSize * 2);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    renderer.render(&painter);
    painter.end();
    pixmap.setDevicePixelRatio(2);
    benchmark::DoNotOptimize(pixmap);
  }
  timer.RecordBaseline("svg_render");
}

void BM_GetHdpiImageSvg_Cached(benchmark::State& state) {
  UseTheme(/*dark=*/false);
  QPixmapCache::clear();
  const QString path = Files().light + "logo.svg";
  if (VxQtUiUtil::GetHdpiImageSvg(1.0, path, kSvgSize).isNull()) state.SkipWithError("no svg");
  bench::LoopTimer timer(state);
  for (auto _ : state) benchmark::DoNotOptimize(VxQtUiUtil::GetHdpiImageSvg(1.0, path, kSvgSize));
  timer.ReportRatio("svg_steps");
  timer.ReportRatio("svg_render");
}

// Baselines first: each subject's ratio needs its baseline measured before it.
BENCHMARK(BM_Baseline_PixmapCacheFind);
BENCHMARK(BM_GetHdpiImage_Cached)->Arg(0)->Arg(1);
BENCHMARK(BM_Baseline_LoadPixmap)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_GetHdpiImage_First)->Arg(0)->Arg(1)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_Baseline_SvgRequiredSteps)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_Baseline_SvgRenderAfresh)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_GetHdpiImageSvg_Cached)->Unit(benchmark::kMicrosecond);

}  // namespace

int main(int argc, char** argv) {
  return bench::RunWithApplication(argc, argv, &Prepare);
}
