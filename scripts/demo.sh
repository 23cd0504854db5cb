#!/usr/bin/env bash
# Renders the bundled showcase: out/showcase.mp4 and a contact sheet of a few
# of its frames, out/showcase.png.
set -euo pipefail
build=${1:-build}
out=${2:-out}
here=$(cd "$(dirname "$0")/.." && pwd)
mkdir -p "$out"
"$here/scripts/example-media.sh"
"$build/bin/mvn-render" "$here/examples/showcase.json" -o "$out/showcase.mp4"
ffmpeg -hide_banner -loglevel error -y -i "$out/showcase.mp4" \
  -vf "select='not(mod(n\,50))',scale=426:-2,tile=3x2:padding=4:color=white" \
  -frames:v 1 -update 1 "$out/showcase.png"
echo "demo: $out/showcase.mp4 and $out/showcase.png"
