// Converts a meeting-settings document from the framework's Variant to QVariant, shows it in a
// QTreeWidget (saved as variant.png), edits two values on the Qt side and converts the result
// back, printing both documents; then shows a refused conversion and its log line.
#include <QApplication>
#include <QHeaderView>
#include <QTreeWidget>
#include <string>

#include "base/common/include/logger.h"
#include "base/log/log.h"
#include "base/variant/variant.h"
#include "gallery.h"
#include "qt_util/qt_variant_utils.h"

namespace {

using base::variant::Variant;

Variant Participant(const char* name, const char* role, bool muted) {
  Variant participant(base::variant::kMap);
  participant.Set("name", Variant(name));
  participant.Set("role", Variant(role));
  participant.Set("muted", Variant(muted));
  return participant;
}

Variant MeetingSettings() {
  Variant meeting(base::variant::kMap);
  meeting.Set("topic", Variant("Réunion d'équipe — план на Q3"));
  meeting.Set("id", Variant(84213377));
  meeting.Set("start", Variant(1795428000.0, false));
  meeting.Set("duration_minutes", Variant(45));
  meeting.Set("recurring", Variant(false));

  Variant participants(base::variant::kArray);
  participants.Add(Participant("Zoë Ångström", "host", false));
  participants.Add(Participant("Łukasz Nowak", "co-host", true));
  participants.Add(Participant("Ελένη Παππά", "attendee", true));

  Variant audio(base::variant::kMap);
  audio.Set("echo_cancellation", Variant(true));
  audio.Set("volume", Variant(0.8, false));

  Variant languages(base::variant::kArray);
  for (const char* language : {"fr", "ja", "pl"}) languages.Add(Variant(language));

  Variant settings(base::variant::kMap);
  settings.Set("meeting", meeting);
  settings.Set("participants", participants);
  settings.Set("audio", audio);
  settings.Set("caption_languages", languages);
  return settings;
}

QString Indent(int depth) {
  return QString(depth * 2, QLatin1Char(' '));
}

// The document as indented lines, one scalar or container per line.
void Print(const Variant& value, const QString& label, int depth) {
  const QString prefix =
      Indent(depth) + (label.isEmpty() ? QString() : label + QStringLiteral(": "));
  switch (value.GetType()) {
    case base::variant::kArray:
      gallery::Say(prefix + QStringLiteral("["));
      for (const Variant& element : value.AsArray()) Print(element, QString(), depth + 1);
      gallery::Say(Indent(depth) + QStringLiteral("]"));
      return;
    case base::variant::kMap:
      gallery::Say(prefix + QStringLiteral("{"));
      for (const auto& [key, element] : value.AsMap()) {
        Print(element, QString::fromUtf8(key.c_str()), depth + 1);
      }
      gallery::Say(Indent(depth) + QStringLiteral("}"));
      return;
    case base::variant::kString:
      gallery::Say(prefix + QStringLiteral("\"%1\"").arg(QString::fromUtf8(value.AsCStr())));
      return;
    case base::variant::kBoolean:
      gallery::Say(prefix + (value.AsBoolean() ? QStringLiteral("true") : QStringLiteral("false")));
      return;
    case base::variant::kUint64:
      gallery::Say(prefix + QString::number(value.AsUint64()));
      return;
    case base::variant::kDouble:
      gallery::Say(prefix + QString::number(value.AsDouble(), 'g', 12));
      return;
    default:
      gallery::Say(prefix + QStringLiteral("null"));
      return;
  }
}

QTreeWidgetItem* AddItem(QTreeWidgetItem* parent, const QString& key, const QVariant& value) {
  auto* item = new QTreeWidgetItem(parent);
  item->setText(0, key);
  item->setText(1, QString::fromLatin1(value.typeName()));
  if (value.userType() == QMetaType::QVariantList) {
    const QVariantList list = value.toList();
    for (int i = 0; i < list.size(); ++i) AddItem(item, QStringLiteral("[%1]").arg(i), list[i]);
  } else if (value.userType() == QMetaType::QVariantMap) {
    const QVariantMap map = value.toMap();
    for (auto it = map.cbegin(); it != map.cend(); ++it) AddItem(item, it.key(), it.value());
  } else {
    item->setText(2, value.toString());
  }
  return item;
}

// Sets `path` (keys, then the final key) inside nested QVariantMaps.
void SetPath(QVariant& root, const QStringList& path, const QVariant& value) {
  if (path.size() == 1) {
    QVariantMap map = root.toMap();
    map.insert(path.front(), value);
    root = map;
    return;
  }
  QVariantMap map = root.toMap();
  QVariant child = map.value(path.front());
  SetPath(child, path.mid(1), value);
  map.insert(path.front(), child);
  root = map;
}

int RunVariant(QApplication& app, const QString& out_dir) {
  int failures = 0;
  const Variant settings = MeetingSettings();
  gallery::Say("Meeting settings as a framework Variant:");
  Print(settings, QString(), 1);

  QVariant qt_settings;
  QVariantUtil::VariantToQVariant(&settings, &qt_settings);
  gallery::Say(QStringLiteral("VariantToQVariant gives a %1 with %2 keys; integers arrive as "
                              "qulonglong, the double as double.")
                   .arg(QString::fromLatin1(qt_settings.typeName()))
                   .arg(qt_settings.toMap().size()));
  if (qt_settings.userType() != QMetaType::QVariantMap || qt_settings.toMap().size() != 4)
    ++failures;

  QTreeWidget tree;
  tree.setWindowTitle(QStringLiteral("Variant bridge"));
  tree.setColumnCount(3);
  tree.setHeaderLabels(
      {QStringLiteral("Key"), QStringLiteral("QVariant type"), QStringLiteral("Value")});
  AddItem(tree.invisibleRootItem(), QStringLiteral("settings"), qt_settings);
  tree.expandAll();
  tree.resize(700, 620);
  tree.header()->resizeSection(0, 240);
  tree.header()->resizeSection(1, 120);
  tree.show();
  app.processEvents();
  const QString shot = out_dir + "/variant.png";
  const bool saved = tree.grab().save(shot, "PNG");
  gallery::Say(QStringLiteral("Screenshot: %1 (%2)").arg(shot, saved ? "saved" : "not saved"));
  if (!saved) ++failures;

  // A settings dialog changes two values and hands the document back.
  SetPath(qt_settings, {"audio", "volume"}, 0.35);
  SetPath(qt_settings, {"meeting", "recurring"}, true);
  gallery::Say("Edited on the Qt side: audio/volume = 0.35, meeting/recurring = true.");
  Variant edited;
  QVariantUtil::QVariantToVariant(&qt_settings, &edited);
  gallery::Say("Converted back with QVariantToVariant:");
  Print(edited, QString(), 1);

  Variant expected = settings;
  expected["audio"].Set("volume", Variant(0.35, false));
  expected["meeting"].Set("recurring", Variant(true));
  const bool same = edited == expected;
  gallery::Say(same ? QStringLiteral("The result is the original with exactly those two edits.")
                    : QStringLiteral("The result differs from the original plus the two edits!"));
  if (!same) ++failures;

  // A typed target only takes its own type: a string into a QVariant holding an int is refused.
  int log_lines = 0;
  auto previous = base::log::SetLogSink([&log_lines](const base::log::LogRecord& record) {
    ++log_lines;
    gallery::Say(
        QStringLiteral("  log: level %1, %2:%3 %4| %5")
            .arg(record.level)
            .arg(QString::fromStdString(record.file))
            .arg(record.line)
            .arg(QString::fromStdString(record.function), QString::fromStdString(record.text)));
  });
  const int previous_level = base::log::GetLogLevel();
  base::log::SetLogLevel(base::log::kLevelFailure);
  QVariant number(25);
  const Variant topic("Weekly sync");
  gallery::Say("Converting the string \"Weekly sync\" into a QVariant holding the int 25:");
  QVariantUtil::VariantToQVariant(&topic, &number);
  base::log::SetLogLevel(previous_level);
  base::log::SetLogSink(std::move(previous));
  gallery::Say(QStringLiteral("  the QVariant still holds %1 (%2)")
                   .arg(number.toString(), QString::fromLatin1(number.typeName())));
  if (log_lines != 1 || number != QVariant(25)) ++failures;
  return failures;
}

}  // namespace

GALLERY_SECTION("variant", RunVariant);
