"""The server side of Basic and Digest authentication."""

import base64
import hashlib
import re
import secrets

REALM = "camera"
SCHEMES = ("basic", "digest", "both", "stale", "digests")


def _md5(text):
    return hashlib.md5(text.encode()).hexdigest()


class PasswordCheck:
    """Checks requests against one user name and password. `scheme` is one of SCHEMES."""

    def __init__(self, user, password, scheme):
        self._user = user
        self._password = password
        self._scheme = scheme
        self._nonce = secrets.token_hex(16)

    def challenges(self, authorization):
        """Returns the values of WWW-Authenticate for a request with this authorization."""
        basic = f'Basic realm="{REALM}"'
        digest = f'Digest realm="{REALM}", nonce="{self._nonce}"'
        if self._scheme == "stale" and authorization:
            digest += ", stale=TRUE"
        other = f'Digest realm="{REALM}", nonce="{secrets.token_hex(16)}", algorithm=SHA-256'
        challenges = {"basic": [basic], "both": [digest, basic], "digests": [f"{digest}, algorithm=MD5", other]}
        return challenges.get(self._scheme, [digest])

    def accepts(self, method, authorization):
        if self._scheme == "basic":
            expected = base64.b64encode(f"{self._user}:{self._password}".encode()).decode()
            return authorization == f"Basic {expected}"
        return authorization.startswith("Digest ") and self._accepts_digest(method, authorization)

    def _accepts_digest(self, method, authorization):
        fields = dict(re.findall(r'(\w+)="([^"]*)"', authorization))
        key = _md5(f"{self._user}:{REALM}:{self._password}")
        request = _md5(f"{method}:{fields.get('uri')}")
        nonce = self._nonce
        if self._scheme == "stale":
            self._nonce = secrets.token_hex(16)
        return (fields.get("username") == self._user and fields.get("nonce") == nonce
                and fields.get("response") == _md5(f"{key}:{nonce}:{request}"))
