#!/bin/sh
# Installs the build into a fresh prefix, builds examples/embed against it
# with CMake (find_package) and with pkg-config, runs both with no Morvane
# variables set, and checks their pictures: red background, blue box.
#   install-and-embed.sh BUILD_DIR SOURCE_DIR
set -eu
build=$(cd "$1" && pwd)
src=$(cd "$2" && pwd)
work=$(mktemp -d "${TMPDIR:-/tmp}/mvn-package.XXXXXX")
trap 'rm -rf "$work"' EXIT
prefix="$work/prefix"
unset MORVANE_MODULE_DIR OGRE_CONFIG_DIR || true
export HOME="$work/home"
mkdir -p "$HOME"

fail() { echo "FAIL: $*" >&2; exit 1; }

cmake --install "$build" --prefix "$prefix" >/dev/null
libdir=$(sed -n 's/^libdir=${prefix}\///p' "$prefix"/lib*/pkgconfig/morvane.pc 2>/dev/null || true)
[ -n "$libdir" ] || libdir=lib
for f in include/morvane/Morvane.h include/morvane/core/MVNFrame.h include/morvane/timeline/MVNTractor.h \
         "$libdir/libMorvane.so" "$libdir/morvane/modules/libMVNOgre.so" "$libdir/morvane/modules/libMVNMedia.so" \
         "$libdir/cmake/Morvane/MorvaneConfig.cmake" "$libdir/cmake/Morvane/MorvaneConfigVersion.cmake" \
         "$libdir/pkgconfig/morvane.pc" share/morvane/plugins.cfg share/morvane/resources.cfg \
         share/morvane/media/materials bin/mvn-render bin/mvn-decode bin/mvn-play; do
    [ -e "$prefix/$f" ] || fail "not installed: $f"
done
soname=$(objdump -p "$prefix/$libdir/libMorvane.so" | awk '/SONAME/ {print $2}')
case "$soname" in libMorvane.so.[0-9]*) ;; *) fail "libMorvane.so has soname '$soname'" ;; esac

# The pixel (x, y) of a PNG as "r g b".
pixel() { ffmpeg -v error -i "$1" -vf "crop=1:1:$2:$3" -f rawvideo -pix_fmt rgb24 - | od -An -tu1 | tr -s ' ' | sed 's/^ //;s/ $//'; }

check_frames() {
    dir=$1
    for i in 000 005 009; do
        [ -f "$dir/frame$i.png" ] || fail "$dir/frame$i.png missing"
    done
    [ ! -e "$dir/frame010.png" ] || fail "more than ten frames in $dir"
    # Background red, the box blue from (40, 20) to (119, 69).
    [ "$(pixel "$dir/frame005.png" 5 5)" = "255 0 0" ] || fail "$dir: background is $(pixel "$dir/frame005.png" 5 5)"
    [ "$(pixel "$dir/frame005.png" 40 20)" = "0 0 255" ] || fail "$dir: box corner is $(pixel "$dir/frame005.png" 40 20)"
    [ "$(pixel "$dir/frame005.png" 119 69)" = "0 0 255" ] || fail "$dir: box corner is $(pixel "$dir/frame005.png" 119 69)"
    [ "$(pixel "$dir/frame005.png" 120 70)" = "255 0 0" ] || fail "$dir: beside the box is $(pixel "$dir/frame005.png" 120 70)"
}

# Both ways of building; each run in a folder of its own (the engine leaves
# its files in the working folder).
cmake -S "$src/examples/embed" -B "$work/cmake" -DCMAKE_PREFIX_PATH="$prefix" >/dev/null
cmake --build "$work/cmake" >/dev/null
mkdir -p "$work/run-cmake" && (cd "$work/run-cmake" && "$work/cmake/embed" "$work/run-cmake" >/dev/null)
check_frames "$work/run-cmake"

mkdir -p "$work/pc"
PKG_CONFIG_PATH="$prefix/$libdir/pkgconfig" make -s -C "$work/pc" -f "$src/examples/embed/Makefile" >/dev/null
mkdir -p "$work/run-pc" && (cd "$work/run-pc" && "$work/pc/embed" "$work/run-pc" >/dev/null)
check_frames "$work/run-pc"

# The installed tools render from the installed module and media: mvn-render
# to a file, mvn-play in its window (the label's font and panel are media too).
mkdir -p "$work/render"
cat >"$work/render/p.json" <<'JSON'
{ "profile": { "width": 64, "height": 64, "fps": 25 },
  "tracks": [ { "clips": [ { "service": "ogre.color", "length": 1, "properties": { "color": "#00ff00ff" } } ] } ] }
JSON
"$prefix/bin/mvn-render" "$work/render/p.json" -o "$work/render/f%03d.png" --quiet
[ "$(pixel "$work/render/f000.png" 10 10)" = "0 255 0" ] || fail "installed mvn-render drew $(pixel "$work/render/f000.png" 10 10)"
# Animated pictures come from the media module, found from the prefix too:
# a blue GIF over the green background fills the frame's left half.
[ ! -e "$prefix/$libdir/libMVNMedia.so" ] || fail "the media module is installed outside lib/morvane/modules"
ffmpeg -v error -f lavfi -i "color=c=blue:s=32x64:r=10:d=0.3" "$work/render/blue.gif"
cat >"$work/render/gif.json" <<'JSON'
{ "profile": { "width": 64, "height": 64, "fps": 25 },
  "tracks": [ { "clips": [ { "service": "ogre.color", "length": 2, "properties": { "color": "#00ff00ff" } } ] },
              { "clips": [ { "service": "codec.gif", "resource": "blue.gif", "length": 2, "geometry": "[0:0 32x64]" } ] } ] }
JSON
"$prefix/bin/mvn-render" "$work/render/gif.json" -o "$work/render/g%03d.png" --quiet
[ "$(pixel "$work/render/g001.png" 10 10)" = "0 0 255" ] || fail "installed mvn-render drew the GIF as $(pixel "$work/render/g001.png" 10 10)"
[ "$(pixel "$work/render/g001.png" 50 10)" = "0 255 0" ] || fail "installed mvn-render drew beside the GIF $(pixel "$work/render/g001.png" 50 10)"
mkdir -p "$work/shots"
"$prefix/bin/mvn-play" "$work/render/p.json" --frames 0:0 --screenshot "$work/shots" --quiet
[ "$(pixel "$work/shots/frame00000.png" 60 60)" = "0 255 0" ] || fail "installed mvn-play showed $(pixel "$work/shots/frame00000.png" 60 60)"
mkdir -p "$work/gifshots"
"$prefix/bin/mvn-play" "$work/render/gif.json" --frames 1:1 --screenshot "$work/gifshots" --quiet
# Below the timecode label's panel, which darkens the top rows.
[ "$(pixel "$work/gifshots/frame00001.png" 10 60)" = "0 0 255" ] || fail "installed mvn-play showed the GIF as $(pixel "$work/gifshots/frame00001.png" 10 60)"
echo "install and embed: ok"
