#pragma once

// The participants list: a QListWidget whose rows are item widgets (avatar, name elided in
// place, microphone state, a mute button), exposed to assistive technology through the list
// accessibility factory.

#include <QLabel>
#include <QListWidget>
#include <QPixmap>

class QPushButton;

namespace meeting {

/// A label showing a name elided at its right end to the label's current width; the full
/// name is kept so that a wider label shows more again.
class ElidedNameLabel : public QLabel {
  Q_OBJECT

 public:
  explicit ElidedNameLabel(const QString& name, QWidget* parent = nullptr);
  QString FullText() const { return full_text_; }

 protected:
  void resizeEvent(QResizeEvent* event) override;
  void showEvent(QShowEvent* event) override;

 private:
  void Elide();

  QString full_text_;
};

/// One row: avatar, name, microphone state and a mute button. The row and its button carry
/// accessibility keys from their object names ("participant_<id>", "participant_<id>_mute").
class ParticipantRow : public QWidget {
  Q_OBJECT

 public:
  ParticipantRow(const QString& id, const QString& name, QWidget* parent = nullptr);

  QString Id() const { return id_; }
  ElidedNameLabel* NameLabel() const { return name_; }
  QLabel* Avatar() const { return avatar_; }
  QPushButton* MuteButton() const { return mute_; }
  bool Muted() const { return muted_; }
  void SetMuted(bool muted);
  /// Shows `pixmap` as a round avatar, scaled to fill the avatar's square.
  void SetAvatar(const QPixmap& pixmap);

 signals:
  void MuteRequested(const QString& id, bool muted);

 private:
  QString id_;
  QLabel* avatar_;
  ElidedNameLabel* name_;
  QLabel* mic_;
  QPushButton* mute_;
  bool muted_ = false;
};

/// The list of participants, one ParticipantRow per item.
class ParticipantList : public QListWidget {
  Q_OBJECT

 public:
  explicit ParticipantList(QWidget* parent = nullptr);

  /// Adds a row; `id` names its widgets (rows and buttons are found by it).
  ParticipantRow* AddParticipant(const QString& id, const QString& name);
  ParticipantRow* Row(const QString& id) const;
  QList<ParticipantRow*> Rows() const;

  /// The avatar of a participant: the initials on a colour of the name, at `size` pixels.
  static QPixmap InitialsPixmap(const QString& name, int size);

 signals:
  void MuteRequested(const QString& id, bool muted);
};

}  // namespace meeting
