# Runs a part of the tests under one sanitizer, for 64 bits. Sourced by the stages.
# shellcheck shell=bash

# build_sanitized SANITIZER "FOLDER..." [CMAKE-OPTION...]: builds the programs of the folders in
# build/verify/SANITIZER.
build_sanitized() {
    local build=build/verify/$1 sanitizer=$1 targets=()
    for folder in $2; do targets+=("$folder/all"); done
    shift 2
    cmake --preset native64 -B "$build" -DCMAKE_BUILD_TYPE=RelWithDebInfo \
        -DKORV_SANITIZE="$sanitizer" -DKORV_WERROR=ON -DKORV_BUILD_TESTS=ON \
        -DKORV_BUILD_MASK=OFF "$@"
    cmake --build "$build" --target "${targets[@]}"
}

# test_sanitized SANITIZER TESTS: fails if a test fails. Sets $log to the file with the output of the
# tests, $tests to their number, $findings to the number of reports, and $words to what the program that
# calls every function says of itself.
test_sanitized() {
    local status=0 in_place=()
    log=build/verify/$1/test.log
    # A sanitizer's memory map does not agree with every place that the kernel may choose at random.
    if setarch -R true; then in_place=(setarch -R); fi
    "${in_place[@]}" ctest --test-dir "build/verify/$1" --tests-regex "$2" --no-tests=error \
        --timeout 300 -j "$(nproc)" --verbose 2>&1 | tee "$log" || status=$?
    # shellcheck disable=SC2034  # The stages use it.
    tests=$(sed -n -E 's/^.* tests failed out of ([0-9]+)$/\1/p' "$log")
    findings=$(grep -c 'WARNING: [A-Za-z]*Sanitizer' "$log" || true)
    words=$(sed -n -E 's/^[0-9]+: ([0-9]+ functions .*);.*/\1/p' "$log")
    [ -n "$words" ] || words="the program broke off"
    [ $status -eq 0 ] && [ "$findings" -eq 0 ]
}
