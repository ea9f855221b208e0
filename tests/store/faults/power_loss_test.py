"""A store and the loss of power: `store_fault_driver` does one thing to it while every call that
changes its files is recorded. The record is then played back up to each of these calls, as a disk
might have it at that moment: what was synced is there; of what was not, contents and names are all
there, all missing, or contents are torn by sectors and the names of each folder stop somewhere on
the way, a file that is renamed being in one of its places.

From each such disk the next start finds the store as it was before or as the operation makes of it,
the latter when that was acknowledged before the power went; and all that `aftermath` asks for holds.
Of an operation with more than MOST different disks, as many are tried, chosen evenly; all of them
with "--every".
"""
import collections
import os
import pathlib
import random
import re
import shutil
import sys
import tempfile

from aftermath import Aftermath
from fault_driver import ROOT, injected, perform, run, strace, traced

EVERY = "--every" in sys.argv
OPERATIONS = ("create-store", "create", "complete", "reorder", "attach", "checkpoint", "export",
              "import", "import-in-window", "import-again", "undo-import", "undo-in-window",
              "automatic-backup", "upgrade", "upgrade-attachments", "carry-over",
              "carry-over-damaged", "start", "cloud", "repair", "repair-first-page", "repair-older",
              "repair-emptied", "repair-without-links", "upgrade-without-links")
RECORDED = ("open,openat,write,pwrite64,fsync,fdatasync,rename,renameat,renameat2,link,linkat,unlink,"
            "unlinkat,rmdir,mkdir,mkdirat,ftruncate,writev")
# They would change files without being played back.
UNKNOWN = "pwritev,pwritev2,copy_file_range,sendfile,fallocate,truncate,symlink,symlinkat"
SECTOR = 512
LONGEST_WRITE = 1 << 26
MOST = 120
FOLDER = "a folder"

Call = collections.namedtuple("Call", "name descriptor arguments paths data result")


def unescaped(text):
    return re.sub(rb"\\x(..)", lambda found: bytes.fromhex(found[1].decode()), text.encode())


def decoded(text):
    return unescaped(text).decode("utf-8", "replace")


def recorded(trace):
    """The calls that succeeded; paths as they are, whatever they were relative to."""
    folders = {}
    for *_, line in traced(trace):
        found = re.match(r"(\w+)\((.*)\) += (-?\d+)(?:<(.*)>)?$", line)
        if not found or found[3].startswith("-"):
            continue
        name, arguments, result = found[1], found[2], int(found[3])
        paths, data, base, descriptor = [], [], "", None
        for number, behind, text in re.findall(
                r'(?:\b(AT_FDCWD|\d+)<([^>]*)>)|"((?:\\x..)*)"', arguments):
            if number:
                base = decoded(behind)
                descriptor = int(number) if descriptor is None and number.isdigit() else descriptor
                continue
            data.append(unescaped(text))
            if name in ("write", "pwrite64", "writev"):
                continue
            path = decoded(text)
            if held := re.match("/proc/self/fd/([0-9]+)", path):
                path = folders.get(int(held[1]), "") + path[held.end():]
            paths.append(os.path.normpath(os.path.join(base, path)))
        if name.startswith("open"):
            folders[result] = decoded(found[4])
            paths = [folders[result]]
        numbers = re.sub(r'"[^"]*"|<[^>]*>', "", arguments)
        yield Call(name, descriptor, numbers, paths, data, result)


class File:
    """Contents that are on the disk, and the changes since that might not be."""

    def __init__(self, contents=b""):
        self.synced = bytearray(contents)
        self.changes = []

    def sync(self):
        self.synced = self.contents(lambda: True)
        self.changes = []

    def contents(self, survives):
        """As far as each sector, or each change of the length, survives."""
        contents = bytearray(self.synced)
        for offset, data in self.changes:
            if data is None:
                if survives():
                    del contents[offset:]
                    contents.extend(bytes(offset - len(contents)))
                continue
            at = 0
            while at < len(data):
                end = min(len(data), (offset + at) // SECTOR * SECTOR + SECTOR - offset)
                if survives():
                    contents.extend(bytes(max(0, offset + at - len(contents))))
                    contents[offset + at:offset + end] = data[at:end]
                at = end
        return contents


class Disk:
    """The files and folders below a folder, as calls change them."""

    def __init__(self, folder):
        self.root = f"{folder}/{ROOT}"
        # By their paths below the root, which is "" itself.
        self.names = {str(path.relative_to(self.root)):
                      FOLDER if path.is_dir() else File(path.read_bytes())
                      for path in pathlib.Path(self.root).rglob("*") if not self.is_index(path.name)}
        # What of it is on the disk, and the changes since: the folders that each is in, and the
        # file or folder that each name stands for from then on, None for one that goes.
        self.durable = dict(self.names)
        self.changes = []
        self.open = {}
        self.positions = collections.Counter()

    @staticmethod
    def is_index(name):
        """Of SQLite's journal, which no start reads."""
        return name.endswith("-shm")

    def below(self, path):
        """None for what lies elsewhere."""
        if path == self.root:
            return ""
        if not path.startswith(self.root + "/") or self.is_index(path):
            return None
        return path[len(self.root) + 1:]

    def change(self, changed):
        self.changes.append(({os.path.dirname(name) for name in changed}, changed))
        self.apply(self.names, changed)

    @staticmethod
    def apply(names, changed):
        for name, what in changed.items():
            if what is None:
                names.pop(name, None)
            else:
                names[name] = what

    def play(self, call):
        """Whether it has changed anything that counts."""
        paths = [self.below(path) for path in call.paths]
        file = self.open.get(call.descriptor)
        if call.name.startswith("open"):
            return self.play_open(call, paths[0])
        if call.name in ("write", "pwrite64", "ftruncate"):
            if not isinstance(file, File):
                return False
            last = call.arguments.rpartition(",")[2]
            if call.name == "ftruncate":
                file.changes.append((int(last), None))
                return True
            offset = int(last) if call.name == "pwrite64" else self.positions[call.descriptor]
            if call.name == "write":
                self.positions[call.descriptor] += call.result
            file.changes.append((offset, call.data[0][:call.result]))
        elif call.name in ("fsync", "fdatasync"):
            if isinstance(file, File):
                file.sync()
            elif file is not None:
                self.sync_folder(file)
        elif None in paths or not paths:
            return False
        elif call.name.startswith("rename") and paths[0] not in self.names:
            sys.exit(f"{call} was not understood.")
        elif call.name.startswith("rename") and "RENAME_EXCHANGE" in call.arguments:
            self.change({paths[0]: self.names[paths[1]], paths[1]: self.names[paths[0]]})
        elif call.name.startswith("rename"):
            if self.names[paths[0]] is FOLDER:
                sys.exit("A folder's new name is not played back.")
            self.change({paths[1]: self.names[paths[0]], paths[0]: None})
        elif call.name.startswith("link"):
            self.change({paths[1]: self.names[paths[0]]})
        elif call.name.startswith(("unlink", "rmdir")):
            self.change({paths[0]: None})
        elif call.name.startswith("mkdir"):
            self.change({paths[0]: FOLDER})
        else:
            return False
        return True

    def play_open(self, call, path):
        self.open[call.result] = None
        self.positions[call.result] = 0
        if path is None:
            return False
        if path == "" or self.names.get(path) is FOLDER:
            self.open[call.result] = path
            return False
        is_new = path not in self.names
        if is_new and "O_CREAT" not in call.arguments:
            return False
        if is_new:
            self.change({path: File()})
        self.open[call.result] = self.names[path]
        if not is_new and "O_TRUNC" in call.arguments:
            self.names[path].changes.append((0, None))
            return True
        return is_new

    def closed(self, chosen):
        """With the changes that these cannot be on the disk without: earlier ones of their folders."""
        folders = set()
        result = []
        for number in reversed(range(len(self.changes))):
            touched = self.changes[number][0]
            if number in chosen or touched & folders:
                folders |= touched
                result.append(number)
        return sorted(result)

    def sync_folder(self, folder):
        chosen = self.closed({number for number, (folders, _) in enumerate(self.changes)
                              if folder in folders})
        for number in chosen:
            self.apply(self.durable, self.changes[number][1])
        self.changes = [change for number, change in enumerate(self.changes) if number not in chosen]

    def states(self, chance):
        """What might be on the disk now: for each name which file it is, and the contents of that;
        None for a folder."""
        def some():
            ends = collections.defaultdict(lambda: chance.randrange(len(self.changes) + 1))
            return {number for number, (folders, _) in enumerate(self.changes)
                    if any(number < ends[folder] for folder in folders)}
        everything = set(range(len(self.changes)))
        for survives in (lambda: True, lambda: False, lambda: chance.random() < 0.5):
            for chosen in (everything, set(), some()):
                names = dict(self.durable)
                for number in self.closed(chosen):
                    self.apply(names, self.changes[number][1])
                contents = {}
                yield {name: None if file is FOLDER else
                       contents.setdefault(id(file), (id(file), bytes(file.contents(survives))))
                       for name, file in names.items() if self.is_reachable(name, names)}

    @staticmethod
    def is_reachable(name, names):
        return all(names.get(str(parent)) is FOLDER for parent in pathlib.PurePath(name).parents
                   if str(parent) != ".")


class Losses:
    """One operation, recorded once."""

    def __init__(self, operation, start, scratch):
        self.operation = operation
        self.scratch = scratch
        self.aftermath = Aftermath(operation, start, scratch)
        folder = self.aftermath.fresh_folder()
        (folder / ROOT).mkdir(exist_ok=True)
        disk = Disk(folder)
        trace = folder / "trace"
        perform(folder, operation, tracer=(
            *strace(trace, f"trace={RECORDED},{UNKNOWN}", *injected(operation)), "-xx", "-s",
            str(LONGEST_WRITE)))
        disks = list(self.replayed(disk, trace))
        if len(disks) < 6 or not any(acknowledged for _, acknowledged, _ in disks):
            sys.exit(f"{operation} was not seen at work")
        step = 1 if EVERY else max(1, len(disks) / MOST)
        self.cases = [disks[int(number * step)] for number in range(int(len(disks) / step))]

    @staticmethod
    def replayed(disk, trace):
        """Each different disk, and whether the operation was acknowledged by then."""
        chance = random.Random(11)
        seen = set()
        acknowledged = False
        for number, call in enumerate(recorded(trace)):
            if call.name == "writev" and call.data and call.data[0].startswith(b"acknowledged"):
                acknowledged = True
            elif call.name in UNKNOWN.split(",") and disk.open.get(call.descriptor) is not None:
                sys.exit(f"{call.name} is not played back")
            elif not disk.play(call):
                continue
            for state in disk.states(chance):
                key = hash((acknowledged, tuple(sorted(state.items(), key=lambda each: each[0]))))
                if key not in seen:
                    seen.add(key)
                    yield number, acknowledged, state

    @staticmethod
    def name_of(disk):
        return f"power lost after call {disk[0]}"

    def problems(self, disk):
        _, acknowledged, state = disk
        folder = pathlib.Path(tempfile.mkdtemp(dir=self.scratch))
        try:
            (folder / ROOT).mkdir()
            files = {}
            for name, file in sorted(state.items()):
                path = folder / ROOT / name
                if file is None:
                    path.mkdir()
                elif file in files:
                    path.hardlink_to(files[file])
                else:
                    path.write_bytes(file[1])
                    files[file] = path
            yield from self.aftermath.problems(folder, acknowledged, allowed=None)
        finally:
            shutil.rmtree(folder)


if __name__ == "__main__":
    run([word for word in sys.argv[2:] if word != "--every"] or OPERATIONS, Losses)
