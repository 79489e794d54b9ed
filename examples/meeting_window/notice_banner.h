#pragma once

// A multi-line notice over the chat: laid out with VxLabelStringUtil's line rectangles and a
// line limit, the last line elided when the text needs more.

#include <QColor>
#include <QStringList>
#include <QWidget>
#include <vector>

namespace meeting {

/// Paints its text in at most MaxLines() lines after a leading marker; the height follows the
/// number of lines.
class NoticeBanner : public QWidget {
  Q_OBJECT

 public:
  explicit NoticeBanner(QWidget* parent = nullptr);

  void SetText(const QString& text);
  QString Text() const { return text_; }
  void SetColors(const QColor& background, const QColor& text);

  static constexpr int MaxLines() { return 2; }

  // The last layout, in the banner's own coordinates.
  const QStringList& Lines() const { return lines_; }
  const std::vector<QRect>& LineRects() const { return rects_; }
  bool Elided() const { return elided_; }
  /// Where lines must end: the right edge of the text area.
  int TextRight() const;
  /// Where the first line and the later ones start, and the top of line `index`.
  static int FirstLineLeft();
  static int LineLeft();
  static int LineTop(int index, int line_height);

  QSize sizeHint() const override;

 protected:
  void paintEvent(QPaintEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;

 private:
  void Layout();

  QString text_;
  QStringList lines_;
  std::vector<QRect> rects_;
  bool elided_ = false;
  QColor background_{255, 244, 206};
  QColor text_color_{Qt::black};
};

}  // namespace meeting
