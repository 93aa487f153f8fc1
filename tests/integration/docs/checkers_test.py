"""What the checks of the pages find, and what they leave alone."""

import tempfile
import unittest
from pathlib import Path

import links_test
import messages_test
from source_texts import constants_of, texts_of

SOURCE = '''
constexpr int kLevel = 1;
void F() {
    TaDebugWithPara(kLevel, "[X::F] Get %s"
                            " failed!", key);  // "no text"
    throw Problem("the file " + name + " can't be opened by \\"us\\"");
    app.add_option("--file", file, "Take this file here");
}
'''


def rows_of(*lines):
    return messages_test.catalogue([("page", "\n".join(lines))])


class Texts(unittest.TestCase):
    def test_joins_literals_and_turns_conversions_into_gaps(self):
        said = [text.said for text in texts_of("a.cpp", SOURCE)]
        self.assertIn("[X::F] Get … failed!", said)
        self.assertIn("can't be opened by \"us\"", said)
        self.assertNotIn("no text", said)

    def test_knows_channel_and_level(self):
        found = messages_test.messages([("agent/a.cpp", SOURCE)])
        self.assertEqual([channel for _, channel in found][0], ("corbadebug", 1))
        self.assertEqual(constants_of(SOURCE), {"kLevel": 1})

    def test_leaves_help_out(self):
        said = [text.said for text, _ in messages_test.messages([("tools/a.cpp", SOURCE)])]
        self.assertNotIn("Take this file here", said)


class Catalogue(unittest.TestCase):
    def found(self, *lines):
        return messages_test.missing_in_catalogue(messages_test.messages([("agent/a.cpp", SOURCE)]), rows_of(*lines))

    def test_misses_a_text_that_no_row_has(self):
        problems = self.found("| `[X::F] Get … failed!` | corbadebug 1 | m | d |")
        self.assertEqual(len(problems), 2)
        self.assertIn("can't be opened by", problems[0])

    def test_notices_a_wrong_level(self):
        problems = self.found("| `[X::F] Get … failed!` | corbadebug 3 | m | d |",
                              "| `the file … can't be opened by \"us\"` | start | m | d |",
                              "| `Take this file here` | start | m | d |")
        self.assertEqual(len(problems), 1)
        self.assertIn("corbadebug 1", problems[0])

    def test_notices_a_row_that_no_source_has(self):
        rows = rows_of("| `[X::F] Got … failed!` | corbadebug 1 | m | d |")
        problems = messages_test.missing_in_sources(rows, ["[X::F] Get … failed!"])
        self.assertEqual(problems, ["page:1: no source says: [X::F] Got"])

    def test_takes_a_sentence_that_is_put_together_at_a_colon(self):
        rows = rows_of("| `it is no file: correct it` | start | m | d |")
        self.assertEqual(messages_test.missing_in_sources(rows, ["it is no file", "correct it"]), [])


class Links(unittest.TestCase):
    def problems(self, text):
        with tempfile.TemporaryDirectory() as folder:
            root = Path(folder)
            (root / "docs").mkdir()
            (root / "docs/other.md").write_text("# A `heading`, it is\n", encoding="utf-8")
            page = root / "docs/page.md"
            page.write_text(text, encoding="utf-8")
            return links_test.problems_of(root, page, {"docs"})

    def test_takes_what_exists(self):
        self.assertEqual(self.problems("[a](other.md) [b](other.md#a-heading-it-is) `docs/other.md` <x> `a/b`"), [])

    def test_looks_for_tests_that_are_named(self):
        with tempfile.TemporaryDirectory() as folder:
            page = Path(folder) / "page.md"
            (Path(folder) / "a_test.cpp").write_text("TEST(A, Holds) {}\n", encoding="utf-8")
            line = "[a](a_test.cpp) `Holds`, `Breaks`"
            self.assertEqual(links_test.test_problems(page, line), ["a_test.cpp has no test Breaks"])

    def test_leaves_blocks_alone(self):
        self.assertEqual(self.problems("    [a](none.md)\n\n```\n`docs/none`\n```\n"), [])

    def test_finds_what_is_missing(self):
        problems = self.problems("[a](none.md)\n[b](other.md#none)\n`docs/none.cpp`\n[`c`](none.h)\n[d](/etc/passwd)\n")
        self.assertEqual([problem.split(":")[1] for problem in problems], ["1", "2", "3", "4", "5"])


if __name__ == "__main__":
    unittest.main()
