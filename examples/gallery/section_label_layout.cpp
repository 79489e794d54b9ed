// Lays a paragraph out with VxLabelStringUtil for a few widths and line limits and paints each
// computed line rectangle under its text, then elides two labels in place. The window is saved
// as label_layout.png.
#include <QApplication>
#include <QFontMetrics>
#include <QHBoxLayout>
#include <QLabel>
#include <QPainter>
#include <QVBoxLayout>
#include <QWidget>
#include <vector>

#include "gallery.h"
#include "qt_util/label_string_util.h"

namespace {

const char kParagraph[] =
    "Your meeting starts in five minutes. Check that your microphone and camera work, "
    "then join from this window or from the invitation link.";

struct LayoutCase {
  int width;
  int max_lines;
};

const LayoutCase kCases[] = {{260, 0}, {260, 2}, {150, 0}, {150, 3}};

// Geometry shared by every case: the first line starts indented, later lines at x 0.
constexpr int kIndent = 24;
constexpr int kSpacing = 4;
constexpr int kCellWidth = 300;
constexpr int kCellHeight = 200;
constexpr int kCaptionHeight = 22;

struct Layout {
  QStringList lines;
  std::vector<QRect> rects;
  bool elided = false;
};

Layout Compute(const LayoutCase& layout_case, const QFont& font) {
  const QFontMetrics fm(font);
  Layout layout;
  VxLabelStringUtil::CalculateMultiLineStringRects(
      QPoint(kIndent, 0), 0, kSpacing, layout_case.width, fm.height(), font, fm,
      QString::fromUtf8(kParagraph), layout.lines, layout.rects, layout.elided,
      layout_case.max_lines);
  return layout;
}

QString Caption(const LayoutCase& layout_case) {
  return layout_case.max_lines > 0
             ? QStringLiteral("width %1, at most %2 lines")
                   .arg(layout_case.width)
                   .arg(layout_case.max_lines)
             : QStringLiteral("width %1, no line limit").arg(layout_case.width);
}

// Paints every case side by side: the width limit as a dashed frame, each line's rectangle as
// a tinted box, and the line's text on top at the rectangle's baseline.
class LayoutPanel : public QWidget {
 public:
  LayoutPanel() {
    QFont font(QStringLiteral("DejaVu Sans"));
    font.setPixelSize(14);
    setFont(font);
    setFixedSize(kCellWidth * 2, kCellHeight * 2);
    setAutoFillBackground(true);
    setPalette(QPalette(Qt::white));
  }

 protected:
  void paintEvent(QPaintEvent*) override {
    QPainter painter(this);
    const QFontMetrics fm(font());
    const QColor tints[] = {QColor(90, 150, 230, 70), QColor(240, 170, 60, 80)};
    for (int i = 0; i < 4; ++i) {
      const LayoutCase& layout_case = kCases[i];
      painter.save();
      painter.translate(12 + (i % 2) * kCellWidth, 8 + (i / 2) * kCellHeight);
      painter.setPen(Qt::darkGray);
      painter.drawText(QRect(0, 0, kCellWidth, kCaptionHeight), Qt::AlignLeft | Qt::AlignVCenter,
                       Caption(layout_case));
      painter.translate(0, kCaptionHeight);

      painter.setPen(QPen(Qt::gray, 1, Qt::DashLine));
      painter.drawRect(0, 0, layout_case.width, kCellHeight - kCaptionHeight - 16);

      const Layout layout = Compute(layout_case, font());
      for (size_t k = 0; k < layout.rects.size(); ++k) {
        const QRect& rect = layout.rects[k];
        painter.fillRect(rect, tints[k % 2]);
        painter.setPen(tints[k % 2].darker(200));
        painter.drawRect(rect.adjusted(0, 0, -1, -1));
        painter.setPen(Qt::black);
        painter.drawText(rect.left(), rect.top() + fm.ascent(), layout.lines[int(k)]);
      }
      painter.restore();
    }
  }
};

// Shows a label at a fixed width, then elides its text in place.
QLabel* ElidedLabel(const QString& text, QWidget* parent) {
  auto* label = new QLabel(text, parent);
  QFont font(QStringLiteral("DejaVu Sans"));
  font.setPixelSize(14);
  label->setFont(font);
  label->setFixedWidth(230);
  label->setFrameShape(QFrame::Box);
  return label;
}

int RunLabelLayout(QApplication& app, const QString& out_dir) {
  int failures = 0;
  const QString paragraph = QString::fromUtf8(kParagraph);

  QWidget window;
  window.setWindowTitle(QStringLiteral("Label layout"));
  auto* column = new QVBoxLayout(&window);
  auto* panel = new LayoutPanel;
  column->addWidget(panel);
  auto* row = new QHBoxLayout;
  QLabel* right = ElidedLabel(paragraph, &window);
  QLabel* middle = ElidedLabel(paragraph, &window);
  row->addWidget(right);
  row->addWidget(middle);
  row->addStretch();
  column->addLayout(row);

  gallery::Say(
      "Line rectangles [x,y wxh] for an indented first line. A rectangle a few pixels wider than "
      "its limit is the width the search measured when it overshot; its line still fits.");
  for (const LayoutCase& layout_case : kCases) {
    const Layout layout = Compute(layout_case, panel->font());
    gallery::Say(QStringLiteral("%1: %2 lines%3")
                     .arg(Caption(layout_case))
                     .arg(layout.lines.size())
                     .arg(layout.elided ? QStringLiteral(", last one elided") : QString()));
    for (size_t k = 0; k < layout.rects.size(); ++k) {
      const QRect& rect = layout.rects[k];
      gallery::Say(QStringLiteral("  [%1,%2 %3x%4] \"%5\"")
                       .arg(rect.x())
                       .arg(rect.y())
                       .arg(rect.width())
                       .arg(rect.height())
                       .arg(layout.lines[int(k)]));
    }
    const bool limited = layout_case.max_lines > 0;
    if (limited && (layout.lines.size() != layout_case.max_lines || !layout.elided)) ++failures;
    if (!limited && layout.lines.join(QString()) != paragraph) ++failures;
  }

  // A hidden label is left alone: it may not have its final width yet.
  VxLabelStringUtil::UpdateElidedText(right, Qt::ElideRight);
  if (right->text() != paragraph) ++failures;

  window.show();
  app.processEvents();
  VxLabelStringUtil::UpdateElidedText(right, Qt::ElideRight);
  VxLabelStringUtil::UpdateElidedText(middle, Qt::ElideMiddle);
  for (const auto& [label, mode] :
       {std::pair<QLabel*, Qt::TextElideMode>{right, Qt::ElideRight}, {middle, Qt::ElideMiddle}}) {
    const QString expected =
        QFontMetrics(label->font()).elidedText(paragraph, mode, label->width(), 0);
    gallery::Say(QStringLiteral("Label %1 px wide, elided in place: \"%2\"")
                     .arg(label->width())
                     .arg(label->text()));
    if (label->text() != expected || label->text() == paragraph) ++failures;
  }
  app.processEvents();

  const QString shot = out_dir + "/label_layout.png";
  const bool saved = window.grab().save(shot, "PNG");
  gallery::Say(QStringLiteral("Screenshot: %1 (%2)").arg(shot, saved ? "saved" : "not saved"));
  if (!saved) ++failures;
  return failures;
}

}  // namespace

GALLERY_SECTION("label layout", RunLabelLayout);
