"""Ports of 127.0.0.1 that the system picks."""

import socket


def reserved_port():
    """A socket that keeps a port for this process. It refuses connections until another socket with
    SO_REUSEADDR listens on the port."""
    reservation = socket.socket()
    reservation.setsockopt(socket.SOL_SOCKET, socket.SO_REUSEADDR, 1)
    reservation.bind(("127.0.0.1", 0))
    return reservation


def udp_port_pair():
    """Two sockets, on an even port and the next one."""
    while True:
        pair = tuple(socket.socket(socket.AF_INET, socket.SOCK_DGRAM) for _ in range(2))
        try:
            pair[0].bind(("127.0.0.1", 0))
            port = pair[0].getsockname()[1]
            if port % 2 == 0:
                pair[1].bind(("127.0.0.1", port + 1))
                return pair
        except OSError:
            pass
        for one in pair:
            one.close()
