#!/bin/sh
# Makes grid.error.jpg, the picture a grid cell shows when its clip can't be
# named: dark grey with a red cross, 16:9 so that it fills a cell of a
# 16:9 profile.
set -e
cd "$(dirname "$0")"
ffmpeg -v error -y -f lavfi -i "color=c=0x282828:s=320x180:d=1" -frames:v 1 \
  -vf "geq=r='if(lt(abs(X*9/16-Y),5)+lt(abs(X*9/16-(H-1-Y)),5),215,40)':g='if(lt(abs(X*9/16-Y),5)+lt(abs(X*9/16-(H-1-Y)),5),30,40)':b='if(lt(abs(X*9/16-Y),5)+lt(abs(X*9/16-(H-1-Y)),5),30,40)'" \
  -q:v 2 grid.error.jpg
