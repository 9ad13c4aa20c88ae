#include "ModelNaming.h"

#include <algorithm>
#include <cstddef>
#include <filesystem>
#include <functional>
#include <limits>
#include <map>
#include <set>
#include <string_view>
#include <unordered_set>
#include <utility>

#include "MergeSteps.h"
#include "Qov/Ryx/InstanceNames.h"
#include "Qov/Util/Raise.h"
#include "SharingLimit.h"

namespace QovRyx {
namespace {

using Parts = std::set<std::string>;

/// Returns the text before the last separator of a name.
std::string BaseOf(const std::string& name) {
  return name.substr(0, name.rfind(kInstanceSeparator));
}

/// Returns the last `numFolders` folders of a path and its stem: "a/run".
std::string StemWithFolders(const std::filesystem::path& path, std::size_t numFolders) {
  std::string name = path.stem().string();
  std::filesystem::path folder = path.parent_path();
  for (; numFolders > 0 && folder.has_filename(); --numFolders) {
    name.insert(0, folder.filename().string() + "/");
    folder = folder.parent_path();
  }
  return name;
}

/// Models with the same stem.
class StemGroup {
 public:
  void Add(std::size_t model, const std::string& path) {
    mModels.push_back(model);
    mPaths.push_back(std::filesystem::absolute(path).lexically_normal());
  }

  /// Names the models by as few folders as make most of them distinct.
  void Name(std::vector<ModelNaming>& namings) const {
    const std::size_t numFolders = ChooseNumFolders();
    for (std::size_t i = 0; i != mModels.size(); ++i) {
      namings[mModels[i]].mPart = StemWithFolders(mPaths[i], numFolders);
    }
  }

 private:
  std::size_t ChooseNumFolders() const {
    std::size_t mostNames = 0;
    std::size_t chosen = 0;
    const std::size_t mostFolders = CountFolders();
    for (std::size_t numFolders = 0; numFolders <= mostFolders; ++numFolders) {
      std::set<std::string> names;
      for (const auto& path : mPaths) names.insert(StemWithFolders(path, numFolders));
      if (names.size() <= mostNames) continue;
      mostNames = names.size();
      chosen = numFolders;
      if (mostNames == mPaths.size()) break;
    }
    return chosen;
  }

  std::size_t CountFolders() const {
    std::ptrdiff_t most = 0;
    for (const std::filesystem::path& path : mPaths) {
      most = std::max(most, std::distance(path.begin(), path.end()));
    }
    return static_cast<std::size_t>(most);
  }

  std::vector<std::size_t> mModels;
  std::vector<std::filesystem::path> mPaths;
};

void ReplaceInParts(std::vector<ModelNaming>& namings, char from, char to) {
  for (ModelNaming& naming : namings) {
    std::replace(naming.mPart.begin(), naming.mPart.end(), from, to);
  }
}

/// Numbers the models with the part of an earlier model: "run(2)". Skips the numbers that give the
/// part of another model.
void MakePartsDistinct(std::vector<ModelNaming>& namings) {
  std::set<std::string> taken;
  for (const ModelNaming& naming : namings) taken.insert(naming.mPart);
  std::map<std::string, std::size_t> numbers;
  for (ModelNaming& naming : namings) {
    const std::string part = naming.mPart;
    std::size_t& number = numbers[part];
    if (++number == 1) continue;
    const auto numbered = [&] { return part + "(" + std::to_string(number) + ")"; };
    while (!taken.insert(numbered()).second) ++number;
    naming.mPart = numbered();
  }
}

/// Returns true if a part begins with another part and a blank: "a b" with the old part "c" and "a"
/// with "b c" would give equal names.
bool HaveCommonBeginning(const std::vector<ModelNaming>& namings) {
  std::set<std::string, std::less<>> parts;
  for (const ModelNaming& naming : namings) parts.insert(naming.mPart);
  return std::any_of(parts.begin(), parts.end(), [&parts](const std::string& part) {
    for (std::size_t i = part.find(' '); i != part.npos; i = part.find(' ', i + 1)) {
      if (parts.contains(std::string_view(part).substr(0, i))) return true;
    }
    return false;
  });
}

void NameByStems(const std::vector<std::string>& models, std::vector<ModelNaming>& namings) {
  std::map<std::string, StemGroup> groups;
  for (std::size_t i = 0; i != models.size(); ++i) {
    groups[std::filesystem::path(models[i]).stem().string()].Add(i, models[i]);
  }
  for (const auto& [stem, group] : groups) group.Name(namings);
  ReplaceInParts(namings, kInstanceSeparator, '_');
  if (HaveCommonBeginning(namings)) ReplaceInParts(namings, ' ', '_');
  MakePartsDistinct(namings);
}

void NameByNumbers(std::uint64_t firstNumber, std::vector<ModelNaming>& namings) {
  constexpr std::uint64_t kMost = std::numeric_limits<std::uint64_t>::max();
  if (!namings.empty() && namings.size() - 1 > kMost - firstNumber) {
    Qov::Util::Raise(kMergeSource, Qov::Util::Exception::ErrorType::OutOfBounds,
                     "The first number " + std::to_string(firstNumber) + " is too large for " +
                         std::to_string(namings.size()) +
                         " models: the last model would get a number above " +
                         std::to_string(kMost));
  }
  for (ModelNaming& naming : namings) naming.mPart = "F" + std::to_string(firstNumber++);
}

/// Returns true if an old part that follows "F1" could be taken for a part of the number.
bool ContinuesNumber(const std::string& instance) {
  return instance[0] == ' ' || (instance[0] >= '0' && instance[0] <= '9');
}

/// Gives the results of one geometry their new names.
class GeometryNames {
 public:
  GeometryNames(std::uint32_t id, Geometry& geometry, const ModelNaming& naming)
      : mId(id), mGeometry(geometry), mNaming(naming) {}

  /// Renames the results that have an instance part. Returns the new parts.
  Parts NameInstances() {
    Parts parts;
    for (std::size_t i = 0; i != mGeometry.GetVariables().size(); ++i) {
      const std::string& name = mGeometry.GetVariables()[i].mName;
      if (!HasInstancePart(name)) {
        mCommon.push_back(i);
        continue;
      }
      const std::string base = BaseOf(name);
      Rename(i, base, *parts.insert(mNaming.Combine(name.substr(base.size() + 1))).first);
    }
    return parts;
  }

  /// Returns the size of the links that NameCommon adds, in bytes.
  double CountLinkBytes(const Parts& parts) const {
    double size = 0;
    if (parts.size() < 2) return size;
    for (const std::size_t i : mCommon) size += SharingLimit::SizeOf(mGeometry.GetVariables()[i]);
    return size * static_cast<double>(parts.size() - 1);
  }

  /// Gives each common result the instance parts for which its name is free.
  void NameCommon(const Parts& parts) {
    for (const std::size_t i : mCommon) {
      const std::string base = BaseOf(mGeometry.GetVariables()[i].mName);
      bool isNamed = false;
      for (const std::string& part : parts) {
        if (mNames.contains(base + kInstanceSeparator + part)) continue;
        if (isNamed) {
          AddLink(i, base, part);
        } else {
          Rename(i, base, part);
          isNamed = true;
        }
      }
      if (!isNamed && !mNaming.mPart.empty()) Rename(i, base, mNaming.mPart);
    }
  }

 private:
  void Rename(std::size_t i, const std::string& base, const std::string& part) {
    std::string name = base + kInstanceSeparator + part;
    mNames.insert(name);
    mGeometry.RenameVariable(i, std::move(name));
  }

  /// Adds a result that shares the values of result `i`.
  void AddLink(std::size_t i, const std::string& base, const std::string& part) {
    Geometry::VarStruct link = mGeometry.GetVariables()[i];
    link.mName = base + kInstanceSeparator + part;
    mNames.insert(link.mName);
    if (!link.mLink.IsLinked()) link.mLink = ResultLink({mId, static_cast<std::uint32_t>(i)});
    mGeometry.AppendVariable(std::move(link));
  }

  std::uint32_t mId;
  Geometry& mGeometry;
  const ModelNaming& mNaming;
  std::vector<std::size_t> mCommon;  ///< Positions of the results without an instance part.
  std::unordered_set<std::string> mNames;
};

double CountBytes(const Tree& tree) {
  double size = 0;
  ForEachGeometry(tree.GetNodes(), [&size](std::uint32_t, const Geometry& geometry) {
    for (const auto& result : geometry.GetVariables()) size += SharingLimit::SizeOf(result);
  });
  return size;
}

}  // namespace

std::string ModelNaming::Combine(const std::string& instance) const {
  if (mPart.empty() || instance.empty()) return mPart + instance;
  const bool needsBlank = mNames == MergedNames::Stem || ContinuesNumber(instance);
  return mPart + (needsBlank ? " " : "") + instance;
}

std::vector<ModelNaming> NameModels(const std::vector<std::string>& models, MergedNames names,
                                    std::uint64_t firstNumber) {
  std::vector<ModelNaming> namings(models.size(), ModelNaming{names, {}});
  if (names == MergedNames::Stem) NameByStems(models, namings);
  if (names == MergedNames::Number) NameByNumbers(firstNumber, namings);
  return namings;
}

void NameInstances(Tree& tree, const ModelNaming& naming) {
  struct Work {
    GeometryNames mNames;
    Parts mParts;
  };
  std::vector<Work> works;
  Parts all;
  ForEachGeometry(tree.GetNodes(), [&](std::uint32_t id, Geometry& geometry) {
    Work& work = works.emplace_back(Work{GeometryNames(id, geometry, naming), {}});
    work.mParts = work.mNames.NameInstances();
    all.insert(work.mParts.begin(), work.mParts.end());
  });
  const auto partsOf = [&all](const Work& work) -> const Parts& {
    return work.mParts.empty() ? all : work.mParts;
  };
  double needed = 0;
  for (const Work& work : works) needed += work.mNames.CountLinkBytes(partsOf(work));
  SharingLimit::Check(
      needed, std::max(SharingLimit::kFreeBytes, SharingLimit::kMostCopies * CountBytes(tree)));
  for (Work& work : works) work.mNames.NameCommon(partsOf(work));
}

}  // namespace QovRyx
