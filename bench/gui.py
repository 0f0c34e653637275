#!/usr/bin/python3
"""What the program with windows costs before it downloads anything, under Xvfb: the time from
the start command to the main window on screen, its memory with the browser hidden and shown,
and the CPU it uses while idle with 20 paused downloads.

    bench/gui.py --corvane build-bench/bin/corvane [--rounds 7]

Standard library only; needs Xvfb and xwininfo (x11-utils). See bench/README.md.
"""

import argparse
import os
import shutil
import statistics
import subprocess
import sys
import tempfile
import time

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
from bench import XDisplay, corvane_ini, log  # noqa: E402

# "view.win": web, history, active, inactive, statistics, toolbar, quick-add bar.
LISTS_SHOWN = bytes.fromhex("0000" "0000" "ffff" "ffff" "ffff" "ffff" "ffff")
BROWSER_TOO = bytes.fromhex("ffff" "0000" "ffff" "ffff" "ffff" "ffff" "ffff")


def make_home(root, views, paused=0):
    home = tempfile.mkdtemp(dir=root)
    with open(os.path.join(home, "corvane.ini"), "wb") as f:
        f.write(corvane_ini(os.path.join(home, "download") + "/", 10,
                            os.path.join(home, "historial.rtf")))
    with open(os.path.join(home, "view.win"), "wb") as f:
        f.write(views)
    with open(os.path.join(home, "inactivas.dwn"), "w", newline="") as f:
        for i in range(paused):
            f.write(f"http://127.0.0.1:9/pausado{i}.iso\r\n{home}/download/pausado{i}.iso\r\n"
                    f" 1048576 \r\n 524288 \r\n 30 \r\nTrue\r\n\r\n\r\nFalse\r\nFalse\r\n")
    return home


def main_window_shown(display):
    """True once a window titled "Corvane" at least 700 pixels wide is on screen (the splash
    has the same title but is smaller)."""
    tree = subprocess.run(["xwininfo", "-root", "-tree", "-display", display],
                          capture_output=True, text=True).stdout
    for line in tree.splitlines():
        if '"Corvane"' in line and ":" in line:
            size = line.rsplit(")", 1)[-1].strip().split("+")[0]
            try:
                width = int(size.split("x")[0])
            except ValueError:
                continue
            if width >= 700:
                return True
    return False


def rss_kib(pid, field="VmRSS"):
    with open(f"/proc/{pid}/status") as f:
        for line in f:
            if line.startswith(field + ":"):
                return int(line.split()[1])
    return 0


def cpu_ticks(pid):
    with open(f"/proc/{pid}/stat") as f:
        fields = f.read().rsplit(")", 1)[1].split()
    return int(fields[11]) + int(fields[12])


def start(corvane, home, display):
    env = dict(os.environ, DISPLAY=display, QT_QPA_PLATFORM="xcb")
    return subprocess.Popen([corvane, "--home", home], env=env, stdout=subprocess.DEVNULL,
                            stderr=subprocess.DEVNULL)


def stop(proc):
    proc.terminate()
    try:
        proc.wait(timeout=10)
    except subprocess.TimeoutExpired:
        proc.kill()
        proc.wait()


def startup(corvane, root, display, views, settle):
    """Seconds from the start command to the main window shown; RSS once it has settled."""
    home = make_home(root, views)
    t0 = time.perf_counter()
    proc = start(corvane, home, display)
    while not main_window_shown(display):
        if proc.poll() is not None or time.perf_counter() - t0 > 30:
            stop(proc)
            return None, None
        time.sleep(0.005)
    shown = time.perf_counter() - t0
    time.sleep(settle)
    rss = rss_kib(proc.pid) / 1024
    stop(proc)
    shutil.rmtree(home, ignore_errors=True)
    return shown, rss


def idle_cpu(corvane, root, display, seconds):
    home = make_home(root, LISTS_SHOWN, paused=20)
    proc = start(corvane, home, display)
    time.sleep(5)
    ticks0, t0 = cpu_ticks(proc.pid), time.perf_counter()
    time.sleep(seconds)
    ticks, wall = cpu_ticks(proc.pid) - ticks0, time.perf_counter() - t0
    stop(proc)
    shutil.rmtree(home, ignore_errors=True)
    return 100.0 * ticks / os.sysconf("SC_CLK_TCK") / wall


def main():
    ap = argparse.ArgumentParser(description=__doc__,
                                 formatter_class=argparse.RawDescriptionHelpFormatter)
    ap.add_argument("--corvane", required=True)
    ap.add_argument("--rounds", type=int, default=int(os.environ.get("ROUNDS", "7")))
    ap.add_argument("--idle-seconds", type=float, default=30)
    args = ap.parse_args()
    corvane = os.path.abspath(args.corvane)
    root = tempfile.mkdtemp(prefix="corvane-gui-")
    xdisplay = XDisplay()
    try:
        display = xdisplay.start()
        # One uncounted start: the first one reads the libraries from disk.
        startup(corvane, root, display, LISTS_SHOWN, 0)
        rows = []
        for label, views, settle in (("browser hidden", LISTS_SHOWN, 2),
                                     ("browser shown", BROWSER_TOO, 4)):
            times, rss = [], []
            for _ in range(args.rounds):
                shown, kib = startup(corvane, root, display, views, settle)
                if shown is not None:
                    times.append(shown)
                    rss.append(kib)
            rows.append((label, times, rss))
            log(f"  {label}: {len(times)} starts")
        idle = idle_cpu(corvane, root, display, args.idle_seconds)
    finally:
        xdisplay.stop()
        shutil.rmtree(root, ignore_errors=True)

    print(f"| start-up, {args.rounds} starts | to main window shown, s: median (min–max) "
          f"| RSS after, MiB: median (max) |")
    print("|---|---|---|")
    for label, times, rss in rows:
        if not times:
            print(f"| {label} | FAILED | — |")
            continue
        print(f"| {label} | {statistics.median(times):.3f} ({min(times):.3f}–{max(times):.3f}) "
              f"| {statistics.median(rss):.1f} ({max(rss):.1f}) |")
    print()
    print(f"Idle with 20 paused downloads, lists and graph shown: {idle:.2f} % of one core "
          f"over {args.idle_seconds:.0f} s")


if __name__ == "__main__":
    sys.exit(main())
