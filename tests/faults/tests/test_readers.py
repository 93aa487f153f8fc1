"""Readers of journals and logs, the search for secrets, bounds on growth, the schedule, and the table."""
import random
import sqlite3
import tempfile
import unittest
from pathlib import Path

from campaign import faults, leaks, report
from campaign.audit_file import AuditFile
from campaign.journals import AgentWords, Ledger, LineSource, ServiceWords
from campaign.secrets_check import find_secrets


class InDirectory(unittest.TestCase):
    def setUp(self):
        holder = tempfile.TemporaryDirectory()
        self.addCleanup(holder.cleanup)
        self.directory = Path(holder.name)


class Lines(InDirectory):
    def test_waits_for_the_end_of_a_line(self):
        path = self.directory / "journal"
        source = LineSource(path)
        self.assertEqual(source.new_lines(), [])
        path.write_text("one\ntw")
        self.assertEqual(source.new_lines(), ["one"])
        path.write_text("one\ntwo\n")
        self.assertEqual(source.new_lines(), ["two"])
        self.assertEqual(source.new_lines(), [])


class Words(unittest.TestCase):
    def test_counts_the_doubts_of_each_consumer(self):
        words = ServiceWords()
        for line in ("Notify_Service: consumer 10.77.0.3:12010 of proxy c1/ca0/p2 may get event 42 twice: its answer",
                     "Notify_Service: the consumer of proxy c1/ca0/p2 may get one event twice, most likely event 43",
                     "Notify_Service: the consumer of proxy c1/ca0/p3 may get one event twice, most likely event 43",
                     "Notify_Service: something (3 lines about c1/ca0/p2 in doubt were left out)",
                     "Notify_Service: registered as NotifyEventChannelFactory in the naming service"):
            words.take(line)
        self.assertEqual(words.doubts, {2: 5, 3: 1})

    def test_adds_up_what_the_agent_lost(self):
        words = AgentWords()
        for line in ("qv-platform: writes to /x/corbaoper.log again; up to 236 records were lost",
                     "qv-platform: writes to /x/corbanotify.log again; up to 7 records were lost",
                     "qv-platform: writes to /x/corbaoper.log again; up to 4 records were lost",
                     "qv-platform: the audit /x/audit.db is written again; 48 row(s) were lost"):
            words.take(line)
        self.assertEqual((words.records_lost, words.rows_lost), (240, 48))


class LedgerReader(unittest.TestCase):
    def test_knows_outages_and_processes(self):
        ledger = Ledger()
        for line in ("restart", "event,1,a,NT_ALARM,,NE-1,held", "cleared,t", "event,2,b,NT_ALARM,,NE-1,sent",
                     "loss,t,c", "event,3,c,NT_ALARM,,NE-1,held", "loss,t,c", "restart", "cleared,t",
                     "event,1,d,NT_ALARM,,NE-1,sent"):
            ledger.take(line)
        self.assertEqual([event.run for event in ledger.events], [1, 1, 1, 2])
        self.assertEqual([event.outage for event in ledger.events], [0, None, 1, None])
        self.assertEqual([(o.told, o.cleared, o.killed) for o in ledger.outages[:2]],
                         [(False, True, False), (True, False, True)])
        self.assertEqual(ledger.failed, {"c"})


class Audit(InDirectory):
    def test_reads_rows_and_looks_again_at_open_ones(self):
        path = self.directory / "audit.db"
        with sqlite3.connect(path) as database:
            database.execute("CREATE TABLE audit(id, process, operName, strInfo, end_ms, result)")
            database.execute("INSERT INTO audit VALUES (1, 7, 'setUserLabel', 'x = oss1.1.5 }', 9, 0)")
            database.execute("INSERT INTO audit VALUES (2, 7, 'modifyPassword', 'x', NULL, NULL)")
            database.commit()
            audit = AuditFile(path)
            rows = audit.rows()
            self.assertEqual([(r.id, r.token, r.ended) for r in rows], [(1, "oss1.1.5", True), (2, "", False)])
            database.execute("UPDATE audit SET end_ms = 10, result = 0 WHERE id = 2")
            database.commit()
            self.assertEqual([r.ended for r in audit.rows()], [True, True])
        database.close()

    def test_a_missing_audit_has_no_rows(self):
        self.assertEqual(AuditFile(self.directory / "none.db").rows(), [])


class Secrets(InDirectory):
    def test_finds_a_password_in_any_file(self):
        (self.directory / "logs").mkdir()
        leaky = self.directory / "logs" / "agent.log"
        leaky.write_bytes(b"x" * 3_000_000 + b"the password is Tr0ub4dor!")
        (self.directory / "clean.log").write_text("nothing here")
        passwords = self.directory / "passwords"
        passwords.write_text("Tr0ub4dor!\n")
        self.assertEqual(find_secrets(self.directory, ["Tr0ub4dor!"], [passwords]), [str(leaky)])

    def test_finds_one_across_the_parts_in_which_a_file_is_read(self):
        path = self.directory / "log"
        path.write_bytes(b"x" * ((1 << 20) - 4) + b"Tr0ub4dor!")
        self.assertEqual(find_secrets(self.directory, ["Tr0ub4dor!"]), [str(path)])


class Leaks(unittest.TestCase):
    BASE = {"files": 30, "threads": 20, "rss": 50_000}

    def test_names_what_has_grown(self):
        self.assertEqual(leaks.judge("agent", self.BASE, self.BASE), [])
        for what in self.BASE:
            self.assertEqual(len(leaks.judge("agent", self.BASE, {**self.BASE, what: 1_000_000})), 1, what)


class Schedule(unittest.TestCase):
    @staticmethod
    def first(seed, count=60):
        plan = faults.schedule(random.Random(seed), faults.KINDS)
        return [next(plan).describe() for _ in range(count)]

    def test_replays_from_its_seed(self):
        self.assertEqual(self.first(5), self.first(5))
        self.assertNotEqual(self.first(5), self.first(6))

    def test_has_faults_of_the_network_beside_others(self):
        plan = faults.schedule(random.Random(1), faults.KINDS)
        drawn = [next(plan) for _ in range(200)]
        beside = [fault for fault in drawn if fault.beside is not None]
        self.assertTrue(20 < len(beside) < 80, len(beside))
        self.assertFalse([fault for fault in beside if fault.kind.name in (*faults.BESIDE, "cut")])

    def test_plays_each_kind_before_any_comes_again(self):
        plan = faults.schedule(random.Random(1), faults.KINDS)
        names = [next(plan).kind.name for _ in faults.KINDS]
        self.assertEqual(sorted(names), sorted(kind.name for kind in faults.KINDS))


class Table(InDirectory):
    def test_shows_a_line_for_each_kind_and_its_verdict(self):
        good = report.Line("cut", 45, [1.0, 4.0, 2.0])
        good.add({"made": 3, "answered": 2, "failed": 1}, {"raised": 9}, {"rows": 1})
        bad = report.Line("kill agent", 15, [1.0], problems=["lost"])
        text = report.table([good, bad]).splitlines()
        self.assertRegex(text[2], r"^cut +3 +45\.0 +2\.0 +4\.0 +3 +2 +1 .* ok$")
        self.assertRegex(text[3], r"^kill agent .* FAILED$")
        report.write_json(self.directory / "report.json", {"seed": 1}, [good, bad])
        self.assertIn('"balances": false', (self.directory / "report.json").read_text())


if __name__ == "__main__":
    unittest.main()
