"""What runs on the hosts: the services, the agent, the OSSs that load it, and the consumers of its events."""
import os
import secrets
import subprocess
from pathlib import Path

from .processes import Process

NAMING_PORT, NOTIFY_PORT, AGENT_PORT, CONSUMER_PORT = 12001, 12002, 12003, 12010
OSSS = ("oss1", "oss2")
CONSUMERS = ("consumer1", "consumer2")
FAKE_TIME = ("/usr/lib/x86_64-linux-gnu/faketime/libfaketimeMT.so.1",
             "/usr/lib/aarch64-linux-gnu/faketime/libfaketimeMT.so.1")
EVENTS_PER_SECOND = 20
CALLS_PER_SECOND = 12
QUEUE_LENGTH = 120
FLUSH_INTERVAL_MS = 100

AGENT_CONFIG = """\
[agent]
EmsName = "Zorvex/KLV"
NamingService_Host = "{services}"
NamingService_Port = {naming_port}
NotifyService_Host = "{services}"
NotifyService_Port = {notify_port}
CORBAAgent_Host = "{ems}"
CORBAAgent_Port = {agent_port}
PersistenceEventChannel = true
EventQueueLength = {queue_length}
# A clock that jumps ahead by hours must not take events with it that merely wait.
AlarmTimeout = 0
OtherEventTimeout = 0
HeartBeatTimeout = 0
IsInterceptorEnabled = true
bLogOperation = true
bLogNotify = true
TimerInterval = 1
MaxSessionOfFIFO = 100
MaxIntervalOfSilentTime = 60

[platform]
env_root = "."
log_dir = "{log_dir}"
log_max_size = 4096
log_flush_interval = {flush}
call_chain = true
users_file = "{users}"
login_max_failures = 1000
"""


def fake_time_library():
    for path in FAKE_TIME:
        if os.path.exists(path):
            return path
    raise RuntimeError("libfaketimeMT.so.1 is missing; install the package faketime")


class Clock:
    """The clock of the wall as one process sees it; the one that never jumps is left alone."""

    def __init__(self, path):
        self._path = Path(path)
        self.set(0)

    def set(self, seconds):
        """Ahead of the machine's clock, or behind it where negative; counts within a second."""
        new = self._path.with_suffix(".new")
        new.write_text(f"{seconds:+d}\n")
        new.rename(self._path)

    def environment(self):
        return {"LD_PRELOAD": fake_time_library(), "FAKETIME_TIMESTAMP_FILE": str(self._path),
                "FAKETIME_DONT_FAKE_MONOTONIC": "1", "FAKETIME_CACHE_DURATION": "1"}


class Deployment:
    """Makes everything in `work`; the disks of the hosts take what they would take in a real plant."""

    def __init__(self, build, source, work, network):
        self.work = Path(work)
        self.bin = Path(build) / "bin"
        self.network = network
        self.processes = {}
        self.clocks = {}
        self._source = Path(source)
        self._ems, self._services, self._oss = (network.hosts[name] for name in ("ems", "services", "oss"))
        self.log_dir = self._ems.disk / "log"
        self.log_dir.mkdir()
        self.ledger = self.work / "events.csv"
        self.ledger.touch()
        # The ledger is the campaign's own witness, so it doesn't lie on the disk that is filled.
        (self.log_dir / "events.csv").symlink_to(self.ledger)
        (self.work / "run").mkdir()
        (self.work / "secrets").mkdir(mode=0o700)
        self.users = self._ems.disk / "users.toml"
        self.passwords = [self._make_user(name) for name in (*OSSS, *CONSUMERS)]
        self._make_processes()

    def _make_user(self, name):
        both = (secrets.token_urlsafe(12), secrets.token_urlsafe(12))
        self.password_file(name).touch(mode=0o600)
        self.password_file(name).write_text("\n".join(both) + "\n")
        subprocess.run([self.bin / "qv_user", "add", self.users, name], input=both[0] + "\n", text=True, check=True,
                       stdout=subprocess.DEVNULL)
        return both

    def password_file(self, name):
        return self.work / "secrets" / name

    def journal(self, name):
        return self.work / "run" / f"{name}.journal"

    def _add(self, name, host, command, ready=None, clock=False):
        environment = {"APP_NAME": "qv_faults", "PROCESS_NAME": name, "NODE_ID": "1", "PROCESS_SLOT": "0"}
        if clock:
            self.clocks[name] = Clock(self.work / "run" / f"{name}.clock")
            environment.update(self.clocks[name].environment())
        self.processes[name] = Process(name, host, command, self.work / "run", ready, environment)

    def _make_processes(self):
        self._add("naming", self._services, self._naming_command(), self._naming_is_ready, clock=True)
        self._add("notify", self._services, self._notify_command(), lambda p: "serving" in p.said(), clock=True)
        self._add("agent", self._ems, self._agent_command, lambda p: "\nready\n" in p.said(), clock=True)
        for number, name in enumerate(OSSS, 1):
            self._add(name, self._oss, self._oss_command(name, number))
        for number, name in enumerate(CONSUMERS):
            self._add(name, self._oss, self._consumer_command(name, CONSUMER_PORT + number), self._consumer_is_ready)

    def _naming_address(self):
        return f"{self._services.address}:{NAMING_PORT}"

    def _naming_command(self):
        return [self.bin / "Naming_Service", "-ORBEndpoint", f"iiop://{self._naming_address()}",
                "-o", self.work / "run" / "ns.ior", "-u", self._services.disk / "naming"]

    def _naming_is_ready(self, process):
        ior = self.work / "run" / "ns.ior"
        return ior.exists() and ior.read_text().startswith("IOR:")

    def _notify_command(self):
        return [self.bin / "Notify_Service", "-ORBEndpoint", f"iiop://{self._services.address}:{NOTIFY_PORT}",
                "-ORBInitRef", f"NameService=corbaloc:iiop:{self._naming_address()}/NameService",
                "-u", self._services.disk / "notify"]

    def _agent_command(self, _):
        config = self.work / "run" / "agent.toml"
        config.write_text(AGENT_CONFIG.format(
            services=self._services.address, ems=self._ems.address, naming_port=NAMING_PORT, notify_port=NOTIFY_PORT,
            agent_port=AGENT_PORT, queue_length=QUEUE_LENGTH, log_dir=self.log_dir, flush=FLUSH_INTERVAL_MS,
            users=self.users))
        with open(self.ledger, "a", encoding="ascii") as ledger:
            ledger.write("restart\n")
        return [self.bin / "qv_demo_agent", "--config", config, "--inventory",
                self._source / "demo/data/inventory.json", "--events"]

    def _oss_command(self, name, number):
        def command(incarnation):
            return [self.bin / "qv_fault_oss", "--naming", self._naming_address(), "--user", name, "--password-file",
                    self.password_file(name), "--journal", self.journal(name), "--incarnation", str(incarnation),
                    "--per-second", str(CALLS_PER_SECOND), "--element", str(number),
                    "--raise", str(EVENTS_PER_SECOND if number == 1 else 0),
                    "-ORBEndpoint", f"iiop://{self._oss.address}:0"]
        return command

    def _consumer_command(self, name, port):
        def command(incarnation):
            return [self.bin / "qv_fault_consumer", "--naming", self._naming_address(), "--user", name,
                    "--password-file", self.password_file(name), "--journal", self.journal(name),
                    *(["--resume"] if incarnation > 1 else []), "-ORBEndpoint", f"iiop://{self._oss.address}:{port}"]
        return command

    def _consumer_is_ready(self, process):
        journal = self.journal(process.name)
        words = "resumed" if process.incarnation > 1 else "subscribed"
        return journal.exists() and sum(
            line.startswith(words) for line in journal.read_text().splitlines()) >= max(1, process.incarnation - 1)

    def start(self, name):
        if name == "naming":
            (self.work / "run" / "ns.ior").unlink(missing_ok=True)
        self.processes[name].start()
        self.processes[name].wait_ready()

    def start_all(self):
        for name in ("naming", "notify", "agent", *CONSUMERS, *OSSS):
            self.start(name)

    def end_all(self):
        """In order, as an operator would; the exit codes of those that have one of their own."""
        codes = {}
        for name in (*OSSS, *CONSUMERS, "agent", "notify", "naming"):
            code = self.processes[name].end()
            if name in ("agent", "notify", "naming"):
                codes[name] = code
        return codes

    def kill_all(self):
        for process in self.processes.values():
            if process.running():
                process.thaw()
                process.kill()
