"""On what a benchmark ran: machine and versions."""
import os
import pathlib
import platform
import re
import shutil
import subprocess

PACKAGES = {"omniORB": "libomniorb4-2", "ACE": "libace-[0-9]*", "SQLite": "libsqlite3-0", "OpenSSL": "libssl3*",
            "libsodium": "libsodium23", "JsonCpp": "libjsoncpp25"}


def output_of(*command):
    """The first line that a program prints; empty when it can't be run or fails."""
    try:
        done = subprocess.run(command, capture_output=True, text=True, timeout=20)
    except (OSError, subprocess.TimeoutExpired):
        return ""
    return done.stdout.strip().splitlines()[0] if done.returncode == 0 and done.stdout.strip() else ""


def field_of(path, name):
    try:
        text = pathlib.Path(path).read_text(errors="replace")
    except OSError:
        return ""
    found = re.search(rf"^{name}\s*:\s*(.*)$", text, re.MULTILINE)
    return found.group(1).strip() if found else ""


def virtualised():
    """By what, as far as the system tells: the machine, and the container in it."""
    if not shutil.which("systemd-detect-virt"):
        return "yes" if " hypervisor" in " " + field_of("/proc/cpuinfo", "flags") else "no sign of it"
    kinds = [subprocess.run(["systemd-detect-virt", kind], capture_output=True, text=True).stdout.strip()
             for kind in ("--vm", "--container")]
    found = [kind for kind in kinds if kind not in ("", "none")]
    return "yes: " + " and ".join(found) if found else "no"


def package_version(pattern):
    line = output_of("dpkg-query", "--show", "--showformat=${db:Status-Status} ${Version}\\n", pattern)
    status, _, version = line.partition(" ")
    return version if status == "installed" else "unknown"


def cache_value(build, name):
    """A value of the build's CMake cache; empty when there is none."""
    try:
        text = (pathlib.Path(build) / "CMakeCache.txt").read_text(errors="replace")
    except OSError:
        return ""
    found = re.search(rf"^{name}:\w+=(.*)$", text, re.MULTILINE)
    return found.group(1) if found else ""


def sources(root):
    commit = output_of("git", "-C", str(root), "rev-parse", "--short=12", "HEAD") or "unknown"
    changed = output_of("git", "-C", str(root), "status", "--porcelain", "--untracked-files=no")
    return commit + (", with changes" if changed else "")


def load():
    """Processes that ran or wanted to, on the average of the last minute."""
    return os.getloadavg()[0]


def memory_gib():
    kib = field_of("/proc/meminfo", "MemTotal").split()
    return int(kib[0]) / (1 << 20) if kib else 0.0


def system():
    release = field_of_os_release("PRETTY_NAME")
    return f"{release}, Linux {platform.release()}, {platform.machine()}"


def field_of_os_release(name):
    try:
        text = pathlib.Path("/etc/os-release").read_text()
    except OSError:
        return "unknown"
    found = re.search(rf'^{name}="?([^"\n]*)', text, re.MULTILINE)
    return found.group(1) if found else "unknown"


def describe(root, build):
    """Label -> text, in the order of the page."""
    compiler = cache_value(build, "CMAKE_CXX_COMPILER")
    return {
        "CPU": field_of("/proc/cpuinfo", "model name") or platform.processor() or "unknown",
        "Cores": str(len(os.sched_getaffinity(0))),
        "Memory": f"{memory_gib():.1f} GiB",
        "System": system(),
        "Virtualised": virtualised(),
        "Sources": sources(root),
        "Build": cache_value(build, "CMAKE_BUILD_TYPE") or "unknown",
        "Compiler": output_of(compiler, "--version") if compiler else "unknown",
        **{name: package_version(pattern) for name, pattern in PACKAGES.items()},
    }
