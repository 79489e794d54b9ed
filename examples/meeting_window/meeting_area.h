#pragma once

// The meeting area: a grid of video tiles with a toolbar floating over it, and the banner shown
// while the local user shares the screen.

#include <QColor>
#include <QPixmap>
#include <QPointer>
#include <QRect>
#include <QWidget>
#include <memory>

class QGridLayout;
class QTPaintRectHelper;
class QHBoxLayout;
class QLabel;
class QPushButton;

namespace meeting {

/// One participant's video. A real client renders video into a native surface under the tile
/// and must know where the tile is on screen and whether it may paint at all: a paint-rect
/// helper bound to the tile tells it. Here the tile paints a placeholder, and the coloured frame
/// that marks where the renderer may draw appears only while the helper says visible.
class VideoTile : public QWidget {
  Q_OBJECT

 public:
  /// `parent` is required: the helper maps the tile to the screen through it.
  VideoTile(const QString& id, const QString& name, QWidget* parent);
  ~VideoTile() override;

  QString Id() const { return id_; }
  QString Name() const { return name_; }
  void SetMuted(bool muted);
  bool Muted() const { return muted_; }
  void SetSpotlight(bool on);
  bool Spotlight() const { return spotlight_; }
  /// The frame's colour, and its colour while the tile has the spotlight.
  void SetFrameColors(const QColor& normal, const QColor& spotlight);
  QColor FrameColor() const { return frame_color_; }

  /// What the helper last reported: may the renderer paint, and where (global coordinates).
  bool PaintVisible() const { return paint_visible_; }
  QRect PaintRect() const { return paint_rect_; }
  /// How many times the renderer was told something.
  int PaintReports() const { return paint_reports_; }

 signals:
  /// A click on the surface, in the coordinates of the tile's top-level window: what a native
  /// video surface would report.
  void SurfaceClicked(VideoTile* tile, const QPoint& window_point);

 protected:
  void paintEvent(QPaintEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;

 private:
  void SetPaintState(bool visible, const QRect& global_rect);

  // Destroyed before the QWidget part, so that it never reports about a dying tile.
  std::unique_ptr<QTPaintRectHelper> paint_rect_helper_;
  QString id_;
  QString name_;
  QColor frame_color_{QColor(46, 160, 67)};
  QColor spotlight_color_{QColor(43, 108, 212)};
  bool muted_ = false;
  bool spotlight_ = false;
  bool paint_visible_ = false;
  QRect paint_rect_;
  int paint_reports_ = 0;
};

/// The toolbar over the meeting area.
class MeetingToolbar : public QWidget {
  Q_OBJECT

 public:
  explicit MeetingToolbar(QWidget* parent = nullptr);

  QPushButton* MuteButton() const { return mute_; }
  QPushButton* ShareButton() const { return share_; }
  QPushButton* InfoButton() const { return info_; }
  QPushButton* LeaveButton() const { return leave_; }
  void SetMuted(bool muted);
  void SetSharing(bool sharing);
  /// Icons of the mute and share buttons, at the device pixel ratio they carry.
  void SetIcons(const QPixmap& mute, const QPixmap& share);
  QPixmap MuteIcon() const { return mute_icon_; }

 private:
  QPixmap mute_icon_;
  QPushButton* mute_;
  QPushButton* share_;
  QPushButton* info_;
  QPushButton* leave_;
};

/// The grid of tiles, the toolbar over its bottom edge and the sharing banner over its top.
class MeetingArea : public QWidget {
  Q_OBJECT

 public:
  explicit MeetingArea(QWidget* parent = nullptr);

  VideoTile* AddTile(const QString& id, const QString& name);
  VideoTile* Tile(const QString& id) const;
  QList<VideoTile*> Tiles() const { return tiles_; }
  MeetingToolbar* Toolbar() const { return toolbar_; }
  /// Frame colours of every tile, present and future.
  void SetFrameColors(const QColor& normal, const QColor& spotlight);

  /// Shows the sharing banner (made on demand; its Stop button emits StopShareRequested).
  QWidget* ShowShareBanner();
  /// The latest banner while it exists (its deletion is deferred, so it may outlive the end of
  /// sharing).
  QWidget* ShareBanner() const { return share_banner_; }

  /// Handles a click that a video surface reported: a click on a Qt panel registered over the
  /// meeting area is left to that panel; any other click toggles the tile's spotlight (the
  /// other tiles are hidden while one has it). Returns whether the tile acted on it.
  bool HandleSurfaceClick(VideoTile* tile, const QPoint& window_point);
  /// Clicks left to the Qt panels over the area, and clicks that a tile acted on.
  int ClicksLeftToPanels() const { return clicks_left_to_panels_; }
  int ClicksActedOn() const { return clicks_acted_on_; }

 signals:
  void StopShareRequested();

 protected:
  void resizeEvent(QResizeEvent* event) override;

 private:
  void PlaceOverlays();

  QGridLayout* grid_;
  QList<VideoTile*> tiles_;
  MeetingToolbar* toolbar_;
  QPointer<QWidget> share_banner_;
  QColor frame_color_{QColor(46, 160, 67)};
  QColor spotlight_color_{QColor(43, 108, 212)};
  int clicks_left_to_panels_ = 0;
  int clicks_acted_on_ = 0;
};

}  // namespace meeting
