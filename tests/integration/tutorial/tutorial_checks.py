"""What holds the tutorial against the programs has to notice when they differ."""
import pathlib
import tempfile
import unittest

import tutorial_test
from tutorial import output, page, session, terminal


class OutputTest(unittest.TestCase):
    def test_times_ids_and_references_may_differ(self):
        self.assertTrue(output.fits(["at 2026-01-02T03:04:05.678+00:00 [12] IOR:0123…"],
                                    ["at 2027-11-12T13:14:15.000+00:00 [77] IOR:fedcba9876"]))
        self.assertTrue(output.fits(["NT_ALARM  01020304051  ridge"], ["NT_ALARM  12312359591  ridge"]))

    def test_the_number_of_a_notification_id_counts(self):
        self.assertFalse(output.fits(["NT_ALARM  01020304051"], ["NT_ALARM  12312359592"]))

    def test_everything_else_has_to_be_the_same(self):
        self.assertFalse(output.fits(["ridge  -4 C"], ["ridge  -5 C"]))
        self.assertFalse(output.fits(["done"], ["done", "and more"]))
        self.assertFalse(output.fits(["done", "and more"], ["done"]))

    def test_dots_stand_for_any_lines(self):
        self.assertTrue(output.fits(["...", "ready"], ["a", "b", "ready"]))
        self.assertTrue(output.fits(["...", "ready"], ["ready"]))
        self.assertFalse(output.fits(["...", "ready"], ["ready", "a"]))


class TutorialInAFolder(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.docs = pathlib.Path(folder.name) / "docs"
        (self.docs / "steps" / "weather").mkdir(parents=True)
        (self.docs / "steps" / "01_first").mkdir()
        (self.docs / "steps" / "01_first" / "main.cpp").write_text("int main() {}\n", encoding="utf-8")

    def write_page(self, text):
        (self.docs / "01-first.md").write_text(text, encoding="utf-8")

    def play(self, text):
        self.write_page(text)
        with session.Session(self.docs / "steps", "01_first", self.docs / "run", []) as reader:
            reader.play(page.read_blocks(self.docs / "01-first.md"))


class PagesTest(TutorialInAFolder):
    RUN = "Terminal *shell*:\n\n```console\n$ true\n```\n"

    def test_lines_of_a_file_pass(self):
        self.write_page("`01_first/main.cpp`:\n\n```cpp\nint main() {}\n```\n" + self.RUN)
        self.assertEqual(tutorial_test.check_pages(self.docs), [])

    def test_lines_that_are_not_in_the_file_are_told(self):
        self.write_page("`01_first/main.cpp`:\n\n```cpp\nint main() { }\n```\n" + self.RUN)
        self.assertIn("01-first.md:3", "".join(tutorial_test.check_pages(self.docs)))

    def test_unmarked_blocks_missing_pages_and_pages_without_a_run_are_told(self):
        self.assertIn("no page", "".join(tutorial_test.check_pages(self.docs)))
        self.write_page("`01_first/main.cpp`:\n\n```cpp\nint main() {}\n```\n\n```cpp\nint other() {}\n```\n")
        problems = "".join(tutorial_test.check_pages(self.docs))
        self.assertIn("names neither", problems)
        self.assertIn("shows no run", problems)


class SessionTest(TutorialInAFolder):
    def test_what_is_shown_passes(self):
        self.play("Terminal *a*:\n\n```console\n$ echo hello; ls\nhello\nmain.cpp\n$ true\n```\n")

    def test_other_output_is_told(self):
        with self.assertRaisesRegex(terminal.Mismatch, "(?s)01-first.md:3.*hello"):
            self.play("Terminal *a*:\n\n```console\n$ echo hello\ngood-bye\n```\n")

    def test_a_command_that_stays_goes_on_and_is_interrupted(self):
        self.play("Terminal *a*: <!-- stays -->\n\n```console\n$ trap 'echo bye; exit' INT; echo up; read < go; echo on; "
                  "while :; do sleep 0.01; done\nup\n```\n"
                  "Terminal *b*:\n\n```console\n$ mkfifo pipe; echo\n\n```\n"
                  .replace("read < go", "until [ -e pipe ]; do sleep 0.01; done")
                  + "Terminal *a*: <!-- goes on -->\n\n```console\non\n^C\nbye\n```\n")

    def test_output_that_no_page_shows_is_told(self):
        with self.assertRaisesRegex(terminal.Mismatch, "no page shows"):
            self.play("Terminal *a*: <!-- stays -->\n\n```console\n$ echo up; touch here; echo more; exec sleep 60\nup\nmore\n```\n"
                      "Terminal *b*: <!-- stays -->\n\n```console\n$ echo 1; sleep 0.01; echo 2; touch two; exec sleep 60\n1\n```\n"
                      "Terminal *c*:\n\n```console\n$ until [ -e two ]; do sleep 0.01; done\n```\n")

    def test_commands_are_repeated_until_they_fit(self):
        self.play("Terminal *a*: <!-- until it fits -->\n\n```console\n$ echo x >> tries; wc -l < tries\n3\n```\n")

    def test_ports_of_the_page_are_not_those_of_the_run(self):
        self.play("Terminal *a*:\n\n```console\n$ port=12001; echo $port; echo ${#port}; [ $port != 12''001 ] && echo other\n"
                  "12001\n5\nother\n```\n")


if __name__ == "__main__":
    unittest.main()
