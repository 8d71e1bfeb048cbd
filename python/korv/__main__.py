"""python -m korv convert IN OUT --rules FILE --secrets FILE"""

from __future__ import annotations

import argparse
import contextlib
import ctypes
import gc
import importlib
import os
import signal
import sys
from types import FrameType
from typing import NoReturn

from ._output import RunError, remove_temporaries
from ._records import MaskError
from .convert import NOT_RUN, Options, convert

_PR_SET_DUMPABLE = 4
_ENDING = (signal.SIGHUP, signal.SIGTERM, signal.SIGINT)


# What is raised by a handler may be caught where a library calls Python.
_signals: list[int] = []


class _Ended(BaseException):
    pass


def _end(number: int, _: FrameType | None) -> NoReturn:
    _signals.append(number)
    raise _Ended


def _number(text: str) -> int:
    number = int(text)
    if number < 0:
        raise ValueError
    return number


def _parser() -> argparse.ArgumentParser:
    parser = argparse.ArgumentParser(prog="python -m korv", description="Data masking by rules.")
    commands = parser.add_subparsers(dest="command", required=True)
    command = commands.add_parser(
        "convert",
        help="mask a file",
        description="Masks a Parquet file or a file of JSON Lines (.jsonl, .ndjson, also with .gz or .zst).",
        epilog="Exit status: 0 every value is masked; 1 some values failed, see the report; 2 the run ended early, "
        "and there is no output.",
    )
    add = command.add_argument
    add("input", metavar="IN")
    add("output", metavar="OUT", help="appears when it is complete; may be the name of the input")
    add("--rules", metavar="FILE", required=True, help="rules, one line for each column")
    add(
        "--secrets", metavar="FILE", help="secrets that rules name; only the user may have access to the file"
    )
    add("--report", metavar="FILE", help="write the errors here, not to standard error")
    add("--summary", metavar="FILE", help="write the counts of the run as JSON")
    add("--max-errors", metavar="N", type=_number, help="end without output when more values than this fail")
    add("--keep-unlisted", action="store_true", help="keep columns that have no rule")
    add("--strict", action="store_true", help="refuse methods without a secret")
    add("--unmask", action="store_true", help="reverse the masking, with its rules and secrets")
    add(
        "--providers",
        metavar="FOLDER",
        action="append",
        default=[],
        help="folder of provider modules; may be repeated",
    )
    add("--jobs", metavar="N", type=_number, default=0, help="worker threads (default: the number of cores)")
    return parser


def _message(error: Exception) -> str:
    if isinstance(error, MaskError):
        return str(error)
    if isinstance(error, MemoryError):
        return "out of memory"
    if isinstance(error, OSError) and error.strerror is not None:
        return f"{error.filename}: {error.strerror}" if error.filename else error.strerror
    is_own = type(error) in (RunError, TypeError, ValueError)
    is_of_duckdb = type(error).__module__.lstrip("_").startswith("duckdb")
    if is_own or is_of_duckdb or isinstance(error, OSError):
        return str(error).partition("\n")[0]
    return f"unexpected {type(error).__name__}"  # its message may hold a value


def _prepare_process() -> None:
    # No core dump and no debugger of the same user shows secrets and clear values.
    ctypes.CDLL(None).prctl(_PR_SET_DUMPABLE, 0, 0, 0, 0)
    # The collector would look through every batch of lines, which hold no cycles.
    gc.disable()
    for number in _ENDING:
        # What the caller has the program ignore, as nohup does, stays ignored.
        if signal.getsignal(number) != signal.SIG_IGN:
            signal.signal(number, _end)


def main(arguments: list[str]) -> int:
    """Returns the exit status."""
    options = _parser().parse_args(arguments)
    try:
        return convert(
            Options(
                input=options.input,
                output=options.output,
                rules=options.rules,
                secrets=options.secrets,
                report=options.report,
                summary=options.summary,
                max_errors=options.max_errors,
                strict=options.strict,
                keep_unlisted=options.keep_unlisted,
                unmask=options.unmask,
                providers=tuple(options.providers),
                jobs=options.jobs or len(os.sched_getaffinity(0)),
                progress=sys.stderr.isatty(),
            )
        )
    except Exception as error:
        if not _signals:
            print(f"korv convert: {_message(error)}", file=sys.stderr)
    return NOT_RUN


if __name__ == "__main__":
    if any(argument.endswith(".parquet") for argument in sys.argv):
        # What a handler raises while DuckDB is being loaded would abort the process.
        with contextlib.suppress(ImportError):
            importlib.import_module("duckdb")
    _prepare_process()
    status = NOT_RUN
    try:
        status = main(sys.argv[1:])
    except _Ended:
        remove_temporaries()
    for number in _signals[:1]:
        signal.signal(number, signal.SIG_DFL)
        os.kill(os.getpid(), number)
    sys.exit(status)
