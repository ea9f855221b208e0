"""What must hold of a store after an operation on it was ended anywhere, and after what its user
does next, which needs no hands: looks at it, goes on, takes back."""
import itertools
import pathlib
import re
import shutil

from fault_driver import (BROKEN, DATA, FIRST_IMPORTS, KEPT_BACKUPS, REPAIRS, RESTORES, STORE, drive,
                          perform, state_of, succeeds, verify_word)

BELONGING = {STORE, STORE + "-wal", STORE + "-shm", STORE + ".lock", "other.korvexbackup",
             "exported", "exported/mine.korvexbackup",
             "exported/next.korvexbackup", "Recovery", "Recovery/BeforeRestore.korvexbackup",
             "Recovery/.lock", "legacy", "legacy/default.store",
             "migration-v1-complete", "cloud-v11-prepared", "Migrated.korvexbackup",
             "settings.json", "settings.json.lock", "chosen"}
# What stays beside the store on purpose, and how much of it: for good, or until the start after the
# next.
KEPT = {**{repair: (STORE + ".damaged-", 1) for repair in REPAIRS}, "upgrade": (STORE + ".BeforeV17-", 1),
        "upgrade-attachments": (STORE + ".BeforeV17-", 1), "cloud": (STORE + ".BeforeCloudV11-", 2),
        # The new one has this name before it takes the place.
        "repair-without-links": (STORE + ".damaged-", 2),
        "upgrade-without-links": (STORE + ".BeforeV17-", 2)}
# What stands beside the recovery snapshot until a restore succeeds again. Of an import that failed:
# the snapshot of the last one that did not. Of an undo that the store's own journal failed: its
# snapshot, since nobody can say whether a power cut would bring that save to life.
LAST_SNAPSHOT = "Recovery/BeforeLastRestore.korvexbackup"
UNDO_SNAPSHOT = "Recovery/BeforeUndo.korvexbackup"
NOTHING = "There is nothing to take back"
MISSING = re.compile("WRONG notice: The newest .*saved changes? (is|are) missing")
# SQLite's own beside a store that a killed program was reading.
OF_LEGACY = {"legacy/default.store-wal", "legacy/default.store-shm"}
# Where a repair fails the start goes on, and the next one repairs.
REPAIRED_LATER = ("start", "carry-over", "carry-over-damaged")


def names_in(folder):
    return {str(path.relative_to(folder)) for path in folder.rglob("*")}


def journal_of(folder):
    journal = folder / DATA / (STORE + "-wal")
    return journal.read_bytes() if journal.exists() else b""


class Aftermath:
    """Of one operation."""

    def __init__(self, operation, start, scratch):
        """`start` is None for a store that is not there yet."""
        self.operation = operation
        self.start = start
        self.scratch = scratch
        self.numbers = itertools.count()
        self.verify = verify_word(operation)
        done = self.fresh_folder()
        perform(done, operation)
        self.after = state_of(drive(done, self.verify))
        # Of a damaged store nothing can be said; what matters comes of the operation.
        self.before = (None if operation in REPAIRS
                       else state_of(drive(self.fresh_folder(), self.verify)))
        self.allowed = {self.before, self.after}
        if start is None:
            # The file is there whole before it gets its first board.
            self.allowed.add("state ")
        if operation in RESTORES:
            self.typed = {self.before: self.state_after("add"),
                          self.after: self.state_after(operation, "add")}
            self.taken_back = {self.before: (None if operation in FIRST_IMPORTS
                                             else self.state_after("undo-import")),
                               self.after: self.state_after(operation, "undo-import")}

    def fresh_folder(self):
        folder = self.scratch / f"{self.operation}-{next(self.numbers)}"
        folder.mkdir()
        if self.start:
            shutil.copytree(self.start / DATA, folder / DATA)
        return folder

    def state_after(self, *operations):
        folder = self.fresh_folder()
        for operation in operations:
            perform(folder, operation)
        return state_of(drive(folder, "verify"))

    def problems(self, folder, acknowledged, allowed=frozenset()):
        """`allowed`: what it may have left until the next run, None for anything."""
        if allowed is not None:
            last = set() if acknowledged else {LAST_SNAPSHOT}
            yield from self.left_behind(folder, allowed | last)
        found = drive(folder, self.verify)
        state = state_of(found)
        if self.operation in REPAIRS:
            # A damaged store is saved by then, or can still be.
            if not acknowledged and not succeeds(folder, self.operation):
                yield "the next repair does not succeed"
            if not any(".damaged-" in name for name in names_in(folder / DATA)):
                yield "the damaged store is gone"
            found = drive(folder, "verify")
            acknowledged = True
            state = state_of(found)
        if any(line.startswith(BROKEN) for line in found):
            yield str(found)
        is_done = acknowledged and self.operation not in REPAIRED_LATER
        if state not in ({self.after} if is_done else self.allowed):
            yield f"acknowledged: {acknowledged}, but {found}"
        if state != "state none" and "writable" not in found:
            yield f"not writable: {found}"
        yield from self.next_steps(folder, state)
        yield from self.left_behind(folder, OF_LEGACY if allowed is None else frozenset())

    def problems_after_cut(self, folder, acknowledged, remains):
        """Of a store whose journal was cut to `remains`: they are kept, or stay where they are
        until the next start keeps them."""
        def are_kept():
            kept = [path.read_bytes()
                    for path in (folder / DATA).glob(STORE + ".journal-before-*")
                    if not path.name.startswith(".")]
            return kept[:1] == [remains]
        if not are_kept() and journal_of(folder) != remains:
            yield "what is left of the journal is neither kept nor where it was"
        found = drive(folder, self.verify)
        state = state_of(found)
        if not are_kept():
            yield "what is left of the journal is not kept by the next start"
        if state not in ({self.after} if acknowledged else self.allowed):
            yield f"acknowledged: {acknowledged}, but {found}"
        told = [line for line in found if MISSING.match(line)]
        if any(line.startswith(BROKEN) for line in found if line not in told):
            yield str(found)
        # Once something is saved it cannot be counted any more.
        is_saved = self.operation == "add-after-cut" and state == self.after
        if "writable" not in found or not (told or is_saved):
            yield f"the next start says {found}"

    def next_steps(self, folder, state):
        if self.operation == "export":
            if not succeeds(folder, "export-next"):
                yield "the next day's export does not succeed"
            yield from self.left_behind(folder)
        if self.operation in RESTORES:
            yield from self.way_back(folder, state)
        elif self.operation == "automatic-backup":
            yield from self.next_backup(folder)
        elif state in ("state none", "state ") or self.operation in (*REPAIRED_LATER, "cloud", "export"):
            # Verifying never creates; the next start does.
            if not succeeds(folder, self.operation):
                yield "the next run does not succeed"
            if self.operation == "carry-over-damaged" and not succeeds(folder, "start"):
                yield "the next start does not succeed"  # which removes what a killed run left
            found = drive(folder, "verify")
            if any(line.startswith(BROKEN) for line in found) or state_of(found) != self.after:
                yield f"the next run makes of it {found}"
            if self.operation == "export" and "backup mine.korvexbackup" not in found:
                yield f"there is no backup: {found}"
        elif self.operation.startswith("upgrade"):
            # Verifying was the next good start, or it has upgraded; so this one is.
            drive(folder, "verify")
            if kept := [name for name in names_in(folder / DATA) if ".BeforeV17-" in name]:
                yield f"kept after a good start: {kept}"
        if self.operation.startswith("carry-over"):
            legacy = pathlib.Path("legacy", "default.store")
            if (folder / DATA / legacy).read_bytes() != (self.start / DATA / legacy).read_bytes():
                yield "the legacy store was changed"

    def way_back(self, folder, state):
        """Something is typed, and then the user goes back and forth: nothing of it may be lost."""
        if not succeeds(folder, "add"):
            yield "nothing can be added"
        forth, back = state, self.taken_back.get(state)
        there = "undo-import"
        if self.operation in FIRST_IMPORTS and state == self.before:
            # There is nothing to take back yet, whatever is kept.
            done = perform(folder, there)
            if [NOTHING in line for line in done] != [True, True] or state_of(
                    drive(folder, "verify")) != self.typed[state]:
                yield f"taken back after {state}, which nothing has replaced: {done}"
            there, back = self.operation, self.after
        for step, expected in ((there, back), ("undo-import", self.typed.get(forth))):
            done = perform(folder, step)
            found = drive(folder, "verify")
            if done[-1:] != ["acknowledged"] or state_of(found) != expected or any(
                    line.startswith(BROKEN) for line in found):
                yield (f"{step} after {state} and something added: {done}, {found} instead of "
                       f"{expected}")
                return

    def next_backup(self, folder):
        """Like the next day's: it removes what was left."""
        if perform(folder, self.operation) != ["acknowledged"]:
            yield "the next backup fails"
        chosen = folder / DATA / "chosen"
        names = sorted(name for name in names_in(chosen) if (chosen / name).is_file())
        backups = [name for name in names
                   if re.fullmatch(r"Korvex Automatic Backups [\w-]{36}/Korvex-[\w-]{36}"
                                   r"\.korvexbackup", name)]
        if set(names) - set(backups) != {".korvex-backup-folder"} or len(backups) != KEPT_BACKUPS:
            yield f"there are {names}"

    def left_behind(self, folder, allowed=frozenset()):
        left = {name for name in names_in(folder / DATA) if not name.startswith("chosen/")}
        left -= BELONGING | allowed
        prefix, limit = KEPT.get(self.operation, (STORE + "?", 0))
        kept = {name for name in left if name.startswith(prefix)}
        # One whose journal could not be emptied keeps it.
        stores = {name for name in kept if not name.endswith(("-wal", "-journal"))}
        if left - kept or len(stores) > limit:
            yield f"left behind: {sorted(left)}"
