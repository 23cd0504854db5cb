#!/usr/bin/env bash
# A one-node Slurm cluster on this machine (munge, slurmctld and slurmd on
# localhost, configured in a temporary folder): mvn-farm renders a
# 200-frame project in 4 chunks and joins them; the film must have the
# single render's frame count and timestamps, each frame must be the
# single render's within a mean of 1 level, and the sound, rendered once by
# a job of its own, must be the single render's with no gap at a chunk
# border. The daemons it starts are stopped by their process ids.
#
#   tests/tools/farm/farm-test.sh BUILD_DIR
set -euo pipefail
export PATH=$PATH:/usr/sbin:/sbin
build=$(realpath "${1:-build}")
render=$build/bin/mvn-render
farm=$build/bin/mvn-farm
for tool in "$render" "$farm"; do [ -x "$tool" ] || { echo "farm-test: $tool is not built" >&2; exit 1; }; done
# Without the scheduler the test is skipped (exit 77), not failed.
for cmd in munged slurmctld slurmd sbatch squeue sinfo; do
  command -v "$cmd" >/dev/null || { echo "farm-test: $cmd is missing (scripts/install-deps.sh scripts/packages-farm.txt)" >&2; exit 77; }
done

t=$(mktemp -d /tmp/mvn-farm-test-XXXXXX)
pids=()
stop() {
  local rc=$?
  for ((i = ${#pids[@]} - 1; i >= 0; i--)); do kill "${pids[i]}" 2>/dev/null || true; done
  for p in "${pids[@]}"; do wait "$p" 2>/dev/null || true; done
  if [ $rc -ne 0 ]; then
    echo "farm-test: FAILED; daemon logs:" >&2
    tail -n 20 "$t"/*.log "$t"/*.out "$t"/out/.film.farm/*.log 2>/dev/null >&2 || true
  fi
  [ -n "${MVN_KEEP_TEST_DIRS:-}" ] || rm -rf "$t"
  exit $rc
}
trap stop EXIT
trap 'exit 1' INT TERM

# Authentication: a fresh key, a daemon of our own on a socket of our own.
mkdir -p "$t/munge" "$t/state" "$t/spool" "$t/out"
chmod 700 "$t/munge"
head -c 1024 /dev/urandom >"$t/munge/munge.key"
chmod 400 "$t/munge/munge.key"
munged -F --force --key-file="$t/munge/munge.key" --socket="$t/munge/munge.socket" \
  --pid-file="$t/munge/munged.pid" --log-file="$t/munged.log" --seed-file="$t/munge/munge.seed" \
  >"$t/munged.out" 2>&1 &
pids+=($!)
for _ in $(seq 100); do [ -S "$t/munge/munge.socket" ] && break; sleep 0.1; done
[ -S "$t/munge/munge.socket" ] || { echo "farm-test: munged did not start" >&2; exit 1; }

read -r ctl_port node_port < <(python3 -c '
import socket
s = [socket.socket() for _ in range(2)]
for x in s: x.bind(("127.0.0.1", 0))
print(*[x.getsockname()[1] for x in s])')
user=$(id -un)
cat >"$t/slurm.conf" <<CONF
ClusterName=mvnfarm
SlurmctldHost=localhost(127.0.0.1)
SlurmctldPort=$ctl_port
SlurmdPort=$node_port
SlurmUser=$user
SlurmdUser=$user
AuthType=auth/munge
CredType=cred/munge
AuthInfo=socket=$t/munge/munge.socket
StateSaveLocation=$t/state
SlurmdSpoolDir=$t/spool
SlurmctldPidFile=$t/slurmctld.pid
SlurmdPidFile=$t/slurmd.pid
SlurmctldLogFile=$t/slurmctld.log
SlurmdLogFile=$t/slurmd.log
ProctrackType=proctrack/linuxproc
TaskPlugin=task/none
JobAcctGatherType=jobacct_gather/none
AccountingStorageType=accounting_storage/none
SchedulerType=sched/backfill
SelectType=select/cons_tres
SelectTypeParameters=CR_CPU
ReturnToService=2
MinJobAge=600
MpiDefault=none
NodeName=localhost NodeAddr=127.0.0.1 CPUs=$(nproc) State=UNKNOWN
PartitionName=farm Nodes=localhost Default=YES MaxTime=INFINITE State=UP
CONF
export SLURM_CONF=$t/slurm.conf
slurmctld -D -i -f "$t/slurm.conf" >"$t/slurmctld.out" 2>&1 &
pids+=($!)
slurmd -D -N localhost -f "$t/slurm.conf" >"$t/slurmd.out" 2>&1 &
pids+=($!)
for _ in $(seq 300); do
  [ "$(sinfo -h -o %t 2>/dev/null)" = idle ] && break
  sleep 0.2
done
[ "$(sinfo -h -o %t 2>/dev/null)" = idle ] || { echo "farm-test: the node did not come up" >&2; exit 1; }

# 200 frames: cuts that fall inside chunks and on their borders, a box that
# changes size, so the encoder has something to say at every border, and a
# small video clip whose 440 Hz tone sounds over the whole range.
ffmpeg -hide_banner -loglevel error -nostdin -y -f lavfi -i testsrc2=s=64x36:r=25:d=8 \
  -f lavfi -i sine=frequency=440:sample_rate=48000:duration=8 -af 'pan=stereo|c0=c0|c1=c0' \
  -c:v libx264 -preset ultrafast -g 25 -pix_fmt yuv420p -c:a aac -shortest "$t/tone.mp4"
cat >"$t/film.json" <<'JSON'
{
  "profile": { "width": 320, "height": 180, "fps": 25 },
  "tracks": [
    { "clips": [ { "service": "ogre.color", "length": 30, "properties": { "color": "#203040ff" } },
                 { "service": "ogre.color", "length": 70, "properties": { "color": "#c08020ff" } },
                 { "service": "ogre.color", "length": 100, "properties": { "color": "#2080c0ff" } } ] },
    { "clips": [ { "service": "ogre.color", "length": 45, "geometry": "[20:20 80x60]", "properties": { "color": "#ff00ffff" } },
                 { "service": "ogre.color", "length": 60, "geometry": "[100:40 160x100]", "properties": { "color": "#ffffffff" } },
                 { "service": "ogre.color", "length": 95, "geometry": "[10:100 300x70]", "properties": { "color": "#00ff00ff" } } ] },
    { "clips": [ { "service": "codec.video", "resource": "tone.mp4", "length": 200, "geometry": "[0:0 64x36]" } ] }
  ]
}
JSON

"$render" "$t/film.json" -o "$t/single.mp4" --quiet
MVN_RENDER=$render MVN_FARM_POLL=1 "$farm" "$t/film.json" -o "$t/out/film.mp4" --chunks 4 --time=10 | tee "$t/farm.out"
grep -q "^mvn-farm: 4 chunks in job [0-9]*, the sound in job [0-9]*, the join in job [0-9]*;" "$t/farm.out" ||
  { echo "farm-test: the sound was not rendered by a job of its own" >&2; exit 1; }
ls "$t"/out/film.chunk-* >/dev/null 2>&1 && { echo "farm-test: the segments were left behind" >&2; exit 1; }

python3 - "$t/single.mp4" "$t/out/film.mp4" <<'PY'
import subprocess, sys
single, joined = sys.argv[1], sys.argv[2]
w, h, n = 320, 180, 200
def times(p):
    out = subprocess.run(["ffprobe", "-v", "error", "-select_streams", "v", "-show_entries", "frame=pts_time",
                           "-of", "csv=p=0", p], check=True, capture_output=True, text=True).stdout
    # One line a frame; the encoder's side data (a note at each chunk's start) is left out.
    return [line.split(",")[0] for line in out.splitlines() if line.split(",")[0]]
def luma(p):
    return subprocess.run(["ffmpeg", "-v", "error", "-i", p, "-f", "rawvideo", "-pix_fmt", "gray", "-"],
                          check=True, capture_output=True).stdout
a, b = times(single), times(joined)
assert len(a) == n, f"the single render has {len(a)} frames"
assert a == b, f"timestamps differ: {len(b)} frames joined, first differences {[(i, x, y) for i, (x, y) in enumerate(zip(a, b)) if x != y][:5]}"
pa, pb = luma(single), luma(joined)
assert len(pa) == len(pb) == w * h * n, (len(pa), len(pb))
plane = w * h
worst = max((sum(abs(x - y) for x, y in zip(pa[f*plane:(f+1)*plane], pb[f*plane:(f+1)*plane])) / plane, f) for f in range(n))
assert worst[0] <= 1.0, f"frame {worst[1]} differs by a mean of {worst[0]:.3f} levels"
print(f"farm-test: {n} frames, timestamps equal, largest mean difference {worst[0]:.3f} levels (frame {worst[1]})")

# The sound: the single render's within the coder's noise, no shorter, and
# never silent around a chunk border (every 50 frames, 2 s at 25 fps).
import array, math
def sound(p):
    raw = subprocess.run(["ffmpeg", "-v", "error", "-i", p, "-map", "0:a", "-ac", "1", "-f", "f32le", "-"],
                         check=True, capture_output=True).stdout
    return array.array("f", raw)
sa, sb = sound(single), sound(joined)
rate = 48000
assert abs(len(sa) - len(sb)) <= 1024, f"sound lengths {len(sa)} and {len(sb)}"
m = min(len(sa), len(sb)) - 1024
rms = lambda s, a, b: math.sqrt(sum(x * x for x in s[a:b]) / (b - a))
diff = math.sqrt(sum((x - y) ** 2 for x, y in zip(sa[2048:m], sb[2048:m])) / (m - 2048))
level = rms(sa, 2048, m)
assert level > 0.05, f"the single render's sound has an RMS of {level:.4f}"
assert diff < 0.1 * level, f"the joined sound differs from the single render's by an RMS of {diff:.4f} ({level:.4f})"
for border in (2, 4, 6):
    at = border * rate
    for a in range(at - 960, at + 960, 240):
        assert rms(sb, a, a + 240) > 0.5 * level, f"the joined sound drops at {a / rate:.3f} s (chunk border {border} s)"
print(f"farm-test: sound RMS {level:.4f}, differs by {diff:.4f}, no gap at the chunk borders")
PY

# A chunk that fails (5 chunks of 4 key-frame intervals: mvn-render refuses
# each) ends the watch with exit 1 and the join cancelled, not a wait on a
# dependency that can never be met.
set +e
MVN_RENDER=$render MVN_FARM_POLL=1 timeout 120 "$farm" "$t/film.json" -o "$t/out/bad.mp4" --chunks 5 \
  >"$t/bad.out" 2>&1
rc=$?
set -e
[ $rc -eq 1 ] || { echo "farm-test: a failed chunk ended mvn-farm with $rc" >&2; cat "$t/bad.out" >&2; exit 1; }
grep -q "^mvn-farm: chunk [1-5] ended FAILED; see $t/out/.bad.farm/chunk-[1-5].log\$" "$t/bad.out" ||
  { echo "farm-test: no failed chunk named" >&2; cat "$t/bad.out" >&2; exit 1; }
grep -q "use at most 4 chunks" "$t"/out/.bad.farm/chunk-1.log ||
  { echo "farm-test: the chunk's log does not say why" >&2; exit 1; }
[ ! -e "$t/out/bad.mp4" ] || { echo "farm-test: a film came out of failed chunks" >&2; exit 1; }
echo "farm-test: passed"
