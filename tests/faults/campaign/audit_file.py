"""The audit of the agent, read while the agent writes it."""
import sqlite3
import time
from pathlib import Path

from .accounts import AuditRow
from .journals import TOKEN


class AuditFile:
    """Rows that have ended never change, so they are read once."""

    def __init__(self, path):
        self._path = Path(path)
        self._ended = {}
        self._read_to = 0
        self._open_since = {}

    def rows(self):
        if not self._path.exists():
            return []
        connection = sqlite3.connect(f"file:{self._path}?mode=ro", uri=True, timeout=5)
        try:
            found = connection.execute(
                "SELECT id, process, operName, strInfo, end_ms, result FROM audit WHERE id > ? ORDER BY id",
                (self._read_to,)).fetchall()
        finally:
            connection.close()
        rows = [self._row(columns) for columns in found]
        now = time.monotonic()
        for row in rows:
            if not row.ended:
                row.open_for = now - self._open_since.setdefault(row.id, now)
        for row in rows:  # those before the first open one need no second look
            if not row.ended:
                break
            self._ended[row.id] = row
            self._read_to = row.id
        return [*self._ended.values(), *(row for row in rows if row.id > self._read_to)]

    @staticmethod
    def _row(columns):
        number, process, operation, information, end, result = columns
        token = TOKEN.search(information or "")
        return AuditRow(number, process, operation, token.group(0) if token else "", end is not None, result)
