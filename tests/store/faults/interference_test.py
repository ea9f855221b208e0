"""Another program acts at each step that `store_fault_driver` tells of, while it works:
- a second driver adds an entry while one exports, imports, takes back or backs up. Then the restore
  is refused, since the store has changed, and the entry is there; or all is there: the entry in the
  store or in what taking the restore back brings.
- the folder of a backup vanishes, or another one takes its place. Nothing is written into another,
  none is made, and nobody is told of a success where there is no backup.
"""
import collections
import json
import shlex
import shutil
import sys

from aftermath import LAST_SNAPSHOT, Aftermath, names_in
from fault_driver import (BROKEN, DATA, DRIVER, FIRST_IMPORTS, RESTORES, STORE, drive, perform, run,
                          state_of, succeeds)

# How much is imported changes nothing of who comes between.
OPERATIONS = (*(each for each in RESTORES if each != "import-large"), "export", "automatic-backup")
CHANGED = "Your data changed while the recovery backup was being saved."
GONE = "not there, or another one stands in its place"

Case = collections.namedtuple("Case", "step what")


def interfere(folder, operation, step, command):
    word = {"import-again": "import", "automatic-backup": "back-up"}.get(operation, operation)
    return drive(folder, "interfere", word, str(step), command)


class Interferences:
    """One operation, and all that may happen at its steps."""

    def __init__(self, operation, start, scratch):
        self.operation = operation
        self.aftermath = Aftermath(operation, start, scratch)
        self.added_to_start = self.aftermath.state_after("add")
        said = interfere(self.prepared(), operation, 0, "")
        steps = [line for line in said if line.startswith("step ")]
        if len(steps) < 4 or said[-1] != "acknowledged":
            sys.exit(f"{operation} was not seen at work: {said}")
        acts = (self.gone, self.replaced)
        if operation in RESTORES:
            # One import after the other leaves the words of two stores, of which one is kept.
            acts = () if operation == "import-again" else (self.taken_back,)
        self.cases = [Case(step, act) for step in range(1, len(steps) + 1)
                      for act in (self.added, *acts)]

    def prepared(self):
        """The settings name their folder by its path: one that was copied is chosen anew."""
        folder = self.aftermath.fresh_folder()
        if self.operation == "automatic-backup":
            perform(folder, "automatic-backup")
        return folder

    @staticmethod
    def name_of(case):
        return f"step {case.step}, {case.what.__name__}"

    def problems(self, case):
        folder = self.prepared()
        try:
            yield from case.what(folder, case.step)
        finally:
            shutil.rmtree(folder)

    def added(self, folder, step):
        """By a second driver."""
        log = folder / "added"
        second = shlex.join([DRIVER, "perform", "add", str(folder / DATA / STORE)])
        said = interfere(folder, self.operation, step, f"{second} > {shlex.quote(str(log))}")
        if log.read_text() != "acknowledged\n":
            yield f"the entry was not added: {log.read_text()}"
        acknowledged = "acknowledged" in said
        found = drive(folder, "verify")
        state = state_of(found)
        if any(line.startswith(BROKEN) for line in [*said, *found]):
            yield f"{said}, {found}"
        if self.operation not in RESTORES:
            if not acknowledged or state != self.added_to_start:
                yield f"{said}, {found}"
            return
        if not acknowledged:
            if not any(CHANGED in line for line in said):
                yield f"refused for another reason: {said}"
            if state != self.added_to_start:
                yield f"refused, but {found}"
        elif state == self.aftermath.after:
            # It was added before: taking the restore back brings it.
            if not succeeds(folder, "undo-import"):
                yield "the restore cannot be taken back"
            back = state_of(drive(folder, "verify"))
            if back != self.added_to_start:
                yield f"{said}: the entry is neither in the store nor in what comes back: {back}"
        elif state != self.aftermath.typed[self.aftermath.after]:
            yield f"{said}, but {found}"
        yield from self.aftermath.left_behind(folder, set() if acknowledged else {LAST_SNAPSHOT})

    def taken_back(self, folder, step):
        log = folder / "taken-back"
        second = shlex.join([DRIVER, "perform", "undo-import", str(folder / DATA / STORE)])
        said = interfere(folder, self.operation, step, f"{second} > {shlex.quote(str(log))}")
        found = drive(folder, "verify")
        if any(line.startswith(BROKEN) for line in [*said, *log.read_text().splitlines(), *found]):
            yield f"{said}, {log.read_text()}, {found}"
        words = state_of(found) + "".join(
            entry["content"] for snapshot in (folder / DATA / "Recovery").glob("*.korvexbackup")
            for entry in json.loads(snapshot.read_bytes())["entries"])
        for word in ("todo 0",) if self.operation in FIRST_IMPORTS else ("todo 0", "added"):
            if word not in words:
                yield f"{word} is lost: {said}, {log.read_text()}, {found}"

    def gone(self, folder, step):
        """The folder of the backup, as when a disk is removed."""
        yield from self.moved(folder, step, "")

    def replaced(self, folder, step):
        """As when a disk is removed of which an empty mount point stays."""
        yield from self.moved(folder, step, "; mkdir ")

    def moved(self, folder, step, then):
        target = folder / DATA / ("exported" if self.operation == "export" else "chosen")
        away = folder / "away"
        before = names_in(target)
        said = interfere(folder, self.operation, step,
                         f"mv {shlex.quote(str(target))} {shlex.quote(str(away))}"
                         f"{then and then + shlex.quote(str(target))}")
        there = names_in(target) if target.exists() else None
        if not then and there is not None:
            yield f"a folder was made: {said}, {there}"
        if self.operation == "export":
            # Whatever folder has the name by then is the one that was asked for.
            wanted = {"mine.korvexbackup"} if "acknowledged" in said else set()
            if (there or set()) != wanted or names_in(away) & wanted:
                yield f"{said}, but there is {there}"
            return
        if not any(GONE in line for line in said) or there:
            yield f"{said}, {there}"
        if left := {name for name in names_in(away) - before if ".new-" in name}:
            yield f"left behind in the folder that was held: {left}"


if __name__ == "__main__":
    run(sys.argv[2:] or OPERATIONS, Interferences)
