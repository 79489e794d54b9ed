#!/bin/sh
# Makes the PNGs of the example theme (run from the repository root):
#   sh examples/common/theme/make_images.sh
# Icons are 16 px at 1x, 32 px at 2x and 48 px at 3x; the light set is dark-on-light, the dark
# set light-on-dark. "avatar" is a 96 px picture for the rounding examples, "glyph-*" white
# shapes for tinting.
set -e
d=examples/common/theme
mk="python3 tests/data/make_png.py"
for theme in light dark; do
  if [ $theme = light ]; then c='#2B6CD4'; else c='#8AB4F8'; fi
  for icon in mic:disc camera:square share:ring; do
    name=${icon%%:*}; shape=${icon##*:}
    $mk $d/$theme/icons/$name.png    16 $shape "$c"
    $mk $d/$theme/icons/$name@2x.png 32 $shape "$c"
    $mk $d/$theme/icons/$name@3x.png 48 $shape "$c"
  done
done
$mk $d/avatar.png 96 disc '#F2C14E' '#3A7D44'
for shape in disc square ring; do
  $mk $d/glyph-$shape.png 32 $shape '#FFFFFF'
done
