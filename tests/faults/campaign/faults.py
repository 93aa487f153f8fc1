"""The kinds of faults: what is drawn, how one begins, how it ends, and how soon after that everything works again."""
import socket
import threading
from dataclasses import dataclass
from typing import Callable

from . import kernel
from .deployment import AGENT_PORT, CONSUMERS, OSSS
from .hosts import LINKS

SPAN = (2.0, 8.0)
BEYOND_LIMITS = (2.0, 14.0)  # a client gives a call up after 8 s, the notification service after 10 s
HOUR = 3600
BESIDE = ("delay", "drop", "duplicate", "reorder")
SHARE_BESIDE = 1 / 3


@dataclass(frozen=True)
class Kind:
    """`draw(rng)` gives the parameters, among them "hold", the seconds between begin and end."""
    name: str
    recovery: float  # stated: seconds from the end of the fault until all works
    draw: Callable
    begin: Callable
    end: Callable


@dataclass(frozen=True)
class Fault:
    """`beside` is a fault of the network that lasts as long as this one, or None."""
    kind: Kind
    parameters: dict
    beside: "Fault" = None

    def describe(self):
        words = [f"{name} {value}" for name, value in self.parameters.items()]
        return f"{self.kind.name} ({', '.join(words)})" + (f" beside {self.beside.describe()}" if self.beside else "")

    def begin(self, deployment):
        if self.beside is not None:
            self.beside.begin(deployment)
        self.kind.begin(deployment, self.parameters)

    def end(self, deployment):
        self.kind.end(deployment, self.parameters)
        if self.beside is not None:
            self.beside.end(deployment)


def _hold(rng, span=SPAN):
    return round(rng.uniform(*span), 1)


def _kill(target_names, recovery, name, span=(0.0, 6.0)):
    def draw(rng):
        return {"target": rng.choice(target_names), "hold": _hold(rng, span)}

    return Kind(name, recovery, draw,
                lambda deployment, p: deployment.processes[p["target"]].kill(),
                lambda deployment, p: deployment.start(p["target"]))


def _stop(target_names, recovery, name):
    def draw(rng):
        return {"target": rng.choice(target_names), "hold": _hold(rng, BEYOND_LIMITS)}

    return Kind(name, recovery, draw,
                lambda deployment, p: deployment.processes[p["target"]].freeze(),
                lambda deployment, p: deployment.processes[p["target"]].thaw())


def _packets(name, recovery, draw_numbers, span=SPAN):
    """An order to the switch about one link, or all of them."""
    def draw(rng):
        links = rng.choice([[link] for link in LINKS] + [LINKS])
        return {"links": "+".join("-".join(link) for link in links), "order": f"{name} {draw_numbers(rng)}".strip(),
                "hold": _hold(rng, span)}

    def begin(deployment, p):
        order, *numbers = p["order"].split()
        for link in p["links"].split("+"):
            deployment.network.order(" ".join([order, *link.split("-"), *numbers]))

    return Kind(name, recovery, draw, begin, lambda deployment, p: deployment.network.order("heal"))


def _disk(host, recovery, before=None):
    """A disk without any room; `before` names a service that is ended in order and started first."""
    def begin(deployment, _):
        if before is not None:
            deployment.processes[before].end()
            deployment.start(before)
        deployment.network.hosts[host].fill_disk()

    return Kind(f"disk-full {host}", recovery, lambda rng: {"hold": _hold(rng)}, begin,
                lambda deployment, p: deployment.network.hosts[host].release_disk())


def _begin_anew(deployment, name):
    """A client that has to connect anew."""
    deployment.processes[name].kill()
    deployment.start(name)


def _files(target, client, recovery):
    """No descriptor more than `spare` ones, while a client comes that needs some."""
    saved = {}

    def begin(deployment, p):
        process = deployment.processes[target]
        saved["limit"] = process.file_limit()
        process.limit_files(process.open_files() + p["spare"])
        _begin_anew(deployment, client)

    def end(deployment, _):
        deployment.processes[target].limit_files(saved["limit"])

    return Kind(f"no descriptors {target}", recovery,
                lambda rng: {"spare": rng.randint(0, 3), "hold": _hold(rng)}, begin, end)


def _connect_from(host, address, count, sockets):
    kernel.enter_network_of(host.pid)
    for _ in range(count):
        connection = socket.socket()
        connection.setblocking(False)
        connection.connect_ex((address, AGENT_PORT))
        sockets.append(connection)


def _connections(recovery):
    """A client that opens connections and says nothing, more than the agent may have."""
    sockets, saved = [], {}

    def begin(deployment, p):
        agent = deployment.processes["agent"]
        saved["limit"] = agent.file_limit()
        agent.limit_files(p["limit"])
        hosts = deployment.network.hosts
        visitor = threading.Thread(  # a network namespace belongs to a thread
            target=_connect_from, args=(hosts["oss"], hosts["ems"].address, p["connections"], sockets))
        visitor.start()
        visitor.join()
        _begin_anew(deployment, "oss2")

    def end(deployment, _):
        for connection in sockets:
            connection.close()
        sockets.clear()
        deployment.processes["agent"].limit_files(saved["limit"])

    def draw(rng):
        limit = rng.choice([128, 256])
        return {"limit": limit, "connections": limit + rng.randint(50, 200), "hold": _hold(rng)}

    return Kind("connections agent", recovery, draw, begin, end)


def _clock(recovery):
    """The clock of one process jumps, and jumps back."""
    def draw(rng):
        seconds = rng.choice([90, 600, HOUR, 5 * HOUR, 26 * HOUR]) * rng.choice([-1, 1])
        return {"target": rng.choice(["agent", "notify", "naming"]), "seconds": seconds, "hold": _hold(rng, (3.0, 8.0))}

    return Kind("clock", recovery, draw,
                lambda deployment, p: deployment.clocks[p["target"]].set(p["seconds"]),
                lambda deployment, p: deployment.clocks[p["target"]].set(0))


KINDS = [
    _kill(["agent"], 10, "kill agent"),
    _kill(["naming"], 10, "kill naming"),
    _kill(["notify"], 15, "kill notify", (0.0, 12.0)),
    _kill(OSSS, 10, "kill oss"),
    _kill(CONSUMERS, 20, "kill consumer"),
    _stop(["agent"], 10, "stop agent"),
    _stop(["naming"], 10, "stop naming"),
    _stop(["notify"], 15, "stop notify"),
    _stop(OSSS, 10, "stop oss"),
    _stop(CONSUMERS, 20, "stop consumer"),
    _packets("cut", 30, lambda rng: "", BEYOND_LIMITS),
    _packets("delay", 10, lambda rng: f"{rng.randint(20, 300)} {rng.randint(0, 50)}"),
    _packets("drop", 15, lambda rng: f"{rng.uniform(0.02, 0.25):.2f}"),
    _packets("duplicate", 10, lambda rng: f"{rng.uniform(0.05, 0.5):.2f}"),
    _packets("reorder", 10, lambda rng: f"{rng.uniform(0.05, 0.4):.2f} {rng.randint(5, 60)}"),
    _disk("ems", 10),
    # The store's log file never shrinks while the service runs, and one that has grown needs no more room for long.
    _disk("services", 15, before="notify"),
    _files("agent", "oss2", 10),
    _files("notify", "consumer2", 15),
    _files("naming", "oss2", 10),
    _connections(15),
    _clock(10),
]


def schedule(rng, kinds):
    """Faults without end: all kinds in an order by chance, then all again, some beside a fault of the network."""
    slow = [kind for kind in KINDS if kind.name in BESIDE]
    while True:
        deck = list(kinds)
        rng.shuffle(deck)
        for kind in deck:
            parameters = kind.draw(rng)
            other = rng.choice(slow)
            beside = Fault(other, other.draw(rng))
            with_it = rng.random() < SHARE_BESIDE and kind not in slow and kind.name != "cut"
            yield Fault(kind, parameters, beside if with_it else None)
