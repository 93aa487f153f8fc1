"""Holds the page of settings against the table of settings: configuration_test.py QV_CONFIG PAGE"""

import difflib
import subprocess
import sys
from pathlib import Path


def main(tool, page):
    made = subprocess.run([tool, "--markdown"], capture_output=True, check=True, text=True).stdout
    written = Path(page).read_text(encoding="utf-8")
    if made == written:
        return 0
    sys.stdout.writelines(difflib.unified_diff(written.splitlines(True), made.splitlines(True), page, "the table"))
    print(f"\nThe page doesn't tell the settings as the table has them. Renew it: {tool} --markdown > {page}")
    return 1


if __name__ == "__main__":
    sys.exit(main(sys.argv[1], sys.argv[2]))
