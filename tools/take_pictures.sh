#!/usr/bin/env bash
# Takes all pictures of the help anew, from the built program under Wine (build/windows-x64, with ui_tests), and notes the
# version that they show. A simulated receiver answers at the port. Names of pictures stand in tests/ui/help_test.cpp.
set -eu
cd "$(dirname "$0")/.."
. tools/environment.sh
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export WINEPREFIX=$WINEPREFIX-pictures
wine_prefix
# The symbols of caption buttons are in a font of a package of its own, which would give all windows other fonts.
(
  cd "$work"
  apt-get download -qq fonts-wine 2>/dev/null
  dpkg -x fonts-wine_*.deb fonts
  mkdir -p "$WINEPREFIX/drive_c/windows/Fonts"
  cp fonts/usr/share/wine/fonts/marlett.ttf "$WINEPREFIX/drive_c/windows/Fonts/"
)
mkdir "$work/pictures"
VEXA_PICTURES="Z:$(tr / '\\' <<<"$work/pictures")" xvfb-run -a -s '-screen 0 1280x960x24' \
  tests/ui/line/run.sh build/native/vexa wine build/windows-x64/ui_tests.exe --gtest_brief=1 --gtest_filter='Help.*'
rm -f help/pictures/*.png
for picture in "$work"/pictures/*.bmp; do
  convert "$picture" -strip +dither -colors 128 -define png:compression-level=9 "png8:help/pictures/$(basename "$picture" .bmp).png"
done
sed -n 's/^project(VexaEditor VERSION \([0-9.]*\).*/\1/p' CMakeLists.txt >help/pictures/VERSION
du -bc help/pictures/*.png | tail -1
