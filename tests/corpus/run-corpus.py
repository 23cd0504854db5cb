#!/usr/bin/env python3
"""Runs the bad-input corpus through the command-line tools.

    run-corpus.py BUILD_DIR [--only SUBSTRING] [--keep]

cases.txt lists the inputs to make and the runs with the outcome each must
give. Every run gets its own folder, HOME and state folder, and a time limit;
a run fails when it crashes, runs out of time, exits with another status,
lacks the message, says more than one line when it refuses its input (exit
2), or leaves output behind after a failure. Exit status 0 when every case
gives its outcome.
"""
import os
import random
import shutil
import signal
import struct
import subprocess
import sys
import tempfile
import time
import zlib

HERE = os.path.dirname(os.path.abspath(__file__))
TOOLS = {"render": "mvn-render", "decode": "mvn-decode"}


def png_header(path, width, height):
    """A PNG whose header claims width x height, with one tiny data chunk."""
    def chunk(kind, data):
        body = kind + data
        return struct.pack(">I", len(data)) + body + struct.pack(">I", zlib.crc32(body) & 0xFFFFFFFF)
    ihdr = struct.pack(">IIBBBBB", width, height, 8, 2, 0, 0, 0)
    data = zlib.compress(b"\0" * 64)
    with open(path, "wb") as f:
        f.write(b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", ihdr) + chunk(b"IDAT", data) + chunk(b"IEND", b""))


def tracks(path, count):
    """One coloured track under count - 1 tracks of a blank each."""
    blank = '{"clips": [{"blank": 2}]}'
    with open(path, "w") as f:
        f.write('{"profile": {"width": 64, "height": 64, "fps": 25}, "tracks": [\n')
        f.write('{"clips": [{"service": "ogre.color", "length": 2, "properties": {"color": "#00ff00ff"}}]}')
        for _ in range(count - 1):
            f.write(",\n" + blank)
        f.write("]}\n")


def nested_arrays(path, depth):
    with open(path, "w") as f:
        f.write('{"profile": "hd_720_25p", "tracks": ' + "[" * depth + "]" * depth + "}\n")


def make(inputs, line):
    """One generator line: gen PATH KIND ARGS..."""
    words = line.split()
    path = os.path.join(inputs, words[1])
    os.makedirs(os.path.dirname(path), exist_ok=True)
    kind, args = words[2], words[3:]
    if kind == "zeros":
        with open(path, "wb") as f:
            f.write(b"\0" * int(args[0]))
    elif kind == "random":
        rng = random.Random(int(args[1]))
        with open(path, "wb") as f:
            f.write(bytes(rng.getrandbits(8) for _ in range(int(args[0]))))
    elif kind == "copy":
        shutil.copyfile(os.path.join(inputs, args[0]), path)
    elif kind == "head":
        # The first N bytes of another input: a file cut short.
        with open(os.path.join(inputs, args[0]), "rb") as src, open(path, "wb") as f:
            f.write(src.read(int(args[1])))
    elif kind == "without-tail":
        # All but the last N bytes: an MP4 whose index (written last) is gone.
        with open(os.path.join(inputs, args[0]), "rb") as src:
            data = src.read()
        with open(path, "wb") as f:
            f.write(data[: len(data) - int(args[1])])
    elif kind == "png-header":
        png_header(path, int(args[0]), int(args[1]))
    elif kind == "tracks":
        tracks(path, int(args[0]))
    elif kind == "nested-arrays":
        nested_arrays(path, int(args[0]))
    elif kind == "ffmpeg":
        subprocess.run(["ffmpeg", "-nostdin", "-loglevel", "error", "-y"] + args + [path], check=True)
    else:
        raise SystemExit("cases.txt: unknown generator " + kind)


def parse_case(line):
    # case NAME | EXIT | MESSAGE | [FLAGS] TOOL ARGS...
    fields = [f.strip() for f in line[len("case "):].split("|")]
    if len(fields) != 4:
        raise SystemExit("cases.txt: a case has four fields: " + line)
    name, status, message, command = fields
    words = command.split()
    flags = set()
    while words and words[0].startswith("+"):
        flags.add(words.pop(0)[1:])
    return {"name": name, "status": int(status), "message": message, "tool": words[0], "args": words[1:],
            "flags": flags}


def run_case(case, build, inputs, work, display):
    folder = os.path.join(work, case["name"])
    out = os.path.join(folder, "out")
    os.makedirs(out)
    home = os.path.join(folder, "home")
    os.makedirs(home)
    args = [a.replace("{in}", inputs).replace("{out}", out) for a in case["args"]]
    env = dict(os.environ, HOME=home, XDG_STATE_HOME=os.path.join(home, "state"))
    env.pop("MORVANE_LOG_LEVEL", None)
    if "no-display" in case["flags"] or not display:
        env.pop("DISPLAY", None)
    else:
        env["DISPLAY"] = display
    stdout = subprocess.DEVNULL if "close-stdout" not in case["flags"] else None
    command = [os.path.join(build, "bin", TOOLS[case["tool"]])] + args
    started = time.monotonic()
    # A closed standard output: the tool starts with descriptor 1 free.
    preexec = (lambda: os.close(1)) if "close-stdout" in case["flags"] else None
    try:
        proc = subprocess.run(command, cwd=folder, env=env, stdin=subprocess.DEVNULL, stdout=stdout,
                              stderr=subprocess.PIPE, timeout=case.get("timeout", 240), preexec_fn=preexec,
                              start_new_session=True)
    except subprocess.TimeoutExpired:
        return "hung (no exit within the time limit)", time.monotonic() - started
    took = time.monotonic() - started
    err = proc.stderr.decode("utf-8", "replace")
    lines = [l for l in err.splitlines() if l.strip()]
    problems = []
    if proc.returncode < 0:
        problems.append("crashed with signal %s" % signal.Signals(-proc.returncode).name)
    elif proc.returncode != case["status"]:
        problems.append("exit %d, wanted %d" % (proc.returncode, case["status"]))
    if case["message"] and case["message"] not in err:
        problems.append("no \"%s\" in its message" % case["message"])
    # A refusal of the input, not of the command line: one line. (mvn-render
    # answers a missing argument with its usage.)
    if case["status"] == 2 and len(lines) != 1 and "usage" not in case["message"]:
        problems.append("%d lines where one was due" % len(lines))
    left = []
    for base, _, files in os.walk(out):
        left += [os.path.join(base, f) for f in files]
    if case["status"] != 0 and left:
        problems.append("left output behind: " + ", ".join(sorted(left)[:3]))
    if case["status"] == 0 and "{out}" in " ".join(case["args"]) and not left:
        problems.append("wrote no output")
    if problems:
        return "; ".join(problems) + "\n      stderr: " + "\n      ".join(lines[:6]), took
    return None, took


def main():
    if len(sys.argv) < 2:
        raise SystemExit(__doc__)
    build = os.path.abspath(sys.argv[1])
    only = sys.argv[sys.argv.index("--only") + 1] if "--only" in sys.argv else None
    keep = "--keep" in sys.argv
    work = tempfile.mkdtemp(prefix="mvn-corpus-")
    inputs = os.path.join(work, "inputs")
    # The corpus files as they are, then what the generator lines make.
    shutil.copytree(HERE, inputs, ignore=shutil.ignore_patterns("*.py", "cases.txt"))
    cases = []
    with open(os.path.join(HERE, "cases.txt")) as f:
        for number, raw in enumerate(f, 1):
            line = raw.strip()
            if not line or line.startswith("#"):
                continue
            if line.startswith("gen "):
                make(inputs, line)
            elif line.startswith("case "):
                cases.append(parse_case(line))
            else:
                raise SystemExit("cases.txt:%d: neither gen nor case" % number)
    names = [c["name"] for c in cases]
    if len(set(names)) != len(names):
        raise SystemExit("cases.txt: a case name is used twice")
    if only:
        cases = [c for c in cases if only in c["name"]]
    display = os.environ.get("DISPLAY", "")
    failed = 0
    for case in cases:
        problem, took = run_case(case, build, inputs, work, display)
        print("%-4s %-34s %6.1fs%s" % ("ok" if problem is None else "FAIL", case["name"], took,
                                        "" if problem is None else "\n      " + problem), flush=True)
        failed += problem is not None
    print("%d of %d cases gave their outcome" % (len(cases) - failed, len(cases)))
    if keep or failed:
        print("inputs and outputs kept in " + work)
    else:
        shutil.rmtree(work, ignore_errors=True)
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
