#!/bin/sh
# Makes the small media files of the decoder tests in OUTDIR, once: a stamp
# holds the checksum of this script, and a lock keeps parallel test processes
# from writing at the same time. Every picture shows its own frame number:
# the left half has luma 16+12*(n/16), the right half 16+12*(n%16), so that a
# test reads back which frame it got.
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
pic="geq=lum='16+12*(lt(X,W/2)*floor(N/16)+gte(X,W/2)*mod(N,16))':cb=128:cr=128"
# counted(seconds, rate, size): the numbered pictures as a lavfi source
counted() { echo "color=c=black:s=${3:-64x48}:r=$2:d=$1,format=yuv420p,$pic"; }
x264="-c:v libx264 -preset ultrafast -qp 8 -pix_fmt yuv420p"
gop12="-g 12 -keyint_min 12 -sc_threshold 0"
tone="sine=frequency=440:sample_rate=44100:duration=5"

# 5 s at 25 fps, a key frame every 12 pictures, stereo AAC beside it.
$ff -f lavfi -i "$(counted 5 25)" -f lavfi -i "$tone" -filter_complex "[1]pan=stereo|c0=c0|c1=c0[a]" \
    -map 0:v -map "[a]" $x264 $gop12 -bf 0 -c:a aac -b:a 64k -shortest gop12.mp4
# One key frame for the whole clip.
$ff -f lavfi -i "$(counted 3 25)" $x264 -g 1000 -keyint_min 1000 -sc_threshold 0 -bf 0 single_key.mp4
# B-frames: the first packet has a negative dts.
$ff -f lavfi -i "$(counted 3 25)" -c:v libx264 -preset medium -qp 8 -pix_fmt yuv420p $gop12 -bf 2 bframes.mp4
# MPEG-TS (no index, first pts 1.4 s) and Matroska written to a pipe (no
# index, no duration).
$ff -i gop12.mp4 -c copy gop12.ts
$ff -i gop12.mp4 -c copy -f matroska - > noindex.mkv
# Pictures only, starting at 0, for reading through a pipe.
$ff -i gop12.mp4 -c copy -an -f matroska - > piped.mkv
# Variable frame rate: every fourth picture comes 10 ms early, so that a
# repair onto the 40 ms grid gives picture n the time n/25.
$ff -f lavfi -i "$(counted 3 25)" -vf "settb=1/1000,setpts='(N*40-10*eq(mod(N,4),3))/1000/TB'" -fps_mode passthrough -enc_time_base 1/1000 \
    -video_track_timescale 1000 $x264 $gop12 -bf 0 vfr.mp4
# Anamorphic pixels: 64x48 stored, shown at 16:9.
$ff -f lavfi -i "$(counted 1 25)" -vf setsar=4/3 $x264 $gop12 -bf 0 anamorphic.mp4
# Rotation: MP4 keeps it as a display matrix, named here after the
# counter-clockwise angle the matrix holds (this ffmpeg stores "rotate=270"
# as -90); Matroska keeps a plain "rotate" tag of 90 degrees clockwise.
$ff -i single_key.mp4 -c copy -metadata:s:v:0 rotate=270 matrix_minus90.mp4
$ff -i single_key.mp4 -c copy -metadata:s:v:0 rotate=90 matrix_plus90.mp4
$ff -i single_key.mp4 -c copy -metadata:s:v:0 ROTATE=90 rotated_tag.mkv
# The picture size changes after 2 s (50 pictures of 64x48, then 80x60); the
# second part carries on the timestamps and the numbering.
$ff -f lavfi -i "$(counted 2 25)" $x264 $gop12 -bf 0 part1.ts
$ff -f lavfi -i "$(counted 4 25 80x60)" -vf "trim=start_frame=50,setpts=PTS-STARTPTS" $x264 $gop12 -bf 0 \
    -output_ts_offset 2 part2.ts
cat part1.ts part2.ts > sizechange.ts
rm -f part1.ts part2.ts
# VP8, for the hardware tables.
$ff -f lavfi -i "$(counted 1 25)" -c:v libvpx -b:v 200k vp8.webm
# Audio only, in several formats and channel counts.
$ff -f lavfi -i "sine=frequency=440:sample_rate=44100:duration=2" -c:a libmp3lame -b:a 64k tone_mono.mp3
$ff -f lavfi -i "sine=frequency=440:sample_rate=48000:duration=2" -ac 2 -c:a pcm_s16le tone_s16.wav
$ff -f lavfi -i "sine=frequency=440:sample_rate=44100:duration=2" -ac 2 -c:a pcm_f32le tone_f32.wav
$ff -f lavfi -i "sine=frequency=440:sample_rate=48000:duration=2" -ac 6 -c:a aac -b:a 192k tone_6ch.m4a
$ff -f lavfi -i "sine=frequency=440:sample_rate=44100:duration=2" -ac 2 -c:a libvorbis tone.ogg
# MP3 with cover art (an attached PNG picture).
$ff -f lavfi -i "color=c=red:s=32x32:d=1" -frames:v 1 cover.png
$ff -i tone_mono.mp3 -i cover.png -map 0:a -map 1:v -c:a copy -c:v png -disposition:v attached_pic \
    -id3v2_version 3 cover.mp3
rm -f cover.png
# An MP4 with its index at the front, cut after 60 % of its bytes.
$ff -i gop12.mp4 -c copy -movflags +faststart whole.mp4
size=$(stat -c %s whole.mp4)
head -c $((size * 6 / 10)) whole.mp4 > truncated.mp4
rm -f whole.mp4
# Not media at all.
printf 'This is a shopping list, not a film.\nmilk\nbread\n' > notmedia.mp4

for f in *; do mv -f "$f" "$out/$f"; done
echo "$want" > "$out/.stamp"
