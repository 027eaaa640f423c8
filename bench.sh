#!/usr/bin/env bash
# Measures zorvcrt beside what a user would take instead and writes the tables and charts in docs/benchmarks. One
# command on a bare Debian 12: the peers are installed through apt, and a peer that cannot be had is left out.
#
#   ./bench.sh [--json-corpora FOLDER] [--quick]
#       FOLDER has twitter.json, citm_catalog.json and canada.json; without it a document is made up. --quick takes
#       three short repetitions for a first look.
#   ./bench.sh --smoke
#       installs no peer and writes nothing: runs each benchmark once, so that none of them rots.
. "$(dirname "$0")/scripts/common.sh"

peers=(
  libcjson-dev libjansson-dev libjson-c-dev rapidjson-dev nlohmann-json3-dev libsimdjson-dev
  libspdlog-dev libgoogle-glog-dev liblog4c-dev
  libglib2.0-dev libapr1-dev libaprutil1-dev libssl-dev libb64-dev sharutils
  libinih-dev libiniparser-dev libconfig-dev libabsl-dev
)
rooms=(foundation conv config json log time)

repetitions=9
seconds=0.1
without='^$'  # what is not measured, by its name
mode=full
while [ "$#" -gt 0 ]; do
  case $1 in
    --json-corpora)
      [ -d "${2-}" ] || fail "--json-corpora needs a folder"
      ZORVCRT_BENCH_JSON=$(realpath "$2")
      export ZORVCRT_BENCH_JSON
      shift
      ;;
    --quick) mode=quick repetitions=3 seconds=0.02 without='/100 MB/' ;;
    --smoke) mode=smoke repetitions=1 seconds=0.000001 without='/(10|100) MB/' ;;
    *) fail "unknown option $1" ;;
  esac
  shift
done

# run ROOM WORK: measures one of a program's works. The JSON output goes to a file, what went wrong is shown.
run() {
  local program=$programs/$1_bench output=$results/$2.json names
  names=$("$program" --benchmark_list_tests | grep "^$2/" | grep -vE "$without" | sed 's/[.+*?()|]/\\&/g')
  "$program" --benchmark_filter="^(${names//$'\n'/|})\$" --benchmark_repetitions="$repetitions" \
    --benchmark_min_time="$seconds" --benchmark_enable_random_interleaving=true \
    --benchmark_format=json >"$output" 2>"$output.errors" || {
    cat "$output.errors"
    fail "the benchmarks of $2 failed"
  }
  sed -n 's/^ *"error_message": /trouble in '"$2"': /p' "$output" | sort -u
}

# works ROOM: the works that a program measures.
works() { "$programs/$1_bench" --benchmark_list_tests | cut -d / -f 1 | sort -u; }

need "${build_packages[@]}" "${bench_packages[@]}"
if [ "$mode" = smoke ]; then
  build release -DZORVCRT_BUILD_BENCHMARKS=ON
  programs=build/release/bin
else
  (need "${peers[@]}") || for peer in "${peers[@]}"; do
    (need "$peer") || printf 'left out: %s\n' "$peer"
  done
  build bench
  programs=build/bench/bin
fi

results=$(mktemp -d)
trap 'rm -rf "$results"' EXIT
for room in "${rooms[@]}"; do
  step "Measuring ($room)"
  # Each work in a process of its own: in the heap that another work leaves behind, a growing text takes twice
  # as long at one time and not at another.
  for work in $(works "$room"); do
    run "$room" "$work"
  done
done

if [ "$mode" = smoke ]; then
  ! grep -q '"error_message"' "$results"/*.json || fail "a benchmark went wrong"
  step "Every benchmark runs"
else
  step "Writing docs/benchmarks"
  python3 -B bench/report.py "$results" docs/benchmarks "${peers[@]}"
fi
