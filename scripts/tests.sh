# Builds and runs the tests of a preset. Sourced by the stages of the tests.
# shellcheck shell=bash
. scripts/setup.sh

korv_build() { # PRESET BUILD-OPTION...
    korv_setup gdb googletest libc-bin locales pkgconf python3-cryptography
    cmake --preset "$1" -DKORV_BUILD_TESTS=ON -DKORV_BUILD_MASK=ON -DKORV_BUILD_DOCS=OFF \
        ${CI:+-DKORV_WERROR=ON} >/dev/null
    cmake --build --preset "$@"
}

# korv_test PRESET: prints the figure of the stage. The tests in hostile surroundings take minutes and belong
# to the verification.
korv_test() {
    korv_build "$1"
    local results=build/$1/tests.xml status=0
    # Installed libraries must not take the place of those that are tested.
    unset LD_LIBRARY_PATH
    ctest --preset "$1" -j "$(nproc)" --exclude-regex '^tool_hostile\.' --output-junit "$PWD/$results" || status=$?
    korv_count() { sed -n -E "s/^\\s*$1=\"([0-9]+)\".*/\\1/p" "$results" | head -n 1; }
    echo "figure: $(korv_count tests) tests, $(korv_count failures) failed, $(korv_count skipped) skipped"
    return $status
}
