#include "CompletionNames.h"

#include <algorithm>
#include <array>
#include <set>
#include <utility>

#include "ContainerInfo.h"
#include "ModelInput.h"
#include "Qov/Ryx/InstanceNames.h"
#include "Terminal.h"

namespace Qov::Tools {
namespace {

/// The arguments whose values are names, for all subcommands.
constexpr auto kArguments = std::to_array<std::pair<std::string_view, NameSource>>({
    {"--attributes", NameSource::Nodes},    {"--deform", NameSource::Results},
    {"--instances", NameSource::Instances}, {"--material", NameSource::Nodes},
    {"--name", NameSource::Nodes},          {"--node-set", NameSource::Nodes},
    {"--nodes", NameSource::Nodes},         {"--rename-instance", NameSource::Instances},
    {"--rename-node", NameSource::Nodes},   {"--rename-result", NameSource::Results},
    {"--result", NameSource::Results},      {"--results", NameSource::Results},
    {"--root-a", NameSource::Nodes},        {"--root-b", NameSource::Nodes},
    {"--step", NameSource::Instances},      {"--stream", NameSource::Streams},
    {"--tolerance", NameSource::Results},   {"--view", NameSource::Views},
    {"--view-point", NameSource::Views},    {"--without-instances", NameSource::Instances},
    {"--without-nodes", NameSource::Nodes}, {"--without-results", NameSource::Results},
    {"COMMAND", NameSource::Subcommands},   {"NODE", NameSource::Nodes},
    {"RESULT", NameSource::Results},
});

using Names = std::set<std::string>;

void AddNodes(const QovRyx::Tree& tree, Names& names) {
  for (const auto& [id, entry] : tree.GetNodes()) {
    if (entry.mData) names.insert(entry.mData->GetName());
  }
}

template <class Function>
void ForEachResultName(const QovRyx::Tree& tree, Function function) {
  QovRyx::ForEachGeometry(tree.GetNodes(), [&](std::uint32_t, const QovRyx::Geometry& geometry) {
    for (const auto& result : geometry.GetVariables()) {
      const std::size_t separator = result.mName.rfind(QovRyx::kInstanceSeparator);
      function(result.mName, separator == std::string::npos ? result.mName.size() : separator);
    }
  });
}

/// Adds the names without instance parts, and the whole names if there are only a few.
void AddResults(const QovRyx::Tree& tree, Names& names) {
  constexpr std::size_t kMostWholeNames = 100;
  Names whole;
  ForEachResultName(tree, [&](const std::string& name, std::size_t end) {
    names.insert(name.substr(0, end));
    if (whole.size() <= kMostWholeNames) whole.insert(name);
  });
  if (whole.size() <= kMostWholeNames) names.insert(whole.begin(), whole.end());
}

void AddInstances(const QovRyx::Tree& tree, Names& names) {
  ForEachResultName(tree, [&](const std::string& name, std::size_t end) {
    if (end < name.size()) names.insert(name.substr(end + 1));
  });
}

void AddViews(const QovRyx::Tree& tree, Names& names) {
  if (!tree.HasViewPoints()) return;
  names.insert(tree.GetViewPoint().mName);
  for (const auto& path : tree.GetViewPointPaths()) {
    for (const auto& view : path.mViewPoints) names.insert(view.mName);
  }
}

void AddNames(NameSource source, const std::string& path, Names& names) {
  if (source == NameSource::Streams) {
    for (const StreamInfo& stream : ReadContainer(path).mStreams) names.insert(stream.mName);
    return;
  }
  QovRyx::Tree tree(false);
  LoadWhatCanBeRead(path, tree);
  if (source == NameSource::Nodes) AddNodes(tree, names);
  if (source == NameSource::Results) AddResults(tree, names);
  if (source == NameSource::Instances) AddInstances(tree, names);
  if (source == NameSource::Views) AddViews(tree, names);
}

}  // namespace

NameSource FindNameSource(std::string_view argument) {
  const auto found =
      std::find_if(kArguments.begin(), kArguments.end(),
                   [argument](const auto& known) { return known.first == argument; });
  return found == kArguments.end() ? NameSource::None : found->second;
}

std::vector<std::string> ListNames(NameSource source, const std::vector<std::string>& paths) {
  Names names;
  for (const std::string& path : paths) AddNames(source, path, names);
  std::vector<std::string> shown;
  for (const std::string& name : names) {
    if (!name.empty()) shown.push_back(Escape(name, {}));
  }
  return shown;
}

}  // namespace Qov::Tools
