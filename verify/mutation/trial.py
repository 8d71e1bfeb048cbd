"""Tries mutants: builds each, runs the tests on it, and notes what became of it."""

import queue
from concurrent.futures import ThreadPoolExecutor
from dataclasses import dataclass

from explained import Key
from library import Bench, Library
from mutants import MutantsOfUnit
from programs import Program, catcher
from verdict import Result

# Unless all are tried, so many mutants of a function, and of a definition of data, are enough; and
# one more for each MORE that there are. Where so few count, three times as many end the search.
ENOUGH = {True: 3, False: 1}
MORE = 50


@dataclass
class Trial:
    original: Library
    programs: list[Program]
    explained: set[Key]
    everything: bool

    def run(self, units: list[MutantsOfUnit], jobs: int) -> list[Result]:
        benches: queue.Queue[Bench] = queue.Queue()
        for number in range(jobs):
            benches.put(Bench(self.original, number))

        def task(unit: MutantsOfUnit) -> Result:
            bench = benches.get()
            try:
                return self.try_unit(unit, bench)
            finally:
                benches.put(bench)

        results = []
        with ThreadPoolExecutor(jobs) as pool:
            for result in pool.map(task, units):
                print(result, flush=True)
                results.append(result)
        return results

    def try_unit(self, unit: MutantsOfUnit, bench: Bench) -> Result:
        """Tries mutants of a unit until enough have counted. Those that do not compile, those that
        give the code of the unchanged library or of another mutant, and those that survive with an
        explanation or with undefined behaviour do not count."""
        count = len(unit.mutants)
        wanted = count if self.everything else ENOUGH[unit.is_function] + count // MORE
        result = Result(unit)
        seen = {bench.original.unchanged}
        for mutant in unit.mutants:
            if result.counted == wanted or result.tried == 3 * wanted:
                break
            code = bench.build(mutant)
            if code is None or code in seen:
                result.not_counted += 1
                continue
            seen.add(code)
            if catcher(self.programs, mutant.file, bench.folder):
                result.caught.append(mutant)
            elif mutant.key in self.explained:
                result.explained.append(mutant)
            elif bench.is_undefined(mutant):
                result.not_counted += 1
            else:
                result.survived.append(mutant)
                print(f"survived: {mutant}", flush=True)
        return result
