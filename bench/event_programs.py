"""The notification service and those who push into it, as processes of a benchmark."""
import contextlib
import json
import pathlib
import tempfile

from processes import Process, free_port

# Of an agent that pushes; the service's reference stands in the file.
AGENT = """
[agent]
CORBAAgent_Host = "127.0.0.1"
CORBAAgent_Port = {port}
CORBAAgent_Option = "-nt {reference}"
EventQueueLength = {buffer}
bLogNotify = 0
"""


class Programs:
    """Starts the programs of a build; what they say on standard error lies in `folder`."""

    def __init__(self, build, folder):
        self.bin = pathlib.Path(build).resolve() / "bin"
        self.folder = pathlib.Path(folder)

    def start(self, name, *arguments, environment=None):
        return Process([self.bin / name, *map(str, arguments)], self.folder / f"{name}.log", environment)

    def line_of(self, name, *arguments):
        """The first line of a program that ends by itself."""
        with self.start(name, *arguments) as process:
            return process.line()

    def push(self, events, rate, targets):
        return json.loads(self.line_of("bench_supplier", "push", events, rate, *targets))

    @contextlib.contextmanager
    def service(self, *options):
        """A running service and the reference of its factory."""
        port = free_port()
        with tempfile.TemporaryDirectory(prefix="qv_bench_") as data:
            with self.start("Notify_Service", "-ORBEndpoint", f"iiop://127.0.0.1:{port}", "-u", data,
                            *options) as service:
                service.line()
                yield service, f"corbaloc:iiop:127.0.0.1:{port}/NotifyEventChannelFactory"

    def make_channel(self, factory):
        return self.line_of("bench_supplier", "make", factory)

    @contextlib.contextmanager
    def agent(self, what, events, reference, buffer):
        """The library's side, pushing to the service whose reference stands in that file."""
        with tempfile.TemporaryDirectory(prefix="qv_bench_") as data:
            config = pathlib.Path(data, "agent.toml")
            config.write_text(AGENT.format(port=free_port(), reference=reference, buffer=buffer))
            with self.start("bench_push_event", what, events, environment={
                    "QV_AGENT_CONFIG": str(config), "QV_LOG_DIR": data, "QV_ENV_ROOT": data,
                    "QV_CFG_DIR": data}) as agent:
                yield agent
