#!/bin/sh
# Makes the media of the media-producer tests in OUTDIR, once per version of
# this script (a stamp holds its checksum; a lock keeps parallel test
# processes apart). The pictures come from ffmpeg's moving test pattern, so
# that neighbouring frames differ; the sound is a 1 kHz sine at 1/8 of full
# scale, at 44.1 kHz so that the producers resample it.
set -eu
out=${1:?usage: make-media.sh OUTDIR}
mkdir -p "$out"
want=$(md5sum "$0" | cut -d' ' -f1)
exec 9>"$out/.lock"
flock 9
if [ -f "$out/.stamp" ] && [ "$(cat "$out/.stamp")" = "$want" ]; then
  exit 0
fi
tmp=$(mktemp -d "$out/.make.XXXXXX")
trap 'rm -rf "$tmp"' EXIT
cd "$tmp"

ff="ffmpeg -hide_banner -loglevel error -nostdin -y"
tone="sine=frequency=1000:sample_rate=44100:duration=4"
# A key frame every 12 pictures, two B-frames between references.
x264="-c:v libx264 -preset medium -qp 10 -pix_fmt yuv420p -g 12 -keyint_min 12 -sc_threshold 0 -bf 2"
for rate in 25 30000/1001; do
  name=$(echo "$rate" | tr -d /)
  $ff -f lavfi -i "testsrc2=s=160x90:r=$rate:d=4" -f lavfi -i "$tone" -af "pan=stereo|c0=c0|c1=c0" $x264 \
      -c:a aac -b:a 128k -shortest "gop12_$name.mp4"
  # What the ffmpeg command shows at each position of a 25 fps timeline: the
  # picture on screen at N/25 s.
  $ff -i "gop12_$name.mp4" -vf "fps=25:round=up" -pix_fmt bgra -f rawvideo "gop12_$name.25fps.bgra"
done
# Pictures without sound, sound without pictures, and not media at all.
$ff -f lavfi -i "testsrc2=s=160x90:r=25:d=2" $x264 silent.mp4
$ff -f lavfi -i "$tone" -c:a pcm_s16le tone.wav
printf 'Not a film, a shopping list.\n' > notmedia.mp4
# An animation of 10 pictures at 10 a second, and its pictures one by one.
$ff -f lavfi -i "testsrc2=s=64x36:r=10:d=1" -loop 0 anim.gif
$ff -i anim.gif -pix_fmt bgra -f rawvideo anim.bgra

for f in *; do mv -f "$f" "$out/$f"; done
echo "$want" > "$out/.stamp"
