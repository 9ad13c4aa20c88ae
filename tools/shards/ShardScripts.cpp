#include "ShardScripts.h"

#include <fmt/format.h>

#include <filesystem>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "SafeOutput.h"
#include "ShellText.h"
#include "merge/MergeText.h"

namespace Qov::Tools {
namespace {

/// The beginning of each script. {} is the folder, quoted.
constexpr const char* kSourceSettings = ". {}/settings || exit 2\n";

constexpr std::string_view kFunctions = R"sh(
if [ -z "${RYXMERGE_THREADS:-}" ] && [ -n "${SLURM_CPUS_PER_TASK:-}" ]; then
  export RYXMERGE_THREADS="$SLURM_CPUS_PER_TASK"
fi

say() { printf '%s\n' "$*"; }
complain() { printf '%s\n' "$*" >&2; }

is_shard() {
  case $1 in
    '' | 0* | *[!0-9]*) return 1 ;;
  esac
  [ "$1" -le "$num_shards" ]
}

# Prints the numbers of the shards whose parts are missing.
missing() {
  missing_shard=1
  while [ "$missing_shard" -le "$num_shards" ]; do
    [ -e "$folder/parts/$missing_shard.ryx" ] || printf ' %s' "$missing_shard"
    missing_shard=$((missing_shard + 1))
  done
}
)sh";

constexpr std::string_view kShard = R"sh(
shard=${1:-${SLURM_ARRAY_TASK_ID:-}}
if ! is_shard "$shard"; then
  complain "usage: sh $shown_folder/shard K, with K from 1 to $num_shards"
  exit 2
fi
part=$folder/parts/$shard.ryx
if [ -e "$part" ]; then
  say "shard $shard of $num_shards: complete, not repeated"
  exit 0
fi
rm -f "$folder/parts/.$shard.ryx."* # left by a run that was killed
say "shard $shard of $num_shards"
status=0
. "$folder/commands/shard-$shard" || status=$?
if [ "$status" -ne 0 ]; then
  rm -f "$folder/parts/.$shard.ryx."*
  complain "shard $shard of $num_shards FAILED with status $status; its inputs are in $shown_folder/lists/$shard"
  complain "Repeat it: sh $shown_folder/run-here $shard, or sbatch --array=$shard $shown_folder/shard"
  exit "$status"
fi
rm -f "$folder/joined"
)sh";

constexpr std::string_view kJoin = R"sh(
lacking=$(missing)
if [ -n "$lacking" ]; then
  complain "join: the parts of these shards are missing:$lacking"
  complain "Make them: sh $shown_folder/run-here$lacking, or sh $shown_folder/submit"
  exit 2
fi
if [ -e "$folder/joined" ] && [ -e "$output" ]; then
  say "join: complete, not repeated"
  exit 0
fi
say "join of $num_shards parts"
status=0
. "$folder/commands/join" || status=$?
if [ "$status" -ne 0 ]; then
  complain "join FAILED with status $status. Repeat it: sh $shown_folder/run-here, or sh $shown_folder/submit"
  exit "$status"
fi
: >"$folder/joined"
)sh";

constexpr std::string_view kVerify = R"sh(
if ! [ -e "$folder/joined" ]; then
  complain "verify: the parts are not joined. Join them: sh $shown_folder/run-here, or sh $shown_folder/submit"
  exit 2
fi
status=0
. "$folder/commands/verify" || status=$?
if [ "$status" -ne 0 ]; then
  complain "verify FAILED with status $status: do not use $output"
  exit "$status"
fi
say "The folder $shown_folder is not needed any more."
)sh";

constexpr std::string_view kSubmit = R"sh(
if ! command -v sbatch >/dev/null; then
  complain "submit: there is no sbatch here; without Slurm: sh $shown_folder/run-here"
  exit 2
fi
cd "$folder" || exit 2
count() { echo $#; }
after=
lacking=$(missing)
if [ -n "$lacking" ]; then
  array=$(printf '%s' "${lacking# }" | tr ' ' ',')
  # shellcheck disable=SC2086 # numbers
  [ "$(count $lacking)" -ne "$num_shards" ] || array=1-$num_shards
  job=$(sbatch --parsable --job-name=ryx-shard --array="$array" --output=logs/shard-%a.log "$@" shard) || exit 2
  say "shards $array: job ${job%%;*}"
  after=afterok:${job%%;*}
fi
job=$(sbatch --parsable --job-name=ryx-join --output=logs/join.log ${after:+"--dependency=$after"} \
  --kill-on-invalid-dep=yes "$@" join) || exit 2
say "join: job ${job%%;*}"
job=$(sbatch --parsable --job-name=ryx-verify --output=logs/verify.log \
  --dependency="afterok:${job%%;*}" --kill-on-invalid-dep=yes "$@" verify) || exit 2
say "verify: job ${job%%;*}"
say "The jobs write to $folder/logs. If a shard fails, submit again: only missing parts are made."
)sh";

constexpr std::string_view kRunHere = R"sh(
usage() {
  complain "usage: sh $shown_folder/run-here [-j JOBS] [SHARD...]"
  exit 2
}

jobs=1
while getopts j: option; do
  case $option in
    j) jobs=$OPTARG ;;
    *) usage ;;
  esac
done
shift $((OPTIND - 1))
case $jobs in
  '' | 0* | *[!0-9]*) usage ;;
esac
for shard; do
  is_shard "$shard" || usage
done
runs_all=
if [ $# -eq 0 ]; then
  runs_all=yes
  # shellcheck disable=SC2046 # numbers
  set -- $(missing)
fi
[ "$jobs" -le $# ] || jobs=$#
if [ "$jobs" -gt 1 ] && [ -z "${RYXMERGE_THREADS:-}" ]; then
  RYXMERGE_THREADS=$(($(getconf _NPROCESSORS_ONLN) / jobs))
  [ "$RYXMERGE_THREADS" -gt 0 ] || RYXMERGE_THREADS=1
  export RYXMERGE_THREADS
  threads_of_jobs=yes
fi

# Makes the parts of every JOBS-th shard, from number WORKER: work WORKER SHARD...
work() {
  worker=$1
  shift
  turn=0
  for shard; do
    turn=$((turn % jobs + 1))
    [ "$turn" -ne "$worker" ] || sh "$folder/shard" "$shard" || :
  done
}

if [ "$jobs" -eq 1 ]; then
  work 1 "$@"
else
  # Shells start jobs in the background with SIGINT ignored.
  trap 'trap - INT TERM; kill 0' INT
  worker=1
  while [ "$worker" -le "$jobs" ]; do
    work "$worker" "$@" &
    worker=$((worker + 1))
  done
  wait
  trap - INT
fi
failed=
for shard; do
  [ -e "$folder/parts/$shard.ryx" ] || failed="$failed $shard"
done
if [ -n "$failed" ]; then
  complain "FAILED shards:$failed"
  exit 2
fi
[ -n "$runs_all" ] || exit 0
[ -z "${threads_of_jobs:-}" ] || unset RYXMERGE_THREADS
sh "$folder/join" || exit
sh "$folder/verify"
)sh";

/// Returns the text of a list for --from -0.
std::string ListText(const std::vector<std::string>& paths) {
  std::string text;
  for (const std::string& path : paths) text += path + '\0';
  return text;
}

/// A shell command, a line for each argument.
class CommandText {
 public:
  explicit CommandText(std::string_view command) : mText(command) {}

  CommandText& Quoted(const std::vector<std::string>& arguments) {
    for (const std::string& argument : arguments) Raw(QuoteForShell(argument));
    return *this;
  }
  /// Adds arguments that contain variables.
  CommandText& Raw(std::string_view arguments) {
    mText += " \\\n  ";
    mText += arguments;
    return *this;
  }
  std::string Finish() { return mText + "\n"; }

 private:
  std::string mText;
};

/// Writes the files of one folder.
class ScriptWriter {
 public:
  ScriptWriter(const ShardedMerge& merge, const ShardPlan& shards)
      : mMerge(merge), mShards(shards) {}

  void Write() {
    for (const char* folder : {"", "/lists", "/commands", "/parts", "/logs"}) {
      mFiles.MakeFolder(mShards.mFolder + folder);
    }
    WriteFile("settings", Settings());
    WriteScript("shard", "Makes a part: sh shard K, or sbatch --array=K shard.", kShard);
    WriteScript("join", "Joins the parts to the output.", kJoin);
    WriteScript("verify", "Compares the output with the inputs of the merge.", kVerify);
    WriteScript("submit",
                "Submits the jobs whose results are missing to Slurm: sh submit [SBATCH OPTION]...",
                kSubmit);
    WriteScript("run-here",
                "Runs the jobs whose results are missing, JOBS shards at a time, or only the given "
                "shards:\n# sh run-here [-j JOBS] [SHARD...]",
                kRunHere);
    WriteFile("lists/all", ListText(mMerge.GetGivenInputs()));
    for (std::size_t i = 0; i < mShards.mShards.size(); ++i) WriteShard(i);
    WriteFile("commands/join", JoinCommand());
    WriteFile("commands/verify", VerifyCommand());
    mFiles.CommitAll();
  }

 private:
  void WriteFile(const std::string& name, std::string_view text) {
    SafeOutput& file = mFiles.Open(mShards.mFolder + "/" + name);
    file.Write(text);
    file.Finish();
  }

  void WriteScript(const std::string& name, const char* comment, std::string_view text) {
    const std::string settings = fmt::format(kSourceSettings, QuoteForShell(mShards.mFolder));
    WriteFile(
        name,
        fmt::format(
            "#!/bin/sh\n# {}\n# shellcheck source=/dev/null disable=SC2154 # the settings\n{}{}",
            comment, settings, text));
  }

  std::string Settings() const {
    namespace fs = std::filesystem;
    const std::string program = fs::read_symlink("/proc/self/exe").string();
    const std::string folder = QuoteForShell(mShards.mFolder);
    return "# The settings and functions of the scripts in this folder, which read this file. Do "
           "not "
           "move the folder.\n"
           "# shellcheck shell=sh disable=SC1003,SC2034\n"
           "ryx=${RYX:-" +
           QuoteForShell(program) +
           "}\n"
           "folder=" +
           folder +
           "\n"
           "shown_folder=" +
           QuoteForShell(folder) +
           "\n"
           "output=" +
           QuoteForShell(mMerge.GetRequest().mOutput) +
           "\n"
           "num_shards=" +
           std::to_string(mShards.mShards.size()) +
           "\n"
           "cd " +
           QuoteForShell(fs::current_path().string()) + " || exit 2\n" + std::string(kFunctions);
  }

  std::vector<std::string> Slice(const std::vector<std::string>& list, const Shard& shard) const {
    const auto first = list.begin() + static_cast<std::ptrdiff_t>(shard.mFirst);
    return {first, first + static_cast<std::ptrdiff_t>(shard.mCount)};
  }

  void WriteShard(std::size_t i) {
    using QovRyx::MergedNames;
    const Shard& shard = mShards.mShards[i];
    const std::string number = std::to_string(i + 1);
    WriteFile("lists/" + number, ListText(Slice(mShards.mModels, shard)));
    CommandText command("\"$ryx\" merge");
    command.Quoted({"--part-of=" + mShards.mModels.front(), ModeOption()});
    if (mShards.mMode == QovRyx::MergeMode::Instances) {
      command.Quoted({std::string("--names=") + NameOf(mShards.mNames)});
      if (mShards.mNames == MergedNames::Stem) {
        WriteFile("lists/" + number + ".stems", ListText(Slice(mShards.mParts, shard)));
        command.Raw("--stems=\"$folder/lists/$shard.stems\"");
      }
      if (mShards.mNames == MergedNames::Number) {
        const std::uint64_t first = mMerge.GetRequest().mFirstNumber + shard.mFirst;
        command.Quoted({"--first-number=" + std::to_string(first)});
      }
    }
    command.Quoted(mMerge.RepeatPartOptions());
    command.Raw(R"(--from="$folder/lists/$shard" -0 --output="$part")");
    WriteFile("commands/shard-" + number, Commented("Makes part " + number + ".", command));
  }

  std::string JoinCommand() {
    std::vector<std::string> parts;
    for (std::size_t i = 1; i <= mShards.mShards.size(); ++i) {
      parts.push_back(fmt::format("{}/parts/{}.ryx", mShards.mFolder, i));
    }
    for (std::string& file : mMerge.ListInputs(true)) parts.push_back(std::move(file));
    WriteFile("lists/join", ListText(parts));
    CommandText command("\"$ryx\" merge --join-parts");
    command.Quoted({ModeOption()}).Quoted(mMerge.RepeatJoinOptions());
    command.Raw(R"(--from="$folder/lists/join" -0 --output="$output")");
    return Commented("Joins the parts.", command);
  }

  std::string VerifyCommand() {
    CommandText command("\"$ryx\" verify");
    // A mode makes the options those of ryx merge.
    if (mMerge.GetRequest().mMode == QovRyx::MergeMode::Automatic) command.Quoted({"--as=auto"});
    command.Quoted(mMerge.RepeatContentOptions());
    command.Raw(R"(--from="$folder/lists/all" -0 -- "$output")");
    return Commented("Compares the output with the inputs, as they were given.", command);
  }

  static std::string Commented(const std::string& comment, CommandText& command) {
    return "# " + comment + "\n# shellcheck shell=sh disable=SC2154\n" + command.Finish();
  }

  std::string ModeOption() const { return std::string("--as=") + NameOf(mShards.mMode); }

  const ShardedMerge& mMerge;
  const ShardPlan& mShards;
  OutputSet mFiles{false};
};

}  // namespace

void WriteShardScripts(const ShardedMerge& merge, const ShardPlan& shards) {
  QovJbf::RemoveOutputsOnSignals();
  ScriptWriter(merge, shards).Write();
}

}  // namespace Qov::Tools
