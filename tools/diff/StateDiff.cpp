#include "diff/StateDiff.h"

#include <fmt/format.h>

#include <algorithm>
#include <string>
#include <vector>

#include "LossText.h"
#include "compare/NameMatching.h"
#include "compare/Records.h"

namespace Qov::Tools {
namespace {

using QovRyx::Tree;
using QovRyx::ViewPointPath;

class StateComparison {
 public:
  StateComparison(const DiffOptions& options, DiffReport& report)
      : mOptions(options), mReport(report) {}

  void CompareHistory(const Tree& a, const Tree& b);
  void CompareViews(const Tree& a, const Tree& b);
  void Add(const char* code, std::string text) {
    ModelDifference difference;
    difference.mCode = code;
    difference.mText = std::move(text);
    mReport.mDifferences.push_back(std::move(difference));
  }

  /// Reports data that readers leave out of only one file, because it cannot be compared.
  void CompareLosses(const char* part, const QovJbf::ReadLosses& a, const QovJbf::ReadLosses& b) {
    if (a == b) return;
    Add("left-out",
        fmt::format("{}: readers leave out {} in A, {} in B", part, LossText(a), LossText(b)));
  }

 private:
  template <class T>
  void CompareRecords(const char* code, const std::string& what, const T& a, const T& b) {
    const std::string fields = NameDifferingFields(a, b);
    if (!fields.empty()) Add(code, fmt::format("{} differs: {}", what, fields));
  }
  template <class List>
  void CompareLists(const char* code, const std::string& what, const List& a, const List& b) {
    if (a.size() != b.size()) Add(code, fmt::format("{}: {} and {}", what, a.size(), b.size()));
    for (std::size_t i = 0; i < std::min(a.size(), b.size()); ++i) {
      CompareRecords(code, fmt::format("{} {}", what, i + 1), a[i], b[i]);
    }
  }
  void ComparePaths(const std::vector<ViewPointPath>& a, const std::vector<ViewPointPath>& b);

  const DiffOptions& mOptions;
  DiffReport& mReport;
};

void StateComparison::CompareHistory(const Tree& a, const Tree& b) {
  CompareLosses("history", a.GetLosses().mHistory, b.GetLosses().mHistory);
  CompareLists("history", "history entry", a.GetModifiers(), b.GetModifiers());
}

void StateComparison::CompareViews(const Tree& a, const Tree& b) {
  if (a.HasViewPoints() != b.HasViewPoints()) {
    const bool inA = a.HasViewPoints();
    Add(inA ? "only-in-a" : "only-in-b", fmt::format("views: only in {}", inA ? "A" : "B"));
    return;
  }
  if (!a.HasViewPoints()) return;
  CompareLosses("views", a.GetLosses().mViews, b.GetLosses().mViews);
  CompareRecords("views", "current view", a.GetViewPoint(), b.GetViewPoint());
  ComparePaths(a.GetViewPointPaths(), b.GetViewPointPaths());
  CompareRecords("sequencer", "sequencer", a.GetSequencerData(), b.GetSequencerData());
}

void StateComparison::ComparePaths(const std::vector<ViewPointPath>& a,
                                   const std::vector<ViewPointPath>& b) {
  NameMatching names(b);
  for (const ViewPointPath& path : a) {
    const std::string what = "path " + path.mName;
    const auto position = names.Take(path.mName);
    if (position) {
      CompareLists("views", what + ", view", path.mViewPoints, b[*position].mViewPoints);
    } else {
      Add("only-in-a", what + ": only in A");
    }
  }
  for (const auto& [name, position] : names.GetLeft()) {
    Add("only-in-b", "path " + std::string(name) + ": only in B");
  }
  if (names.IsInOrder() || !mOptions.Compares("order")) return;
  Add("order", "the order of the paths of views differs");
}

}  // namespace

void CompareStates(const Tree& a, const Tree& b, const DiffOptions& options, DiffReport& report) {
  StateComparison comparison(options, report);
  if (options.Compares("version") && a.GetFileVersion() != b.GetFileVersion()) {
    comparison.Add("version", fmt::format("container version {} in A, {} in B", a.GetFileVersion(),
                                          b.GetFileVersion()));
  }
  if (options.Compares("attributes")) {
    comparison.CompareLosses("model", a.GetLosses().mModel, b.GetLosses().mModel);
  }
  if (options.Compares("history")) comparison.CompareHistory(a, b);
  if (options.Compares("views")) comparison.CompareViews(a, b);
}

}  // namespace Qov::Tools
