"""The connection of one client: answers its requests and sends it the packets of its streams."""

import asyncio
import os
import secrets
import socket
import struct

from .messages import answer, read_request, request
from .misbehaviour import OF_CONNECTION
from .packets import Packet
from .stages import chain, stage_of
from .transports import make_transport

METHODS = ("OPTIONS", "DESCRIBE", "SETUP", "PLAY", "PAUSE", "GET_PARAMETER", "TEARDOWN")


EARLY = 0.3  # s from the first packets to the response to PLAY
ASKING_INTERVAL = 0.5  # s


class Session:
    def __init__(self, camera, reader, writer):
        self._camera = camera
        self._reader = reader
        self._writer = writer
        self._id = secrets.token_hex(8)
        self._transports = {}
        self._play_time = None
        self._playing = False
        self._silent = False
        self._timers = []
        self._first_stage = None

    async def serve(self):
        """Answers requests until the client disconnects, times out or a misbehaviour closes the
        connection."""
        options = self._camera.options
        try:
            while True:
                request = await asyncio.wait_for(read_request(self._reader), options.session_timeout)
                if self._silent or options.deaf:
                    continue
                reply = self._answer(request)
                if request.method == "PLAY" and options.early:
                    await asyncio.sleep(EARLY)
                self._writer.write(reply)
                await self._writer.drain()
                if request.method == "TEARDOWN":
                    break
        except (EOFError, ConnectionError, asyncio.LimitOverrunError, asyncio.TimeoutError):
            pass
        finally:
            self.close()

    def close(self):
        self._playing = False
        for timer in self._timers:
            timer.cancel()
        for transport in self._transports.values():
            transport.close()
        self._transports = {}
        self._writer.close()

    def receive(self, stream, is_rtcp, data):
        """Receives a packet from the sender. Passes it through the stages to a client that is
        playing."""
        if self._playing:
            age = asyncio.get_running_loop().time() - self._play_time
            self._first_stage(Packet(stream, is_rtcp, data, age))

    def send(self, stream, is_rtcp, data):
        if stream in self._transports and not self._silent:
            self._transports[stream].send(is_rtcp, data)

    # Requests

    def _answer(self, request):
        options = self._camera.options
        for key in ((request.method, None), (request.method, self._camera.stream_named(request.uri))):
            if key in options.statuses:
                return answer(request, options.statuses[key])
        check = self._camera.password_check
        if check and request.method != "OPTIONS" and not check.accepts(
                request.method, request.header("Authorization")):
            challenges = check.challenges(request.header("Authorization"))
            return answer(request, 401, [("WWW-Authenticate", challenge) for challenge in challenges])
        if request.method not in self._methods():
            return answer(request, 405, [("Allow", ", ".join(self._methods()))])
        return getattr(self, f"_{request.method.lower()}")(request)

    def _methods(self):
        return [method for method in METHODS if method != "GET_PARAMETER" or self._camera.options.get_parameter]

    def _options(self, request):
        return answer(request, 200, [("Public", ", ".join(self._methods()))])

    def _describe(self, request):
        if not self._camera.serves(request.uri):
            return answer(request, 404)
        options = self._camera.options
        if options.redirect and request.uri != self._camera.moved_uri():
            return answer(request, 302, [("Location", self._camera.moved_uri())])
        headers = [("Content-Type", "application/sdp")]
        if options.stream_addresses == "based":
            headers.append(("Content-Base", self._camera.stream_base()))
        return answer(request, 200, headers, self._camera.description)

    def _setup(self, request):
        stream = self._camera.stream_named(request.uri)
        options = self._camera.options
        if stream is None:
            if options.stream_addresses == "appended":
                self.close()
            return answer(request, 404)
        transport = make_transport(request.header("Transport"), self._writer, options.transports,
                                   options.channel and options.channel + 2 * stream, options.udp_blocked)
        if transport is None:
            return answer(request, 461)
        self._transports[stream] = transport
        return answer(request, 200, [("Transport", transport.header()), self._session_header()])

    def _play(self, request):
        if request.header("Session") != self._id:
            return answer(request, 454)
        if self._play_time is None:
            print("PLAY", flush=True)
            self._play_time = asyncio.get_running_loop().time()
            self._first_stage = chain(self._camera, self, self._deliver)
            self._plan_connection_events()
            if self._camera.options.asks:
                self._ask(1)
        self._playing = True
        headers = [self._session_header(), ("Range", "npt=now-")]
        rtp_info = self._camera.rtp_info(sorted(self._transports))
        return answer(request, 200, headers + ([("RTP-Info", rtp_info)] if rtp_info else []))

    def _pause(self, request):
        self._playing = False
        return answer(request, 200, [self._session_header()])

    def _get_parameter(self, request):
        return answer(request, 200, [self._session_header()])

    def _teardown(self, request):
        self._playing = False
        return answer(request, 200, [self._session_header()])

    def _session_header(self):
        return "Session", f"{self._id};timeout={self._camera.options.session_timeout}"

    def _deliver(self, packet):
        self.send(packet.stream, packet.is_rtcp, packet.data)

    def _ask(self, number):
        """Sends a request to the client, and schedules the next one."""
        self._writer.write(request("OPTIONS", self._camera.uri(), number))
        self._timers.append(asyncio.get_running_loop().call_later(ASKING_INTERVAL, self._ask, number + 1))

    # Misbehaviour of the connection

    def _plan_connection_events(self):
        loop = asyncio.get_running_loop()
        for misbehaviour in self._camera.misbehaviours:
            if misbehaviour.kind in OF_CONNECTION:
                self._timers.append(loop.call_later(misbehaviour.time, self._misbehave, misbehaviour))

    def misbehave_now(self, misbehaviour):
        """Performs a misbehaviour at once, if the client is playing."""
        if not self._playing:
            return
        misbehaviour.time = asyncio.get_running_loop().time() - self._play_time
        if misbehaviour.kind in OF_CONNECTION:
            self._misbehave(misbehaviour)
        else:
            self._first_stage = stage_of(misbehaviour, self._camera, self, self._first_stage)

    def _misbehave(self, misbehaviour):
        if misbehaviour.claim(self):
            getattr(self, "_do_" + misbehaviour.kind.replace("-", "_"))(misbehaviour.value)

    def _do_close(self, _):
        self.close()

    def _do_reset(self, _):
        # Without lingering, the kernel sends RST instead of FIN.
        self._writer.get_extra_info("socket").setsockopt(
            socket.SOL_SOCKET, socket.SO_LINGER, struct.pack("ii", 1, 0))
        self._writer.transport.abort()

    def _do_silent(self, _):
        self._silent = True

    def _do_garbage(self, count):
        # "$" would start a packet, whose end the receiver has to wait for.
        self._writer.write(os.urandom(int(count)).replace(b"$", b"?"))

    def _do_false_packet(self, _):
        # An invalid line, a byte that a receiver may read to find its end, and the header of a packet.
        self._writer.write(b"?\n-$\xff\xff\xff")

    def _do_gone(self, seconds):
        self._camera.leave(seconds)
