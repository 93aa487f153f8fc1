"""What a page looks like to Doxygen."""
import pathlib
import tempfile
import unittest

import markdown
import page_filter


class PagesInAFolder(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.root = pathlib.Path(folder.name).resolve()
        (self.root / "docs" / "part").mkdir(parents=True)
        self.write("docs/other.md", "# Other\n\n## What it `is`, really\n")
        self.write("time/header.h", "")

    def write(self, name, text):
        path = self.root / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(text, encoding="utf-8")
        return path

    def filtered(self, text):
        page = self.write("docs/part/page.md", text)
        return list(page_filter.Filter(self.root, page).run())


class AnchorsTest(unittest.TestCase):
    def test_headings_that_are_alike_are_numbered(self):
        self.assertEqual(markdown.anchors_of("# A b\n## A b\n```sh\n# no heading\n```\n"), ["a-b", "a-b-1"])


class FilterTest(PagesInAFolder):
    def test_headings_get_labels(self):
        self.assertEqual(self.filtered("# Page\n## A part\n"),
                         ["# Page {#page_part_page}", "## A part {#page_part_page_a-part}"])

    def test_links_between_pages_become_references(self):
        self.assertEqual(self.filtered("# P\n[a](../other.md) and [b](../other.md#what-it-is-really)")[1],
                         "[a](@ref page_other) and [b](@ref page_other_what-it-is-really)")
        self.assertEqual(self.filtered("# P\n[a](../other.md#other)")[1], "[a](@ref page_other)")

    def test_links_out_of_the_manual_become_paths(self):
        self.assertEqual(self.filtered("# P\n[header.h](../../time/header.h), [this](../../time/header.h)")[1],
                         "`time/header.h`, this (`time/header.h`)")

    def test_what_an_entrance_links_to_stands_below_it_once(self):
        self.write("docs/index.md", "# I\n[other](other.md), [again](other.md), [page](part/page.md)\n")
        self.write("docs/part/README.md", "# R\n[page](page.md)\n")
        self.write("docs/part/page.md", "# P\n")
        index = list(page_filter.Filter(self.root, self.root / "docs" / "index.md").run())
        self.assertEqual(index[1], '@subpage page_other "other", [again](@ref page_other), [page](@ref page_part_page)')
        readme = list(page_filter.Filter(self.root, self.root / "docs" / "part" / "README.md").run())
        self.assertEqual(readme[1], '@subpage page_part_page "page"')

    def test_the_parts_of_a_page_stand_below_it(self):
        self.write("docs/other-part.md", "# O\n")
        other = self.write("docs/other.md", "# Other\n[part](other-part.md)\n")
        self.assertEqual(list(page_filter.Filter(self.root, other).run())[1], '@subpage page_other_part "part"')

    def test_code_stays(self):
        self.assertEqual(self.filtered("# P\n```sh\n# [a](../other.md)\n```\n`[a](../other.md)`")[1:],
                         ["```sh", "# [a](../other.md)", "```", "`[a](../other.md)`"])


if __name__ == "__main__":
    unittest.main()
