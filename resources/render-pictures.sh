#!/bin/sh
# Renders the pictures of pictures/*.svg into the files beside them, which are what the build takes. To be run after a
# change of a drawing, by hand.
set -eu
CDPATH='' cd -- "$(dirname -- "$0")/.."
. cmake/setup.sh

need_packages librsvg2-bin imagemagick
cd resources/pictures
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# The icon: of the program for Windows, and in the sizes of a desktop.
icons=
for size in 16 20 24 32 40 48 64 96 128 256; do
    rsvg-convert -w $size -h $size icon.svg -o "$work/$size.png"
    [ $size -gt 128 ] || icons="$icons $work/$size.png"
done
# The list is meant to be split.
# shellcheck disable=SC2086
convert $icons icon.ico
for size in 32 48 64 128 256; do
    convert "$work/$size.png" -strip "PNG32:icon-$size.png"
done

# The drives: with transparency, and as a bitmap with a mask that is white where nothing is.
rsvg-convert drives.svg -o "$work/drives.png"
convert "$work/drives.png" -strip PNG32:drives.png
convert "$work/drives.png" -background black -alpha remove -alpha off -type Palette -compress None BMP3:drives.bmp
convert "$work/drives.png" -alpha extract -negate -monochrome -compress None BMP3:drives-mask.bmp

# The splash, for a scaling of 100 % and of 200 %, in 256 colours: a display may have no more.
for scale in 1 2; do
    name=splash
    [ $scale -eq 1 ] || name=splash@2x
    rsvg-convert -z $scale splash.svg -o "$work/splash.png"
    convert "$work/splash.png" -alpha off +dither -colors 256 -strip "PNG8:$name.png"
    convert "$name.png" -compress RLE "BMP3:$name.bmp"
done
