"""Runs a camera that uses the RTSP server of another project."""

import argparse
import shutil
import signal
import socket
import subprocess
import sys
import tempfile
import time
from pathlib import Path

from .contents import CONTENTS, default_cache
from .ports import reserved_port

STARTING_TIME = 30  # s


def serve(description, start):
    """Serves the contents named on the command line.

    `start` is called with the arguments, a folder for files, a port, and a list to which it adds
    its processes. It returns the camera's address."""
    arguments = _parsed_arguments(description)
    for number in (signal.SIGINT, signal.SIGTERM):
        signal.signal(number, lambda *_: sys.exit(0))
    folder = Path(tempfile.mkdtemp(prefix="camera-"))
    processes = []
    try:
        reservation = reserved_port("127.0.0.1")
        uri = start(arguments, folder, reservation.getsockname()[1], processes)
        wait_until(lambda: accepts_request("DESCRIBE", uri), processes)
        print(uri, flush=True)
        processes[0].wait(arguments.lifetime)
    except subprocess.TimeoutExpired:
        pass
    finally:
        for process in processes:
            process.kill()
            process.wait()
        shutil.rmtree(folder)


def _parsed_arguments(description):
    parser = argparse.ArgumentParser(description=description, epilog=f"contents: {', '.join(CONTENTS)}")
    parser.add_argument("contents", nargs="*", default=["h264", "aac"], metavar="CONTENT",
                        help="default: h264 aac")
    parser.add_argument("--cache", type=Path, default=default_cache(), metavar="FOLDER",
                        help="folder for encoded contents")
    parser.add_argument("--lifetime", type=int, default=60, metavar="SECONDS", help="default: 60")
    return parser.parse_args()


def started(command):
    """Starts a process that is killed when this process ends. Its messages are in the file `errors`."""
    errors = tempfile.TemporaryFile("w+", errors="replace")
    process = subprocess.Popen(["setpriv", "--pdeathsig", "KILL", *command], stdin=subprocess.DEVNULL,
                               stdout=subprocess.DEVNULL, stderr=errors)
    process.errors = errors
    return process


def wait_until(condition, processes):
    deadline = time.monotonic() + STARTING_TIME
    while not condition():
        if any(process.poll() is not None for process in processes) or time.monotonic() > deadline:
            messages = "".join(_messages(process) for process in processes)
            sys.exit(f"{messages}the server does not respond")
        time.sleep(0.1)


def _messages(process):
    process.errors.seek(0)
    return process.errors.read()


def accepts_connections(port):
    try:
        socket.create_connection(("127.0.0.1", port), 2).close()
        return True
    except OSError:
        return False


def accepts_request(method, uri, *headers):
    """Returns whether the server answers a request with 200."""
    port = int(uri.split(":")[2].split("/")[0])
    lines = [f"{method} {uri} RTSP/1.0", "CSeq: 1", *headers, "", ""]
    try:
        with socket.create_connection(("127.0.0.1", port), 2) as connection:
            connection.settimeout(2)
            connection.sendall("\r\n".join(lines).encode())
            return b" 200 " in connection.recv(4096)
    except OSError:
        return False
