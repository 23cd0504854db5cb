#!/usr/bin/env bash
# Makes the media of the examples that are generated rather than kept in the
# repository: examples/media/zoom.mp4, six seconds of a zoom into the
# Mandelbrot set at 29.97 pictures a second with a chord that swells and
# fades, and examples/media/life.gif, four seconds of a cellular automaton
# at 10 pictures a second in a 32-colour palette, both made by the ffmpeg
# command. Only what is missing is made.
set -euo pipefail
here=$(cd "$(dirname "$0")/.." && pwd)
dir="$here/examples/media"
mkdir -p "$dir"
if [ ! -f "$dir/zoom.mp4" ]; then
  ffmpeg -hide_banner -loglevel error -nostdin -y \
    -f lavfi -i "mandelbrot=s=480x270:rate=30000/1001:end_pts=200:start_scale=3:end_scale=0.01" \
    -f lavfi -i "aevalsrc=0.2*sin(2*PI*220*t)*(0.6+0.4*sin(2*PI*0.5*t))+0.1*sin(2*PI*330*t):s=44100:d=6" \
    -t 6 -c:v libx264 -preset medium -crf 20 -g 12 -bf 2 -pix_fmt yuv420p -c:a aac -b:a 128k -shortest \
    "$dir/.zoom.part.mp4"
  mv "$dir/.zoom.part.mp4" "$dir/zoom.mp4"
fi
if [ ! -f "$dir/life.gif" ]; then
  ffmpeg -hide_banner -loglevel error -nostdin -y -t 4 \
    -f lavfi -i "life=s=72x40:mold=8:rate=10:ratio=0.12:death_color=#1b2a4a:life_color=#ffc640:mold_color=#c03a6a" \
    -vf "scale=288:160:flags=neighbor,split[a][b];[a]palettegen=max_colors=32[p];[b][p]paletteuse" -loop 0 \
    -f gif "$dir/.life.part.gif"
  mv "$dir/.life.part.gif" "$dir/life.gif"
fi
# A title background for the text clips: four seconds of moving colour
# (title.mp4) and its mask (title-mask.mp4), a soft ellipse that opens in
# the first second, both at 480x270.
if [ ! -f "$dir/title.mp4" ]; then
  ffmpeg -hide_banner -loglevel error -nostdin -y \
    -f lavfi -i "gradients=s=480x270:c0=0x1a2a6c:c1=0xb21f1f:c2=0xfdbb2d:x0=0:y0=0:x1=480:y1=270:speed=0.03:r=25:d=4" \
    -c:v libx264 -preset medium -crf 20 -g 25 -pix_fmt yuv420p "$dir/.title.part.mp4"
  mv "$dir/.title.part.mp4" "$dir/title.mp4"
fi
if [ ! -f "$dir/title-mask.mp4" ]; then
  ffmpeg -hide_banner -loglevel error -nostdin -y \
    -f lavfi -i "color=c=black:s=480x270:r=25:d=4,format=gray" \
    -vf "geq=lum='clip(255*(1-hypot((X-W/2)/(W/2),(Y-H/2)/(H/2)))*4*min(T,1)\,0\,255)'" \
    -c:v libx264 -preset medium -crf 20 -g 25 -pix_fmt yuv420p "$dir/.title-mask.part.mp4"
  mv "$dir/.title-mask.part.mp4" "$dir/title-mask.mp4"
fi
