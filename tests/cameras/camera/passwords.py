"""The server side of Basic and Digest authentication."""

import base64
import hashlib
import re

REALM = "camera"


def _md5(text):
    return hashlib.md5(text.encode()).hexdigest()


class PasswordCheck:
    """Checks requests against one user name and password. `scheme` is basic or digest."""

    def __init__(self, user, password, scheme):
        self._user = user
        self._password = password
        self._scheme = scheme
        self._nonce = _md5(f"{id(self)}{user}")

    def challenge(self):
        """Returns the value of WWW-Authenticate."""
        if self._scheme == "basic":
            return f'Basic realm="{REALM}"'
        return f'Digest realm="{REALM}", nonce="{self._nonce}"'

    def accepts(self, method, authorization):
        if self._scheme == "basic":
            expected = base64.b64encode(f"{self._user}:{self._password}".encode()).decode()
            return authorization == f"Basic {expected}"
        return authorization.startswith("Digest ") and self._accepts_digest(method, authorization)

    def _accepts_digest(self, method, authorization):
        fields = dict(re.findall(r'(\w+)="([^"]*)"', authorization))
        secret = _md5(f"{self._user}:{REALM}:{self._password}")
        request = _md5(f"{method}:{fields.get('uri')}")
        return (fields.get("username") == self._user and fields.get("nonce") == self._nonce
                and fields.get("response") == _md5(f"{secret}:{self._nonce}:{request}"))
