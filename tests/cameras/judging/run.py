"""Runs a case in a folder: starts the camera and the recorder, and checks the results."""

import contextlib
import os
import shlex
import shutil
import sys
import time
from dataclasses import dataclass
from pathlib import Path

from .case import EXISTING_CONTENTS, OUTPUT
from .certificates import Certificates
from .processes import CameraProcess, RecorderProcess
from .verdict import judge

HERE = Path(__file__).resolve().parents[1]
PYTHON = [sys.executable, "-S"]  # without site packages, Python starts in half the time
STARTING_TIME = 60  # s, within which a camera must print its address on a busy machine


@dataclass(frozen=True)
class Programs:
    recorder: Path
    simulated_camera: Path
    relay: Path
    service: Path
    cache: Path
    trusted: Certificates
    other: Certificates


def run_case(case, programs, folder):
    """Returns the reasons why the case failed; empty if it passed."""
    prepared_folder(folder)
    try:
        with contextlib.ExitStack() as processes:
            camera, address = start_camera(case, programs, processes)
            outcome = _record(case, programs, folder, camera, address)
            return reasons_of(case, outcome, folder)
    except Exception as failure:  # an error in one row must not stop the others
        return [f"{type(failure).__name__}: {failure}"]


def prepared_folder(folder):
    shutil.rmtree(folder, ignore_errors=True)
    _recordings(folder).mkdir(parents=True)
    return folder


def reasons_of(case, outcome, folder):
    return [*judge(case, outcome, _recordings(folder)), *_reasons_of_left_file(case, folder)]


def start_camera(case, programs, processes):
    """Returns the process that the recorder connects to, and its address."""
    words = shlex.split(case.camera.replace("{certificate}", shlex.quote(str(programs.trusted.server))))
    if not words:
        return None, ""
    relayed = words[0] == "relayed"
    lifetime = str(int(case.longest()) + 15)
    camera = _started(_camera_command(words[relayed:], programs, lifetime), processes)
    address = camera.next_line(STARTING_TIME)
    if not relayed:
        return camera, address
    relay = _started([str(programs.relay), "--uri", address, "--duration", lifetime], processes)
    return relay, relay.next_line(STARTING_TIME)


def _started(command, processes):
    process = CameraProcess(command)
    processes.callback(process.close)
    return process


def _reasons_of_left_file(case, folder):
    if not case.leaves:
        return []
    if not (folder / case.leaves).exists():
        return [f"leaves no {case.leaves}"]
    if case.password and case.password in (folder / case.leaves).read_text():
        return [f"the password shows in {case.leaves}"]
    return []


def _camera_command(words, programs, lifetime):
    if words[0] == "simulated":
        return [str(programs.simulated_camera), *words[1:], "--lifetime", lifetime]
    options = ["--cache", str(programs.cache), "--lifetime", lifetime]
    if words[0] in ("vlc", "published"):
        return [*PYTHON, str(HERE / f"{words[0]}-camera"), *words[1:], *options]
    return [*PYTHON, str(HERE / "test-camera"), *words, *options]


def recorder_words(case, programs, folder, address):
    """Returns the options of the recorder. Writes the files that they refer to."""
    if case.existing:
        Path(_output(case, folder)).write_bytes(EXISTING_CONTENTS)
    password_file = folder / "password"
    password_file.write_text(case.password + "\n")
    authority = programs.trusted.authority
    values = {"folder": folder, "ca": authority, "relative_ca": os.path.relpath(authority, folder),
              "other_ca": programs.other.authority, "password": password_file}
    scheme, _, rest = address.partition("://")
    given = case.address
    if given.startswith("{uri_with_login}"):
        given = f"{scheme}://{given.removeprefix('{uri_with_login}')}@{rest}"
    given = given.replace("{uri}", address)
    options = [word.format(**values) for word in shlex.split(case.options)]
    return ["--uri", given, "--output", _output(case, folder), "--duration", f"{case.seconds:g}", *options]


def _recordings(folder):
    return folder / "recordings"


def _output(case, folder):
    return str(_recordings(folder) / f"{OUTPUT}.{case.to}")


def _environment(case):
    variables = {name: value for name, value in os.environ.items() if not name.startswith(("GST_", "TAVREN_"))}
    return {**variables, **dict(variable.split("=", 1) for variable in case.environment)}


def _record(case, programs, folder, camera, address):
    command = [str(programs.recorder), *recorder_words(case, programs, folder, address)]
    recorder = RecorderProcess(command, folder, _environment(case), case.largest_file)
    try:
        if case.signal or case.second:
            _await_play(camera)
        if case.signal:
            name, _, seconds = case.signal.partition("@")
            time.sleep(float(seconds))
            recorder.send_signal(name)
        if case.second:
            _expect_refusal(command, case, folder)
    finally:
        outcome = recorder.wait(case.longest())
    return outcome


def _await_play(camera):
    if camera.next_line(STARTING_TIME) != "PLAY":
        raise RuntimeError("the recorder does not play the camera")


def _expect_refusal(command, case, folder):
    """Starts a second recorder for the same file after the first one has created it."""
    time.sleep(1.5)
    (folder / "second").mkdir()
    outcome = RecorderProcess(command, folder / "second", _environment(case)).wait(case.longest())
    if outcome.status != 1 or "exist" not in outcome.err:
        raise RuntimeError(f"the second recorder exited with {outcome.status}: {outcome.err}")
