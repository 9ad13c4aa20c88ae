#include "RenameContent.h"

#include <map>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>

#include "ArrayNames.h"
#include "Qov/Ryx/InstanceNames.h"
#include "Qov/Util/Raise.h"
#include "diagnostics/Printable.h"

namespace QovRyx {
namespace {

constexpr const char* kSource = "include/Qov/Ryx/Extract";
using Qov::Util::Quote;
using Qov::Util::Raise;
using ErrorType = Qov::Util::Exception::ErrorType;

/// The new names for one kind of names.
class NameMap {
 public:
  /// `noun` is the kind of names. `partsOfNames` is true for parts of the names of results.
  NameMap(const Renames& renames, const char* noun, bool partsOfNames) : mNoun(noun) {
    for (const auto& [from, to] : renames) {
      CheckNew(to, partsOfNames);
      if (mNames.try_emplace(from, Entry{to, false}).second) continue;
      Raise(kSource, ErrorType::ElementExists,
            std::string("Two new names for the ") + noun + " " + Quote(from) + ": give one");
    }
  }

  bool IsEmpty() const { return mNames.empty(); }
  /// Returns the new name, or null for a name that stays.
  const std::string* Find(std::string_view name) {
    const auto found = mNames.find(name);
    if (found == mNames.end()) return nullptr;
    found->second.mIsUsed = true;
    return &found->second.mNew;
  }
  /// Raises ElementNotFound for a name that Find was never called with.
  void RequireAllUsed() const {
    for (const auto& [name, entry] : mNames) {
      if (entry.mIsUsed) continue;
      Raise(kSource, ErrorType::ElementNotFound,
            std::string("No ") + mNoun + " that is kept has the name " + Quote(name));
    }
  }

 private:
  struct Entry {
    std::string mNew;
    bool mIsUsed = false;
  };

  void CheckNew(const std::string& name, bool partsOfNames) const {
    const bool hasSeparator = partsOfNames && name.find(kInstanceSeparator) != std::string::npos;
    if (!hasSeparator && name.find('\0') == std::string::npos && !(partsOfNames && name.empty()))
      return;
    Raise(kSource, ErrorType::InvalidObject,
          std::string("The new name ") + Quote(name) + " for a " + mNoun +
              (name.empty() ? " is empty" : " contains a separator or a zero byte"));
  }

  const char* mNoun;
  std::map<std::string, Entry, std::less<>> mNames;
};

/// The new names of results.
class ResultNames {
 public:
  explicit ResultNames(const ExtractRequest& request)
      : mBases(request.mResultNames, "result", true),
        mInstances(request.mInstanceNames, "instance", true) {}

  bool IsEmpty() const { return mBases.IsEmpty() && mInstances.IsEmpty(); }
  void RequireAllUsed() const {
    mBases.RequireAllUsed();
    mInstances.RequireAllUsed();
  }

  /// Renames the results of a geometry. Returns their number. Raises ElementExists if results of
  /// different names get the same name.
  std::uint64_t Apply(Geometry& geometry) {
    std::uint64_t count = 0;
    std::unordered_map<std::string, std::string> oldNames;
    for (std::size_t i = 0; i != geometry.GetVariables().size(); ++i) {
      const std::string old = geometry.GetVariables()[i].mName;
      const std::string name = Make(old);
      const auto known = oldNames.try_emplace(name, old).first;
      if (known->second != old) {
        Raise(kSource, ErrorType::ElementExists,
              "The results " + Quote(known->second) + " and " + Quote(old) + " of the geometry " +
                  Quote(geometry.GetName()) + " would both be named " + Quote(name) +
                  ": choose another name");
      }
      if (name == old) continue;
      geometry.RenameVariable(i, name);
      ++count;
    }
    return count;
  }

 private:
  std::string Make(const std::string& old) {
    const ArrayName parts = SplitName(old);
    std::string name = old;
    // The instance part is last, so the place of the base does not depend on it.
    if (!parts.mInstance.empty()) {
      if (const std::string* instance = mInstances.Find(parts.mInstance)) {
        name.replace(old.size() - parts.mInstance.size(), std::string::npos, *instance);
      }
    }
    if (const std::string* base = mBases.Find(parts.mBase))
      name.replace(0, parts.mBase.size(), *base);
    return name;
  }

  NameMap mBases;
  NameMap mInstances;
};

std::uint64_t RenameNodes(NodeTree& nodes, const Renames& renames) {
  NameMap names(renames, "node", false);
  std::uint64_t count = 0;
  for (auto& [id, entry] : nodes) {
    if (!entry.mData) continue;
    const std::string* name = names.Find(entry.mData->GetName());
    if (name == nullptr) name = names.Find(std::to_string(id));
    if (name == nullptr || *name == entry.mData->GetName()) continue;
    entry.mData->SetName(*name);
    ++count;
  }
  names.RequireAllUsed();
  return count;
}

}  // namespace

RenameCounts RenameContent(NodeTree& nodes, const ExtractRequest& request) {
  RenameCounts counts;
  if (!request.mNodeNames.empty()) counts.mNodes = RenameNodes(nodes, request.mNodeNames);
  ResultNames names(request);
  if (names.IsEmpty()) return counts;
  ForEachGeometry(
      nodes, [&](std::uint32_t, Geometry& geometry) { counts.mResults += names.Apply(geometry); });
  names.RequireAllUsed();
  return counts;
}

}  // namespace QovRyx
