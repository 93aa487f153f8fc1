"""Looks for passwords in what the campaign has left behind."""
from pathlib import Path

CHUNK = 1 << 20


def _holds(path, secrets):
    overlap = max(len(secret) for secret in secrets)
    rest = b""
    with open(path, "rb") as file:
        while chunk := file.read(CHUNK):
            text = rest + chunk
            if any(secret in text for secret in secrets):
                return True
            rest = text[-overlap:]
    return False


def find_secrets(directory, secrets, exempt=()):
    """The files below `directory` that hold one of the secrets; those named in `exempt` are for them."""
    wanted = [secret.encode() for secret in secrets]
    exempt = {Path(path).resolve() for path in exempt}
    found = []
    for path in sorted(Path(directory).rglob("*")):
        if path.is_file() and not path.is_symlink() and path.resolve() not in exempt and _holds(path, wanted):
            found.append(str(path))
    return found
