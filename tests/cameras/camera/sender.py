"""Runs ffmpeg as the packetizer: its RTP and RTCP packets arrive on local sockets."""

import asyncio
import socket
import subprocess
import tempfile
from pathlib import Path

from .contents import CONTENTS, prepare

FIRST_DYNAMIC_PAYLOAD_TYPE = 96
LARGEST_PACKET = 1400


def _bound_socket():
    receiver = socket.socket(socket.AF_INET, socket.SOCK_DGRAM)
    receiver.setsockopt(socket.SOL_SOCKET, socket.SO_RCVBUF, 1 << 20)
    receiver.setblocking(False)
    receiver.bind(("127.0.0.1", 0))
    return receiver


class Sender:
    """Sends contents for a number of seconds, or until it is stopped; it loops over them.

    `receive` is called with (stream, is_rtcp, packet) for each packet that ffmpeg makes."""

    def __init__(self, names, cache, lifetime, receive):
        self._names = names
        self._cache = cache
        self._lifetime = lifetime
        self._receive = receive
        self._sockets = [(_bound_socket(), _bound_socket()) for _ in names]
        self._process = None

    async def start(self):
        """Starts ffmpeg and returns the session description that it writes."""
        loop = asyncio.get_running_loop()
        for stream, pair in enumerate(self._sockets):
            for is_rtcp, receiver in enumerate(pair):
                loop.add_reader(receiver, self._read, receiver, stream, bool(is_rtcp))
        with tempfile.TemporaryDirectory() as scratch:
            description = Path(scratch) / "session.sdp"
            self._process = subprocess.Popen(self._command(description), stdin=subprocess.DEVNULL)
            return await asyncio.wait_for(self._written(description), 30)

    async def _written(self, description):
        while not (description.exists() and description.read_text().count("m=") == len(self._names)):
            if self._process.poll() is not None:
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

    def _command(self, description):
        # Killed with the camera, however that ends; the output's length is the second guard.
        command = ["setpriv", "--pdeathsig", "KILL", "ffmpeg", "-nostdin", "-hide_banner", "-loglevel", "fatal"]
        for name in self._names:
            command += ["-re", "-stream_loop", "-1", "-i", str(prepare(name, self._cache))]
        for stream, name in enumerate(self._names):
            command += ["-map", str(stream), "-c", "copy", "-t", str(self._lifetime)]
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
        if self._process:
            self._process.kill()
            self._process.wait()


# These have a payload type that needs no rtpmap; ffmpeg announces them that way.
STATIC_PAYLOAD_TYPES = {"mulaw", "alaw", "mp2", "mjpeg"}
