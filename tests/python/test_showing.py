"""What people see of a source: repr(), tables in notebooks, help()."""

import html.parser
import pydoc
import unittest

import support
import zrml
from zrml import _show
from zrml._library import library


class Cells(html.parser.HTMLParser):
    """The texts of a table by rows, and the tags it is made of."""

    def __init__(self, text):
        super().__init__()
        self.rows, self.tags, self.caption, self.place = [], set(), "", None
        self.feed(text)

    def handle_starttag(self, tag, attributes):
        self.tags.add(tag)
        self.place = tag
        if tag == "tr":
            self.rows.append([])
        elif tag in ("td", "th"):
            self.rows[-1].append("")

    def handle_data(self, data):
        if self.place in ("td", "th"):
            self.rows[-1][-1] += data
        elif self.place == "caption":
            self.caption += data

    def handle_endtag(self, tag):
        self.place = None


class Showing(support.TestCase):
    def open(self, name):
        source = zrml.open(support.path(name))
        self.addCleanup(source.close)
        return source

    def test_repr_of_raw_data(self):
        source = self.open("small.raw")
        path = str(support.path("small.raw"))
        self.assertEqual(
            repr(source), f"<zrml.Source {path!r}: raw directory, 6 functions, 3 traces, 2 absorbance scans>"
        )
        self.assertEqual(repr(source.samples[0]), "<zrml.Sample 1 'Injection 1'>")
        function = source.functions[0]
        self.assertEqual(repr(function), "<zrml.Function 1 'TOF MS ES+': MS, positive, 3 scans>")
        self.assertEqual(repr(function[0]), "<zrml.Scan: scan 1 of function 1, 0.5 min, at most 3 points>")
        scan = function[0]
        scan.mz
        self.assertEqual(
            repr(scan), "<zrml.Scan: scan 1 of function 1, 0.5 min, 3 points, 100 to 300.062 m/z>"
        )
        self.assertEqual(repr(function.sum(0, 1)), "<zrml.Sum: 3 points, 100 to 300.062 m/z>")
        self.assertEqual(
            repr(zrml.Spectrum(scan.mz, scan.intensity)), "<zrml.Spectrum: 3 points, 100 to 300.062 m/z>"
        )
        self.assertEqual(repr(function.tic()), "<zrml.Chromatogram 'TIC': 3 scans, 0.5 to 1.5 min>")
        self.assertEqual(repr(source.traces[1]), r"<zrml.Trace 2 'UV\x1b[31m 254'>")
        self.assertEqual(repr(source.absorbance), "<zrml.Absorbance: 2 scans, 0.125 to 0.25 min>")
        self.assertEqual(repr(source.absorbance.scans[0]), "<zrml.AbsorbanceScan: scan 1, 0.125 min>")

    def test_repr_of_a_report(self):
        path = str(support.path("vials.rpt"))
        self.assertEqual(repr(self.open("vials.rpt")), f"<zrml.Source {path!r}: report, 3 samples>")

    def test_repr_of_a_closed_source(self):
        source = self.open("small.raw")
        things = [source, source.samples[0], source.functions[0], source.functions[0][0]]
        things += [source.traces[0], source.absorbance, source.absorbance.scans[0]]
        source.close()
        for thing in things:
            self.assertTrue(repr(thing).startswith("<zrml."))
        self.assertIn("closed", repr(source))
        for thing in things[:4]:
            self.assertIn("closed", Cells(thing._repr_html_()).caption)

    def test_long_names_are_cut(self):
        function = next(f for f in self.open("all.raw").functions if len(f.name) > 1000)
        self.assertLess(len(repr(function)), 150)

    def test_table_of_functions(self):
        cells = Cells(self.open("small.raw")._repr_html_())
        self.assertIn("raw directory", cells.caption)
        self.assertEqual(cells.rows[0], ["number", "name", "kind", "MS level", "polarity", "scans"])
        self.assertEqual(cells.rows[1], ["1", "TOF MS ES+", "MS", "1", "positive", "3"])
        self.assertEqual(cells.rows[-1][0], "p1")

    def test_table_of_samples(self):
        cells = Cells(self.open("vials.rpt")._repr_html_())
        self.assertEqual(cells.rows[:2], [["number", "name", "functions"], ["1", "VIAL_1", "2"]])

    def test_table_of_a_function_and_of_a_scan(self):
        function = self.open("small.raw").functions[0]
        self.assertIn(["mass range", "50.0 to 1200.5"], Cells(function._repr_html_()).rows)
        self.assertIn(["m/z", "100 to 300.062"], Cells(function[0]._repr_html_()).rows)

    def test_text_of_files_is_escaped(self):
        source = self.open("odd.raw")
        function = source.functions[0]
        self.assertIn("<b>A&B</b>", function.name)
        for shown in (source, source.samples[0], function):
            text = shown._repr_html_()
            self.assertIn("&lt;b&gt;A&amp;B&lt;/b&gt;", text)
            self.assertLessEqual(Cells(text).tags, {"table", "caption", "thead", "tbody", "tr", "th", "td"})

    def test_long_tables_are_cut(self):
        text = _show.html_table("all", ("n",), [(i,) for i in range(57)])
        self.assertEqual(len(Cells(text).rows), 1 + _show.MOST_ROWS)
        self.assertIn("and 7 more", text)

    def test_help(self):
        text = pydoc.render_doc(zrml, renderer=pydoc.plaintext)
        for name in zrml.__all__:
            self.assertIn(name, text)
        self.assertNotIn("_source.Source", text)  # names are those that people use
        for name in zrml.__all__:
            thing = getattr(zrml, name)
            self.assertTrue(thing.__doc__, name)
            for member, value in vars(thing).items() if isinstance(thing, type) else ():
                if not member.startswith("_") and (callable(value) or isinstance(value, property)):
                    self.assertTrue(value.__doc__, f"{name}.{member}")

    def test_version_is_the_librarys(self):
        self.assertEqual(zrml.__version__, library.zrml_version().decode())


if __name__ == "__main__":
    unittest.main()
