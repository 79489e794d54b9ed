#!/bin/sh
# Makes the fixtures of the rounded-pixmap tests (run from the repository root):
#   sh tests/data/rounded/make_images.sh [BUILD_DIR]
# tile.png and tile@2x.png are the same picture at 1x and 2x: a blue rounded square on an opaque
# yellow ground, so every corner pixel is opaque before rounding.
# With a build directory, it also writes tile_radius7.png: VxQtUiUtil::GetHasRadiusPixmap of
# tile.png with radius 7, saved by the library of that build. The file in the repository was
# made by the library as of commit 4d5dbbb, before rounding kept the device pixel ratio; the
# test keeps every ratio-1 result pixel-identical to it.
set -e
d=tests/data/rounded
mk="python3 tests/data/make_png.py"
$mk $d/tile.png    30 square '#2060C0' '#E0C040'
$mk $d/tile@2x.png 60 square '#2060C0' '#E0C040'
[ -n "$1" ] || exit 0
build=$(cd "$1" && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cat > "$work/golden.cpp" <<'CPP'
#include <QApplication>
#include <QPixmap>
#include "qt_util/ui_util_image.h"
int main(int argc, char** argv) {
  QApplication app(argc, argv);
  const QPixmap rounded = VxQtUiUtil::GetHasRadiusPixmap(QPixmap(argv[1]), 7);
  return rounded.toImage().save(argv[2], "PNG") ? 0 : 1;
}
CPP
g++ -std=c++17 -fPIC "$work/golden.cpp" -o "$work/golden" -I. -I"$build/include" \
  -Iframework/include $(pkg-config --cflags --libs Qt5Widgets) \
  -L"$build/qt_util" -lqt_util -Wl,-rpath,"$build/qt_util:$build/framework"
QT_QPA_PLATFORM=offscreen "$work/golden" $d/tile.png $d/tile_radius7.png
