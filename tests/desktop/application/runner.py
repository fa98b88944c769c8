"""Runs the tests of a file inside a session, and tells more of failures."""

import unittest
from pathlib import Path

import screen

class Result(unittest.TextTestResult):
    def addError(self, test, err):
        super().addError(test, err)
        self._tell(test)

    def addFailure(self, test, err):
        super().addFailure(test, err)
        self._tell(test)

    def _tell(self, test):
        picture = Path(f"{test.id().removeprefix('__main__.')}.png").absolute()
        try:
            screen.save(picture)
            self.stream.writeln(f"The screen: {picture}")
            self.stream.writeln(test.report())
        except Exception as error:  # the program may be gone or hang
            self.stream.writeln(f"No report: {error!r}")


def run(session):
    """Instead of unittest.main(). A test's report() tells what a reader of its failure wants to know."""
    session.start()
    try:
        tests = unittest.defaultTestLoader.loadTestsFromName("__main__")
        outcome = unittest.TextTestRunner(verbosity=2, resultclass=Result).run(tests)
    finally:
        session.end()
    raise SystemExit(0 if outcome.wasSuccessful() and outcome.testsRun > 0 else 1)
