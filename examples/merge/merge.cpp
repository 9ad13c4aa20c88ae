// Merges model files and view-point files in this process, and prints what the merge did. Ctrl-C
// cancels the merge before it reads the next input. A cancelled merge leaves no output.

#include <Qov/Ryx/Merge.h>

#include <csignal>
#include <exception>
#include <iostream>
#include <string>
#include <vector>

namespace {

volatile std::sig_atomic_t gIsCancelled = 0;

class Listener : public QovRyx::MergeListener {
 public:
  bool BeforeInput(std::size_t /*number*/, const std::string& /*path*/) override {
    return gIsCancelled == 0;
  }
  // The output is complete at `path`, but has no name yet: a program could verify it here.
  void CheckOutput(const std::string& path) override {
    std::cout << (path.empty() ? "" : "The output is complete.\n");
  }
};

void Print(const QovRyx::MergeReport& report) {
  const bool areInstances = report.mMode == QovRyx::MergeMode::Instances;
  std::cout << "Merged as " << (areInstances ? "instances" : "datasets") << ": " << report.mReason
            << "\n"
            << report.mNodes << " nodes, " << report.mResults << " results\n";
  for (const std::string& note : report.mNotes) std::cout << "Note: " << note << "\n";
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 4) {
    std::cerr << "Usage: merge INPUT INPUT... OUTPUT\n";
    return 1;
  }
  std::signal(SIGINT, [](int) { gIsCancelled = 1; });
  QovRyx::MergeRequest request;
  request.mInputs.assign(argv + 1, argv + argc - 1);
  request.mOutput = argv[argc - 1];
  try {
    Listener listener;
    Print(QovRyx::Merge(request, &listener));
  } catch (const std::exception& error) {
    std::cerr << error.what();
    return 2;
  }
}
