"""A demo agent by the number of sessions."""
from ..arithmetic import ratios, spread
from ..model import Plot, Ratio, Section, Table
from ..text import number, range_of, short
from . import growing

WHAT = ("Sessions at the demo agent at once, each of another user, all on one connection. In the sweep the password costs next to nothing "
        "to check, so that the session itself shows; each ping goes to another session.")


def log_in(sample):
    return sample["login_p50_us"] / 1000


def ping(sample):
    return sample["ping_p50_us"] / 1000


def per_session(sample):
    return sample["octets_per_session"] / 1024


def read(result):
    section = Section("sessions", "Sessions", WHAT)
    usual = spread(one["login_p50_us"] / 1000 for one in result["usual_log_ins"])
    late = lambda sample: sample["login_p99_us"] / 1000
    memory = lambda sample: sample["rss_kib"] / 1024
    section.plots = [
        Plot("sessions_time", "Log-in and ping by sessions", "sessions that are logged in", "time [ms]", [
            growing.series(result, "log-in, p50", log_in), growing.series(result, "log-in, p99", late),
            growing.series(result, "ping, p50", ping)], log_x=True, log_y=True,
            bends=growing.bend_marks(result, {"log-in": log_in, "ping": ping})),
        Plot("sessions_memory", "Resident memory by sessions", "sessions that are logged in", "resident memory [MiB]",
             [growing.series(result, "resident memory", memory)], log_x=True)]
    section.tables = [Table("", ["Sessions", "log-in p50, ms", "log-in p99, ms", "ping p50, ms", "resident memory, MiB",
                                 "KiB per session"], [
        [short(units), *(range_of(spread(map(value, samples))) for value in (log_in, late, ping, memory, per_session))]
        for units, samples in growing.steps(result)])]
    section.sentences = [
        growing.ended(result),
        f"A log-in with a password as qv_user keeps it takes {number(usual.median)} ms; checking it is meant to be slow."]
    section.bends = [
        growing.bend_sentence(result, "Log-in", log_in), growing.bend_sentence(result, "Ping", ping)]
    _, last = growing.steps(result)[-1]
    section.ratios = [
        Ratio("Log-in without the check of the password, of a ping", ratios(map(log_in, last), map(ping, last)), "times"),
        Ratio("Memory of a session", growing.added_per_unit(result, lambda sample: sample["rss_kib"]), "KiB")]
    return section
