"""Builds the library with a change and runs the test programs against it."""

import os
import resource
import signal
import subprocess
import time
from collections import Counter
from dataclasses import dataclass
from pathlib import Path

PRECOMPILED = Path(__file__).resolve().parent / 'precompiled.cmake'

# Limits on time (s) and memory for programs that a change has sent into an endless loop.
SHORTEST_TIME_LIMIT = 20
MEMORY_LIMIT = 8 << 30

# The plain builds are fast. Changes that survive them are built again with the preset of the
# sanitizers, because nothing else detects every bad access to memory.
PLAIN = 'plain'
SANITIZED = 'sanitized'
SETTINGS = {
    PLAIN: ['--preset', 'dev', '-DCMAKE_CXX_FLAGS_DEBUG=-O0'],
    SANITIZED: ['--preset', 'asan-ubsan', '-DCMAKE_CXX_FLAGS_DEBUG=-O0'],
}


class Failed(Exception):
    pass


def environment(kind, source):
    if kind == PLAIN:
        # Fills freed and uninitialised memory, so that reads of it do not succeed by chance.
        return dict(os.environ, G_SLICE='always-malloc', MALLOC_PERTURB_='165')
    variables = subprocess.run(
        ['bash', '-c', 'source tools/internal/sanitizer-options && env --null'], cwd=source,
        check=True, capture_output=True, text=True).stdout
    return dict(entry.split('=', 1) for entry in variables.split('\0') if entry)


def copy_project(project, copy):
    subprocess.run([project / 'tools' / 'internal' / 'copy-project', copy], check=True)


class Build:
    """A build directory of a copy of the project."""

    def __init__(self, source, kind):
        self.source = source
        self.kind = kind
        self.directory = source.parent / kind
        self.environment = environment(kind, source)
        self.log = source.parent / f'{kind}.log'
        self.configured = False

    def configure(self):
        command = ['cmake', '-S', '.', '-B', str(self.directory), *SETTINGS[self.kind],
                   f'-DCMAKE_PROJECT_tavren_capture_INCLUDE={PRECOMPILED}',
                   '-DTAVREN_CAPTURE_BUILD_EXAMPLES=OFF', '-DTAVREN_CAPTURE_BUILD_PROGRAMS=OFF',
                   '-DTAVREN_CAPTURE_WARNINGS_AS_ERRORS=OFF']
        with open(self.log, 'w') as log:
            if subprocess.run(command, cwd=self.source, stdout=log, stderr=log).returncode != 0:
                raise Failed(f'cannot configure {self.directory}, see {self.log}')
        self.configured = True

    def make(self, *targets, jobs=1):
        if not self.configured:
            self.configure()
        with open(self.log, 'w') as log:
            return subprocess.run(['ninja', '-C', str(self.directory), f'-j{jobs}', *targets],
                                  stdout=log, stderr=log).returncode == 0

    def programs(self):
        """Returns the unit test programs in all directories, but not the tests of the installed
        library and of the programs."""
        tests = self.directory / 'tests'
        return sorted(str(path.relative_to(self.directory)) for path in tests.rglob('*_test')
                      if path.is_file() and os.access(path, os.X_OK)
                      and path.relative_to(tests).parts[0] not in ('end_to_end', 'consumer', 'soak'))


def run(program, environment, time_limit):
    """Returns whether a test program passes, with limits for it and its child processes."""

    def limit():
        resource.setrlimit(resource.RLIMIT_CORE, (0, 0))
        if 'ASAN_OPTIONS' not in environment:  # its shadow memory reserves terabytes of addresses
            resource.setrlimit(resource.RLIMIT_AS, (MEMORY_LIMIT, MEMORY_LIMIT))

    process = subprocess.Popen([str(program), '--gtest_brief=1', '--gtest_fail_fast'],
                               cwd=program.parent, env=environment, preexec_fn=limit,
                               start_new_session=True, stdin=subprocess.DEVNULL,
                               stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    try:
        return process.wait(timeout=time_limit) == 0
    except subprocess.TimeoutExpired:
        return False
    finally:
        try:
            os.killpg(process.pid, signal.SIGKILL)
        except ProcessLookupError:
            pass
        process.wait()


class Tests:
    """The test programs, built once against the unchanged library."""

    def __init__(self, project, directory, kind, jobs):
        source = directory / 'unchanged' / 'source'
        copy_project(project, source)
        self.build = Build(source, kind)
        if not self.build.make(jobs=jobs):
            raise Failed(f'the unchanged tree does not build, see {self.build.log}')
        self.seconds = {}
        for program in self.build.programs():
            started = time.monotonic()
            if not run(self.build.directory / program, self.build.environment, 600):
                raise Failed(f'{program} fails without any change, in {self.build.directory}')
            self.seconds[program] = time.monotonic() - started
        if not self.seconds:
            raise Failed('there are no test programs')

    def time_limit(self, program):
        return max(SHORTEST_TIME_LIMIT, 10 * self.seconds[program])


@dataclass(frozen=True)
class Verdict:
    outcome: str  # killed, survived, not viable
    by: str = ''
    seconds: float = 0


class Worker:
    """A separate copy of the project, in which one file at a time is changed."""

    def __init__(self, project, directory, number, tests):
        self.source = directory / f'worker-{number}' / 'source'
        copy_project(project, self.source)
        self.tests = tests
        self.builds = {kind: Build(self.source, kind) for kind in tests}
        self.changed = None
        self.kills = Counter()

    def judge(self, mutant, kinds):
        started = time.monotonic()
        self.put(mutant)
        outcome, by = 'survived', ''
        for kind in kinds:
            outcome, by = self.judge_build(kind, mutant)
            if outcome != 'survived':
                break
        return Verdict(outcome, by, time.monotonic() - started)

    def put(self, mutant):
        if self.changed and self.changed.path != mutant.source.path:
            (self.source / self.changed.path).write_text(self.changed.text)
        self.changed = mutant.source
        (self.source / mutant.source.path).write_text(mutant.text)

    def judge_build(self, kind, mutant):
        if not self.builds[kind].make('tavren_capture'):
            return 'not viable', ''
        # A changed number does not change the binary interface: the existing programs can test it
        # before they are rebuilt with it.
        by = ''
        if not mutant.source.is_public_header or mutant.operator == 'change-number':
            by = self.killer(kind, mutant, rebuilt=False)
        if mutant.source.is_public_header and not by:
            by = self.killer(kind, mutant, rebuilt=True)
        return ('killed' if by else 'survived'), by

    def killer(self, kind, mutant, rebuilt):
        """Returns the first program that fails; empty if none does."""
        build, tests = self.builds[kind], self.tests[kind]
        directory = build.directory if rebuilt else tests.build.directory
        library_here = dict(build.environment, LD_LIBRARY_PATH=str(build.directory))
        for program in self.likely_killers_first(mutant, tests):
            if rebuilt and not build.make(os.path.basename(program)):
                by = f'{kind} {program}, which does not compile'
            elif not run(directory / program, library_here, tests.time_limit(program)):
                by = f'{kind} {program}'
            else:
                continue
            self.kills[mutant.source.path, program] += 1
            return by
        return ''

    def likely_killers_first(self, mutant, tests):
        """Sorts by the number of killed changes of the same file, then by duration."""
        return sorted(tests.seconds, key=lambda program: (
            -self.kills[mutant.source.path, program], tests.seconds[program]))

    def check_loaded_library(self):
        """Checks that the programs load the library built here, not the one they were built with."""
        for kind, build in self.builds.items():
            if not build.make('tavren_capture'):
                raise Failed(f'the unchanged library does not build, see {build.log}')
            for program in self.tests[kind].seconds:
                loaded = subprocess.run(
                    ['ldd', str(self.tests[kind].build.directory / program)], capture_output=True,
                    text=True, env=dict(os.environ, LD_LIBRARY_PATH=str(build.directory))).stdout
                if f'=> {build.directory}/libtavren_capture.so' not in loaded:
                    raise Failed(f'{program} does not load the library of {build.directory}')
