"""RTSP requests and responses."""

from dataclasses import dataclass

REASONS = {200: "OK", 302: "Found", 400: "Bad Request", 401: "Unauthorized", 403: "Forbidden", 404: "Not Found",
           405: "Method Not Allowed", 454: "Session Not Found", 455: "Method Not Valid in This State",
           461: "Unsupported Transport", 500: "Internal Server Error", 503: "Service Unavailable"}
_INTERLEAVED = b"$"


@dataclass(frozen=True)
class Request:
    method: str
    uri: str
    headers: dict  # names in lower case

    def header(self, name):
        return self.headers.get(name.lower(), "")


async def read_request(reader):
    """Returns the next request. Skips interleaved data and responses from the client. Raises
    EOFError at the end."""
    while (request := await _read_message(reader)) and request.method.startswith("RTSP/"):
        pass
    return request


async def _read_message(reader):
    while (first := await reader.readexactly(1)) == _INTERLEAVED:
        header = await reader.readexactly(3)
        await reader.readexactly(int.from_bytes(header[1:], "big"))
    text = (first + await reader.readuntil(b"\r\n\r\n")).decode()
    request_line, *lines = text.strip().split("\r\n")
    method, uri, _ = request_line.split(" ", 2)
    pairs = (line.split(":", 1) for line in lines)
    request = Request(method, uri, {name.strip().lower(): value.strip() for name, value in pairs})
    await reader.readexactly(int(request.header("Content-Length") or 0))
    return request


def request(method, uri, number):
    """Returns a request from the camera to the client."""
    return f"{method} {uri} RTSP/1.0\r\nCSeq: {number}\r\n\r\n".encode()


def answer(request, status, headers=(), body=""):
    lines = [f"RTSP/1.0 {status} {REASONS[status]}", f"CSeq: {request.header('CSeq')}",
             *(f"{name}: {value}" for name, value in headers)]
    if body:
        lines.append(f"Content-Length: {len(body.encode())}")
    return ("\r\n".join(lines) + "\r\n\r\n" + body).encode()
