"""Made-up journals with one thing wrong each: the accounts have to say so, and nothing where all is well."""
import unittest

from campaign import accounts
from campaign.journals import CallJournal, Ledger, OperationLog

LATER = 10_000


def calls_of(*lines):
    journal = CallJournal()
    for line in lines:
        journal.take(line)
    return list(journal.calls.values())


def call(number, operation="setUserLabel", outcome="ok", begin=1000, end=1010):
    token = f"oss1.1.{number}"
    lines = [f"begin {token} {operation} {begin}"]
    return lines + ([f"end {token} {operation} {outcome} {end}"] if outcome else [])


def log_of(*records):
    """Records are (kind, token)."""
    log = OperationLog()
    for kind, token in records:
        log.take(f"2026-11-21T18:03:13.531+00:00 [1] -1 record x:1 ---MessageType:  {kind}, RemoteAddress:  a")
        log.take("    --- Request ID = 12, Operation Name = setUserLabel")
        log.take("    ParaList = {")
        log.take(f"    --- Parameter No.2 = {token}")
        log.take("     } ")
    return log


def whole_log(*numbers):
    return log_of(*((kind, f"oss1.1.{n}") for n in numbers for kind in ("REQUEST", "REPLY")))


class Requests(unittest.TestCase):
    def account(self, calls, log, **changes):
        options = {"until": LATER, "dead": set(), "record_gaps": [], "full_spans": [], "records_told": 0,
                   "frozen": {}, **changes}
        return accounts.account_requests(calls, log, **options)

    def assert_blames(self, account, words):
        self.assertEqual(len(account.problems), 1, account.problems)
        self.assertIn(words, account.problems[0])

    def test_balances(self):
        account = self.account(calls_of(*call(1), *call(2, "ping")), whole_log(1))
        self.assertEqual(account.problems, [])
        self.assertEqual(account.counts["answered"], 2)

    def test_an_exception_is_an_end_and_needs_no_record(self):
        account = self.account(calls_of(*call(1, outcome="system:COMM_FAILURE:COMPLETED_MAYBE")), log_of())
        self.assertEqual(account.problems, [])
        self.assertEqual(account.counts["failed"], 1)

    def test_names_a_call_without_an_end(self):
        self.assert_blames(self.account(calls_of(*call(1, outcome=None)), log_of()),
                           "no answer and no exception within the bound: oss1.1.1")

    def test_a_call_that_began_later_may_be_under_way(self):
        self.assertEqual(self.account(calls_of(*call(1, outcome=None, begin=LATER)), log_of()).problems, [])

    def test_an_oss_that_was_killed_leaves_its_last_call_open(self):
        account = self.account(calls_of(*call(1, outcome=None)), log_of(), dead={"oss1.1"})
        self.assertEqual(account.problems, [])
        self.assertEqual(account.counts["cut off"], 1)

    def test_names_an_answer_that_came_too_late(self):
        late = call(1, end=1000 + accounts.SINGLE_CALL_LIMIT_MS + 1)
        self.assert_blames(self.account(calls_of(*late), whole_log(1)), "came too late: oss1.1.1")

    def test_the_time_in_which_an_oss_was_stopped_does_not_count(self):
        late = calls_of(*call(1, end=1000 + accounts.SINGLE_CALL_LIMIT_MS + 500))
        self.assertEqual(self.account(late, whole_log(1), frozen={"oss1": [(900, 1500)]}).problems, [])
        self.assert_blames(self.account(late, whole_log(1), frozen={"oss2": [(900, 1500)]}), "came too late")

    def test_names_a_double_execution(self):
        log = log_of(("REQUEST", "oss1.1.1"), ("REQUEST", "oss1.1.1"), ("REPLY", "oss1.1.1"))
        account = self.account(calls_of(*call(1)), log)
        self.assert_blames(account, "executed twice: oss1.1.1")
        self.assertEqual(account.counts["twice"], 1)

    def test_names_a_double_execution_behind_an_exception(self):
        log = log_of(("REQUEST", "oss1.1.1"), ("REQUEST", "oss1.1.1"))
        failed = calls_of(*call(1, outcome="system:COMM_FAILURE:COMPLETED_MAYBE"))
        self.assert_blames(self.account(failed, log), "executed twice")

    def test_names_missing_records(self):
        self.assert_blames(self.account(calls_of(*call(1)), log_of()), "without a record: oss1.1.1 (request, reply)")
        self.assert_blames(self.account(calls_of(*call(1)), log_of(("REQUEST", "oss1.1.1"))),
                           "without a record: oss1.1.1 (reply)")

    def test_records_may_be_missing_before_a_kill_of_the_agent(self):
        self.assertEqual(self.account(calls_of(*call(1)), log_of(), record_gaps=[(900, 1100)]).problems, [])

    def test_as_many_records_may_be_missing_of_a_full_disk_as_the_agent_told(self):
        calls = calls_of(*call(1), *call(2))
        full = {"full_spans": [(900, 1100)]}
        self.assertEqual(self.account(calls, log_of(), records_told=2, **full).problems, [])
        self.assert_blames(self.account(calls, log_of(), records_told=1, **full), "while the disk was full")
        self.assert_blames(self.account(calls, log_of(), records_told=2), "without a record: oss1.1.1")


class Audit(unittest.TestCase):
    def account(self, calls, rows, **changes):
        options = {"until": LATER, "running": 7, "killed": set(), "full_spans": [], "rows_told": 0, **changes}
        return accounts.account_audit(calls, rows, **options)

    @staticmethod
    def row(number, ended=True, result=0, process=7, open_for=0.0, token=None):
        return accounts.AuditRow(number, process, "setUserLabel", token or f"oss1.1.{number}", ended,
                                 result if ended else None, open_for)

    def test_balances(self):
        account = self.account(calls_of(*call(1), *call(2, "setAttributeValue")), [self.row(1)])
        self.assertEqual(account.problems, [])

    def test_names_a_missing_row(self):
        self.assertIn("without a row", self.account(calls_of(*call(1)), []).problems[0])

    def test_as_many_rows_may_be_missing_of_a_full_disk_as_the_agent_told(self):
        calls, full = calls_of(*call(1)), {"full_spans": [(900, 1100)]}
        self.assertEqual(self.account(calls, [], rows_told=1, **full).problems, [])
        self.assertIn("while the disk was full", self.account(calls, [], **full).problems[0])
        self.assertIn("without a row", self.account(calls, [], rows_told=1).problems[0])

    def test_names_a_row_without_its_end(self):
        self.assertIn("no end", self.account(calls_of(*call(1)), [self.row(1, ended=False)]).problems[0])

    def test_rows_of_a_killed_agent_stay_open(self):
        failed = calls_of(*call(1, outcome="system:COMM_FAILURE:COMPLETED_MAYBE"))
        open_row = self.row(1, ended=False, process=6, open_for=100)
        self.assertEqual(self.account(failed, [open_row], killed={6}).problems, [])
        self.assertIn("stay open", self.account(failed, [open_row]).problems[0])

    def test_names_a_row_that_stays_open_while_the_agent_runs(self):
        failed = calls_of(*call(1, outcome="system:TIMEOUT:COMPLETED_MAYBE"))
        self.assertEqual(self.account(failed, [self.row(1, ended=False, open_for=1)]).problems, [])
        self.assertIn("stay open", self.account(failed, [self.row(1, ended=False, open_for=60)]).problems[0])

    def test_names_two_rows_of_one_operation(self):
        rows = [self.row(1), self.row(2, token="oss1.1.1")]
        self.assertIn("two rows", self.account(calls_of(*call(1)), rows).problems[0])

    def test_names_rows_of_nothing_and_wrong_results(self):
        self.assertIn("nobody asked", self.account([], [self.row(1)]).problems[0])
        self.assertIn("failed, which it did not", self.account(calls_of(*call(1)), [self.row(1, result=1)]).problems[0])


def ledger_of(*lines):
    ledger = Ledger()
    for line in ("restart", "cleared,t", *lines):
        ledger.take(line)
    return ledger


def event(number, fate="sent", kind="NT_ALARM"):
    return f"event,{number},e{number},{kind},PS_MAJOR,NE-1,{fate}"


class Events(unittest.TestCase):
    def account(self, ledger, arrivals, **changes):
        options = {"name": "c", "until": len(ledger.events), "doubts": 0, "agent_kills": 0, "queue_length": 3}
        options.update(changes)
        return accounts.account_events(ledger, arrivals, **options)

    def problems(self, ledger, arrivals, **changes):
        return self.account(ledger, arrivals, **changes).problems

    def test_balances(self):
        ledger = ledger_of(event(1), event(2), event(3, "held", "NT_HEARTBEAT"), event(4))
        account = self.account(ledger, ["e1", "e2", "e4"])
        self.assertEqual(account.problems, [])
        self.assertEqual(account.counts["lost"], 0)

    def test_names_a_lost_event(self):
        account = self.account(ledger_of(event(1), event(2), event(3)), ["e1", "e3"])
        self.assertIn("lacks events that were sent: e2 (number 2 of run 1)", account.problems[0])
        self.assertEqual(account.counts["lost"], 1)

    def test_a_younger_event_may_be_under_way(self):
        self.assertEqual(self.problems(ledger_of(event(1), event(2)), ["e1"], until=1), [])

    def test_a_consumer_has_a_claim_from_its_first_event_on(self):
        self.assertEqual(self.problems(ledger_of(event(1), event(2)), ["e2"]), [])

    def test_names_an_event_that_came_twice_untold(self):
        ledger = ledger_of(event(1), event(2))
        self.assertIn("got events twice, and the service told of 0: e1", self.problems(ledger, ["e1", "e1", "e2"])[0])
        self.assertEqual(self.problems(ledger, ["e1", "e1", "e2"], doubts=1), [])
        self.assertNotEqual(self.problems(ledger, ["e1", "e1", "e1", "e2"], doubts=1), [])

    def test_what_the_agent_pushed_again_may_come_again(self):
        ledger = ledger_of(event(1), "loss,t,e2", event(2, "held"), "cleared,t", event(3))
        self.assertEqual(self.problems(ledger, ["e1", "e2", "e2", "e3"]), [])

    def test_names_another_order(self):
        ledger = ledger_of(event(1), event(2), event(3))
        self.assertIn("behind later ones: e2", self.problems(ledger, ["e1", "e3", "e2"])[0])

    def test_names_a_buffered_event_that_did_not_come(self):
        ledger = ledger_of(event(1), "loss,t,e2", event(2, "held"), event(3, "held"), "cleared,t")
        self.assertIn("nobody told", self.problems(ledger, ["e1", "e2"], queue_length=100)[0])

    def test_what_a_full_buffer_dropped_is_told(self):
        ledger = ledger_of(event(1), "loss,t,e2", *(event(n, "held") for n in range(2, 8)), "cleared,t", event(8))
        account = self.account(ledger, ["e1", "e2", "e3", "e4", "e8"])
        self.assertEqual(account.problems, [])
        self.assertEqual(account.counts["dropped, told"], 3)
        self.assertIn("nobody told", self.problems(ledger, ["e1", "e2", "e3", "e4"], until=7)[0])

    def test_a_full_buffer_explains_nothing_that_was_not_told(self):
        ledger = ledger_of(event(1), *(event(n, "held") for n in range(2, 8)), "cleared,t", event(8))
        self.assertIn("nobody told", self.problems(ledger, ["e1", "e2", "e3", "e4", "e8"])[0])

    def test_a_killed_agent_takes_its_buffer_along(self):
        younger = event(1).replace("e1", "f1")
        ledger = ledger_of(event(1), "loss,t,e2", event(2, "held"), "restart", "cleared,t", younger)
        self.assertEqual(self.problems(ledger, ["e1", "f1"], queue_length=100), [])

    def test_each_kill_of_the_agent_may_leave_one_event_unnoted(self):
        ledger = ledger_of(event(1), "restart", "cleared,t")
        self.assertEqual(self.problems(ledger, ["e1", "e2"], agent_kills=1), [])
        self.assertIn("has not noted: e2", self.problems(ledger, ["e1", "e2"])[0])


if __name__ == "__main__":
    unittest.main()
