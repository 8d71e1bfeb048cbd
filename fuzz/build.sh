#!/usr/bin/env bash
# Builds the fuzz targets as a fuzzing service does: with its compilers and flags ($CC, $CXX, $CFLAGS,
# $CXXFLAGS), its engine ($LIB_FUZZING_ENGINE), from $SRC/korv-support or the folder above, into $OUT.
set -euo pipefail
source=${SRC:+$SRC/korv-support}
[ -d "${source:-}" ] || source=$(cd "$(dirname "$0")/.." && pwd)
: "${OUT:?where the targets go}" "${LIB_FUZZING_ENGINE:?the fuzzing engine}"
build=${WORK:-$OUT/work}/korv-support
mkdir -p "$OUT"

# The flags come from the environment; those of the engine are for linking only.
cmake -S "$source" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=None \
    -DKORV_BUILD_FUZZERS=ON -DKORV_BUILD_TESTS=OFF -DKORV_BUILD_MASK=ON \
    -DKORV_FUZZ_FLAGS= "-DKORV_FUZZ_ENGINE=$LIB_FUZZING_ENGINE"
cmake --build "$build" --target fuzzers

for corpus in "$source"/fuzz/corpus/*/; do
    target=$(basename "$corpus")
    # It loads provider modules from the build folder, which the service does not have.
    [ "$target" != batch ] || continue
    cp "$build/bin/fuzz_$target" "$OUT/"
    rm -f "$OUT/fuzz_${target}_seed_corpus.zip"
    (cd "$corpus" && zip -q "$OUT/fuzz_${target}_seed_corpus.zip" -- *)
done
