"""Runs one case in a folder: starts the camera, then the recorder, and judges what it left."""

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
PYTHON = [sys.executable, "-S"]  # without site packages, it starts in half the time
STARTING_TIME = 60  # s that a camera may take until it prints its address, on a busy machine


@dataclass(frozen=True)
class Programs:
    recorder: Path
    simulated_camera: Path
    cache: Path
    trusted: Certificates
    other: Certificates


def run_case(case, programs, folder):
    """The reasons why the case has failed; none if it passed."""
    shutil.rmtree(folder, ignore_errors=True)
    recordings = folder / "recordings"
    recordings.mkdir(parents=True)
    camera = CameraProcess(_camera_command(case, programs)) if case.camera else None
    try:
        address = camera.next_line(STARTING_TIME) if camera else ""
        outcome = _record(case, programs, folder, camera, address)
        reasons = list(judge(case, outcome, recordings))
        return reasons + _reasons_of_left_file(case, folder)
    except Exception as failure:  # a row's own fault must not end the others
        return [f"{type(failure).__name__}: {failure}"]
    finally:
        if camera:
            camera.close()


def _reasons_of_left_file(case, folder):
    if not case.leaves:
        return []
    if not (folder / case.leaves).exists():
        return [f"leaves no {case.leaves}"]
    if case.password and case.password in (folder / case.leaves).read_text():
        return [f"the password shows in {case.leaves}"]
    return []


def _camera_command(case, programs):
    words = shlex.split(case.camera.replace("{certificate}", shlex.quote(str(programs.trusted.server))))
    lifetime = ["--lifetime", str(int(case.longest()) + 15)]
    if words[0] == "simulated":
        return [str(programs.simulated_camera), *words[1:], *lifetime]
    cache = ["--cache", str(programs.cache)]
    if words[0] == "vlc":
        return [*PYTHON, str(HERE / "vlc_camera"), *words[1:], *cache, *lifetime]
    return [*PYTHON, str(HERE / "test_camera"), *words, *cache, *lifetime]


def _recorder_command(case, programs, folder, address):
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
    return [str(programs.recorder), "--uri", given, "--output", _output(case, folder),
            "--duration", f"{case.seconds:g}", *options]


def _output(case, folder):
    return str(folder / "recordings" / f"{OUTPUT}.{case.to}")


def _environment(case):
    variables = {name: value for name, value in os.environ.items() if not name.startswith(("GST_", "TAVREN_"))}
    return {**variables, **dict(variable.split("=", 1) for variable in case.environment)}


def _record(case, programs, folder, camera, address):
    if case.existing:
        Path(_output(case, folder)).write_bytes(EXISTING_CONTENTS)
    command = _recorder_command(case, programs, folder, address)
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
    """Starts another recorder into the same file, once the first has begun it."""
    time.sleep(1.5)
    (folder / "second").mkdir()
    outcome = RecorderProcess(command, folder / "second", _environment(case)).wait(case.longest())
    if outcome.status != 1 or "exist" not in outcome.err:
        raise RuntimeError(f"the second recorder ends with {outcome.status}: {outcome.err}")
