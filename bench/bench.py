#!/usr/bin/python3
"""Throughput benchmark: Corvane's headless mode against curl, wget and aria2c on loopback.

Standard library only. Normally started by bench/run.sh, which installs the packages and
builds Corvane; see bench/README.md for what the columns mean.
"""

import argparse
import concurrent.futures
import ctypes
import datetime
import hashlib
import json
import os
import platform
import shutil
import signal
import socket
import statistics
import subprocess
import sys
import tempfile
import threading
import time

GIB = 1 << 30
MIB = 1 << 20
BIG_NAME = "big.bin"
BIG_SIZE = 1 * GIB
MANY_COUNT = 40
MANY_SIZE = 25 * MIB
MANY_DIR = "many"
MID_NAME = "mid.bin"
MID_SIZE = 256 * MIB
# (e): what nginx lets each connection have (its limit_rate; nginx's "m" is MiB).
CAP_MIB_S = 16
# (g): Corvane's --limit-rate, in Kb/s of 1024 bytes.
LIMIT_KB = 20000

SCENARIOS = {
    "a": "1 GiB file over HTTP, written to disk",
    "b": "1 GiB file over FTP, written to disk",
    "c": f"{MANY_COUNT} files of 25 MiB at once over HTTP",
    "d": "1 GiB file over HTTPS, written to disk",
    "e": f"{MID_SIZE // MIB} MiB file over HTTP from a server that holds each connection to "
         f"{CAP_MIB_S} MiB/s",
    "f": "1 GiB file over HTTP, Corvane on 4 connections and on 1",
    "g": f"{MID_SIZE // MIB} MiB file over HTTP under Corvane's speed limit "
         f"(--limit-rate {LIMIT_KB})",
}
# Corvane on N connections: "conexiones" in its preferencias.ini; aria2c on N: -xN -sN -k1M.
CONNECTIONS = {"corvane-c1": 1, "corvane-c4": 4, "corvane-c16": 16,
               "aria2c-x4": 4, "aria2c-x16": 16}
CLIENTS = ["corvane", "curl", "wget", "corvane-gui", *CONNECTIONS]
# The clients each scenario can run, and those it runs when CLIENTS does not say.
SCENARIO_CLIENTS = {
    **{sc: ["corvane", "curl", "wget", "corvane-gui"] for sc in "abcd"},
    "e": ["corvane-c1", "corvane-c4", "corvane-c16", "aria2c-x4", "aria2c-x16", "curl"],
    "f": ["corvane-c1", "corvane-c4"],
    "g": ["corvane", "corvane-c1", "corvane-c4", "corvane-c16"],
}
DEFAULT_CLIENTS = {
    **{sc: ["corvane", "curl", "wget"] for sc in "abcd"},
    "e": SCENARIO_CLIENTS["e"],
    "f": SCENARIO_CLIENTS["f"],
    "g": ["corvane"],
}
# Scenarios whose clients may write the file out of order (several connections, or a file
# made its full size at once): the transfer time runs from the first byte on disk to the
# client's exit, as the file's size no longer tells when the last byte came.
UNORDERED = {"e", "f", "g"}
# The program with its windows: the active list and the speed graph shown, the bars too
# ("view.win": web, history, active, inactive, statistics, toolbar, quick-add bar).
GUI_VIEWS = bytes.fromhex("0000" "0000" "ffff" "0000" "ffff" "ffff" "ffff")
TIME = "/usr/bin/time"


def log(*parts):
    print(*parts, file=sys.stderr, flush=True)


# --------------------------------------------------------------------------- data

def many_names():
    return [f"f{i:02d}.bin" for i in range(1, MANY_COUNT + 1)]


def source_files(data):
    """(relative path, size) of every source file."""
    files = [(BIG_NAME, BIG_SIZE), (MID_NAME, MID_SIZE)]
    files += [(f"{MANY_DIR}/{n}", MANY_SIZE) for n in many_names()]
    return files


def write_random(path, size):
    tmp = path + ".part"
    with open(tmp, "wb") as out:
        left = size
        while left:
            n = min(left, 16 * MIB)
            out.write(os.urandom(n))
            left -= n
    os.replace(tmp, path)


def sha256_file(path):
    with open(path, "rb", buffering=0) as f:
        return hashlib.file_digest(f, "sha256").hexdigest()


def prepare_data(data):
    """Makes the random files once and keeps their sha256 in a manifest keyed by size+mtime."""
    os.makedirs(os.path.join(data, MANY_DIR), exist_ok=True)
    manifest_path = os.path.join(data, "manifest.json")
    try:
        with open(manifest_path) as f:
            manifest = json.load(f)
    except (OSError, ValueError):
        manifest = {}
    changed = False
    for rel, size in source_files(data):
        path = os.path.join(data, rel)
        try:
            st = os.stat(path)
        except FileNotFoundError:
            st = None
        if st is None or st.st_size != size:
            log(f"  making {rel} ({size // MIB} MiB of random data)")
            write_random(path, size)
            st = os.stat(path)
        entry = manifest.get(rel)
        if not entry or entry.get("size") != st.st_size or entry.get("mtime") != st.st_mtime_ns:
            manifest[rel] = {"size": st.st_size, "mtime": st.st_mtime_ns,
                             "sha256": sha256_file(path)}
            changed = True
    if changed:
        with open(manifest_path + ".tmp", "w") as f:
            json.dump(manifest, f, indent=1)
        os.replace(manifest_path + ".tmp", manifest_path)
    return {rel: manifest[rel]["sha256"] for rel, _ in source_files(data)}


def preread(paths):
    """Reads the files so that every client finds them in the page cache."""
    buf = bytearray(8 * MIB)
    view = memoryview(buf)
    for p in paths:
        with open(p, "rb", buffering=0) as f:
            while f.readinto(view):
                pass


# --------------------------------------------------------------------------- servers

PR_SET_PDEATHSIG = 1
TICK = os.sysconf("SC_CLK_TCK")


def machine_busy_s():
    """CPU seconds all cores have spent busy since boot (steal included)."""
    with open("/proc/stat") as f:
        v = [int(x) for x in f.readline().split()[1:]]
    user, nice, system, idle, iowait, irq, softirq, steal = (v + [0] * 8)[:8]
    return (user + nice + system + irq + softirq + steal) / TICK


def wait_until_quiet(max_wait):
    """Waits (up to max_wait s) for half a second in which the machine is nearly idle, as the
    servers and this script are between runs; True when it came."""
    deadline = time.monotonic() + max_wait
    while True:
        b0 = machine_busy_s()
        time.sleep(0.5)
        if machine_busy_s() - b0 <= 0.05:
            return True
        if time.monotonic() >= deadline:
            return False


def is_noisy(r):
    """Other work took a large share of the machine while this run went on."""
    return r["other_cpu_s"] > max(0.5, 0.4 * r["wall_s"])


def process_cpu_s(pid):
    """CPU seconds of one process (its threads and reaped children)."""
    try:
        with open(f"/proc/{pid}/stat") as f:
            fields = f.read().rsplit(")", 1)[1].split()
        return sum(int(x) for x in fields[11:15]) / TICK
    except (OSError, IndexError, ValueError):
        return 0.0


def own_cpu_s():
    t = os.times()
    return t.user + t.system


def read_io(pid):
    """/proc/PID/io as a dict (empty when it cannot be read)."""
    try:
        with open(f"/proc/{pid}/io") as f:
            return {k: int(v) for k, v in (line.split(": ") for line in f if ": " in line)}
    except (OSError, ValueError):
        return {}


def has_exited(proc):
    """Whether the process has ended, without reaping it: the run reaps it itself, for its
    resource use."""
    try:
        return os.waitid(os.P_PID, proc.pid, os.WEXITED | os.WNOHANG | os.WNOWAIT) is not None
    except ChildProcessError:
        return True


def _die_with_parent():
    # Servers and clients get SIGTERM if this script dies without cleaning up.
    try:
        ctypes.CDLL(None, use_errno=True).prctl(PR_SET_PDEATHSIG, signal.SIGTERM)
    except Exception:
        pass


def free_port():
    with socket.socket() as s:
        s.bind(("127.0.0.1", 0))
        return s.getsockname()[1]


def wait_for_port(port, proc, what, seconds=15):
    deadline = time.monotonic() + seconds
    while time.monotonic() < deadline:
        if proc.poll() is not None:
            raise RuntimeError(f"{what} exited at start (code {proc.returncode})")
        try:
            with socket.create_connection(("127.0.0.1", port), timeout=0.5):
                return
        except OSError:
            time.sleep(0.1)
    raise RuntimeError(f"{what} did not start listening on 127.0.0.1:{port}")


class Servers:
    def __init__(self, state, data, python):
        self.state = state
        self.data = data
        self.python = python
        self.procs = []
        self.http_port = None
        self.https_port = None
        self.capped_port = None
        self.ca_file = None
        self.ftp_port = None

    def _record(self, proc):
        self.procs.append(proc)
        with open(os.path.join(self.state, "servers.pids"), "a") as f:
            f.write(f"{proc.pid}\n")

    def start(self):
        ngx = os.path.join(self.state, "nginx")
        os.makedirs(os.path.join(ngx, "logs"), exist_ok=True)
        self.http_port = free_port()
        self.https_port = free_port()
        self.capped_port = free_port()
        cert, key = self.make_certificate(ngx)
        temp_dirs = ""
        for kind in ("client_body", "proxy", "fastcgi", "uwsgi", "scgi"):
            d = os.path.join(ngx, f"{kind}_temp")
            os.makedirs(d, exist_ok=True)
            temp_dirs += f"    {kind}_temp_path {d};\n"
        conf = os.path.join(ngx, "nginx.conf")
        with open(conf, "w") as f:
            f.write(f"""daemon off;
master_process off;
worker_processes 1;
pid {ngx}/nginx.pid;
error_log {ngx}/logs/error.log warn;
events {{ worker_connections 1024; }}
http {{
    access_log off;
    sendfile on;
    tcp_nopush on;
    keepalive_timeout 10;
    default_type application/octet-stream;
{temp_dirs}    server {{
        listen 127.0.0.1:{self.http_port};
        root {self.data};
        location / {{ }}
    }}
    server {{
        listen 127.0.0.1:{self.https_port} ssl;
        ssl_certificate {cert};
        ssl_certificate_key {key};
        root {self.data};
        location / {{ }}
    }}
    server {{
        listen 127.0.0.1:{self.capped_port};
        root {self.data};
        location / {{ limit_rate {CAP_MIB_S}m; }}
    }}
}}
""")
        nginx = shutil.which("nginx") or "/usr/sbin/nginx"
        proc = subprocess.Popen([nginx, "-p", ngx, "-c", conf, "-e", f"{ngx}/logs/error.log"],
                                stdin=subprocess.DEVNULL, stdout=open(f"{ngx}/logs/stdout", "w"),
                                stderr=subprocess.STDOUT, start_new_session=True,
                                preexec_fn=_die_with_parent)
        self._record(proc)
        wait_for_port(self.http_port, proc, "nginx")
        wait_for_port(self.https_port, proc, "nginx (TLS)")
        wait_for_port(self.capped_port, proc, "nginx (capped)")

        self.ftp_port = free_port()
        ftp_log = open(os.path.join(self.state, "ftp.log"), "w")
        proc = subprocess.Popen([self.python, "-m", "pyftpdlib", "-i", "127.0.0.1",
                                 "-p", str(self.ftp_port), "-d", self.data],
                                stdin=subprocess.DEVNULL, stdout=ftp_log, stderr=subprocess.STDOUT,
                                start_new_session=True, preexec_fn=_die_with_parent)
        self._record(proc)
        wait_for_port(self.ftp_port, proc, "pyftpdlib")
        log(f"  nginx on 127.0.0.1:{self.http_port} (TLS on {self.https_port}, "
            f"{CAP_MIB_S} MiB/s a connection on {self.capped_port}), "
            f"pyftpdlib on 127.0.0.1:{self.ftp_port}")

    def make_certificate(self, folder):
        """A throw-away authority and a certificate for 127.0.0.1 that it signs (elliptic-curve
        keys, as a web server would have today); the clients are told to trust the authority."""
        ca_key, self.ca_file = os.path.join(folder, "ca.key"), os.path.join(folder, "ca.pem")
        key, csr, cert = (os.path.join(folder, n) for n in ("server.key", "server.csr", "server.pem"))
        ext = os.path.join(folder, "server.ext")
        with open(ext, "w") as f:
            f.write("subjectAltName=IP:127.0.0.1\n")
        newkey = ["-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:prime256v1", "-nodes"]
        for cmd in (["req", "-x509"] + newkey + ["-keyout", ca_key, "-out", self.ca_file,
                                                 "-days", "2", "-subj", "/CN=Bench CA"],
                    ["req", "-new"] + newkey + ["-keyout", key, "-out", csr, "-subj", "/CN=127.0.0.1"],
                    ["x509", "-req", "-in", csr, "-CA", self.ca_file, "-CAkey", ca_key,
                     "-set_serial", "1", "-days", "2", "-extfile", ext, "-out", cert]):
            subprocess.run(["openssl"] + cmd, check=True, capture_output=True)
        return cert, key

    def stop(self):
        for proc in self.procs:
            if proc.poll() is None:
                proc.terminate()
        for proc in self.procs:
            try:
                proc.wait(timeout=5)
            except subprocess.TimeoutExpired:
                proc.kill()
                proc.wait()
        self.procs = []


# --------------------------------------------------------------------------- Corvane settings

def corvane_ini(defdir, maxdesc, histrut):
    def num(v):
        return f" {v} "
    lines = [
        defdir,          # defdir
        num(1),          # initstart
        num(0),          # showmsg
        num(0),          # exevirus
        "",              # virus
        "5",             # segs
        "5",             # veces
        num(0),          # delinc
        num(0),          # dellista
        num(1),          # autocont
        str(maxdesc),    # maxdesc (includes the template row)
        "10",            # wait
        num(1),          # checkact
        "False",         # autoact
        "True",          # notact
        "False",         # msgno
        "True",          # msgdialog
        "False",         # msgsys
        num(1),          # wavs
        histrut,         # histrut
        num(10),         # histsize
    ]
    return "".join(line + "\r\n" for line in lines).encode()


# --------------------------------------------------------------------------- runs

class TransferClock(threading.Thread):
    """Watches the destination files: when the first byte of the run reached the disk and when
    the last did, so that a client's start-up and exit are not counted as transfer time. The
    program with windows does not end by itself: once every file is whole it is asked to close
    (SIGTERM, handled as the main window's close: lists saved, then exit). With `to_exit` the
    last byte is taken to have come when the client exits: a file written out of order has its
    full size long before it is whole."""
    def __init__(self, time_proc, paths, sizes, close, to_exit=False):
        super().__init__(daemon=True)
        self.time_proc, self.paths, self.sizes, self.close = time_proc, paths, sizes, close
        self.to_exit = to_exit
        self.first = self.last = None

    def run(self):
        while not has_exited(self.time_proc):
            have = []
            for p in self.paths:
                try:
                    have.append(os.path.getsize(p))
                except OSError:
                    have.append(0)
            now = time.perf_counter()
            if self.first is None and any(have):
                self.first = now
            if not self.to_exit and all(h >= n for h, n in zip(have, self.sizes)):
                self.last = now
                break
            time.sleep(0.002)
        if self.to_exit and self.first is not None:
            self.last = time.perf_counter()
        if self.close and self.last is not None:
            try:
                with open(f"/proc/{self.time_proc.pid}/task/{self.time_proc.pid}/children") as f:
                    for pid in f.read().split():
                        os.kill(int(pid), signal.SIGTERM)
            except (OSError, ValueError):
                pass

    def seconds(self):
        return self.last - self.first if self.first is not None and self.last is not None \
            and self.last > self.first else None


class XDisplay:
    """Xvfb on a free display for the program with windows; stopped at the end."""
    def __init__(self):
        self.proc = None
        self.display = None

    def start(self):
        r, w = os.pipe()
        self.proc = subprocess.Popen(["Xvfb", "-displayfd", str(w), "-screen", "0", "1280x800x24",
                                      "-nolisten", "tcp"], pass_fds=(w,),
                                     stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
                                     start_new_session=True, preexec_fn=_die_with_parent)
        os.close(w)
        with os.fdopen(r) as f:
            self.display = ":" + f.readline().strip()
        log(f"  Xvfb on display {self.display}")
        return self.display

    def stop(self):
        if self.proc and self.proc.poll() is None:
            self.proc.terminate()
            self.proc.wait(timeout=5)


class Runner:
    def __init__(self, args, servers, sums):
        self.args = args
        self.servers = servers
        self.sums = sums
        self.work = os.path.join(args.dir, "run")
        self.dest = os.path.join(self.work, "download")
        self.home = os.path.join(self.work, "corvane-home")
        # Output of each client run, kept after the run (replaced by the next benchmark).
        self.logs = os.path.join(args.dir, "logs")
        shutil.rmtree(self.logs, ignore_errors=True)
        os.makedirs(self.logs)
        self.running = []
        self.state_dir = args.state

    # What each scenario fetches: list of (url, relative source path, destination name).
    def jobs(self, scenario):
        h = f"http://127.0.0.1:{self.servers.http_port}"
        if scenario == "e":
            capped = f"http://127.0.0.1:{self.servers.capped_port}"
            return [(f"{capped}/{MID_NAME}", MID_NAME, MID_NAME)]
        if scenario == "g":
            return [(f"{h}/{MID_NAME}", MID_NAME, MID_NAME)]
        if scenario == "d":
            return [(f"https://127.0.0.1:{self.servers.https_port}/{BIG_NAME}", BIG_NAME, BIG_NAME)]
        f = f"ftp://127.0.0.1:{self.servers.ftp_port}"
        if scenario in ("a", "f"):
            return [(f"{h}/{BIG_NAME}", BIG_NAME, BIG_NAME)]
        if scenario == "b":
            return [(f"{f}/{BIG_NAME}", BIG_NAME, BIG_NAME)]
        return [(f"{h}/{MANY_DIR}/{n}", f"{MANY_DIR}/{n}", n) for n in many_names()]

    def commands(self, client, scenario, jobs):
        """The processes to start for one run (all at once)."""
        if client == "corvane" or client.startswith("corvane-c"):
            limit = ["--limit-rate", str(LIMIT_KB)] if scenario == "g" else []
            return [[self.args.corvane, "--headless", "--home", self.home] + limit
                    + [u for u, _, _ in jobs]]
        if client == "corvane-gui":
            return [[self.args.corvane, "--home", self.home] + [u for u, _, _ in jobs]]
        if client == "curl":
            cmd = ["curl", "-sS", "--fail"]
            if scenario == "d":
                cmd += ["--cacert", self.servers.ca_file]
            if len(jobs) > 1:
                cmd += ["--parallel", "--parallel-max", str(MANY_COUNT)]
            for url, _, name in jobs:
                cmd += ["-o", os.path.join(self.dest, name), url]
            return [cmd]
        if client == "wget":
            trust = [f"--ca-certificate={self.servers.ca_file}"] if scenario == "d" else []
            return [["wget", "-q"] + trust + ["-O", os.path.join(self.dest, name), url]
                    for url, _, name in jobs]
        if client.startswith("aria2c-"):
            n = str(CONNECTIONS[client])
            # No configuration file, no progress readout; the file is not allocated first
            # (the cheapest way for aria2c, as the others allocate nothing either).
            cmd = ["aria2c", "--no-conf", f"-x{n}", f"-s{n}", "-k1M", "--file-allocation=none",
                   "--allow-overwrite=true", "--auto-file-renaming=false",
                   "--summary-interval=0", "--show-console-readout=false",
                   "--download-result=hide", "--console-log-level=warn", "-d", self.dest]
            if scenario == "d":
                cmd += [f"--ca-certificate={self.servers.ca_file}"]
            return [cmd + ["-o", name, url] for url, _, name in jobs]
        raise ValueError(client)

    def reset(self, scenario, client=None):
        shutil.rmtree(self.dest, ignore_errors=True)
        os.makedirs(self.dest)
        # Corvane's home starts fresh: no lists, no history, only the settings file.
        shutil.rmtree(self.home, ignore_errors=True)
        os.makedirs(self.home)
        maxdesc = MANY_COUNT if scenario == "c" else 10
        with open(os.path.join(self.home, "corvane.ini"), "wb") as f:
            f.write(corvane_ini(self.dest + "/", maxdesc, os.path.join(self.home, "historial.rtf")))
        with open(os.path.join(self.home, "view.win"), "wb") as f:
            f.write(GUI_VIEWS)
        if client in CONNECTIONS and client.startswith("corvane-"):
            with open(os.path.join(self.home, "preferencias.ini"), "w") as f:
                f.write(f"[General]\nconexiones={CONNECTIONS[client]}\n")

    def kill_running(self):
        for proc in self.running:
            try:
                os.killpg(proc.pid, signal.SIGKILL)
            except ProcessLookupError:
                pass

    def run(self, client, scenario, round_no):
        jobs = self.jobs(scenario)
        self.reset(scenario, client)
        os.sync()
        preread(os.path.join(self.args.data, rel) for _, rel, _ in jobs)
        quiet = wait_until_quiet(self.args.quiet_wait)
        cmds = self.commands(client, scenario, jobs)
        logname = os.path.join(self.logs, f"r{round_no}-{scenario}-{client}.log")
        out = open(logname, "w")
        timed_out = threading.Event()

        def on_timeout():
            timed_out.set()
            self.kill_running()

        watchdog = threading.Timer(self.args.timeout, on_timeout)
        server_pids = [p.pid for p in self.servers.procs]
        busy0 = machine_busy_s()
        servers0 = sum(process_cpu_s(p) for p in server_pids)
        own0 = own_cpu_s()
        t0 = time.perf_counter()
        # Each client runs under GNU time only for its peak RSS: a child's ru_maxrss from
        # wait4 would start at this script's own size, which the forked child inherits.
        rss_files = [os.path.join(self.state_dir, f"rss{i}") for i in range(len(cmds))]
        # Corvane trusts the test authority through SSL_CERT_FILE, as other programs allow.
        env = dict(os.environ, SSL_CERT_FILE=self.servers.ca_file)
        if client == "corvane-gui":
            env.update(DISPLAY=self.args.display, QT_QPA_PLATFORM="xcb")
        self.running = [subprocess.Popen([TIME, "-f", "%M", "-o", rf] + c, env=env,
                                         stdin=subprocess.DEVNULL, stdout=out,
                                         stderr=subprocess.STDOUT, start_new_session=True)
                        for c, rf in zip(cmds, rss_files)]
        watchdog.start()
        clock = TransferClock(self.running[0], [os.path.join(self.dest, n) for _, _, n in jobs],
                              [os.path.getsize(os.path.join(self.args.data, r)) for _, r, _ in jobs],
                              close=client == "corvane-gui", to_exit=scenario in UNORDERED)
        clock.start()
        cpu = 0.0
        minflt = 0
        rss_sum = 0
        rss_max = 0
        codes = []
        iosum = {"syscr": 0, "syscw": 0, "rchar": 0, "wchar": 0}
        try:
            for proc in self.running:
                # Before reaping: the time process's I/O counters now include the client's.
                os.waitid(os.P_PID, proc.pid, os.WEXITED | os.WNOWAIT)
                io = read_io(proc.pid)
                for key in iosum:
                    iosum[key] += io.get(key, 0)
                _, status, ru = os.wait4(proc.pid, 0)
                proc.returncode = os.waitstatus_to_exitcode(status)
                codes.append(proc.returncode)
                # CPU of the time process and its reaped child (the client).
                cpu += ru.ru_utime + ru.ru_stime
                minflt += ru.ru_minflt
            wall = time.perf_counter() - t0
            clock.join(timeout=5)
            servers_cpu = sum(process_cpu_s(p) for p in server_pids) - servers0
            other = machine_busy_s() - busy0 - cpu - servers_cpu - (own_cpu_s() - own0)
        except BaseException:
            self.kill_running()
            raise
        finally:
            watchdog.cancel()
            self.running = []
            out.close()

        for rf in rss_files:
            try:
                with open(rf) as f:
                    kib = int(f.read().split()[-1])
                os.unlink(rf)
            except (OSError, ValueError, IndexError):
                kib = 0
            rss_sum += kib
            rss_max = max(rss_max, kib)

        total = sum(os.path.getsize(os.path.join(self.args.data, rel)) for _, rel, _ in jobs)
        problem = None
        if timed_out.is_set():
            problem = f"timed out after {self.args.timeout} s"
        elif any(codes):
            problem = f"exit code {max(codes, key=abs)}"
        bad = self.verify(jobs)
        if bad:
            problem = (problem + "; " if problem else "") + bad
        # Multi-process runs (wget in c) report the sum of the peaks: all run at once.
        rss_kib = rss_sum if len(cmds) > 1 else rss_max
        result = {
            "round": round_no, "scenario": scenario, "client": client,
            "ok": problem is None, "problem": problem, "bytes": total,
            "wall_s": wall, "mb_s": total / 1e6 / wall,
            "transfer_mb_s": total / 1e6 / clock.seconds() if clock.seconds() else None,
            "cpu_s": cpu, "cpu_s_per_gib": cpu / (total / GIB),
            "rss_mib": rss_kib / 1024, "processes": len(cmds),
            "minor_faults": minflt,
            "read_calls": iosum["syscr"], "write_calls": iosum["syscw"],
            "read_bytes": iosum["rchar"], "write_bytes": iosum["wchar"],
            "quiet_before": quiet, "servers_cpu_s": servers_cpu, "other_cpu_s": max(other, 0.0), "log": logname,
        }
        shutil.rmtree(self.dest, ignore_errors=True)
        os.sync()
        return result

    def verify(self, jobs):
        """Empty text when every file is there with the source's sha256."""
        def check(job):
            _, rel, name = job
            path = os.path.join(self.dest, name)
            if not os.path.isfile(path):
                return f"{name} missing"
            size = os.path.getsize(path)
            want = os.path.getsize(os.path.join(self.args.data, rel))
            if size != want:
                return f"{name} has {size} bytes, not {want}"
            if sha256_file(path) != self.sums[rel]:
                return f"{name} sha256 differs"
            return None
        with concurrent.futures.ThreadPoolExecutor(max_workers=2) as pool:
            bad = [b for b in pool.map(check, jobs) if b]
        if not bad:
            return ""
        return f"{len(bad)} of {len(jobs)} files bad (" + ", ".join(bad[:3]) + \
            (", ..." if len(bad) > 3 else "") + ")"


# --------------------------------------------------------------------------- report

def fmt(v, digits=0):
    return f"{v:,.{digits}f}".replace(",", " ") if v is not None else "—"


def spread(values, digits=0):
    if not values:
        return "—"
    return f"{fmt(statistics.median(values), digits)} ({fmt(min(values), digits)}–{fmt(max(values), digits)})"


def ratio_table(rs, rounds, mine_name, base_name, title):
    """MB/s and CPU seconds of one client against another, round by round (runs seconds apart
    see the same load), with the medians."""
    speed, cpu, moving, cells_s, cells_c, cells_t = [], [], [], [], [], []
    for rn in range(1, rounds + 1):
        mine = next((r for r in rs if r["client"] == mine_name and r["round"] == rn), None)
        base = next((r for r in rs if r["client"] == base_name and r["round"] == rn), None)
        if mine is None or base is None:
            continue
        if not (mine["ok"] and base["ok"]):
            cells_s.append("FAILED")
            cells_c.append("FAILED")
            cells_t.append("FAILED")
            continue
        s = mine["mb_s"] / base["mb_s"]
        c = mine["cpu_s"] / base["cpu_s"] if base["cpu_s"] > 0 else None
        mark = "*" if is_noisy(mine) or is_noisy(base) else ""
        speed.append(s)
        cells_s.append(f"{s:.2f}{mark}")
        if c is not None:
            cpu.append(c)
        cells_c.append(f"{c:.2f}{mark}" if c is not None else "—")
        t = (mine["transfer_mb_s"] / base["transfer_mb_s"]
             if mine.get("transfer_mb_s") and base.get("transfer_mb_s") else None)
        if t is not None:
            moving.append(t)
        cells_t.append(f"{t:.2f}{mark}" if t is not None else "—")
    if not cells_s:
        return []
    med_s = f"{statistics.median(speed):.2f}" if speed else "—"
    med_c = f"{statistics.median(cpu):.2f}" if cpu else "—"
    med_t = f"{statistics.median(moving):.2f}" if moving else "—"
    return ["", f"| {title} | " + " | ".join(f"round {i + 1}" for i in range(len(cells_s)))
            + " | median |",
            "|---|" + "---|" * (len(cells_s) + 1),
            "| MB/s | " + " | ".join(cells_s) + f" | {med_s} |",
            "| transfer MB/s | " + " | ".join(cells_t) + f" | {med_t} |",
            "| CPU s | " + " | ".join(cells_c) + f" | {med_c} |"]


# Per round, one client against another: (scenario, client, base, title).
RATIOS = [
    ("abcd", "corvane", "curl", "Corvane/curl"),
    ("abcd", "corvane-gui", "corvane", "windows/headless"),
    ("e", "corvane-c1", "curl", "Corvane/curl, 1 connection"),
    ("e", "corvane-c4", "aria2c-x4", "Corvane/aria2c, 4 connections"),
    ("e", "corvane-c16", "aria2c-x16", "Corvane/aria2c, 16 connections"),
    ("f", "corvane-c4", "corvane-c1", "4 connections/1"),
]


def median_of(rs, client, key):
    values = [r[key] for r in rs if r["client"] == client and r["ok"] and r.get(key)]
    return statistics.median(values) if values else None


def targets(sc, rs):
    """What (e) and (g) are judged by, from the medians of the ok runs."""
    lines = []
    if sc == "e":
        for cl, n in CONNECTIONS.items():
            if not cl.startswith("corvane-"):
                continue
            mine = median_of(rs, cl, "transfer_mb_s")
            if mine is None:
                continue
            floor = 0.9 * CAP_MIB_S * MIB * n / 1e6
            verdict = "met" if mine >= floor else "NOT met"
            text = (f"- {cl}: transfer {mine:.1f} MB/s against ≥ {floor:.1f} MB/s "
                    f"(0.9 × {CAP_MIB_S} MiB/s × {n}): {verdict}")
            rival = next((c for c, m in CONNECTIONS.items()
                          if c.startswith("aria2c-") and m == n), None)
            theirs = median_of(rs, rival, "transfer_mb_s") if rival else None
            if theirs is not None:
                verdict = "met" if mine >= theirs else "NOT met"
                text += f"; {rival} {theirs:.1f} MB/s, Corvane ≥ aria2c: {verdict}"
            lines.append(text)
    if sc == "g":
        limit = LIMIT_KB * 1024 / 1e6
        for cl in SCENARIO_CLIENTS["g"]:
            mine = median_of(rs, cl, "transfer_mb_s")
            if mine is None:
                continue
            cpu = median_of(rs, cl, "cpu_s_per_gib")
            lines.append(f"- {cl}: transfer {mine:.2f} MB/s = {mine / limit:.3f} × the limit "
                         f"of {limit:.2f} MB/s ({LIMIT_KB} Kb/s); "
                         f"{cpu if cpu is not None else 0:.2f} CPU s/GiB")
    return ["", "Targets, on the medians of transfer MB/s:"] + lines if lines else []


def report(results, scenarios, plan, rounds):
    lines = []
    for sc in scenarios:
        rs = [r for r in results if r["scenario"] == sc]
        if not rs:
            continue
        lines.append(f"### ({sc}) {SCENARIOS[sc]}")
        lines.append("")
        lines.append("| client | ok runs | MB/s median (min–max) | transfer MB/s median (min–max) "
                     "| CPU s/GiB median (min–max) | peak RSS MiB median (max) | wall s median "
                     "| read / write calls median | minor faults median |")
        lines.append("|---|---|---|---|---|---|---|---|---|")
        for cl in plan[sc]:
            mine = [r for r in rs if r["client"] == cl]
            if not mine:
                continue
            ok = [r for r in mine if r["ok"]]
            name = cl + (" (Σ of 40 processes)" if cl == "wget" and sc == "c" else "")
            if not ok:
                lines.append(f"| {name} | 0/{len(mine)} FAILED | — | — | — | — | — | — | — |")
                continue
            rss = [r["rss_mib"] for r in ok]
            lines.append(
                f"| {name} | {len(ok)}/{len(mine)}{'' if len(ok) == len(mine) else ' (some FAILED)'} "
                f"| {spread([r['mb_s'] for r in ok])} "
                f"| {spread([r['transfer_mb_s'] for r in ok if r.get('transfer_mb_s')])} "
                f"| {spread([r['cpu_s_per_gib'] for r in ok], 2)} "
                f"| {fmt(statistics.median(rss), 1)} ({fmt(max(rss), 1)}) "
                f"| {fmt(statistics.median([r['wall_s'] for r in ok]), 2)} "
                f"| {fmt(statistics.median([r['read_calls'] for r in ok]))} / "
                f"{fmt(statistics.median([r['write_calls'] for r in ok]))} "
                f"| {fmt(statistics.median([r['minor_faults'] for r in ok]))} |")
        for where, mine_name, base_name, title in RATIOS:
            if sc in where:
                lines += ratio_table(rs, rounds, mine_name, base_name, title)
        lines += targets(sc, rs)
        others = [r["other_cpu_s"] for r in rs]
        noisy = sum(1 for r in rs if is_noisy(r))
        lines.append("")
        lines.append(f"CPU seconds used during a run by anything but the client and the servers: "
                     f"median {statistics.median(others):.2f}, max {max(others):.2f}; "
                     f"{noisy} of {len(rs)} runs noisy (other work over 40 % of the wall time, "
                     f"marked * above)")
        failed = [r for r in rs if not r["ok"]]
        if failed:
            lines.append("")
            for r in failed:
                lines.append(f"- FAILED: round {r['round']} {r['client']}: {r['problem']} "
                             f"(log {r['log']})")
        lines.append("")
    return "\n".join(lines)


# --------------------------------------------------------------------------- syscall profile

def profile(runner, out_dir, scenario):
    """One Corvane run of a scenario under strace: syscall counts and the sizes of reads and
    writes. strace slows the run down, so the counts differ from the timed runs."""
    strace = shutil.which("strace")
    if not strace:
        log("strace is not installed: no profile")
        return ""
    jobs = runner.jobs(scenario)
    cmd = [runner.args.corvane, "--headless", "--home", runner.home] + [u for u, _, _ in jobs]
    sources = [os.path.join(runner.args.data, rel) for _, rel, _ in jobs]
    summary = os.path.join(out_dir, f"strace-summary-{scenario}.txt")
    trace = os.path.join(out_dir, f"strace-rw-{scenario}.txt")
    for opts in (["-c", "-o", summary],
                 ["-qq", "-e", "trace=read,write,recvfrom,readv,writev,pwrite64",
                  "-e", "abbrev=all", "-s", "0", "-o", trace]):
        runner.reset(scenario)
        preread(sources)
        subprocess.run([strace, "-f"] + opts + cmd, stdout=subprocess.DEVNULL,
                       stderr=subprocess.DEVNULL, timeout=runner.args.timeout * 3)
    shutil.rmtree(runner.dest, ignore_errors=True)
    # Result sizes per syscall name, bucketed by powers of two.
    buckets = {}
    totals = {}
    with open(trace) as f:
        for line in f:
            if "<unfinished" in line or "= " not in line:
                continue
            rest = line.split(None, 1)[1] if line[:1].isdigit() else line
            if rest.startswith("<... "):
                name = rest[5:].split(" ", 1)[0]
            else:
                name = rest.split("(", 1)[0]
            try:
                ret = int(line.rsplit("= ", 1)[1].split()[0])
            except (IndexError, ValueError):
                continue
            b = 0 if ret <= 0 else 1 << (ret.bit_length() - 1)
            per = buckets.setdefault(name, {})
            per[b] = per.get(b, 0) + 1
            t = totals.setdefault(name, [0, 0])
            t[0] += 1
            t[1] += max(ret, 0)
    with open(summary) as f:
        table = [l.rstrip() for l in f if l.strip()]
    # The header, the ten syscalls that took the most time, the total.
    head = [l for l in table[:2]]
    rows = [l for l in table[2:] if not l.startswith("---") and " total" not in l]
    total = [l for l in table if l.rstrip().endswith(" total")]
    lines = [f"strace -f -c, one Corvane run of ({scenario}), top 10 by time:", "```"]
    lines += head + rows[:10] + total
    lines += ["```", "", f"read/write result sizes in ({scenario}) "
              f"(count per power-of-two bucket, from strace -e trace=...):", "```"]
    for name in sorted(totals):
        n, by = totals[name]
        lines.append(f"{name}: {n} calls, {by / MIB:.1f} MiB, mean {by / max(n, 1):.0f} B")
        parts = []
        for b in sorted(buckets[name]):
            label = "≤0" if b == 0 else (f"{b // 1024}K+" if b >= 1024 else f"{b}+")
            parts.append(f"{label}:{buckets[name][b]}")
        lines.append("   " + "  ".join(parts))
    lines.append("```")
    return "\n".join(lines)


# --------------------------------------------------------------------------- main

def machine_text():
    free = subprocess.run(["free", "-h"], capture_output=True, text=True).stdout.strip()
    model = ""
    try:
        with open("/proc/cpuinfo") as f:
            for line in f:
                if line.startswith("model name"):
                    model = line.split(":", 1)[1].strip()
                    break
    except OSError:
        pass
    vers = []
    for cmd in (["nginx", "-v"], ["curl", "--version"], ["wget", "--version"],
                ["aria2c", "--version"]):
        try:
            p = subprocess.run(cmd, capture_output=True, text=True)
            vers.append((p.stdout + p.stderr).splitlines()[0])
        except (OSError, IndexError):
            pass
    return (f"nproc {os.cpu_count()}, {model}, kernel {platform.release()}\n{free}\n"
            + "\n".join(vers))


def main():
    ap = argparse.ArgumentParser(description=__doc__)
    ap.add_argument("--corvane", required=True, help="path of the corvane binary")
    ap.add_argument("--revision", default="unknown revision",
                    help="what the binary was built from, for the report")
    ap.add_argument("--dir", default=os.environ.get("BENCH_DIR", "/tmp/corvane-bench"),
                    help="data folder (source files are kept here and reused)")
    ap.add_argument("--state", default=None, help="temporary folder for the servers (made and removed when not given)")
    ap.add_argument("--rounds", type=int, default=int(os.environ.get("ROUNDS", "5")))
    ap.add_argument("--warmup", type=int, default=int(os.environ.get("WARMUP", "1")),
                    help="uncounted rounds first (the first run on a fresh machine is often "
                         "several times slower, whichever client it is)")
    ap.add_argument("--scenarios", default=os.environ.get("SCENARIOS", "a,b,c,d"))
    ap.add_argument("--clients", default=os.environ.get("CLIENTS", ""),
                    help="any of " + ",".join(CLIENTS) + "; corvane-gui is the program with its "
                         "windows under Xvfb; each scenario runs those of them it can (by "
                         "default: corvane, curl and wget in a to d, all of its own in e and f, "
                         "corvane in g)")
    ap.add_argument("--no-wget-parallel", action="store_true",
                    default=os.environ.get("WGET_PARALLEL", "1") == "0",
                    help="skip wget in (c) instead of running 40 wget processes")
    ap.add_argument("--timeout", type=float, default=float(os.environ.get("BENCH_TIMEOUT", "300")),
                    help="seconds one run may take before it is killed and counted as FAILED")
    ap.add_argument("--quiet-wait", type=float,
                    default=float(os.environ.get("BENCH_QUIET_WAIT", "30")),
                    help="seconds to wait before each run for the machine to be idle")
    ap.add_argument("--profile", action="store_true", default=os.environ.get("PROFILE", "0") == "1",
                    help="also run Corvane once under strace and print the syscall profile")
    ap.add_argument("--python", default="/usr/bin/python3",
                    help="interpreter that has pyftpdlib (Debian's)")
    args = ap.parse_args()
    args.corvane = os.path.abspath(args.corvane)
    args.dir = os.path.abspath(args.dir)
    args.data = os.path.join(args.dir, "data")
    own_state = args.state is None
    if own_state:
        args.state = tempfile.mkdtemp(prefix="corvane-bench-")
    scenarios = [s for s in args.scenarios.split(",") if s]
    chosen = [c for c in args.clients.split(",") if c]
    for s in scenarios:
        if s not in SCENARIOS:
            ap.error(f"unknown scenario {s}")
    for c in chosen:
        if c not in CLIENTS:
            ap.error(f"unknown client {c}")
    # The clients of each scenario, in the order given.
    plan = {sc: [c for c in chosen if c in SCENARIO_CLIENTS[sc]] if chosen else DEFAULT_CLIENTS[sc]
            for sc in scenarios}
    for c in chosen:
        if not any(c in plan[sc] for sc in scenarios):
            ap.error(f"{c} runs in none of the scenarios {','.join(scenarios)}")
    scenarios = [sc for sc in scenarios if plan[sc]]
    clients = list(dict.fromkeys(c for sc in scenarios for c in plan[sc]))
    if any(c.startswith("aria2c-") for c in clients) and not shutil.which("aria2c"):
        ap.error("aria2c is not installed (bench/run.sh installs it)")
    if not os.access(args.corvane, os.X_OK):
        ap.error(f"{args.corvane} is not an executable")

    # SIGTERM/SIGHUP end the script through the same cleanup as Ctrl-C.
    def stop(signum, _frame):
        raise KeyboardInterrupt
    signal.signal(signal.SIGTERM, stop)
    signal.signal(signal.SIGHUP, stop)

    started = datetime.datetime.now()
    log(f"Data in {args.data}; temporary files in {args.state}")
    sums = prepare_data(args.data)
    log("  pre-reading the source files into the page cache")
    preread(os.path.join(args.data, rel) for rel, _ in source_files(args.data))

    servers = Servers(args.state, args.data, args.python)
    xdisplay = XDisplay()
    runner = None
    results = []
    prof = ""
    try:
        servers.start()
        if "corvane-gui" in clients:
            args.display = xdisplay.start()
        runner = Runner(args, servers, sums)
        for wn in range(1, args.warmup + 1):
            for sc in scenarios:
                for cl in plan[sc]:
                    if cl == "wget" and sc == "c" and args.no_wget_parallel:
                        continue
                    r = runner.run(cl, sc, f"w{wn}")
                    log(f"  warm-up ({sc}) {cl:11s} {r['wall_s']:7.2f} s, not counted")
        for rn in range(1, args.rounds + 1):
            for sc in scenarios:
                k = (rn - 1) % len(plan[sc])
                for cl in plan[sc][k:] + plan[sc][:k]:
                    if cl == "wget" and sc == "c" and args.no_wget_parallel:
                        continue
                    r = runner.run(cl, sc, rn)
                    results.append(r)
                    status = "ok" if r["ok"] else "FAILED: " + r["problem"]
                    if is_noisy(r):
                        status += " (noisy: other work ran)"
                    log(f"  round {rn}/{args.rounds} ({sc}) {cl:11s} {r['wall_s']:7.2f} s "
                        f"{r['mb_s']:8.0f} MB/s  CPU {r['cpu_s']:6.2f} s  RSS {r['rss_mib']:7.1f} MiB"
                        f"  faults {r['minor_faults']:7d}  other CPU {r['other_cpu_s']:5.2f} s"
                        f"  {status}")
        if args.profile:
            parts = []
            for sc in [x for x in ("a", "c") if x in scenarios]:
                log(f"  profiling one Corvane run of ({sc}) under strace")
                parts.append(profile(runner, runner.logs, sc))
            prof = "\n\n".join(p for p in parts if p)
    except KeyboardInterrupt:
        log("interrupted")
        if runner:
            runner.kill_running()
        return_code = 130
    else:
        return_code = 0
    finally:
        servers.stop()
        xdisplay.stop()
        if runner:
            shutil.rmtree(runner.work, ignore_errors=True)
        if own_state:
            shutil.rmtree(args.state, ignore_errors=True)

    text = [f"Corvane benchmark, {started:%Y-%m-%d %H:%M}, {args.rounds} rounds, "
            f"Corvane {args.revision} ({args.corvane})",
            "", "```", machine_text(), "```", "",
            report(results, scenarios, plan, args.rounds)]
    if args.no_wget_parallel and "c" in scenarios:
        text.append("(wget skipped in (c))\n")
    if prof:
        text.append(prof)
    text = "\n".join(text)
    print(text)
    stamp = f"{started:%Y%m%d-%H%M%S}"
    with open(os.path.join(args.dir, f"results-{stamp}.md"), "w") as f:
        f.write(text + "\n")
    with open(os.path.join(args.dir, f"results-{stamp}.json"), "w") as f:
        json.dump(results, f, indent=1)
    log(f"Saved {args.dir}/results-{stamp}.md and .json; output of each run in {args.dir}/logs")
    if any(not r["ok"] for r in results):
        return_code = return_code or 1
    return return_code


if __name__ == "__main__":
    sys.exit(main())
