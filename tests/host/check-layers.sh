#!/bin/sh
# The host is three layers, each a folder under include/ and src/: core
# (values, buffers, threads), services (properties and the service classes),
# timeline (timelines, the registry, consumers and project files). A layer
# includes only from its own layer and those below it; a lower layer that
# reached up would tie the layers into one knot.
#   check-layers.sh HOST_DIR
set -eu
host=$(cd "$1" && pwd)
bad=0
# layer, then the folders it must not include from
for rule in "core services timeline" "services timeline"; do
    set -- $rule
    layer=$1
    shift
    for above in "$@"; do
        hits=$(grep -rnE "^[[:space:]]*#[[:space:]]*include[[:space:]]*[\"<]$above/" \
                   "$host/include/$layer" "$host/src/$layer" 2>/dev/null || true)
        if [ -n "$hits" ]; then
            echo "$layer includes from $above:" >&2
            echo "$hits" | sed "s#^$host/#  #" >&2
            bad=1
        fi
    done
done
# A base class knows nothing of the classes built on it: its header and
# source include none of theirs.
for h in "$host"/include/*/*.h; do
    sed -nE 's/^class +(MVN[A-Za-z0-9]+)( +[A-Z_]+)? *: *public +(MVN[A-Za-z0-9]+).*/\1 \3/p' "$h" |
    while read -r derived base; do
        for f in "$host"/include/*/"$base.h" "$host"/src/*/"$base.cpp"; do
            [ -f "$f" ] || continue
            if grep -qE "#[[:space:]]*include[[:space:]]*\"[a-z]+/$derived\.h\"" "$f"; then
                echo "${f#$host/} includes its subclass $derived" >&2
                echo x
            fi
        done
    done
done | grep -q x && bad=1
[ "$bad" -eq 0 ] || exit 1
echo "host layers: ok"
