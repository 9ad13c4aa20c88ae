#!/usr/bin/env bash
# Builds the benchmarks and compares merges with the floor: the cost of only reading, inflating,
# deflating and writing the same bytes. docs/performance.md explains the figures.
#
#   scripts/bench.sh [--quick] [--runs N] [ROW...]
#
# --quick     a tenth of the data and one run: tests the script, gives no reliable figures
# --runs N    runs of each command; the figures are medians; default: 5
# ROW         only these rows of the table; --list prints their names
# shellcheck source=scripts/lib.sh
source "$(dirname "${BASH_SOURCE[0]}")/lib.sh"

rows=(
  dataset_16m dataset_default instance_16m instance_default one_thread small_files
  outside_zlib growth_files growth_results memory_files memory_default memory_16m
  reading open_files copying copying_checked merge_kept merge_kept_shared merge_shared
  merge_all merge_all_one_core merge_single verify checking block_size memory_merge
  export_vtu export_memory surface
)
runs=5
size=36         # cells along an edge: 57 MB of arrays a file
grid_size=100   # cells along an edge of the exported grid
num_small=200   # files of 3 MB
num_tiny=1000
chosen=()
while [[ $# -gt 0 ]]; do
  case $1 in
    --quick) runs=1 size=16 grid_size=30 num_small=40 num_tiny=200 ;;
    --runs) runs=$2; shift ;;
    --list) printf '%s\n' "${rows[@]}"; exit ;;
    -*) sed -n '2,/^# shellcheck/{/shellcheck/d;s/^# \{0,1\}//p}' scripts/bench.sh; exit 1 ;;
    *) chosen+=("$1") ;;
  esac
  shift
done
[[ ${#chosen[@]} -gt 0 ]] || chosen=("${rows[@]}")

readonly default_block=209715200 middle_block=16777216
build=build/bench
data=$build/data
out=$data/out.ryx

prepare() {
  install_packages "${build_packages[@]}" "${reader_packages[@]}" libbenchmark-dev valgrind
  step "Building"
  cmake --preset release -B "$build" -DRYXMERGE_BUILD_BENCH=ON -DRYXMERGE_BUILD_TESTS=OFF >/dev/null
  cmake --build "$build" --parallel "$(nproc)" --target RyxMerge ryx floor measure readarrays surface
  PATH="$PWD/$build/bin:$PATH"
  mkdir -p "$data"
  export PELORIN_TEMP_PATH=$data
}

# models NAME OPTION...: prints the folder of these sample models. Writes missing ones.
models() {
  local folder=$data/$1-$size
  shift
  if [[ ! -e $folder/complete ]]; then
    rm -rf "$folder"
    ryx sample "$folder" "$@" >/dev/null
    touch "$folder/complete"
  fi
  echo "$folder"
}

# in_order FOLDER [N]: prints the models of a folder in order, or the first N of them.
in_order() { find "$1" -name 'run*.ryx' | sort -V | head -n "${2:-1000000}"; }

use_big() { mapfile -t big < <(in_order "$(models big --size "$size" --parts 4 --cases 6 --steps 12)"); }
use_small() {
  mapfile -t small < <(in_order \
    "$(models small --size 20 --parts 2 --cases 3 --steps "$num_small")")
}

# one FIELD COMMAND...: runs a command once and prints this field of the output of `measure`.
# Removes the files that the command wrote.
one() {
  local field=$1 line
  shift
  line=$(measure "$@" 2>"$data/errors") || {
    echo "Status $? of: ${*:1:3} ..." >&2
    cat "$data/errors" >&2
    return 1
  }
  rm -f "$out" "$data/floor.out"
  sed -E "s/.*\\b$field=([0-9.]+).*/\\1/" <<<"$line"
}

median() { sort -g | awk '{v[NR] = $1} END {print (v[int((NR + 1) / 2)] + v[int(NR / 2) + 1]) / 2}'; }
quotient() { awk -v a="$1" -v b="$2" 'BEGIN {printf "%.3f", a / b}'; }

# versus FIELD COMMAND... -- COMMAND...: runs two commands in turn and prints the quotient of their
# medians.
versus() {
  local field=$1 first=() second=() i
  shift
  while [[ $1 != -- ]]; do first+=("$1"); shift; done
  shift
  second=("$@")
  : >"$data/first"
  : >"$data/second"
  for ((i = 0; i < runs; ++i)); do
    one "$field" "${first[@]}" >>"$data/first"
    one "$field" "${second[@]}" >>"$data/second"
  done
  quotient "$(median <"$data/first")" "$(median <"$data/second")"
}

# median_of FIELD COMMAND...: prints the median of this field.
median_of() {
  local i
  for ((i = 0; i < runs; ++i)); do one "$@"; done | median
}

report() { printf '| %s | %s | %s |\n' "$1" "$2" "$3"; }

instances=(--merge-as-instances --suffix-file-instance)

merge_versus_floor() { # BLOCK FLOOR-OPTION MERGE-OPTION...
  local block=$1 floor_option=$2
  shift 2
  use_big
  export TELMORAX_MAX_RYX_BLOCK_SIZE=$block
  # shellcheck disable=SC2086  # no option, or one
  versus wall RyxMerge "$@" "${big[@]}" "$out" -- \
    floor --threads 2 $floor_option "$data/floor.out" "${big[@]}"
  unset TELMORAX_MAX_RYX_BLOCK_SIZE
}

row_dataset_16m() {
  report "dataset merge, blocks of 16 MiB, wall / \`floor --threads 2\`" "at most 1.10" \
    "$(merge_versus_floor $middle_block "")"
}
row_dataset_default() {
  report "dataset merge, default blocks, wall / \`floor --threads 2 --whole-blocks\`" \
    "at most 1.10" "$(merge_versus_floor $default_block --whole-blocks)"
}
row_instance_16m() {
  report "instance merge, blocks of 16 MiB, wall / \`floor --threads 2\`" "at most 1.10" \
    "$(merge_versus_floor $middle_block "" "${instances[@]}")"
}
row_instance_default() {
  report "instance merge, default blocks, wall / \`floor --threads 2 --whole-blocks\`" \
    "at most 1.10" "$(merge_versus_floor $default_block --whole-blocks "${instances[@]}")"
}
row_one_thread() {
  use_big
  report "dataset merge on one core, wall / \`floor --threads 1\`" "at most 1.05" \
    "$(versus wall taskset -c 0 RyxMerge "${big[@]}" "$out" -- \
      taskset -c 0 floor "$data/floor.out" "${big[@]}")"
}
row_small_files() {
  use_small
  report "${#small[@]} small files as instances, CPU / floor's CPU" "at most 1.15" \
    "$(versus cpu RyxMerge "${instances[@]}" "${small[@]}" "$out" -- \
      floor "$data/floor.out" "${small[@]}")"
}
# Merges one model with itself on one thread.
row_outside_zlib() {
  use_big
  local profile=$data/callgrind.out
  RYXMERGE_THREADS=1 valgrind --tool=callgrind --callgrind-out-file="$profile" -q \
    RyxMerge "${big[0]}" "${big[0]}" "$out" 2>"$data/errors"
  report "instructions outside zlib / all instructions, $(du -m "$out" | cut -f1) MB of output" \
    "at most 5 %" "$(awk -f bench/outside_zlib.awk "$profile")"
}
row_growth_files() {
  use_small
  local quarter=("${small[@]:0:$((${#small[@]} / 4))}")
  report "datasets, CPU for ${#small[@]} files / CPU for ${#quarter[@]}" "at most 4.2" \
    "$(versus cpu RyxMerge "${small[@]}" "$out" -- RyxMerge "${quarter[@]}" "$out")"
  report "instances, CPU for ${#small[@]} files / CPU for ${#quarter[@]}" "at most 4.2" \
    "$(versus cpu RyxMerge "${instances[@]}" "${small[@]}" "$out" -- \
      RyxMerge "${instances[@]}" "${quarter[@]}" "$out")"
}
# Two files with one geometry and four results in each load case; without suffixes the mesh is
# linked. Each command merges ten times, because a single small merge is too short to measure.
row_growth_results() {
  local few many
  mapfile -t few < <(in_order "$(models few --size 4 --parts 1 --cases 62 --steps 2)")
  mapfile -t many < <(in_order "$(models many --size 4 --parts 1 --cases 625 --steps 2)")
  # shellcheck disable=SC2016
  local repeat='for i in 1 2 3 4 5 6 7 8 9 10; do "$@"; done'
  report "500 to 5000 results of a geometry, as instances, CPU" "at most 11" \
    "$(versus cpu bash -c "$repeat" - RyxMerge --merge-as-instances "${many[@]}" "$out" -- \
      bash -c "$repeat" - RyxMerge --merge-as-instances "${few[@]}" "$out")"
}
row_memory_files() {
  use_big
  report "peak memory, 12 files / 3 files of the same size" "at most 1.05" \
    "$(versus rss RyxMerge "${big[@]}" "$out" -- RyxMerge "${big[@]:0:3}" "$out")"
}
row_memory_default() {
  use_big
  report "peak memory, default blocks, 2 threads" \
    "at most 1.5 blocks (315 MB), plus the largest array, plus 64 MB" \
    "$(quotient "$(RYXMERGE_THREADS=2 median_of rss RyxMerge "${big[@]}" "$out")" 1000) MB"
}
row_memory_16m() {
  use_big
  report "peak memory, blocks of 16 MiB" "at most 120 MB" \
    "$(quotient "$(median_of rss env TELMORAX_MAX_RYX_BLOCK_SIZE=$middle_block \
      RyxMerge "${big[@]}" "$out")" 1000) MB"
}
row_reading() {
  local folder model
  # 365 arrays in blocks of 4 MiB.
  export TELMORAX_MAX_RYX_BLOCK_SIZE=4194304
  folder=$(models arrays --size "$size" --parts 1 --cases 90 --steps 1)
  unset TELMORAX_MAX_RYX_BLOCK_SIZE
  model=$(in_order "$folder")
  report "reading every array in stored order, CPU / one plain inflate" "at most 1.10" \
    "$(versus cpu readarrays "$model" -- floor --inflate "$model")"
}
row_open_files() {
  local tiny
  mapfile -t tiny < <(in_order "$(models tiny --size 8 --parts 1 --steps "$num_tiny")")
  report "file handles open at once, ${#tiny[@]} inputs" "at most 64" \
    "$(median_of files RyxMerge "${instances[@]}" "${tiny[@]}" "$out")"
}
row_copying() {
  use_big
  export RYXMERGE_COPY_BLOCKS=1
  # shellcheck disable=SC2016
  local concatenate='out=$1; shift; cat "$@" >"$out"'
  report "copying blocks, datasets, wall / \`cat\`" "at most 2.5" \
    "$(versus wall RyxMerge "${big[@]}" "$out" -- \
      bash -c "$concatenate" - "$data/floor.out" "${big[@]}")"
  report "copying blocks, instances, wall / \`cat\`" "at most 2.5" \
    "$(versus wall RyxMerge "${instances[@]}" "${big[@]}" "$out" -- \
      bash -c "$concatenate" - "$data/floor.out" "${big[@]}")"
  unset RYXMERGE_COPY_BLOCKS
}

# ryx_versus_floor [FLOOR-PREFIX...] -- RYX-ARGUMENT...: the wall time of `ryx` divided by that of
# the floor with one thread.
ryx_versus_floor() {
  local prefix=()
  while [[ $1 != -- ]]; do prefix+=("$1"); shift; done
  shift
  use_big
  versus wall "${prefix[@]}" ryx merge "${big[@]}" -o "$out" "$@" -- \
    "${prefix[@]}" floor "$data/floor.out" "${big[@]}"
}

row_copying_checked() {
  use_big
  report "RyxMerge copies and checks blocks, wall / one-thread floor" "at most 0.06" \
    "$(RYXMERGE_COPY_BLOCKS=check versus wall RyxMerge "${big[@]}" "$out" -- \
      floor "$data/floor.out" "${big[@]}")"
}
row_merge_kept() {
  report "\`ryx merge --keep-blocks --no-share\`, datasets, wall / one-thread floor" \
    "at most 0.06" "$(ryx_versus_floor -- --as datasets --no-share --keep-blocks)"
}
row_merge_kept_shared() {
  report "\`ryx merge --keep-blocks\`, which compares arrays, wall / one-thread floor" "-" \
    "$(ryx_versus_floor -- --keep-blocks)"
}
row_merge_shared() {
  report "\`ryx merge\`, 12 steps with a common mesh, wall / one-thread floor" "at most 0.28" \
    "$(ryx_versus_floor --)"
}
row_merge_all() {
  report "\`ryx merge --level 6 --no-share\`, wall / one-thread floor" "at most 0.28" \
    "$(ryx_versus_floor -- --level 6 --no-share)"
}
row_merge_all_one_core() {
  report "the same on one core" "at most 0.55" \
    "$(ryx_versus_floor taskset -c 0 -- --level 6 --no-share)"
}
row_merge_single() {
  use_big
  local views
  views=$(models plate)/plate.vpt
  report "\`ryx merge\` of one model and a view-point file, wall / one-thread floor" \
    "at most 0.35" "$(versus wall ryx merge "${big[0]}" "$views" -o "$out" -- \
      floor "$data/floor.out" "${big[0]}")"
}
row_verify() {
  use_big
  local merged=$data/merged.ryx
  ryx merge "${big[@]}" --overwrite -o "$merged" >/dev/null
  report "\`ryx verify\` of that merge, wall / one plain inflate of inputs and output" \
    "at most 0.35" "$(versus wall ryx verify "$merged" "${big[@]}" -- \
      floor --inflate "${big[@]}" "$merged")"
  rm "$merged"
}
row_checking() {
  use_big
  local command
  for command in check ls stats; do
    report "\`ryx $command\` of 12 files, wall / one plain inflate" "at most 0.40" \
      "$(versus wall ryx "$command" "${big[@]}" -- floor --inflate "${big[@]}")"
  done
  # The files differ, so that the status is 1.
  # shellcheck disable=SC2016
  report "\`ryx diff\`, wall / one plain inflate of both files" "at most 0.40" \
    "$(versus wall bash -c 'ryx diff "$@" || (($? == 1))' - "${big[@]:0:2}" -- \
      floor --inflate "${big[@]:0:2}")"
}
row_block_size() {
  use_big
  local size usual
  ryx merge "${big[@]}" --no-share --block-size $default_block --overwrite -o "$out" >/dev/null
  usual=$(stat -c %s "$out")
  for size in 2 4 8 16 32; do
    ryx merge "${big[@]}" --no-share --block-size $((size << 20)) --overwrite -o "$out" >/dev/null
    report "size with blocks of $size MiB / blocks of 200 MiB" \
      "$([[ $size == 8 ]] && echo "at most 1.01" || echo -)" \
      "$(awk -v a="$(stat -c %s "$out")" -v b="$usual" 'BEGIN {printf "%.4f", a / b}')"
    report "wall with blocks of $size MiB / 8 MiB" "-" \
      "$(versus wall ryx merge "${big[@]}" --no-share --block-size $((size << 20)) -o "$out" -- \
        ryx merge "${big[@]}" --no-share -o "$out")"
  done
}
row_memory_merge() {
  use_big
  local options
  for options in "" "--level 6 --no-share" "--keep-blocks --no-share"; do
    # shellcheck disable=SC2086  # words of the options
    report "peak memory, \`ryx merge${options:+ $options}\`, 12 files / 3 files" "at most 1.10" \
      "$(versus rss ryx merge "${big[@]}" $options -o "$out" -- \
        ryx merge "${big[@]:0:3}" $options -o "$out")"
    # shellcheck disable=SC2086
    report "the same, 12 files" "at most 250 MB" \
      "$(quotient "$(median_of rss ryx merge "${big[@]}" $options -o "$out")" 1000) MB"
  done
}

# The model has 8 results; 5 of them are exported.
use_grid() {
  mkdir -p "$data/grid-$grid_size"
  grid=$data/grid-$grid_size/run1.ryx
  [[ -e $grid ]] ||
    ryx sample "$data/grid-$grid_size" --size "$grid_size" --parts 1 --cases 2 --steps 1 >/dev/null
  export_grid=(
    ryx export "$grid" -o "$data/grid.vtu" --overwrite
    --results Displacement --results Stress --results $'Temperature\x1eLC1'
  )
}
row_export_vtu() {
  use_grid
  local ours theirs
  ours=$(median_of wall "${export_grid[@]}")
  theirs=$(/usr/bin/python3 bench/vtktimes.py write "$data/grid.vtu" "$runs" | median)
  report "\`.vtu\` of $((grid_size ** 3)) hexahedra with 5 results, wall / VTK's writer" \
    "at most 0.8" "$(quotient "$ours" "$theirs")"
}
row_export_memory() {
  use_grid
  report "peak memory of that export" "the mesh and one array, and the cache of blocks" \
    "$(quotient "$(median_of rss "${export_grid[@]}")" 1000) MB"
}
row_surface() {
  use_grid
  "${export_grid[@]}" >/dev/null
  report "outer surface of $((grid_size ** 3)) hexahedra, wall / vtkDataSetSurfaceFilter" \
    "at most 0.5" "$(quotient "$(surface "$grid" "$runs" | median)" \
      "$(/usr/bin/python3 bench/vtktimes.py surface "$data/grid.vtu" "$runs" | median)")"
}

print_versions() {
  local library
  library=$(ldd "$build/bin/RyxMerge" | awk '/libz\.so/ {print $3}')
  printf 'RyxMerge %s (%s), zlib %s, %s, %s\n' \
    "$(git describe --always --dirty 2>/dev/null || echo unknown)" \
    "$(sed -n 's/^CMAKE_BUILD_TYPE:[^=]*=//p' "$build/CMakeCache.txt")" \
    "$(basename "$(readlink -f "$library")" | sed 's/libz\.so\.//')" \
    "$(c++ --version | head -n 1)" "$(uname -sr)"
  printf '%s cores of %s; medians of %s runs\n\n' "$(nproc)" \
    "$(sed -n 's/^model name[^:]*: //p' /proc/cpuinfo | head -n 1)" "$runs"
}

prepare
step "Measuring"
print_versions
report "figure" "to reach" "measured"
report "---" "---" "---"
for row in "${chosen[@]}"; do
  current_step=$row
  "row_$row"
done
