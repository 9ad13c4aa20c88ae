#!/usr/bin/env bash
# Installs missing packages, builds the programs, merges sample models in every mode and shows the
# results. All files are written to build/demo, which each run deletes first.
# shellcheck source=scripts/lib.sh
source "$(dirname "${BASH_SOURCE[0]}")/lib.sh"

install_packages "${build_packages[@]}"
build release RyxMerge ryx

PATH="$PWD/build/release/bin:$PATH"
rm -rf build/demo
mkdir -p build/demo/models build/demo/merged
cd build/demo
export PELORIN_TEMP_PATH=.  # the trace log

# Shows a command and runs it.
run() {
  printf '$ %s\n' "$*"
  "$@"
}

# merge_to OUTPUT ARGUMENT...: merges, then lists the merged file.
merge_to() {
  local output=$1
  shift
  run RyxMerge "$@" "$output"
  run ryx ls "$output"
}

step "Writing sample models"
run ryx sample models
run ryx ls models/plate.ryx

step "Merging as datasets: every file keeps its own groups"
merge_to merged/datasets.ryx models/plate.ryx models/assembly.ryx

step "Merging as instances: the results of the second file are added to the geometry of the first"
merge_to merged/instances.ryx --merge-as-instances models/plate.ryx models/plate_more_load.ryx

step "Merging as instances, every result named after its file"
merge_to merged/suffixed.ryx --merge-as-instances --suffix-file-instance \
  models/steps/run1.ryx models/steps/run2.ryx

step "Merging as instances, results of an instance renamed where needed"
merge_to merged/renamed.ryx --merge-as-instances --auto-rename-instances \
  models/plate.ryx models/plate_more_load.ryx

step "Merging twelve runs, arranged by the numbers in their names"
merge_to merged/arranged.ryx --arrange-files --merge-as-instances --suffix-file-instance \
  models/steps/run*.ryx

step "Merging as datasets and adding the view points of a .vpt file"
merge_to merged/with_views.ryx models/plate.ryx models/plate_more_load.ryx models/plate.vpt

step "The merged files"
ls -l merged
