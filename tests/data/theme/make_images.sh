#!/bin/sh
# Makes the PNG fixtures of this directory (run from the repository root):
#   sh tests/data/theme/make_images.sh
# Each scale of an icon has its own colour, so a test tells from one pixel which file it got:
#   light: 1x red, 2x green, 3x blue;  dark: 1x pink, 2x pale green, 3x pale blue.
# "badge" exists at 1x and 3x only (no 2x file).
set -e
d=tests/data/theme
mk="python3 tests/data/make_png.py"
mkdir -p $d/light $d/dark
$mk $d/light/icon.png    16 disc   '#D03030'
$mk $d/light/icon@2x.png 32 disc   '#30A030'
$mk $d/light/icon@3x.png 48 disc   '#3050D0'
$mk $d/dark/icon.png     16 ring   '#F0A0A0'
$mk $d/dark/icon@2x.png  32 ring   '#A0F0A0'
$mk $d/dark/icon@3x.png  48 ring   '#A0B0F0'
$mk $d/light/badge.png    16 square '#808080'
$mk $d/light/badge@3x.png 48 square '#202020'
