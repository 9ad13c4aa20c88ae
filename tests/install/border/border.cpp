// Checks that a program and the library share types and objects: exceptions can be caught by type,
// nodes can be cast, and both use the same log.

#include <Qov/Jbf/BlockZlibUnCompressor.h>
#include <Qov/Log/Manager.h>
#include <Qov/Ryx/MergeEntryPoints.h>
#include <Qov/Ryx/Tree.h>
#include <Qov/Util/Exception.h>
#include <Qov/Util/SingletonHolder.h>

#include <iostream>
#include <sstream>
#include <string>

namespace {

std::ostringstream gLog;

void CatchError() {
  try {
    QovJbf::Block block;
    block.SetPosition(1);
  } catch (const Qov::Util::Exception& error) {
    std::cout << "Caught: " << error.GetLogMessage() << "\n";
  }
}

void CatchDamagedBlock() {
  try {
    QovJbf::Block block;
    block.Put("\1\0\0\0damaged", 11);
    QovJbf::BlockZlibUnCompressor()(block);
  } catch (const QovJbf::DamagedBlock& error) {
    std::cout << "Caught: damaged block\n";
  }
}

void Cast(const std::string& path) {
  QovRyx::Tree tree(false);
  QovRyx::Tree::IdMap ids;
  tree.Load(path, ids, QovRyx::Tree::ReadMode::Everything, QovRyx::Tree::SupportedFileFormats::Ryx);
  std::size_t numGroups = 0;
  for (const auto& [id, entry] : tree.GetNodes()) {
    if (dynamic_cast<const QovRyx::Group*>(entry.mData.get()) != nullptr) ++numGroups;
  }
  std::cout << "Groups: " << numGroups << "\n";
}

void CallTemplates() {
  QovJbf::Block block;
  QovJbf::CopyToBlock(block, QovRyx::ViewPoint());
  QovRyx::ViewPoint viewPoint;
  block.SetPosition(0);
  QovJbf::CopyFromBlock(block, viewPoint);
  std::cout << "Same view point: " << (viewPoint == QovRyx::ViewPoint()) << "\n";
}

}  // namespace

int main(int argc, char** argv) {
  auto& log = Qov::Util::SingletonHolder<Qov::Log::Manager>::Instance();
  log.AddPublisher("border", new Qov::Log::StreamPublisher(gLog));
  CatchError();
  CatchDamagedBlock();
  if (argc > 1) Cast(argv[1]);
  CallTemplates();
  std::cout << "Logged: " << (gLog.str().find(" @ ") != std::string::npos) << "\n";
  std::cout << "Status: " << QovRyx::cad_merge(1, argv) << std::endl;
  QovJbf::ryx_file_version = "1.3";
}
