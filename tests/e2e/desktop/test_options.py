"""What the application prints without starting, also where there is no display and no bus."""

import os
import subprocess
import unittest

import harness
from waiting import PATIENCE


class Options(unittest.TestCase):
    def answerTo(self, *arguments):
        program = harness.program.parent / "kestrivane"
        done = subprocess.run(
            [program, *arguments],
            env={"PATH": os.environ["PATH"], "LANG": "C.UTF-8"},
            capture_output=True,
            text=True,
            timeout=PATIENCE,
        )
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        return done.stdout

    def test_help_and_version_need_no_display(self):
        self.assertIn("Usage: kestrivane [FOLDER...]", self.answerTo("--help"))
        self.assertEqual(self.answerTo("-h"), self.answerTo("--help"))
        self.assertRegex(self.answerTo("--version"), r"\Akestrivane [0-9.]+\n\Z")
