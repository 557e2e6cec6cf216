"""Creates the certificates of a camera over TLS: an authority, and a server certificate signed
by it."""

import subprocess
from dataclasses import dataclass
from pathlib import Path


@dataclass(frozen=True)
class Certificates:
    authority: Path
    server: Path  # certificate and key in one file


def _openssl(*arguments):
    subprocess.run(["openssl", *map(str, arguments)], check=True, capture_output=True, timeout=30)


def make_certificates(folder, host="127.0.0.1"):
    authority, authority_key = folder / "authority.pem", folder / "authority.key"
    request, key, certificate = folder / "server.csr", folder / "server.key", folder / "server.crt"
    extensions = folder / "server.ext"
    new_key = ("-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:prime256v1", "-nodes")
    _openssl("req", "-x509", *new_key, "-days", "2", "-subj", "/CN=Test authority",
             "-keyout", authority_key, "-out", authority)
    _openssl("req", *new_key, "-subj", f"/CN={host}", "-keyout", key, "-out", request)
    extensions.write_text(f"subjectAltName=IP:{host}\nbasicConstraints=CA:FALSE\n")
    _openssl("x509", "-req", "-in", request, "-CA", authority, "-CAkey", authority_key, "-CAcreateserial",
             "-days", "2", "-extfile", extensions, "-out", certificate)
    server = folder / "server.pem"
    server.write_text(certificate.read_text() + key.read_text())
    return Certificates(authority, server)
