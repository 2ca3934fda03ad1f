"""The count that the tests of this project end with."""

import pathlib
import subprocess
import tempfile
import unittest

TOOL = pathlib.Path(__file__).resolve().parents[2] / "tools" / "count-tests"

SKIPPED = '<skipped message="SKIP_REGULAR_EXPRESSION_MATCHED"/>'
NOT_STARTED = '<skipped message=""/>'
FAILURE = '<failure message="1 is not 2"/>'


class Counting(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)
        (self.folder / "shards").mkdir()
        self.tests = []

    def ran(self, name, status="run", reason=""):
        self.tests.append(f'<testcase name="{name}" status="{status}">{reason}</testcase>')

    def shard(self, name, *cases):
        (self.folder / "shards" / f"{name}.xml").write_text(
            f"<testsuites><testsuite>{''.join(cases)}</testsuite></testsuites>"
        )

    def count(self, status=0):
        """Passed, failed, skipped."""
        report = self.folder / "tests.xml"
        if self.tests:
            report.write_text(f"<testsuite>{''.join(self.tests)}</testsuite>")
        counted = subprocess.run(
            [TOOL, report, self.folder / "shards", str(status)],
            check=True, capture_output=True, text=True,
        )  # fmt: skip
        return tuple(map(int, counted.stdout.split()))

    def test_each_test_counts(self):
        self.ran("a")
        self.ran("b")
        self.ran("c", "fail", FAILURE)
        self.ran("d", "notrun", SKIPPED)
        self.ran("e", "disabled")
        self.assertEqual(self.count(status=8), (2, 1, 2))

    def test_one_that_could_not_be_started_has_failed(self):
        self.ran("a", "notrun", NOT_STARTED)
        self.assertEqual(self.count(status=8), (0, 1, 0))

    def test_the_cases_of_a_shard_count_in_its_place(self):
        self.ran("s")
        ran = '<testcase name="x" status="run" result="completed"/>'
        skipped = '<testcase name="y" status="run" result="skipped"><skipped/></testcase>'
        disabled = '<testcase name="z" status="notrun" result="suppressed"/>'
        self.shard("s", ran, ran, skipped, disabled)
        self.assertEqual(self.count(), (2, 0, 2))

    def test_a_case_that_failed_in_a_shard_counts_once(self):
        self.ran("s", "fail", FAILURE)
        ran = '<testcase name="x" status="run" result="completed"/>'
        self.shard("s", ran, f'<testcase name="y" status="run" result="completed">{FAILURE}</testcase>')
        self.assertEqual(self.count(status=8), (1, 1, 0))

    def test_a_shard_that_crashed_has_failed(self):
        self.ran("s", "fail", FAILURE)
        self.assertEqual(self.count(status=8), (0, 1, 0))

    def test_a_shard_that_failed_after_its_cases_has_failed(self):
        self.ran("s", "fail", FAILURE)
        self.shard("s", '<testcase name="x" status="run" result="completed"/>')
        self.assertEqual(self.count(status=8), (1, 1, 0))

    def test_nothing_that_ran_is_a_failure(self):
        self.assertEqual(self.count(), (0, 1, 0))

    def test_a_failure_that_no_test_tells_of_is_one(self):
        self.ran("a")
        self.assertEqual(self.count(status=8), (1, 1, 0))


if __name__ == "__main__":
    unittest.main()
