"""The comparison itself: it must see a single bit, and count what it is told to count."""

import struct
import unittest
from pathlib import Path
from typing import Dict, List, Optional

from case_files import read_cases, read_examples
from compare_speed import speeds_of
from outcomes import Difference, Outcome, compare
from random_runs import random_run

_TREE = Path(__file__).resolve().parents[2]
_GEOGRAPHIC = b" Fault base point Co-ordinates Translate    lon:144 lat:39 x:1 y:2\n"


def _grid(values: List[float], org_x: float = 1.0) -> bytes:
    return struct.pack("<ddiif", org_x, 2.0, len(values), 1, 0.5) + struct.pack("<%df" % len(values), *values)


def _outcome(grid: Optional[bytes], stdout: bytes = b"done\n", status: str = "0") -> Outcome:
    entries: Dict[str, Optional[bytes]] = {"out": None}
    if grid is not None:
        entries["out/a.bin"] = grid
    return Outcome(status, {"stdout": stdout, "stderr": b""}, entries)


class Plane(unittest.TestCase):
    def test_equal_outcomes_do_not_differ(self) -> None:
        found = compare(_outcome(_grid([1.0, 2.0])), _outcome(_grid([1.0, 2.0])))
        self.assertEqual((found.runs, found.files, found.lines), (1, 1, 1))
        self.assertEqual(found.details, [])
        self.assertEqual(found.differing_runs, 0)

    def test_one_bit_of_a_value_differs(self) -> None:
        old = _grid([1.0, 2.0])
        new = old[:-4] + bytes([old[-4] ^ 1]) + old[-3:]
        found = compare(_outcome(old), _outcome(new))
        self.assertEqual((found.differing_runs, found.differing_files, found.differing_bytes), (1, 1, 1))

    def test_a_file_of_one_side_alone_differs(self) -> None:
        for old, new in ((None, _grid([1.0])), (_grid([1.0]), None)):
            self.assertEqual(compare(_outcome(old), _outcome(new)).differing_files, 1)

    def test_the_exit_status_and_a_line_differ(self) -> None:
        self.assertEqual(compare(_outcome(None), _outcome(None, status="1")).differing_runs, 1)
        self.assertEqual(compare(_outcome(None), _outcome(None, b"Done\n")).differing_lines, 1)

    def test_a_printed_largest_value_differs(self) -> None:
        found = compare(_outcome(None, b"maxval = 1.00001\n"), _outcome(None, b"maxval = 1.00002\n"))
        self.assertEqual((found.differing_lines, found.moved_lines), (1, 0))


class Geographic(unittest.TestCase):
    def _compare(self, old: List[float], new: List[float], org_x: float = 1.0) -> Difference:
        return compare(_outcome(_grid(old), _GEOGRAPHIC), _outcome(_grid(new, org_x), _GEOGRAPHIC))

    def test_values_are_counted(self) -> None:
        found = self._compare([4.0, 2.0, 0.0], [4.0, 2.5, -0.0])
        self.assertEqual((found.differing_runs, found.values, found.differing_values), (0, 3, 2))
        self.assertEqual(found.largest, 0.125)

    def test_a_header_a_size_and_a_value_that_is_no_number_differ(self) -> None:
        self.assertEqual(self._compare([1.0], [1.0], org_x=1.5).differing_files, 1)
        self.assertEqual(self._compare([1.0], [1.0, 2.0]).differing_files, 1)
        self.assertEqual(self._compare([1.0], [float("nan")]).differing_files, 1)

    def test_a_value_where_all_were_zero_is_beyond_every_limit(self) -> None:
        self.assertEqual(self._compare([0.0], [1e-30]).largest, float("inf"))

    def test_the_last_digit_of_a_printed_largest_value_may_move_and_no_other(self) -> None:
        for text, moved in ((b"maxval = 1.23457\n", 1), (b"maxval = 1.23466\n", 0), (b"maxvol = 1.23456\n", 0)):
            old, new = _GEOGRAPHIC + b"maxval = 1.23456\n", _GEOGRAPHIC + text
            found = compare(_outcome(None, old), _outcome(None, new))
            self.assertEqual((found.moved_lines, found.differing_lines), (moved, 1 - moved))

    def test_a_reference_point_differs(self) -> None:
        new = _GEOGRAPHIC.replace(b"x:1", b"x:3")
        self.assertEqual(compare(_outcome(None, _GEOGRAPHIC), _outcome(None, new)).differing_lines, 1)


class Speeds(unittest.TestCase):
    def test_the_figures_of_a_report_are_read_and_more_is_faster(self) -> None:
        report = (
            "\ninstruction set: AVX2\nwork      ratio    least     most      bar\n"
            "finite source, per point              23.1     22.9     23.6        9\n    4.1 ns and 1.4 ns per point\n"
            "16 times the area around 200 elements               1.25     1.03     1.09     1.50 (at most)\n"
            "\ninstruction set: plain\nfilter, 260 x 260, depth 100-7000 m   7.5      7.1      7.9        -\n"
            "\nwith every instruction set\ntext grid    5.84     5.26     6.42     4.00 (at least)\n"
            "\nelements, plane\n    elements           ms  ns per point, element\n           1      3.10       25.27\n"
        )
        expected = {
            ("avx2", "finite source, per point"): 23.1,
            ("avx2", "16 times the area around 200 elements"): 0.8,
            ("baseline", "filter, 260 x 260, depth 100-7000 m"): 7.5,
            ("every set", "text grid"): 5.84,
        }
        self.assertEqual(speeds_of(report), expected)


class Runs(unittest.TestCase):
    def test_a_generated_run_repeats(self) -> None:
        self.assertEqual(random_run(1, 7), random_run(1, 7))
        self.assertNotEqual(random_run(1, 7).files, random_run(1, 8).files)

    def test_every_case_and_every_example_is_a_run(self) -> None:
        cases = read_cases(_TREE / "tests" / "cli" / "cases")
        self.assertEqual(len(cases), len(list((_TREE / "tests" / "cli" / "cases").glob("*.case"))))
        examples = read_examples(_TREE / "examples")
        self.assertEqual(len(examples), len(list((_TREE / "examples").rglob("TdrConf*.txt"))))
        self.assertTrue(all(run.folder + "/" + run.arguments[0] in run.files for run in examples))

    def test_what_a_case_puts_there_is_what_its_own_runner_does(self) -> None:
        runs = {run.name: run for run in read_cases(_TREE / "tests" / "cli" / "cases")}
        run = runs["cases/a-binary-grid-is-read-and-its-spacing-taken-from-its-header"]
        self.assertEqual(run.arguments, ["conf.txt"])
        expected = struct.pack("<ddiif6f", 1000, 2000, 3, 2, 100, -1, -2, -3, -4, 5.5, -6)
        self.assertEqual(run.files["grid.bin"], expected)
        self.assertTrue(run.files["conf.txt"].startswith(b"Remark\nnone\nOutput directory\nout\n"))


if __name__ == "__main__":
    unittest.main()
