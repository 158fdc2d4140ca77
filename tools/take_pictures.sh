#!/usr/bin/env bash
# Takes all pictures of the help anew, from the built program under Wine (build/windows-x64), with the simulated receiver on
# its port, and notes the version that they show. Names of pictures stand in tests/ui/help_test.cpp.
set -eu
cd "$(dirname "$0")/.."
. tools/environment.sh
wine_prefix
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
prefix=$WINEPREFIX-line
[ -d "$prefix" ] || cp -a "$WINEPREFIX" "$prefix"
WINEPREFIX=$prefix VEXA_PICTURES=$(WINEPREFIX=$prefix winepath -w "$work" 2>/dev/null) \
  xvfb-run -a -s '-screen 0 1280x960x24' tests/ui/line/run.sh build/native/vexa \
  wine build/windows-x64/ui_tests.exe --gtest_brief=1 --gtest_filter='Help.*'
rm -f help/pictures/*.png
for picture in "$work"/*.bmp; do
  convert "$picture" -strip -dither None -colors 128 -define png:compression-level=9 "png8:help/pictures/$(basename "$picture" .bmp).png"
done
sed -n 's/^project(VexaEditor VERSION \([0-9.]*\).*/\1/p' CMakeLists.txt >help/pictures/VERSION
ls -l help/pictures | awk '{ bytes += $5; ++count } END { print count - 2 " pictures, " bytes " bytes" }'
