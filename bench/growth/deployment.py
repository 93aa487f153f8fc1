"""A demo agent with its naming service, for benchmarks."""
import contextlib
import ctypes
import ctypes.util
import pathlib
import subprocess
import time

from processes import Failure, Process, free_port, last_words

PASSWORD = "correct horse battery"
# Users whose password takes as long to check as qv_user lets it, and users whose takes no time worth mentioning; a number
# follows.
USUAL_USERS, QUICK_USERS = "usual", "quick"
USUAL_COUNT = 10
ARGON2ID, LEAST_PASSES, LEAST_MEMORY = 2, 1, 8192
PATIENCE = 30

# Nobody is called or ended by the agent while it is measured.
CONFIG = """
[agent]
EmsName = "Zorvex/KLV"
NamingService_Host = "127.0.0.1"
NamingService_Port = {naming_port}
CORBAAgent_Host = "127.0.0.1"
CORBAAgent_Port = {agent_port}
CORBAAgent_Option = "-out {folder}/factory.ior"
IsInterceptorEnabled = true
bLogOperation = true
TimerInterval = 3600
ShakeHandWithOSS = false
MaxSessionOfFIFO = {sessions}
[platform]
env_root = "{folder}"
log_dir = "{folder}/log"
call_chain = true
users_file = "{folder}/users.toml"
"""


def quick_hash(password):
    """Argon2id at its least cost."""
    name = ctypes.util.find_library("sodium")
    if name is None:
        raise Failure("libsodium is missing; install the package libsodium-dev")
    sodium = ctypes.CDLL(name)
    sodium.sodium_init()
    text = ctypes.create_string_buffer(128)
    given = password.encode()
    if sodium.crypto_pwhash_str_alg(text, given, ctypes.c_ulonglong(len(given)), ctypes.c_ulonglong(LEAST_PASSES),
                                    ctypes.c_size_t(LEAST_MEMORY), ctypes.c_int(ARGON2ID)) != 0:
        raise Failure("libsodium could not hash a password")
    return text.value.decode()


def usual_hash(bin_folder, password):
    return subprocess.run([bin_folder / "qv_user", "hash"], input=password + "\n", text=True, check=True,
                          stdout=subprocess.PIPE).stdout.strip()


def make_users(bin_folder, file, quick_count):
    kinds = ((USUAL_USERS, USUAL_COUNT, usual_hash(bin_folder, PASSWORD)),
             (QUICK_USERS, quick_count, quick_hash(PASSWORD)))
    file.write_text("".join(f'[[user]]\nname = "{users}{number}"\npassword_hash = "{digest}"\n\n'
                            for users, count, digest in kinds for number in range(count)))
    file.chmod(0o600)


def wait_for_file(path, process):
    deadline = time.monotonic() + PATIENCE
    while not (path.exists() and path.stat().st_size > 0):
        if process.process.poll() is not None or time.monotonic() > deadline:
            raise Failure(f"{process.name} did not start{last_words(process.log.name)}")
        time.sleep(0.02)


@contextlib.contextmanager
def demo_agent(build, folder, sessions):
    """A running agent that lets so many sessions in, and the file with the reference of its session factory."""
    folder = pathlib.Path(folder)
    bin_folder = build / "bin"
    naming_port = free_port()
    make_users(bin_folder, folder / "users.toml", sessions)
    config = folder / "agent.toml"
    config.write_text(CONFIG.format(naming_port=naming_port, agent_port=free_port(), folder=folder,
                                    sessions=sessions + USUAL_COUNT))
    inventory = pathlib.Path(__file__).resolve().parents[2] / "demo/data/inventory.json"
    reference = folder / "naming.ior"
    with Process([bin_folder / "Naming_Service", "-ORBEndpoint", f"iiop://127.0.0.1:{naming_port}", "-o", reference,
                  "-u", folder / "naming-data"], folder / "naming.log") as naming:
        wait_for_file(reference, naming)
        with Process([bin_folder / "qv_demo_agent", "--config", config, "--inventory", inventory],
                     folder / "agent.log") as agent:
            agent.lines_until("ready")
            agent.ignore_rest()  # it tells each session
            yield agent, folder / "factory.ior"
