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
