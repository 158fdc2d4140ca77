#!/usr/bin/env bash
# Compares pictures of windows as they are (FOLDER/*.bmp, tests/ui/help_test.cpp) with the help's, which were looked at when
# they were taken: a window whose layout, texts or colours are others fails, and so does a picture of the help that is out of
# date. tools/take_pictures.sh takes them anew.
#   compare_pictures.sh FOLDER   says which differ, and how many were compared
set -eu
kept=$(dirname "$0")/../help/pictures
# Times of day, and the buttons of a caption, whose font is not everywhere, differ by up to 350 dots; a line of text by more.
few=400
moving='transfer production'  # what stands in them depends on the moment
compared=0 differing=0 sizes=0
for picture in "$1"/*.bmp; do
  name=$(basename "$picture" .bmp)
  [[ " $moving " == *" $name "* ]] && continue
  compared=$((compared + 1))
  if [ "$(identify -format '%wx%h' "$picture")" != "$(identify -format '%wx%h' "$kept/$name.png")" ]; then
    sizes=$((sizes + 1)) differing=$((differing + 1))
    echo "$name: of another size"
    continue
  fi
  dots=$(compare -metric AE -fuzz 8% "$picture" "$kept/$name.png" null: 2>&1 || true)
  [ "${dots%%.*}" -le "$few" ] && continue
  differing=$((differing + 1))
  echo "$name: $dots dots differ"
done
echo "$compared pictures compared"
# Dialogs are as large as their font makes them.
if [ $((2 * sizes)) -gt "$compared" ]; then
  echo "note: this machine has other fonts than that of the help's pictures: they say nothing here"
  exit 0
fi
[ "$compared" -ge 10 ] && [ "$differing" -eq 0 ]
