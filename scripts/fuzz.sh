#!/usr/bin/env bash
# Fuzzes the targets one after the other on all cores.
#
#   scripts/fuzz.sh [--afl] [MINUTES [TARGET...]]
#
# --afl     use AFL++ instead of libFuzzer; it only changes bytes of files and does not rebuild
#           containers
# MINUTES   the time for each target; default: 1
# TARGET    only these targets; fuzz/CMakeLists.txt lists them
#
# Inputs that reach new code are in build/fuzz/corpus/TARGET; logs and inputs that fail are in
# build/fuzz/found/TARGET (AFL++: all in build/fuzz-afl/found). When a fault is fixed, add its input
# to fuzz/corpus/TARGET, because a test replays the files there.
# shellcheck source=scripts/lib.sh
source "$(dirname "${BASH_SOURCE[0]}")/lib.sh"

fuzzer=libfuzzer build=build/fuzz compiler=clang++-14 packages=(clang-14 libclang-rt-14-dev)
if [[ ${1:-} == --afl ]]; then
  shift
  fuzzer=afl build=build/fuzz-afl compiler=afl-clang-fast++ packages=(afl++)
  export AFL_AUTORESUME=1 AFL_QUIET=1 AFL_NO_UI=1 AFL_SKIP_CPUFREQ=1
  export AFL_I_DONT_CARE_ABOUT_MISSING_CRASHES=1
fi
minutes=${1:-1}
shift || true
targets=("$@")
[[ ${#targets[@]} -gt 0 ]] || targets=(container records model merge views check diff export)

install_packages "${build_packages[@]}" "${packages[@]}"
step "Building the fuzzers"
cmake -S . -B "$build" -G Ninja -DCMAKE_CXX_COMPILER=$compiler -DCMAKE_BUILD_TYPE=Debug \
  -DCMAKE_CXX_FLAGS_DEBUG="-O1 -g1" -DRYXMERGE_SANITIZE=address,undefined \
  -DRYXMERGE_BUILD_FUZZERS=ON >/dev/null
cmake --build "$build" --parallel "$(nproc)" --target "${targets[@]/#/fuzz_}"

# Inputs are kept small, because a file may decompress to a thousand times its size.
most_bytes=16384
seconds=$((minutes * 60))
export RYXMERGE_THREADS=1 TELMORAX_DEFAULT_RYX_BLOCK_SIZE=1000

# The functions below take the name of the target, the folder of the first inputs and the folder for
# the findings. They run one process for each core.

# The processes exchange inputs through a shared corpus. The option -fork of libFuzzer restarts so
# often that it spends most of its time on reading the corpus.
run_libfuzzer() {
  local options=(-max_len="$most_bytes" -timeout=20 -rss_limit_mb=2048 -malloc_limit_mb=256
    -max_total_time="$seconds" -use_value_profile=1 -dict=fuzz/model.dict -print_final_stats=1)
  local i job jobs=() status=0
  mkdir -p "$build/corpus/$1"
  for ((i = 0; i < $(nproc); ++i)); do
    "$build/bin/fuzz_$1" "${options[@]}" -artifact_prefix="$3/" "$build/corpus/$1" "$2" \
      >"$3/core$i.log" 2>&1 &
    jobs+=($!)
  done
  for job in "${jobs[@]}"; do
    wait "$job" || status=1
  done
  grep -a -h -E '^(SUMMARY|Test unit written|stat::number_of_executed_units)' "$3"/core*.log
  return "$status"
}

# The first process (-M) also does the deterministic steps, the others (-S) leave them out.
run_afl() {
  local i jobs=()
  for ((i = 0; i < $(nproc); ++i)); do
    local role=-S
    [[ $i -gt 0 ]] || role=-M
    afl-fuzz -i "$2" -o "$3" -x fuzz/model.dict -V "$seconds" -t 20000 -m none -G "$most_bytes" \
      "$role" "core$i" -- "$build/bin/fuzz_$1" >/dev/null &
    jobs+=($!)
  done
  wait "${jobs[@]}"
  grep -E '^(execs_done|corpus_count|saved_(crashes|hangs)) ' "$3"/*/fuzzer_stats
  [[ -z "$(find "$3" -path '*/crashes/id*' -o -path '*/hangs/id*')" ]]
}

status=0
for target in "${targets[@]}"; do
  step "Fuzzing $target for $minutes minutes"
  mkdir -p "$build/found/$target"
  case $fuzzer in
    afl) run_afl "$target" "fuzz/corpus/$target" "$build/found/$target" || status=1 ;;
    *) run_libfuzzer "$target" "fuzz/corpus/$target" "$build/found/$target" || status=1 ;;
  esac
done
[[ $status -eq 0 ]] || echo "Faults were found. Their inputs are in $build/found."
exit "$status"
