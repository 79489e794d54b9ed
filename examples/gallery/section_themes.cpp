// Themes and images: the example theme engine (examples/common) is injected into the theme
// helper, and one panel shows what themed widgets take from the library: theme colours, icons
// found for ratios 1, 2 and 3, an SVG at two scale steps, round and rounded avatars, tinted
// glyphs, a camera photo with and without its stored orientation, a style sheet with its dark
// twin and the accessibility keys. The engine then switches to its dark theme at run time and
// the panel rebuilds itself. Screenshots: themes_light.png and themes_dark.png.
#include <QApplication>
#include <QEvent>
#include <QFile>
#include <QFrame>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QListWidget>
#include <QPainter>
#include <QPixmap>
#include <QPushButton>
#include <QVBoxLayout>

#include "gallery.h"
#include "json_theme_manager.h"
#include "qt_util/image_utils.h"
#include "qt_util/qt_ui_custom_theme_helper.h"
#include "qt_util/ui_util.h"
#include "support/exif_jpeg.h"

namespace {

const char* const kColorTokens[] = {"color.background", "color.surface", "color.text",
                                    "color.accent",     "color.danger",  "color.success"};
const char* const kIcons[] = {":/light/icons/mic", ":/light/icons/camera", ":/light/icons/share"};
const QString kLogo = QStringLiteral(":/light/logo.svg");
const QString kPanelQss = QStringLiteral(":/qss/panel.qss");
const QString kAvatar = QStringLiteral(":/example_theme/avatar.png");

QTUICustomThemeHelper* Theme() {
  return QTUICustomThemeHelper::SharedInstance();
}

// A landscape picture with a bar along its top, stored turned a quarter to the left with the
// Exif orientation 6 (turn right to view), the way a camera held sideways records it.
QString WriteCameraPhoto(const QString& out_dir) {
  QImage upright(160, 100, QImage::Format_RGB32);
  upright.fill(QColor(120, 180, 230));
  QPainter painter(&upright);
  painter.fillRect(0, 70, 160, 30, QColor(70, 140, 60));
  painter.fillRect(0, 0, 160, 12, QColor(200, 50, 50));
  painter.setBrush(QColor(250, 210, 60));
  painter.setPen(Qt::NoPen);
  painter.drawEllipse(QPoint(120, 40), 14, 14);
  painter.end();
  const QImage stored = upright.transformed(QTransform().rotate(-90));
  const QString path = out_dir + QStringLiteral("/camera_photo.jpg");
  QFile file(path);
  if (!file.open(QIODevice::WriteOnly)) return QString();
  file.write(test_support::WithExifOrientation(test_support::JpegBytes(stored), 6));
  return path;
}

// The pixmap shown pixel for pixel, so the screenshot shows the file that was picked.
QPixmap DevicePixels(QPixmap pixmap) {
  pixmap.setDevicePixelRatio(1.0);
  return pixmap;
}

QLabel* Picture(const QPixmap& pixmap, const QString& caption) {
  auto* label = new QLabel;
  label->setPixmap(pixmap);
  label->setAlignment(Qt::AlignHCenter | Qt::AlignBottom);
  label->setToolTip(caption);
  return label;
}

// The panel; it rebuilds its content whenever the theme engine announces a theme change.
class ThemesPanel : public QWidget {
 public:
  explicit ThemesPanel(const QString& photo) : photo_(photo) {
    setWindowTitle(QStringLiteral("Themes and images"));
    new QVBoxLayout(this);
    Rebuild();
  }
  int failures() const { return failures_; }

 protected:
  bool event(QEvent* event) override {
    if (event->type() == QEvent::ThemeChange) {
      Rebuild();
      return true;
    }
    return QWidget::event(event);
  }

 private:
  void Check(bool ok, const QString& what) {
    if (ok) return;
    gallery::Say(QStringLiteral("!! unexpected: %1").arg(what));
    ++failures_;
  }

  QLabel* Text(const QString& text) {
    auto* label = new QLabel(text);
    QPalette palette = label->palette();
    palette.setColor(QPalette::WindowText, Theme()->GetThemeQColor("color.text"));
    label->setPalette(palette);
    return label;
  }

  void AddRow(QGridLayout* grid, const QString& caption, const QList<QWidget*>& widgets) {
    const int row = grid->rowCount();
    grid->addWidget(Text(caption), row, 0, Qt::AlignLeft | Qt::AlignVCenter);
    auto* cells = new QHBoxLayout;
    for (QWidget* widget : widgets) cells->addWidget(widget);
    cells->addStretch();
    grid->addLayout(cells, row, 1);
  }

  void Rebuild();
  QList<QWidget*> Colours();
  QList<QWidget*> Icons();
  QList<QWidget*> Svgs();
  QList<QWidget*> Avatars();
  QList<QWidget*> Tints();
  QList<QWidget*> Photos();
  QList<QWidget*> StyleSheets();
  QList<QWidget*> AccessibilityKeys();

  QString photo_;
  QWidget* content_ = nullptr;
  int failures_ = 0;
};

void ThemesPanel::Rebuild() {
  delete content_;
  const bool dark = Theme()->IsCurrentDarkType();
  gallery::Say(QStringLiteral("-- %1 theme (type %2) --")
                   .arg(dark ? "dark" : "light")
                   .arg(Theme()->CurrentThemeType()));
  setAutoFillBackground(true);
  QPalette palette;
  palette.setColor(QPalette::Window, Theme()->GetThemeQColor("color.background"));
  setPalette(palette);

  content_ = new QWidget(this);
  auto* grid = new QGridLayout(content_);
  grid->setHorizontalSpacing(16);
  AddRow(grid, QStringLiteral("Theme colours"), Colours());
  AddRow(grid, QStringLiteral("Icons, ratio 1 / 2 / 3"), Icons());
  AddRow(grid, QStringLiteral("SVG, steps 2 and 3"), Svgs());
  AddRow(grid, QStringLiteral("Avatars"), Avatars());
  AddRow(grid, QStringLiteral("Tinted glyphs"), Tints());
  AddRow(grid, QStringLiteral("Photo, stored / oriented"), Photos());
  AddRow(grid, QStringLiteral("Style sheet / vetoed"), StyleSheets());
  AddRow(grid, QStringLiteral("Accessibility keys"), AccessibilityKeys());
  layout()->addWidget(content_);
}

QList<QWidget*> ThemesPanel::Colours() {
  QList<QWidget*> swatches;
  QStringList printed;
  for (const char* token : kColorTokens) {
    auto* swatch = new QLabel;
    swatch->setFixedSize(28, 28);
    swatch->setFrameShape(QFrame::Box);
    swatch->setAutoFillBackground(true);
    QPalette palette;
    palette.setColor(QPalette::Window, Theme()->GetThemeQColor(token));
    swatch->setPalette(palette);
    swatches << swatch;
    printed << QStringLiteral("%1=%2").arg(
        token, QString::fromStdString(Theme()->GetThemeColorStr(token)));
  }
  gallery::Say(QStringLiteral("colours: ") + printed.join(", "));
  const uint32_t faded = Theme()->GetThemeColorWithReplaceAlpha("color.accent", "0x80");
  gallery::Say(QStringLiteral("color.accent at alpha 0x80: #%1; unknown token valid: %2")
                   .arg(faded, 8, 16, QLatin1Char('0'))
                   .arg(Theme()->CheckThemeColorTokenValid("color.unknown") ? "yes" : "no"));
  Check(faded >> 24 == 0x80, "alpha replaced");
  return swatches;
}

QList<QWidget*> ThemesPanel::Icons() {
  QList<QWidget*> pictures;
  const qreal ratios[] = {1.0, 2.0, 3.0};
  const qreal expected_steps[] = {2.0, 2.0, 3.0};
  for (const char* icon : kIcons) {
    QStringList found;
    for (int i = 0; i < 3; ++i) {
      const QPixmap pixmap = VxQtUiUtil::GetHdpiImage(ratios[i], QString::fromLatin1(icon));
      Check(!pixmap.isNull() && pixmap.devicePixelRatio() == expected_steps[i],
            QStringLiteral("%1 at ratio %2").arg(icon).arg(ratios[i]));
      found << QStringLiteral("%1px@%2").arg(pixmap.width()).arg(pixmap.devicePixelRatio());
      pictures << Picture(DevicePixels(pixmap), found.last());
    }
    gallery::Say(QStringLiteral("%1 -> %2 (ratio 1, 2, 3: %3)")
                     .arg(icon, Theme()->GetCurrentThemeResPath(icon), found.join(", ")));
  }
  return pictures;
}

QList<QWidget*> ThemesPanel::Svgs() {
  const QPixmap step2 = VxQtUiUtil::GetHdpiImageSvg(1.0, kLogo, QSize(24, 24));
  const QPixmap step3 = VxQtUiUtil::GetHdpiImageSvg(3.0, kLogo, QSize(24, 24));
  // The size is not part of the cache key: the first render of a path and step is kept.
  const QPixmap again = VxQtUiUtil::GetHdpiImageSvg(1.0, kLogo, QSize(40, 40));
  gallery::Say(QStringLiteral("%1 at 24x24: step 2 -> %2 px, step 3 -> %3 px; asked again at "
                              "40x40 with step 2 -> %4 px (the first render)")
                   .arg(Theme()->GetCurrentThemeResPath(kLogo))
                   .arg(step2.width())
                   .arg(step3.width())
                   .arg(again.width()));
  Check(step2.width() == 48 && step3.width() == 72 && again.cacheKey() == step2.cacheKey(),
        "SVG render sizes");
  return {Picture(DevicePixels(step2), "step 2"), Picture(DevicePixels(step3), "step 3")};
}

QList<QWidget*> ThemesPanel::Avatars() {
  const QPixmap avatar(kAvatar);
  Check(!avatar.isNull(), "avatar in the platform package");
  const QPixmap round = QTImageUtils::MakeRoundImage(avatar);
  const QPixmap rounded = QTImageUtils::MakeRoundRectImage(avatar, 20);
  const QPixmap radius = VxQtUiUtil::GetHasRadiusPixmap(avatar, 12);
  Check(qAlpha(round.toImage().pixel(0, 0)) == 0 && qAlpha(radius.toImage().pixel(0, 0)) == 0,
        "transparent avatar corners");
  gallery::Say(QStringLiteral("avatar %1x%2: round (radius %3), rounded 20, rounded 12")
                   .arg(avatar.width())
                   .arg(avatar.height())
                   .arg(avatar.height() / 2));
  return {Picture(avatar, "source"), Picture(round, "round"), Picture(rounded, "radius 20"),
          Picture(radius, "radius 12")};
}

QList<QWidget*> ThemesPanel::Tints() {
  QList<QWidget*> pictures;
  const char* const glyphs[] = {"disc", "square", "ring"};
  const char* const tokens[] = {"color.accent", "color.danger", "color.success"};
  for (int i = 0; i < 3; ++i) {
    const QPixmap glyph(QStringLiteral(":/example_theme/glyph-%1.png").arg(glyphs[i]));
    const QColor color = Theme()->GetThemeQColor(tokens[i]);
    const QPixmap tinted = QTImageUtils::MakeTintImage(glyph, color);
    const QRgb centre = tinted.toImage().pixel(16, glyph.height() / 2 - (i == 2 ? 10 : 0));
    Check(QColor::fromRgba(centre) == color, QStringLiteral("%1 tinted").arg(glyphs[i]));
    pictures << Picture(tinted, tokens[i]);
  }
  gallery::Say(QStringLiteral("glyphs tinted with color.accent, color.danger, color.success"));
  return pictures;
}

QList<QWidget*> ThemesPanel::Photos() {
  const QPixmap stored(photo_);
  const QPixmap oriented = QTImageUtils::AdjustImageTransformation(photo_);
  gallery::Say(QStringLiteral("%1: stored %2x%3, orientation %4, oriented %5x%6")
                   .arg(photo_)
                   .arg(stored.width())
                   .arg(stored.height())
                   .arg(QTImageUtils::ImageTransformation(photo_))
                   .arg(oriented.width())
                   .arg(oriented.height()));
  Check(oriented.size() == stored.size().transposed() && oriented.width() == 160,
        "photo turned upright");
  return {Picture(stored, "stored"), Picture(oriented, "oriented")};
}

QList<QWidget*> ThemesPanel::StyleSheets() {
  const QString qss_path = Theme()->GenCurrentThemeQssPath(kPanelQss);
  auto make_frame = [this](const QString& title) {
    auto* frame = new QFrame;
    frame->setObjectName(QStringLiteral("stylePanel"));
    auto* row = new QHBoxLayout(frame);
    row->addWidget(Text(title));
    row->addWidget(new QPushButton(QStringLiteral("Join")));
    return frame;
  };
  QFrame* styled = make_frame(QStringLiteral("Styled"));
  VxQtUiUtil::SetupQss(styled, qss_path, true);
  QFrame* locked = make_frame(QStringLiteral("Vetoed"));
  locked->setProperty("theme-locked", true);
  VxQtUiUtil::SetupQss(locked, qss_path, true);
  gallery::Say(QStringLiteral("style sheet %1 (%2 characters); styled panel widget-config=%3, "
                              "vetoed panel has a sheet: %4")
                   .arg(qss_path)
                   .arg(VxQtUiUtil::GetQss(qss_path).size())
                   .arg(styled->property("widget-config").toString())
                   .arg(locked->styleSheet().isEmpty() ? "no" : "yes"));
  Check(qss_path.endsWith("_dark") == Theme()->IsCurrentDarkType(), "dark twin chosen");
  Check(!styled->styleSheet().isEmpty() && locked->styleSheet().isEmpty(), "veto honoured");
  return {styled, locked};
}

QList<QWidget*> ThemesPanel::AccessibilityKeys() {
  auto* join = new QPushButton(QStringLiteral("Join"));
  VxQtUiUtil::SetAccessibleKey(join, QStringLiteral("joinButton"));
  auto* leave = new QPushButton(QStringLiteral("Leave"));
  leave->setObjectName(QStringLiteral("leaveButton"));
  VxQtUiUtil::SetAccessibleKey(leave, QString());
  auto* list = new QListWidget;
  list->setFixedSize(140, 44);
  for (const char* icon : kIcons) {
    const QString key = VxQtUiUtil::AccessibleKeyOfRes(QString::fromLatin1(icon));
    auto* item = new QListWidgetItem(key, list);
    VxQtUiUtil::SetAccessibleKey(item, key);
  }
  gallery::Say(QStringLiteral("keys: join %1 / %2, leave %3 / %4, first row %5 / %6")
                   .arg(join->accessibleName(), join->accessibleDescription(),
                        leave->accessibleName(), leave->accessibleDescription(),
                        list->item(0)->data(Qt::UserRole).toString(),
                        list->item(0)->data(Qt::AccessibleTextRole).toString()));
  Check(leave->accessibleName() == "atg__leaveButton__name" &&
            list->item(0)->data(Qt::AccessibleTextRole).toString() == "atg__mic",
        "accessibility keys");
  return {join, leave, list};
}

bool SaveShot(QWidget& panel, const QString& path) {
  const bool saved = panel.grab().save(path, "PNG");
  gallery::Say(QStringLiteral("Screenshot: %1 (%2)").arg(path, saved ? "saved" : "not saved"));
  return saved;
}

int RunThemes(QApplication& app, const QString& out_dir) {
  example_theme::LoadResources();
  QString error;
  auto manager = example_theme::JsonThemeManager::FromFile(":/example_theme/theme.json", &error);
  if (!manager) {
    gallery::Say(QStringLiteral("!! theme engine: %1").arg(error));
    return 1;
  }
  example_theme::JsonThemeManager* engine = manager.get();
  Theme()->SetThemeManager(std::move(manager));

  const QString photo = WriteCameraPhoto(out_dir);
  int failures = photo.isEmpty() ? 1 : 0;
  {
    ThemesPanel panel(photo);
    Theme()->InstallAppThemeEventFilter(&panel);
    panel.show();
    app.processEvents();
    failures += SaveShot(panel, out_dir + "/themes_light.png") ? 0 : 1;

    engine->SetTheme(QStringLiteral("dark"));  // the panel rebuilds on the ThemeChange it gets
    panel.adjustSize();
    app.processEvents();
    failures += SaveShot(panel, out_dir + "/themes_dark.png") ? 0 : 1;
    failures += panel.failures();
  }
  // Later sections start from the library's fallbacks again.
  Theme()->SetThemeManager(nullptr);
  return failures;
}

}  // namespace

GALLERY_SECTION("themes and images", RunThemes);
