#!/usr/bin/env bash
# Fuzzes every target, one after the other, on all cores.
#
#   scripts/fuzz.sh [MINUTES [TARGET...]]
#
# MINUTES   for each target; 1 unless given
# TARGET    only these; fuzz/CMakeLists.txt lists them
#
# Inputs that reach something new gather in build/fuzz/corpus/TARGET, and what breaks a target in
# build/fuzz/found. Add a fixed fault's input to fuzz/corpus/TARGET, where a test replays it.
# shellcheck source=scripts/lib.sh
source "$(dirname "${BASH_SOURCE[0]}")/lib.sh"

minutes=${1:-1}
shift || true
targets=("$@")
[[ ${#targets[@]} -gt 0 ]] || targets=(container records model merge views check diff)

install_packages "${build_packages[@]}" clang-14 libclang-rt-14-dev
step "Building the fuzzers"
build=build/fuzz
cmake -S . -B "$build" -G Ninja -DCMAKE_CXX_COMPILER=clang++-14 -DCMAKE_BUILD_TYPE=Debug \
  -DCMAKE_CXX_FLAGS_DEBUG="-O1 -g1" -DRYXMERGE_SANITIZE=address,undefined -DRYXMERGE_BUILD_FUZZERS=ON >/dev/null
cmake --build "$build" --parallel "$(nproc)" --target "${targets[@]/#/fuzz_}"

# A file may grow a thousand times when it is inflated, so inputs are kept small.
options=(-max_len=16384 -timeout=20 -rss_limit_mb=2048 -malloc_limit_mb=256
  -max_total_time=$((minutes * 60)) -fork="$(nproc)" -use_value_profile=1)
export RYXMERGE_THREADS=1 TELMORAX_DEFAULT_RYX_BLOCK_SIZE=1000
status=0
for target in "${targets[@]}"; do
  step "Fuzzing $target for $minutes minutes"
  gathered=$build/corpus/$target found=$build/found/$target
  mkdir -p "$gathered" "$found"
  "$build/bin/fuzz_$target" "${options[@]}" -dict=fuzz/model.dict -artifact_prefix="$found/" \
    "$gathered" "fuzz/corpus/$target" 2>&1 | tail -n 12 || status=1
done
[[ $status -eq 0 ]] || echo "Faults were found; their inputs are in $build/found."
exit "$status"
