"""Files that appear under their names when they are complete."""

from __future__ import annotations

import os
import secrets
import stat
from collections.abc import Sequence
from types import TracebackType


class RunError(Exception):
    """What ends a run without output."""


_temporaries: set[str] = set()


def remove_temporaries() -> None:
    """Removes what a run that a signal ends would leave."""
    for path in _temporaries:
        try:
            os.unlink(path)
        except FileNotFoundError:
            pass


class OutputFile:
    """A file that is written under a temporary name in its folder. `commit` gives it its name."""

    def __init__(self, path: str) -> None:
        self._path = path
        self._target = os.path.realpath(path)
        before = os.stat(path) if os.path.exists(path) else None
        if before is not None and not stat.S_ISREG(before.st_mode):
            raise RunError(f"{path}: not a regular file")
        folder, name = os.path.split(self._target)
        self.temporary = os.path.join(folder, f"{name}.{secrets.token_hex(4)}.tmp")
        _temporaries.add(self.temporary)  # before the file is there: a signal may come at any time
        descriptor = os.open(self.temporary, os.O_WRONLY | os.O_CREAT | os.O_EXCL | os.O_CLOEXEC, 0o600)
        try:
            _take_over(descriptor, before)
        finally:
            os.close(descriptor)

    def __enter__(self) -> OutputFile:
        return self

    def __exit__(
        self, kind: type[BaseException] | None, error: BaseException | None, trace: TracebackType | None
    ) -> None:
        if self.temporary in _temporaries:
            os.unlink(self.temporary)
            _temporaries.discard(self.temporary)

    def commit(self) -> None:
        # Even if the machine goes down, the name stands for all of the old contents or all of the new.
        descriptor = os.open(self.temporary, os.O_RDONLY | os.O_CLOEXEC)
        try:
            os.fsync(descriptor)
        finally:
            os.close(descriptor)
        os.rename(self.temporary, self._target)
        _temporaries.discard(self.temporary)


def _take_over(descriptor: int, before: os.stat_result | None) -> None:
    """Mode, owner and group of the file that is replaced, where that is permitted."""
    if before is None:
        mask = os.umask(0)
        os.umask(mask)
        os.fchmod(descriptor, 0o666 & ~mask)
        return
    mode = stat.S_IMODE(before.st_mode) & 0o777
    try:
        os.fchown(descriptor, before.st_uid, -1)
    except OSError:
        pass
    try:
        os.fchown(descriptor, -1, before.st_gid)
    except OSError:
        mode &= 0o707  # a group that could not be kept gets no rights
    os.fchmod(descriptor, mode)


def write_file(path: str, text: str) -> None:
    """Writes a whole file. What is not a regular file, such as /dev/null, is written directly."""
    if os.path.exists(path) and not os.path.isfile(path):
        with open(path, "w", encoding="utf-8") as stream:
            stream.write(text)
        return
    with OutputFile(path) as file:
        with open(file.temporary, "w", encoding="utf-8") as stream:
            stream.write(text)
        file.commit()


def _is_same(a: str, b: str) -> bool:
    if os.path.exists(a) and os.path.exists(b):
        return os.path.samefile(a, b) and os.path.isfile(a)
    return os.path.realpath(a) == os.path.realpath(b)


def check_roles(source: str, output: str, read: Sequence[str], written: Sequence[str]) -> None:
    """Refuses a run that would overwrite what it reads, or write a file twice. Only the output may
    take the place of the input."""
    for path in written:
        if _is_same(source, path):
            raise RunError(f"{path} would overwrite {source}, which is read")
    everything = [*written, output]
    for path in read:
        for other in everything:
            if _is_same(path, other):
                raise RunError(f"{other} would overwrite {path}, which is read")
    for i, path in enumerate(everything):
        for other in everything[:i]:
            if _is_same(path, other):
                raise RunError(f"{path} and {other} are the same file; each kind of output needs its own")
    if _is_same(source, output) and os.stat(source).st_nlink > 1:
        raise RunError(
            f"{source} has several names (hard links), so it cannot be masked in place: the clear text would "
            "stay under the other names"
        )
