#include "mesh/Steps.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <charconv>
#include <cmath>
#include <numeric>

#include "merge/ArrayNames.h"
#include "model/TimeAttribute.h"

namespace QovMesh {

using QovRyx::GetTime;

namespace {

std::string_view Trim(std::string_view text) {
  while (!text.empty() && text.front() == ' ') text.remove_prefix(1);
  while (!text.empty() && text.back() == ' ') text.remove_suffix(1);
  return text;
}

/// Reads a finite number at the beginning of `text` and removes it.
std::optional<double> TakeNumber(std::string_view& text) {
  double value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc() || !std::isfinite(value)) return std::nullopt;
  text.remove_prefix(static_cast<std::size_t>(end - text.data()));
  return value;
}

struct Unit {
  std::string_view mName;
  double mSeconds;
};
constexpr std::array<Unit, 4> kUnits = {{{"s", 1}, {"sec", 1}, {"ms", 1e-3}, {"us", 1e-6}}};
constexpr std::array<std::string_view, 3> kWords = {"time", "step", "t"};

std::string Lower(std::string_view text) {
  std::string lower(text);
  for (char& c : lower) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return lower;
}

/// Removes a word for time and what links it with a number: "time ", "T=", "step_".
bool TakeWord(std::string_view& text) {
  for (const std::string_view word : kWords) {
    if (!text.starts_with(word)) continue;
    std::string_view rest = text.substr(word.size());
    const std::size_t number = rest.find_first_not_of(" =:_");
    if (number == rest.npos) continue;
    if (number == 0 && word == "t") continue;  // "t3" is a name
    text = rest.substr(number);
    return true;
  }
  return false;
}

}  // namespace

std::optional<double> ParseTime(std::string_view name) {
  const std::string lower = Lower(Trim(name));
  std::string_view text = lower;
  const bool hasWord = TakeWord(text);
  const std::optional<double> number = TakeNumber(text);
  if (!number) return std::nullopt;
  text = Trim(text);
  if (text.empty()) return hasWord ? number : std::nullopt;
  for (const Unit& unit : kUnits) {
    if (text == unit.mName) return *number * unit.mSeconds;
  }
  return std::nullopt;
}

StepTable::StepTable(const QovRyx::NodeTree& nodes) {
  QovRyx::GroupTimes times(nodes);
  QovRyx::ForEachGeometry(nodes, [&](std::uint32_t id, const QovRyx::Geometry& geometry) {
    const QovRyx::Group* group = times.Find(id);
    AddGeometry(id, geometry, group == nullptr ? std::nullopt : GetTime(group->mAttributes));
  });
  for (Step& step : mSteps) {
    if (step.mTime) continue;
    step.mTime = ParseTime(step.mName);
    step.mSource = step.mTime ? "name" : "no time is known";
  }
  Sort();
}

void StepTable::AddGeometry(std::uint32_t id, const QovRyx::Geometry& geometry,
                            const std::optional<double>& groupTime) {
  if (groupTime) mGroupTimes[id] = *groupTime;
  for (const auto& variable : geometry.GetVariables()) {
    const QovRyx::ArrayName name = QovRyx::SplitName(variable.mName);
    if (QovRyx::IsMeshBase(name.mBase)) continue;
    const std::optional<double> ownTime = GetTime(variable.mAttributes);
    if (!name.mInstance.empty()) {
      const std::size_t step = GetOrAdd(std::string(name.mInstance));
      if (ownTime) NoteTime(step, *ownTime, "attribute of a result");
    } else if (groupTime) {
      NoteTime(GetOrAdd(fmt::format("time {}", *groupTime)), *groupTime, "attribute of a group");
    } else if (ownTime) {
      NoteTime(GetOrAdd(fmt::format("time {}", *ownTime)), *ownTime, "attribute of a result");
    }
  }
}

std::size_t StepTable::GetOrAdd(const std::string& name) {
  const auto [found, isNew] = mPositions.try_emplace(name, mSteps.size());
  if (isNew) mSteps.push_back({name, std::nullopt, {}});
  return found->second;
}

void StepTable::NoteTime(std::size_t position, double time, const std::string& source) {
  Step& step = mSteps[position];
  if (!step.mTime) {
    step.mTime = time;
    step.mSource = source;
  } else if (*step.mTime != time) {
    const std::string warning =
        fmt::format("results of {} have the times {} and {}: the first one is used", step.mName,
                    *step.mTime, time);
    if (std::find(mWarnings.begin(), mWarnings.end(), warning) == mWarnings.end()) {
      mWarnings.push_back(warning);
    }
  }
}

void StepTable::Sort() {
  const bool haveTimes = std::all_of(mSteps.begin(), mSteps.end(),
                                     [](const Step& step) { return step.mTime.has_value(); });
  if (!haveTimes) return;
  std::stable_sort(mSteps.begin(), mSteps.end(),
                   [](const Step& a, const Step& b) { return *a.mTime < *b.mTime; });
  for (std::size_t i = 0; i < mSteps.size(); ++i) mPositions[mSteps[i].mName] = i;
}

std::optional<std::size_t> StepTable::FindStep(std::uint32_t geometry,
                                               const QovRyx::Geometry::VarStruct& result) const {
  const QovRyx::ArrayName name = QovRyx::SplitName(result.mName);
  std::string key(name.mInstance);
  if (key.empty()) {
    const auto groupTime = mGroupTimes.find(geometry);
    const std::optional<double> time = groupTime != mGroupTimes.end()
                                           ? std::optional(groupTime->second)
                                           : GetTime(result.mAttributes);
    if (!time) return std::nullopt;
    key = fmt::format("time {}", *time);
  }
  const auto found = mPositions.find(key);
  return found == mPositions.end() ? std::nullopt : std::optional(found->second);
}

}  // namespace QovMesh
