#!/bin/sh
# Runs every fuzz target of a fuzz build for SECONDS each (make fuzz).
#   run-fuzz.sh BUILD SECONDS SEED_DIR...
# FUZZ_TARGETS="cube decoder" runs only those; FUZZ_SEED=N repeats the
# mutations of an earlier run from the same corpus (random otherwise).
# Each seed folder gives the target its subfolder of the target's name when
# it has one (tests/fuzz/seeds/cube), otherwise all of itself. What the
# fuzzer learns stays in BUILD/fuzz-corpus/<target>; an input that breaks
# the code is written to BUILD/fuzz-findings/<target>/ and the run fails:
# fix the cause, then copy the input to tests/fuzz/findings/<target>/.
set -u
build=$1
seconds=$2
shift 2
status=0
for target in ${FUZZ_TARGETS:-project string_forms cube decoder}; do
    case $target in
    string_forms) max_len=256 ;;
    decoder) max_len=65536 ;;
    *) max_len=16384 ;;
    esac
    corpus=$build/fuzz-corpus/$target
    findings=$build/fuzz-findings/$target
    mkdir -p "$corpus" "$findings"
    seeds=
    for dir in "$@"; do
        if [ -d "$dir/$target" ]; then
            seeds="$seeds $dir/$target"
        elif [ -d "$dir" ]; then
            seeds="$seeds $dir"
        fi
    done
    log=$build/fuzz-$target.log
    echo "fuzz_$target: $seconds s"
    # shellcheck disable=SC2086
    if ! "$build/bin/fuzz_$target" ${FUZZ_SEED:+-seed="$FUZZ_SEED"} -max_total_time="$seconds" -max_len=$max_len -timeout=20 -rss_limit_mb=2560 \
        -print_final_stats=1 -artifact_prefix="$findings/" "$corpus" $seeds >"$log" 2>&1; then
        echo "fuzz_$target: FINDING (see $log and $findings)"
        tail -40 "$log"
        status=1
    fi
    grep -E '^stat::number_of_executed_units|^Done ' "$log" | sed "s/^/  /"
done
exit $status
