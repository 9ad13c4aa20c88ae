#include "SelectionOptions.h"

#include <string>
#include <vector>

#include "Terminal.h"

namespace Qov::Tools {
namespace {

void DeclarePatterns(CLI::App& app, const char* name, std::vector<std::string>& patterns,
                     const char* help) {
  app.add_option(name, patterns, help)
      ->type_name("PATTERN")
      ->allow_extra_args(false)
      ->transform([](const std::string& word) { return Unescape(word); }, "", "");
}

}  // namespace

void DeclareSelection(CLI::App& app, QovRyx::Selection& selection) {
  DeclarePatterns(app, "--nodes", selection.mNodes, "Only these nodes and everything below them");
  DeclarePatterns(app, "--without-nodes", selection.mWithoutNodes,
                  "Not these nodes, nor anything below them");
  DeclarePatterns(app, "--results", selection.mResults,
                  "Only these results; mesh arrays always stay");
  DeclarePatterns(app, "--without-results", selection.mWithoutResults,
                  "Not these results; mesh arrays only by their exact names");
  DeclarePatterns(app, "--instances", selection.mInstances,
                  "Only these load cases or steps, and results that have none");
  DeclarePatterns(app, "--without-instances", selection.mWithoutInstances,
                  "Not these load cases or steps");
}

}  // namespace Qov::Tools
