# Runs stages of the tests or of the verification, one after the other, and prints a line for each. Sourced by
# scripts/test and scripts/verify, which set:
#   folder   the folder of the stages. A stage is an executable whose second line says what it is for. It prints
#            `figure: ...` as its last line; exit status 0 is a pass, 77 means that it could not run here
#   logs     the folder for their output, as STAGE.log
#   stages   the names of all stages, the quick ones first
#   usual    the stages that run if no stage is named
# shellcheck shell=bash disable=SC2154  # The callers set these.

korv_purpose() {
    sed -n '2s/^# *//p' "$folder/$1"
}

korv_known() {
    local stage
    for stage in "${stages[@]}"; do [ "$stage" = "${1:-}" ] && return 0; done
    echo "$0: there is no stage '${1:-}'" >&2
    exit 2
}

# korv_run_stages ARGUMENT...: --list, --help, --all, --without STAGE, and names of stages.
korv_run_stages() {
    local chosen=() without=" " stage
    while [ $# -gt 0 ]; do
        case $1 in
            -h | --help) usage; return ;;
            --list)
                for stage in "${stages[@]}"; do printf '%-10s %s\n' "$stage" "$(korv_purpose "$stage")"; done
                return ;;
            --without) korv_known "${2:-}"; without+="$2 "; shift ;;
            --all) chosen=("${stages[@]}") ;;
            -*) usage >&2; exit 2 ;;
            *) korv_known "$1"; chosen+=("$1") ;;
        esac
        shift
    done
    [ ${#chosen[@]} -gt 0 ] || chosen=("${usual[@]}")

    mkdir -p "$logs"
    local table="" failed=0 begin=$SECONDS log start status verdict figure line took
    for stage in "${chosen[@]}"; do
        [[ $without == *" $stage "* ]] && continue
        log=$logs/$stage.log
        start=$SECONDS
        status=0
        "$folder/$stage" >"$log" 2>&1 </dev/null || status=$?
        figure=$(sed -n 's/^figure: //p' "$log" | tail -n 1)
        case $status in
            0) verdict=passed ;;
            77) verdict=SKIPPED ;;
            *) verdict=FAILED ;;
        esac
        [ -n "$figure" ] || verdict=FAILED
        if [ $verdict = FAILED ]; then
            failed=$((failed + 1))
            tail -n 60 "$log"
        fi
        took=$((SECONDS - start))
        line=$(printf '%-10s %3d:%02d  %-7s %s' "$stage" $((took / 60)) $((took % 60)) $verdict \
            "${figure:-no figure}")
        echo "$line"
        table+=$line$'\n'
    done
    took=$((SECONDS - begin))
    table+=$(printf '%d failed, %d:%02d in all' $failed $((took / 60)) $((took % 60)))
    echo "$table" >"$logs/table.txt"
    tail -n 1 "$logs/table.txt"
    [ $failed -eq 0 ]
}
