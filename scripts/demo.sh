#!/usr/bin/env bash
# Renders the bundled showcase into the output folder.
set -euo pipefail
build=${1:-build}
out=${2:-out}
mkdir -p "$out"
echo "demo: nothing to render yet; build is in $build"
