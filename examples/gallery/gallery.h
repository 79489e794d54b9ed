#pragma once

// The gallery runs one section per facility, in registration order. A section shows its
// facility at work, prints what happens and may save screenshots into the output directory.

#include <QRect>
#include <QString>
#include <functional>
#include <vector>

class QApplication;

namespace gallery {

struct Section {
  const char* name;
  // Returns 0 when the section ran as expected.
  int (*run)(QApplication& app, const QString& output_dir);
};

std::vector<Section>& Sections();

struct Registrar {
  Registrar(const char* name, int (*run)(QApplication&, const QString&)) {
    Sections().push_back({name, run});
  }
};

// Prints one line of the demo's own narration (not a log record).
void Say(const QString& text);

// A rect as "WxH+X+Y", the way the sections print geometry.
QString RectText(const QRect& rect);

}  // namespace gallery

#define GALLERY_SECTION(name, function) \
  static const ::gallery::Registrar gallery_registrar_##function(name, function)
