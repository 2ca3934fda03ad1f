"""Runs end-to-end tests against a built kestrivane-watch, or those in desktop/ against a built
kestrivane.

    run_tests.py PROGRAM            all tests of it
    run_tests.py PROGRAM NAME...    some: module, module.Class or module.Class.method
    run_tests.py PROGRAM --list     the names of all tests, one a line
"""

import pathlib
import sys
import unittest

import harness

HERE = pathlib.Path(__file__).resolve().parent


def flatten(suite):
    for entry in suite:
        if isinstance(entry, unittest.TestSuite):
            yield from flatten(entry)
        else:
            yield entry


def main(program, *names):
    harness.program = pathlib.Path(program).resolve()
    folder = HERE / "desktop" if harness.program.name == "kestrivane" else HERE
    sys.path.insert(0, str(folder))
    loader = unittest.TestLoader()
    if names == ("--list",):
        tests = list(flatten(loader.discover(folder, pattern="test_*.py")))
        if loader.errors:
            sys.exit("\n".join(loader.errors))
        print("\n".join(test.id() for test in tests))
        return
    suite = (
        loader.loadTestsFromNames(names)
        if names
        else loader.discover(folder, pattern="test_*.py")
    )
    result = unittest.TextTestRunner(verbosity=2).run(suite)
    sys.exit(0 if result.wasSuccessful() and result.testsRun else 1)


if __name__ == "__main__":
    if len(sys.argv) < 2:
        sys.exit(__doc__)
    main(*sys.argv[1:])
