#include "compare/Records.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstring>
#include <vector>

namespace Qov::Tools {
namespace {

class FieldComparison {
 public:
  void Compare(const std::string& path, const Json& a, const Json& b);
  std::string GetText() const;

 private:
  void CompareObjects(const std::string& path, const Json& a, const Json& b);
  void CompareLists(const std::string& path, const Json& a, const Json& b);
  void Add(const std::string& path);

  static constexpr std::size_t kMostNames = 8;

  std::vector<std::string> mNames;
  std::size_t mNumDiffering = 0;
};

bool HoldsRecords(const Json& list) { return !list.empty() && list.front().is_structured(); }

// NOLINTBEGIN(misc-no-recursion): bounded by the nesting of the record classes
void FieldComparison::Compare(const std::string& path, const Json& a, const Json& b) {
  if (a.is_object() && b.is_object()) {
    CompareObjects(path, a, b);
  } else if (a.is_array() && b.is_array() && HoldsRecords(a) && HoldsRecords(b)) {
    CompareLists(path, a, b);
  } else if (a.dump(-1, ' ', true, Json::error_handler_t::replace) !=
             b.dump(-1, ' ', true, Json::error_handler_t::replace)) {
    Add(path);
  }
}

/// Compares the fields of one record, or maps in the order of their keys.
void FieldComparison::CompareObjects(const std::string& path, const Json& a, const Json& b) {
  const std::string prefix = path.empty() ? "" : path + ".";
  auto inA = a.begin();
  auto inB = b.begin();
  while (inA != a.end() || inB != b.end()) {
    const bool isOnlyInA = inB == b.end() || (inA != a.end() && inA.key() < inB.key());
    const bool isOnlyInB = inA == a.end() || (inB != b.end() && inB.key() < inA.key());
    if (inA != a.end() && inB != b.end() && inA.key() == inB.key()) {
      Compare(prefix + inA.key(), inA.value(), inB.value());
      ++inA;
      ++inB;
    } else if (isOnlyInA) {
      Add(prefix + inA.key());
      ++inA;
    } else if (isOnlyInB) {
      Add(prefix + inB.key());
      ++inB;
    }
  }
}

void FieldComparison::CompareLists(const std::string& path, const Json& a, const Json& b) {
  if (a.size() != b.size()) Add(path);
  for (std::size_t i = 0; i < std::min(a.size(), b.size()); ++i) {
    Compare(fmt::format("{}[{}]", path, i), a[i], b[i]);
  }
}

// NOLINTEND(misc-no-recursion)

void FieldComparison::Add(const std::string& path) {
  if (++mNumDiffering <= kMostNames) mNames.push_back(path);
}

std::string FieldComparison::GetText() const {
  std::string text;
  for (const std::string& name : mNames) text += (text.empty() ? "" : ", ") + name;
  if (mNumDiffering > kMostNames) text += fmt::format(" and {} more", mNumDiffering - kMostNames);
  return text;
}

}  // namespace

bool HasSameBytes(const QovJbf::Block& a, const QovJbf::Block& b) {
  return a.GetSize() == b.GetSize() && std::memcmp(a.GetData(), b.GetData(), a.GetSize()) == 0;
}

std::string NameDifferingFields(const Json& a, const Json& b) {
  FieldComparison comparison;
  comparison.Compare("", a, b);
  return comparison.GetText();
}

std::string NameDifferingFields(const QovRyx::Group& a, const QovRyx::Group& b) {
  std::string fields;
  const auto compare = [&fields](const char* name, const auto& left, const auto& right) {
    // NOLINTNEXTLINE(bugprone-suspicious-memory-comparison): compares the bits of floats
    if (std::memcmp(&left, &right, sizeof left) == 0) return;
    fields += (fields.empty() ? "" : ", ") + std::string(name);
  };
  compare("translation", a.mTranslation, b.mTranslation);
  compare("rotation", a.mRotation, b.mRotation);
  compare("scale", a.mScale, b.mScale);
  compare("whether it takes models", a.mTakesModels, b.mTakesModels);
  return fields;
}

}  // namespace Qov::Tools
