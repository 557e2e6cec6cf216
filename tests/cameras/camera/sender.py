"""Runs ffmpeg as the packetizer. Its RTP and RTCP packets are received on local sockets."""

import asyncio
import socket
import subprocess
import tempfile
from pathlib import Path

from .contents import CONTENTS, prepare

FIRST_DYNAMIC_PAYLOAD_TYPE = 96
LARGEST_PACKET = 1400
STARTING_TIME = 50  # s, within which ffmpeg must start on a busy machine
# Their payload types need no rtpmap, and ffmpeg describes them without one.
STATIC_PAYLOAD_TYPES = {"mulaw", "alaw", "g722", "mp2", "mp3", "mpeg2", "mjpeg"}


def _bound_socket():
    receiver = socket.socket(socket.AF_INET, socket.SOCK_DGRAM)
    receiver.setsockopt(socket.SOL_SOCKET, socket.SO_RCVBUF, 1 << 20)
    receiver.setblocking(False)
    receiver.bind(("127.0.0.1", 0))
    return receiver


class Sender:
    """Sends contents in a loop for a number of seconds, or until it is stopped.

    `receive` is called with (stream, is_rtcp, packet) for each packet from ffmpeg."""

    def __init__(self, names, cache, lifetime, receive):
        self._names = names
        self._cache = cache
        self._lifetime = lifetime
        self._receive = receive
        self._sockets = [(_bound_socket(), _bound_socket()) for _ in names]
        self._processes = []

    async def start(self):
        """Starts ffmpeg and returns the session descriptions that it writes."""
        loop = asyncio.get_running_loop()
        for stream, pair in enumerate(self._sockets):
            for is_rtcp, receiver in enumerate(pair):
                loop.add_reader(receiver, self._read, receiver, stream, bool(is_rtcp))
        with tempfile.TemporaryDirectory() as scratch:
            written = [self._start_process(streams, Path(scratch) / f"{streams[0]}.sdp")
                       for streams in self._streams_of_processes()]
            return await asyncio.wait_for(asyncio.gather(*written), STARTING_TIME)

    def _streams_of_processes(self):
        """A process sends its streams synchronously, so a slow stream would delay the others."""
        streams = range(len(self._names))
        if any(CONTENTS[name].is_slow() for name in self._names):
            return [[stream] for stream in streams]
        return [list(streams)]

    def _start_process(self, streams, description):
        process = subprocess.Popen(self._command(streams, description), stdin=subprocess.DEVNULL)
        self._processes.append(process)
        return self._written(process, description, len(streams))

    async def _written(self, process, description, count):
        while not (description.exists() and description.read_text().count("m=") == count):
            if process.poll() is not None:
                raise RuntimeError("ffmpeg has ended before it sent anything")
            await asyncio.sleep(0.02)
        return description.read_text()

    def _read(self, receiver, stream, is_rtcp):
        while True:
            try:
                packet = receiver.recv(65536)
            except BlockingIOError:
                return
            self._receive(stream, is_rtcp, packet)

    def _command(self, streams, description):
        # ffmpeg is killed when the camera ends. The limited output duration is a second safeguard.
        command = ["setpriv", "--pdeathsig", "KILL", "ffmpeg", "-nostdin", "-hide_banner", "-loglevel", "fatal"]
        for stream in streams:
            command += ["-re", "-stream_loop", "-1", "-i", str(prepare(self._names[stream], self._cache))]
        for index, stream in enumerate(streams):
            name = self._names[stream]
            command += ["-map", str(index), "-c", "copy", "-t", str(self._lifetime)]
            command += CONTENTS[name].packetizer.split()
            command += self._output(stream, name)
        return command + ["-sdp_file", str(description)]

    def _output(self, stream, name):
        rtp, rtcp = (receiver.getsockname()[1] for receiver in self._sockets[stream])
        payload_type = []
        if name not in STATIC_PAYLOAD_TYPES:
            payload_type = ["-payload_type", str(FIRST_DYNAMIC_PAYLOAD_TYPE + stream)]
        return [*payload_type, "-f", "rtp",
                f"rtp://127.0.0.1:{rtp}?rtcpport={rtcp}&pkt_size={LARGEST_PACKET}"]

    def stop(self):
        for process in self._processes:
            process.kill()
            process.wait()
