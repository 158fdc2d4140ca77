#!/usr/bin/env bash
# Draws the pictures of the window program (ImageMagick): the strips of toolbar and tree pictures in several sizes, magenta
# where they are clear, and the program's icon. Usage: make_pictures.sh [FOLDER]; the folder is ui/controls/ unless given.
set -eu
out=$(realpath "${1:-$(dirname "$0")/../ui/controls}")
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

sizes='16 20 24 32 48'  # dots of a picture's side; the drawings are for 16
number=0
picture() {  # DRAWING: one more picture for the strips
  local size
  for size in $sizes; do
    convert -size "${size}x$size" xc:'#FF00FF' +antialias -stroke black -strokewidth 1 \
      -draw "scale $(echo "$size/16" | bc -l),$(echo "$size/16" | bc -l) $1" "$work/$size-$(printf '%02d' $number).png"
  done
  number=$((number + 1))
}
strip() {  # NAME
  local size
  for size in $sizes; do
    convert "$work/$size"-*.png +append -colors 256 -type Palette -compress None "BMP3:$out/$1$size.bmp"
  done
  rm -f "$work"/*.png
  number=0
}

page='fill white polygon 3,1 10,1 13,4 13,14 3,14 line 10,1 10,4 line 10,4 13,4'
folder='fill #F5D76E polygon 1,3 6,3 8,5 14,5 14,13 1,13'
disc='fill #4A6FA5 rectangle 2,2 13,13 fill white rectangle 5,8 11,13 fill #D0D8E8 rectangle 5,2 10,5'
box='fill #C8D4E8 rectangle 2,9 13,13 fill #3C9D3C point 11,11 point 10,11'
lines='stroke #4A6FA5 line 5,6 10,6 line 5,8 11,8 line 5,10 11,10 line 5,12 9,12'
down='fill #3C9D3C polygon 6,1 9,1 9,5 12,5 7.5,10 3,5 6,5'
up='fill #C03030 polygon 6,8 9,8 9,5 12,5 7.5,0 3,5 6,5'

picture "$page"                                                                                       # new
picture "$folder fill #FBEBB0 polygon 3,8 15,8 13,13 1,13"                                            # open
picture "$disc"                                                                                       # save
picture "$page fill #3C9D3C polygon 0,7 4,7 4,5 8,8.5 4,12 4,10 0,10"                                 # import
picture "fill white rectangle 1,1 7,9 fill white rectangle 8,1 14,9 fill #3C9D3C polygon 4,10 11,10 7.5,15"  # merge
picture "$page $lines"                                                                                # text
picture 'stroke #2F5FA8 fill none stroke-width 2 path "M 5,6 A 5,4 0 1,1 5,12" fill #2F5FA8 stroke-width 1 polygon 1,6 6,2 6,10'   # undo
picture 'stroke #2F5FA8 fill none stroke-width 2 path "M 10,6 A 5,4 0 1,0 10,12" fill #2F5FA8 stroke-width 1 polygon 14,6 9,2 9,10' # redo
picture 'fill #DCEBFA circle 6,6 6,2 stroke-width 2 line 9,9 14,14'                                    # find
picture 'stroke #2F5FA8 line 2,3 7,3 line 2,6 6,6 line 2,9 5,9 line 2,12 4,12 stroke black line 11,2 11,12 fill black polygon 9,11 13,11 11,14'  # sort
picture 'fill #2F5FA8 stroke #2F5FA8 circle 7.5,7.5 7.5,1 stroke white fill white rectangle 7,7 8,11 rectangle 7,4 8,5'  # information
picture "$box $up"                                                                                    # to the receiver
picture "$box $down"                                                                                  # from the receiver
picture 'fill #202830 rectangle 1,2 14,13 stroke #60E060 line 3,5 5,7 line 5,7 3,9 line 7,10 11,10'   # console
picture 'fill #D8D8D8 rectangle 3,3 12,12 fill #404040 rectangle 6,6 9,9 line 1,5 3,5 line 1,8 3,8 line 1,11 3,11 line 12,5 14,5 line 12,8 14,8 line 12,11 14,11'  # images
picture 'fill #B8BEC8 circle 7.5,7.5 7.5,2 fill white circle 7.5,7.5 7.5,5 stroke-width 2 line 7.5,0 7.5,2 line 7.5,13 7.5,15 line 0,7.5 2,7.5 line 13,7.5 15,7.5'  # settings
picture 'fill #F5D76E circle 7.5,7.5 7.5,1 stroke-width 2 fill none path "M 5,6 A 2.5,2.5 0 1,1 8,8 L 8,10" fill black rectangle 7,12 8,12'  # help
plug='fill #D8D8D8 rectangle 1,5 5,10 line 0,7.5 1,7.5'
socket='fill #404858 rectangle 10,4 14,11 line 14,7.5 15,7.5'
picture "$plug $socket line 5,6 7,6 line 5,9 7,9"                                                     # disconnected
picture "$plug $socket stroke #208020 stroke-width 2 line 6,6 9,6 line 6,9 9,9"                        # connected
strip toolbar

dish() { echo "fill $1 path \"M 2,3 A 8,8 0 0,0 12,13 Z\" line 7,8 12,3 fill black circle 12,3 12,2 line 6,12 4,15 line 4,15 9,15"; }
wave() { echo "fill none stroke $1 stroke-width 1 path \"M 1,8 C 3,1 5,1 7.5,8 C 10,15 12,15 14,8\" line 1,8 14,8"; }
picture 'fill #6FA0D8 ellipse 7.5,4 6,2.5 0,360 fill #6FA0D8 path "M 1,4 L 1,12 A 6.5,2.5 0 0,0 14,12 L 14,4 A 6.5,2.5 0 0,1 1,4"'  # SDB
picture "$folder"
picture 'fill #D8D8D8 rectangle 2,5 9,10 fill #A0A0A0 polygon 9,5 14,3 14,12 9,10 line 5,10 5,14'     # LNB
picture "$(dish '#C8C8C8')"
picture "$(dish '#8FD08F')"
picture "$(wave '#606060')"
picture "$(wave '#208020')"
picture 'fill #404858 rectangle 1,3 14,12 fill #9FC8F0 rectangle 3,5 12,10 line 5,14 10,14'           # TV
picture 'fill #C09060 rectangle 1,6 14,13 line 4,6 11,1 fill #F0E0C0 circle 5,9.5 5,7.5 fill #F0E0C0 rectangle 9,8 12,9'  # radio
picture 'fill #F5C518 polygon 7.5,1 9.5,6 14.5,6 10.5,9 12,14 7.5,11 3,14 4.5,9 0.5,6 5.5,6'          # favourites
picture 'fill #404858 rectangle 1,7 14,12 fill #60E060 rectangle 3,9 6,10 fill #C0C0C0 circle 11,9.5 11,8.5'  # box
strip tree

for size in 16 20 24 32 40 48 64 128 256; do
  convert -size 256x256 xc:none -fill '#1F3F77' -draw 'roundrectangle 8,8 247,247 40,40' \
    -fill '#E8EEF8' -stroke '#E8EEF8' -draw 'path "M 60,70 A 120,120 0 0,0 190,200 Z"' \
    -strokewidth 14 -draw 'line 125,135 190,70' -fill '#F5C518' -stroke none -draw 'circle 192,66 192,46' \
    -resize ${size}x$size "$work/$size.png"
done
convert "$work"/{16,20,24,32,40,48,64,128,256}.png "$out/vexa.ico"
