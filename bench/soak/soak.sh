#!/bin/sh
# make soak: makes the soak project's media with the ffmpeg command (once),
# then runs mvn-soak on it under a virtual display.
#   soak.sh BUILD FRAMES
set -eu
build=$1
frames=${2:-10000}
here=$(cd "$(dirname "$0")" && pwd)
mkdir -p "$build/soak/media"
work=$(cd "$build/soak" && pwd)
# The LUT filter takes its file as given: an absolute path, wherever the
# work folder lies.
sed "s|\"media/look.cube\"|\"$work/media/look.cube\"|" "$here/soak-1080.json" >"$work/soak-1080.json"
m=$work/media
ff() { ffmpeg -hide_banner -loglevel error -nostdin -y "$@"; }
[ -f "$m/picture.png" ] || ff -f lavfi -i testsrc2=size=1920x1080 -frames:v 1 "$m/picture.png"
[ -f "$m/card.jpg" ] || ff -f lavfi -i smptebars=size=720x1280 -frames:v 1 "$m/card.jpg"
[ -f "$m/anim.gif" ] || ff -f lavfi -i "mandelbrot=size=320x180:rate=10" -t 4 "$m/anim.gif"
[ -f "$m/clip.mp4" ] || ff -f lavfi -i testsrc=size=960x540:rate=25 -f lavfi -i sine=frequency=330 -t 8 \
    -c:v libx264 -preset veryfast -g 25 -pix_fmt yuv420p -c:a aac -shortest "$m/clip.mp4"
[ -f "$m/look.cube" ] || python3 - "$m/look.cube" <<'PY'
import sys
n = 17
with open(sys.argv[1], "w") as f:
    f.write("LUT_3D_SIZE %d\n" % n)
    for b in range(n):
        for g in range(n):
            for r in range(n):
                x, y, z = r / (n - 1), g / (n - 1), b / (n - 1)
                f.write("%.5f %.5f %.5f\n" % (min(1, x * 1.1), y, z * 0.9))
PY
exec xvfb-run -a -s "-screen 0 1920x1080x24" "$build/bin/mvn-soak" --frames "$frames" "$work/soak-1080.json"
